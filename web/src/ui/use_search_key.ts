import { useLayoutEffect } from "preact/hooks";
import { isCovered } from "./shortcuts";

/** Ctrl+K, also from within a field, unless something lies over the page. */
export function useSearchKey(open: () => void): void {
  useLayoutEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      const named = event.ctrlKey && !event.altKey && !event.shiftKey && !event.metaKey;
      if (!named || event.key.toLowerCase() !== "k" || event.defaultPrevented || isCovered()) return;
      event.preventDefault();
      open();
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  }, []);
}
