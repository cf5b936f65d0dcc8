import { useLayoutEffect, useRef } from "preact/hooks";
import { load, save } from "../model/stored";

const setting = "singleKeys";

export function singleKeysOn(): boolean {
  return load(setting, true, (value) => typeof value === "boolean");
}

export function setSingleKeys(on: boolean): void {
  save(setting, on);
}

// What a key may be called in a table of shortcuts: what it writes, and then the digit that is printed on
// it, because AZERTY keyboards write digits with Shift only.
function keyNames(event: KeyboardEvent): string[] {
  const { key, code, shiftKey } = event;
  const names = [
    shiftKey && /^[a-z]$/i.test(key)
      ? `Shift+${key.toUpperCase()}`
      : key.length === 1
        ? key.toLowerCase()
        : key,
  ];
  const digit = /^Digit(\d)$/.exec(code)?.[1];
  if (digit && !shiftKey) names.push(digit);
  return names;
}

/** Whether something lies over the page that has the keyboard to itself, wherever the focus is. */
export function isCovered(): boolean {
  return document.querySelector("dialog[open], .welcome") !== null;
}

function takesKeys(target: EventTarget | null, key: string): boolean {
  if (!(target instanceof HTMLElement)) return false;
  if (target.closest("[role=dialog]")) return true;
  if (target instanceof HTMLInputElement && /^(checkbox|radio)$/.test(target.type))
    return key.startsWith("Arrow");
  if (target.matches("input, textarea, select")) return true;
  return key.startsWith("Arrow") && target.closest("[data-arrows]") !== null;
}

/**
 * Keys that work wherever the focus is, except in a field and while a dialogue or the welcome is open.
 * A handler that returns false lets the key through.
 */
export function useShortcuts(handlers: Record<string, () => boolean | void>): void {
  const latest = useRef(handlers);
  latest.current = handlers;
  useLayoutEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey || isCovered()) return;
      const name = keyNames(event).find((candidate) => candidate in latest.current);
      const handler = name && latest.current[name];
      if (!handler || takesKeys(event.target, name)) return;
      if (!/^(\?|F1|Escape|Arrow.*)$/.test(name) && !singleKeysOn()) return;
      if (handler() !== false) event.preventDefault();
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  }, []);
}
