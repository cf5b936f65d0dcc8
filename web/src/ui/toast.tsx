import { createContext } from "preact";
import { useContext, useEffect, useRef, useState } from "preact/hooks";
import { errorText } from "../client";
import { Icon } from "./icons";

export interface Notice {
  text: string;
  details?: string[];
  undo?: () => Promise<void>;
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

const seconds = 12;

export function Toast({ notice, onClose }: { notice: Notice | null; onClose: () => void }) {
  const [held, setHeld] = useState(false);
  const undoing = useRef(false);
  const attempt = useAttempt();

  useEffect(() => {
    if (!notice || held) return;
    const timer = setTimeout(onClose, (notice.details?.length ? 2 : 1) * seconds * 1000);
    return () => clearTimeout(timer);
  }, [notice, held]);

  const undo = async () => {
    if (!notice?.undo || undoing.current) return;
    undoing.current = true;
    onClose();
    await attempt(notice.undo);
    undoing.current = false;
  };

  useEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      const typing = event.target instanceof HTMLInputElement || event.target instanceof HTMLTextAreaElement;
      if ((event.ctrlKey || event.metaKey) && event.key.toLowerCase() === "z" && !typing && notice?.undo) {
        event.preventDefault();
        void undo();
      }
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  });

  return (
    <div class="toasts" role="status">
      {notice && (
        <div
          class={notice.failed ? "toast failed" : "toast"}
          onMouseEnter={() => setHeld(true)}
          onMouseLeave={() => setHeld(false)}
          onFocusIn={() => setHeld(true)}
          onFocusOut={() => setHeld(false)}
        >
          {notice.failed && <Icon name="warning" />}
          <div class="toast-text">
            <p>{notice.text}</p>
            {notice.details?.map((line) => (
              <p class="quiet">{line}</p>
            ))}
          </div>
          {notice.undo && (
            <button type="button" class="button small" onClick={() => void undo()} title="Ctrl+Z">
              Annuler
            </button>
          )}
          <button
            type="button"
            class="button ghost square small"
            aria-label="Fermer le message"
            onClick={onClose}
          >
            <Icon name="close" />
          </button>
        </div>
      )}
    </div>
  );
}
