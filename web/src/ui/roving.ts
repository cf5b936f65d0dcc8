// A group of controls is one stop for Tab: arrows, Home and End go from one to the other inside.
import type { RefObject } from "preact";
import { useLayoutEffect, useRef } from "preact/hooks";

/**
 * Beside or under each other; in a grid, each list item or row holds several beside each other. In a table
 * Home and End stay in the row, as in any; with Ctrl they lead to its corners.
 */
type Shape = "row" | "column" | "grid" | "table";

const rowOf = (control: HTMLElement) => control.closest("li, [role=row]");

function controlsIn(group: HTMLElement): HTMLElement[] {
  const all = group.querySelectorAll<HTMLElement>(":is(button, input[type=checkbox]):enabled");
  // What one of them opened is no part of the group.
  const own = (one: HTMLElement) => one.closest(".popover") === group.closest(".popover");
  return [...all].filter((one) => own(one) && one.getClientRects().length > 0);
}

// Where a key leads: undefined when it means nothing here, the control itself at an edge.
function reached(all: HTMLElement[], from: HTMLElement, key: string, shape: Shape): HTMLElement | undefined {
  const within = shape === "table" && !key.startsWith("Control+");
  const ends = within ? all.filter((one) => rowOf(one) === rowOf(from)) : all;
  if (/^(Control\+)?Home$/.test(key)) return ends[0];
  if (/^(Control\+)?End$/.test(key)) return ends[ends.length - 1];
  const at = all.indexOf(from);
  const beside = { ArrowLeft: -1, ArrowRight: 1 }[key];
  const under = { ArrowUp: -1, ArrowDown: 1 }[key];
  const by = shape === "row" ? beside : shape === "column" ? under : (beside ?? under);
  if (by === undefined) return undefined;
  if (shape === "row" || shape === "column") return all[at + by] ?? from;
  const row = rowOf(from);
  if (beside) return all[at + by] && rowOf(all[at + by]!) === row ? all[at + by] : from;
  // The same column of the next row that has one.
  const column = all.filter((one) => rowOf(one) === row).indexOf(from);
  const rows = [...new Set(all.map(rowOf))];
  const next = rows[rows.indexOf(row) + by];
  const there = all.filter((one) => next && rowOf(one) === next);
  return there[Math.min(column, there.length - 1)] ?? from;
}

/** A control that was drawn anew in another place, known by its id. */
export const elsewhere = ({ id }: Element) => document.getElementById(id);

// The focus of what is gone, to where that is now, else to the next one.
function handOn(gone: Element, next: HTMLElement | null): void {
  const moved = elsewhere(gone);
  (moved ?? next)?.focus({ preventScroll: !moved });
}

/** The ref of what holds the controls, whichever come and go in it. */
export function useRoving<E extends HTMLElement>(shape: Shape): RefObject<E | null> {
  const ref = useRef<E>(null);
  useLayoutEffect(() => {
    const group = ref.current;
    if (!group) return;
    let held: { control: HTMLElement; index: number } | null = null;
    const settle = () => {
      const all = controlsIn(group);
      const stop =
        all.find((one) => one === document.activeElement) ??
        all.find((one) => one.matches("[aria-current]")) ??
        all.find((one) => one.getAttribute("tabindex") === "0") ??
        all.find((one) => one.matches("[aria-pressed=true]")) ??
        all[0];
      for (const one of all) one.tabIndex = one === stop ? 0 : -1;
      return all;
    };
    const onFocus = ({ target }: FocusEvent) => {
      const index = settle().indexOf(target as HTMLElement);
      held = index < 0 ? null : { control: target as HTMLElement, index };
    };
    // What had the focus is gone with its row.
    const onChange = () => {
      const all = settle();
      if (!held || held.control.isConnected || document.activeElement !== document.body) return;
      handOn(held.control, all[Math.min(held.index, all.length - 1)] ?? group.closest<HTMLElement>("main"));
      held = null;
    };
    const onKey = (event: KeyboardEvent) => {
      const { target, key, ctrlKey, metaKey, altKey, shiftKey } = event;
      if (event.defaultPrevented || (ctrlKey && shape !== "table") || metaKey || altKey || shiftKey) return;
      // Where the mouse put the focus, arrows mean what they mean on the page.
      if (!(target instanceof HTMLElement) || !target.matches(":focus-visible")) return;
      const all = controlsIn(group);
      const next = all.includes(target) && reached(all, target, ctrlKey ? `Control+${key}` : key, shape);
      if (!next) return;
      event.preventDefault();
      next.focus();
    };
    settle();
    const observer = new MutationObserver(onChange);
    observer.observe(group, { childList: true, subtree: true, attributeFilter: ["disabled", "aria-current"] });
    group.addEventListener("focusin", onFocus);
    group.addEventListener("keydown", onKey);
    return () => {
      // The whole group goes, and with it what has the focus.
      const gone = document.activeElement;
      const main = group.contains(gone) && group.closest<HTMLElement>("main");
      if (gone && main) queueMicrotask(() => document.activeElement === document.body && handOn(gone, main));
      observer.disconnect();
      group.removeEventListener("focusin", onFocus);
      group.removeEventListener("keydown", onKey);
    };
  }, []);
  return ref;
}
