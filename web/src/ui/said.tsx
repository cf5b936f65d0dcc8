import type { ComponentChildren } from "preact";

interface Props {
  /** Tells one message from the next; empty while there is none. */
  text: string | false | null | undefined;
  /** How it looks, where it is more than its text. */
  children?: ComponentChildren;
  /** An alert interrupts. */
  role?: "status" | "alert";
  class?: string;
  id?: string | undefined;
}

/**
 * What a screen reader tells by itself. It hears of an element that is added in a place that it knows, and
 * of no text that changes: so the place is always there, drawn, and every message an element of its own.
 */
export function Said({ text, children, role = "status", ...rest }: Props) {
  return (
    <div role={role} {...rest}>
      {text && <div key={text}>{children ?? text}</div>}
    </div>
  );
}
