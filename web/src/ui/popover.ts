import type { RefObject } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";

interface Popover {
  /** What holds the button and what it opens. */
  root: RefObject<HTMLDivElement | null>;
  open: boolean;
  setOpen: (open: boolean) => void;
  /** The focus goes back to the button. */
  close: () => void;
  onKeyDown: (event: KeyboardEvent) => void;
}

/** What a button opens beside itself: Escape closes it, and so does whatever happens elsewhere. */
export function usePopover(): Popover {
  const [open, setOpen] = useState(false);
  const root = useRef<HTMLDivElement>(null);
  const close = () => {
    setOpen(false);
    root.current?.querySelector("button")?.focus();
  };
  useLayoutEffect(() => {
    if (!open) return;
    root.current?.querySelector(".popover")?.scrollIntoView({ block: "nearest" });
    const outside = (event: Event) => {
      if (event.target instanceof Node && !root.current?.contains(event.target)) setOpen(false);
    };
    document.addEventListener("pointerdown", outside);
    document.addEventListener("focusin", outside);
    return () => {
      document.removeEventListener("pointerdown", outside);
      document.removeEventListener("focusin", outside);
    };
  }, [open]);
  const onKeyDown = (event: KeyboardEvent) => {
    if (event.key !== "Escape" || !open) return;
    event.stopPropagation();
    event.preventDefault();
    close();
  };
  return { root, open, setOpen, close, onKeyDown };
}
