import { createContext } from "preact";
import { useContext, useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Body, Route } from "../bridge/routes";
import { errorText, useClient } from "../client";
import { type Done, track } from "../model/changes";
import { isolated } from "../model/time";
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
    const label = isolated(done.changes.at(-1)?.label ?? "", 200);
    const undo = async () => {
      await done.undo();
      notify({ text: `Annulé\u00a0: ${label}`, redo });
    };
    const redo = async () => {
      await done.redo();
      notify({ text: `Rétabli\u00a0: ${label}`, undo });
    };
    notify(done.changes.length > 0 ? { ...say(done), undo } : say(done));
  };
}

const seconds = 12;

// Which way a key goes in the history.
function wayOf(event: KeyboardEvent): "undo" | "redo" | null {
  if (!event.ctrlKey && !event.metaKey) return null;
  const key = event.key.toLowerCase();
  if (key === "z") return event.shiftKey ? "redo" : "undo";
  return key === "y" ? "redo" : null;
}

// Runs what the notice offers, also for the keys of that way, and never twice at a time.
function useAction(notice: Notice | null): () => Promise<void> {
  const attempt = useAttempt();
  const acting = useRef(false);
  const act = async () => {
    const action = notice?.undo ?? notice?.redo;
    if (!action || acting.current) return;
    acting.current = true;
    await attempt(action);
    acting.current = false;
  };
  // With what is seen, not after it: a key may follow at once.
  useLayoutEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      const typing = event.target instanceof HTMLInputElement || event.target instanceof HTMLTextAreaElement;
      const way = wayOf(event);
      if (!way || typing || isCovered() || !notice?.[way]) return;
      event.preventDefault();
      void act();
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  });
  return act;
}

export function Toast({ notice, onClose }: { notice: Notice | null; onClose: () => void }) {
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
          <IconButton icon="close" label="Fermer le message" onClick={close} />
        </div>
      )}
    </div>
  );
}
