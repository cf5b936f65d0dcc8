import type { RefObject } from "preact";
import { useLayoutEffect, useState } from "preact/hooks";

export interface Window {
  first: number;
  /** One past the last row. */
  end: number;
}

const overscan = 8;

/** The nearest ancestor that scrolls. */
export function scrollerOf(element: HTMLElement | null): HTMLElement | null {
  return element?.closest<HTMLElement>("[data-scroller]") ?? null;
}

/**
 * Which rows of a long list to draw: those in sight and a few around them. `list` is as tall as all
 * its rows, `rowHeight` pixels each.
 */
export function useWindowed(list: RefObject<HTMLElement | null>, count: number, rowHeight: number): Window {
  const [rows, setRows] = useState<Window>({ first: 0, end: 40 });
  useLayoutEffect(() => {
    const element = list.current;
    const scroller = scrollerOf(element);
    if (!element || !scroller) return;
    const measure = () => {
      const top = scroller.getBoundingClientRect().top - element.getBoundingClientRect().top;
      const first = Math.max(0, Math.floor(top / rowHeight) - overscan);
      const end = Math.max(first, Math.ceil((top + scroller.clientHeight) / rowHeight) + overscan);
      setRows((old) => (old.first === first && old.end === end ? old : { first, end }));
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
  return { first: Math.min(rows.first, Math.max(0, count - 1)), end: Math.min(rows.end, count) };
}
