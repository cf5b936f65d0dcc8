import type { RefObject } from "preact";
import { useRef } from "preact/hooks";

export interface Bar {
  enter: () => void;
  focusList: () => void;
  leave: () => void;
}

/** The way to the bar for what is picked, and back to where one came from. */
export function useBar(list: RefObject<HTMLElement | null>, onLeave: () => void): Bar {
  const origin = useRef<HTMLElement | null>(null);
  const enter = () => {
    origin.current = document.activeElement instanceof HTMLElement ? document.activeElement : null;
    document.querySelector<HTMLElement>(".assign .clock, .assign .note, .assign input:checked")?.focus();
  };
  const focusList = () => {
    const blocks = list.current?.querySelector<HTMLElement>(".blocks");
    (origin.current?.isConnected ? origin.current : blocks)?.focus({ preventScroll: true });
  };
  const leave = () => {
    if (document.activeElement?.closest(".assign")) focusList();
    origin.current = null;
    onLeave();
  };
  return { enter, focusList, leave };
}
