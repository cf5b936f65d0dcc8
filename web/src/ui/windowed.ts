import type { RefObject } from "preact";
import { useLayoutEffect, useState } from "preact/hooks";

export interface Window {
  first: number;
  /** One past the last row. */
  end: number;
  /** Rows before this one lie, if only in part, under what stays at the scroller's upper edge. */
  covered: number;
}

const overscan = 8;

/** The nearest ancestor that scrolls. */
export function scrollerOf(element: HTMLElement | null): HTMLElement | null {
  return element?.closest<HTMLElement>("[data-scroller]") ?? null;
}

/** How much of the scroller's upper edge is taken by what stays there. */
export function stickyHeight(scroller: HTMLElement): number {
  const sticky = scroller.querySelector<HTMLElement>("[data-sticky]");
  return sticky && getComputedStyle(sticky).position === "sticky" ? sticky.offsetHeight : 0;
}

/**
 * Which rows of a long list to draw: those in sight and a few around them. `list` is as tall as all
 * its rows, `rowHeight` pixels each.
 */
export function useWindowed(list: RefObject<HTMLElement | null>, count: number, rowHeight: number): Window {
  const [rows, setRows] = useState<Window>({ first: 0, end: 40, covered: 0 });
  useLayoutEffect(() => {
    const element = list.current;
    const scroller = scrollerOf(element);
    if (!element || !scroller) return;
    const measure = () => {
      const top = scroller.getBoundingClientRect().top - element.getBoundingClientRect().top;
      const first = Math.max(0, Math.floor(top / rowHeight) - overscan);
      const end = Math.max(first, Math.ceil((top + scroller.clientHeight) / rowHeight) + overscan);
      const sticky = stickyHeight(scroller);
      const covered = sticky === 0 ? 0 : Math.ceil((top + sticky) / rowHeight);
      setRows((old) =>
        old.first === first && old.end === end && old.covered === covered ? old : { first, end, covered },
      );
    };
    measure();
    scroller.addEventListener("scroll", measure, { passive: true });
    const resized = new ResizeObserver(measure);
    resized.observe(scroller);
    if (element.parentElement) resized.observe(element.parentElement);
    return () => {
      scroller.removeEventListener("scroll", measure);
      resized.disconnect();
    };
  }, [count, rowHeight]);
  const { first, end, covered } = rows;
  return { first: Math.min(first, Math.max(0, count - 1)), end: Math.min(end, count), covered };
}
