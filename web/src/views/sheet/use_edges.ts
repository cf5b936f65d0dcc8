import type { RefObject } from "preact";
import { useLayoutEffect } from "preact/hooks";

/**
 * Of a place that scrolls sideways between columns that stay: tells the style sheet on which sides there is
 * more, and lets what gets the focus come out from under those columns.
 */
export function useEdges<E extends HTMLElement>(place: RefObject<E | null>, stays: string): void {
  useLayoutEffect(() => {
    const box = place.current;
    if (!box) return;
    const tell = () => {
      const { scrollLeft, scrollWidth, clientWidth, dataset } = box;
      const before = scrollLeft > 1;
      const after = scrollLeft < scrollWidth - clientWidth - 1;
      dataset["more"] = `${before ? "before" : ""} ${after ? "after" : ""}`;
    };
    const measure = () => {
      const [first, ...last] = [...box.querySelectorAll<HTMLElement>(stays)].map((one) =>
        getComputedStyle(one).position === "sticky" ? one.offsetWidth : 0,
      );
      box.style.scrollPaddingInline = `${first ?? 0}px ${last.reduce((sum, width) => sum + width, 0)}px`;
      tell();
    };
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(box);
    if (box.firstElementChild) observer.observe(box.firstElementChild);
    box.addEventListener("scroll", tell, { passive: true });
    return () => {
      observer.disconnect();
      box.removeEventListener("scroll", tell);
    };
  }, []);
}
