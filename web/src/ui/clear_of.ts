import type { RefObject } from "preact";
import { useLayoutEffect } from "preact/hooks";

// What somebody has just worked on, but for what fills the page.
const subjects = ".block.active, .block[aria-selected=true], .assign, .learnt footer, :focus:not([role=listbox], main, body)";

/** Puts the box at the page's upper edge (class "above") where it would cover what its `text` is about. */
export function useClearOf(box: RefObject<HTMLElement | null>, text: unknown): void {
  useLayoutEffect(() => {
    const own = box.current;
    if (!own) return;
    const settle = () => {
      own.classList.remove("above");
      const mine = own.getBoundingClientRect();
      const covered = [...document.querySelectorAll(subjects)].filter((one) => !own.contains(one));
      own.classList.toggle("above", covered.some((one) => touch(one.getBoundingClientRect(), mine)));
    };
    settle();
    // Once more when what the message comes from has been put away.
    const frame = requestAnimationFrame(settle);
    return () => cancelAnimationFrame(frame);
  }, [text]);
}

function touch(a: DOMRect, b: DOMRect): boolean {
  return a.left < b.right && a.right > b.left && a.top < b.bottom && a.bottom > b.top;
}
