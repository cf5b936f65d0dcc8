import { useLayoutEffect } from "preact/hooks";
import type { Day } from "../bridge/routes";

declare global {
  interface Window {
    /** Called by the program, for who has clicked on a note about a day. */
    __showDay?: (day: Day) => void;
  }
}

/** Lets the program lead to a day. */
export function useShownDay(show: (day: Day) => void): void {
  useLayoutEffect(() => {
    window.__showDay = show;
  });
}
