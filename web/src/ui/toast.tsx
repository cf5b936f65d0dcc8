import { createContext } from "preact";
import { useContext, useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Body, Route } from "../bridge/routes";
import { type Client, errorText, useClient } from "../client";
import { type Done, nextAct, track, turn, type Way } from "../model/changes";
import type { Change } from "../bridge/store";
import { count, isolated, typeset } from "../model/time";
import { useClearOf } from "./clear_of";
import { Icon } from "./icons";
import { Button, IconButton } from "./parts";
import { isCovered } from "./shortcuts";

export interface Notice {
  text: string;
  details?: string[];
  undo?: () => Promise<void>;
  /** Offered instead of undo, after it. */
  redo?: () => Promise<void>;
  failed?: boolean;
}

const Notices = createContext<(notice: Notice) => void>(() => {});
export const NoticeProvider = Notices.Provider;

/** Shows a short message over the page; only the last one is kept. */
export function useNotice(): (notice: Notice) => void {
  return useContext(Notices);
}

/** Runs an action and says so when it fails. */
export function useAttempt(): (action: () => Promise<unknown>) => Promise<boolean> {
  const notify = useNotice();
  return async (action) => {
    try {
      await action();
      return true;
    } catch (error) {
      notify({ text: errorText(error), failed: true });
      return false;
    }
  };
}

/** Sends a request whose answer tells nothing, and says so when it fails. */
export function useSend(): <R extends Route>(route: R, body: Body<R>) => void {
  const client = useClient();
  const attempt = useAttempt();
  return (route, body) => void attempt(() => client.call(route, body));
}

/** Runs a write that the program can take back and says so, with the ways back and forth again. */
export function useUndoable(): <T>(write: () => Promise<T>, say: (done: Done<T>) => Notice) => Promise<void> {
  const client = useClient();
  const notify = useNotice();
  return async (write, say) => {
    const done = await track(client, write);
    const notice = say(done);
    notify(done.changes.length > 0 ? { ...notice, undo: ways(client, notify, done.changes).undo } : notice);
  };
}

const mostLabels = 4;

// The ways back and forth again of what was changed, each of which offers the other.
function ways(client: Client, notify: (notice: Notice) => void, changes: readonly Change[]) {
  // In the order in which they were made; what they are called alike is said once.
  const labels = [...new Set(changes.map(({ label }) => isolated(typeset(label), 200)))].reverse();
  const what = labels.length > 1 ? count(changes.length, "changement") : labels[0];
  const details = labels.length > 1 ? [...labels.slice(0, mostLabels), ...(labels[mostLabels] ? ["…"] : [])] : [];
  const both = {
    undo: async () => {
      await turn(client, changes, "undo");
      notify({ text: `Annulé\u00a0: ${what}`, details, redo: both.redo });
    },
    redo: async () => {
      await turn(client, changes, "redo");
      notify({ text: `Rétabli\u00a0: ${what}`, details, undo: both.undo });
    },
  };
  return both;
}

const depth = 200;

/** Takes changes of the history back, or makes them again, and says so; what is next, where none are named. */
export function useTurn(): (way: Way, changes?: readonly Change[]) => Promise<void> {
  const client = useClient();
  const notify = useNotice();
  return async (way, named) => {
    const changes = named ?? nextAct(await client.read("changes.list", { limit: depth }), way);
    if (changes.length > 0) return ways(client, notify, changes)[way]();
    notify({ text: way === "undo" ? "Rien à annuler." : "Rien à rétablir." });
  };
}

const seconds = 12;

// Which way a key goes in the history.
function wayOf(event: KeyboardEvent): Way | null {
  if (!event.ctrlKey && !event.metaKey) return null;
  const key = event.key.toLowerCase();
  if (key === "z") return event.shiftKey ? "redo" : "undo";
  return key === "y" ? "redo" : null;
}

// Text that is written has a history of its own.
function isWriting(target: EventTarget | null): boolean {
  if (target instanceof HTMLInputElement) return !/^(checkbox|radio)$/.test(target.type);
  return target instanceof HTMLTextAreaElement;
}

// Runs what the notice offers, and never twice at a time; a key also goes on through the history.
function useAction(notice: Notice | null): () => Promise<void> {
  const attempt = useAttempt();
  const turnNext = useTurn();
  const acting = useRef(false);
  const act = async (action = notice?.undo ?? notice?.redo) => {
    if (!action || acting.current) return;
    acting.current = true;
    await attempt(action);
    acting.current = false;
  };
  // With what is seen, not after it: a key may follow at once.
  useLayoutEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      const way = wayOf(event);
      if (!way || isWriting(event.target) || isCovered()) return;
      event.preventDefault();
      void act(notice?.[way] ?? (() => turnNext(way)));
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  });
  return () => act();
}

interface ToastProps {
  notice: Notice | null;
  onClose: () => void;
  onHistory: () => void;
}

export function Toast({ notice, onClose, onHistory }: ToastProps) {
  const [held, setHeld] = useState(false);
  const place = useRef<HTMLDivElement>(null);
  const box = useRef<HTMLDivElement>(null);
  const before = useRef<EventTarget | null>(null);

  useEffect(() => {
    if (!notice || held) return;
    const timer = setTimeout(onClose, (notice.details?.length ? 2 : 1) * seconds * 1000);
    return () => clearTimeout(timer);
  }, [notice, held]);
  // The next message takes the place of the one before: under the pointer or the focus it stays, too.
  const look = () => setHeld(box.current?.matches(":hover, :has(:focus-visible)") ?? false);
  useEffect(look, [notice]);
  useClearOf(place, notice);

  const close = () => {
    if (
      box.current?.contains(document.activeElement) &&
      before.current instanceof HTMLElement &&
      before.current.isConnected
    )
      before.current.focus({ preventScroll: true });
    onClose();
  };
  const act = useAction(notice);
  // Each text is an element of its own, which is told; the buttons beside it keep the focus.
  const turn = useRef({ notice, number: 0 });
  if (turn.current.notice !== notice) turn.current = { notice, number: turn.current.number + 1 };

  return (
    <div class="toasts" role="status" data-region ref={place}>
      {notice && (
        <div
          ref={box}
          class={notice.failed ? "toast failed" : "toast"}
          // A click leaves the focus where it was: in the message it would hold every later one.
          onMouseDown={(event) => event.preventDefault()}
          onMouseEnter={look}
          onMouseLeave={look}
          onFocusIn={(event) => {
            if (!box.current?.contains(event.relatedTarget as Node | null))
              before.current = event.relatedTarget;
            look();
          }}
          onFocusOut={() => requestAnimationFrame(look)}
        >
          {notice.failed && <Icon name="warning" />}
          <div class="toast-text" key={turn.current.number}>
            <p>{notice.text}</p>
            {notice.details?.map((line) => (
              <p class="quiet">{line}</p>
            ))}
          </div>
          {(notice.undo ?? notice.redo) && (
            <Button
              kind="small"
              onClick={() => void act()}
              title={notice.undo ? "Ctrl + Z" : "Ctrl + Maj + Z"}
            >
              {notice.undo ? "Annuler" : "Rétablir"}
            </Button>
          )}
          {notice.redo && (
            <button type="button" class="link" onClick={onHistory}>
              Historique…
            </button>
          )}
          <IconButton icon="close" label="Fermer le message" onClick={close} />
        </div>
      )}
    </div>
  );
}
