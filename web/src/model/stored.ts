// What the page remembers between two openings. The user's choices are kept by the program, so that they go
// wherever the data go; where the user is in the page stays with the window.
import type { Bridge } from "../bridge/bridge";

const choices = ["acts", "ignoredSuggestions", "periodGroup", "putOff", "sheet", "singleKeys"] as const;
const isChoice = (key: string): boolean => (choices as readonly string[]).includes(key);

let marks: Record<string, unknown> = {};
let keep: (key: string, value: unknown) => void = () => {};

export function load<T>(key: string, fallback: T, valid: (value: unknown) => boolean): T {
  const value = isChoice(key) ? marks[key] : inWindow(key);
  return valid(value) ? (value as T) : fallback;
}

export function save(key: string, value: unknown): void {
  if (!isChoice(key)) return saveInWindow(key, value);
  if (JSON.stringify(marks[key]) === JSON.stringify(value)) return;
  marks = { ...marks, [key]: value };
  keep(key, value);
}

/** Before the page is drawn, and when the store has become another. Fails as the bridge does. */
export async function recall(bridge: Bridge): Promise<void> {
  remember(bridge, await bridge.call("page.marks", {}));
}

/** The same with what came with the page. */
export function remember(bridge: Bridge, answer: Record<string, unknown>): void {
  marks = { ...answer };
  // What could not be kept is lost with the window.
  keep = (key, value) => void bridge.call("page.mark", { key, value }).catch(() => {});
  for (const key of choices) void moveIn(bridge, key).catch(() => {});
}

// An earlier version kept the choices with the window: there they stay until the program has them.
async function moveIn(bridge: Bridge, key: string): Promise<void> {
  const value = inWindow(key);
  if (value === undefined) return;
  if (!(key in marks)) {
    marks = { ...marks, [key]: value };
    if ((await bridge.call("page.mark", { key, value })).stored === false) return;
  }
  localStorage.removeItem(`orvanta.${key}`);
}

function inWindow(key: string): unknown {
  try {
    const text = localStorage.getItem(`orvanta.${key}`);
    return text === null ? undefined : JSON.parse(text);
  } catch {
    return undefined;
  }
}

function saveInWindow(key: string, value: unknown): void {
  try {
    localStorage.setItem(`orvanta.${key}`, JSON.stringify(value));
  } catch {
    // A full or forbidden storage only means that the page opens at its beginning.
  }
}
