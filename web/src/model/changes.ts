// Changes that the program can take back: it keeps their history, the page remembers their numbers.
import type { Answer, MomentRange, UnixTime } from "../bridge/routes";
import type { Change } from "../bridge/store";
import type { Client } from "../client";
import { load, save } from "./stored";

export interface Target {
  category: string | null;
  projectId: number | null;
}

/** What one act of the user's changed. */
export interface Done<T> {
  answer: T;
  /** Newest first; empty when there is nothing to take back. */
  changes: Change[];
  undo: () => Promise<void>;
  redo: () => Promise<void>;
}

// A history that cannot be read makes nothing undone, but does not make a failure of what was stored.
async function latest(client: Client, limit: number): Promise<Change[] | null> {
  return client.call("changes.list", { limit }).catch(() => null);
}

// One act of the user's writes a few at most.
const mostWrites = 40;

/** Runs a write, or the few that belong together, and finds what they are called in the history. */
export async function track<T>(client: Client, write: () => Promise<T>): Promise<Done<T>> {
  const before = await latest(client, 1);
  const answer = await write();
  const newest = before && (await latest(client, mostWrites));
  const last = before?.[0]?.id ?? 0;
  const changes = (newest ?? []).filter(({ id, undone, undoable }) => id > last && !undone && undoable);
  remember(changes.map(({ id }) => id));
  return { answer, changes, undo: () => turn(client, changes, "undo"), redo: () => turn(client, changes, "redo") };
}

export type Way = "undo" | "redo";

/** Takes changes, the newest first, back, or makes them again. */
export async function turn(client: Client, changes: readonly Change[], way: Way): Promise<void> {
  const ids = changes.map(({ id }) => id);
  for (const id of way === "undo" ? ids : ids.reverse()) await client.call(`changes.${way}`, { id });
}

// Which changes belong to one act, by the newest of them: the program knows each alone.
const key = "acts";

function acts(): number[][] {
  const isAct = (act: unknown) => Array.isArray(act) && act.every(Number.isInteger);
  return load<number[][]>(key, [], (value) => Array.isArray(value) && value.every(isAct));
}

function remember(ids: number[]): void {
  if (ids.length > 1) save(key, [...acts(), ids].slice(-50));
}

/**
 * What is next to be taken back, or made again: the changes of one act, the newest first; empty when there is
 * nothing. `history` is newest first.
 */
export function nextAct(history: readonly Change[], way: Way): Change[] {
  const able = history.filter(({ undoable }) => undoable);
  const done = able.findIndex(({ undone }) => !undone);
  const one = way === "undo" ? able[done] : able[done < 0 ? able.length - 1 : done - 1];
  if (!one) return [];
  const act = acts().find((ids) => ids.includes(one.id)) ?? [one.id];
  return able.filter(({ id, undone }) => act.includes(id) && undone === one.undone);
}

export async function assignIds(client: Client, ids: number[], target: Target): Promise<void> {
  const { category, projectId } = target;
  const automatic = category === null && projectId === null;
  await client.call(
    "events.assign",
    automatic ? { ids, clear: true } : { ids, category, project_id: projectId },
  );
}

export async function assignRange(
  client: Client,
  range: { start: UnixTime; end: UnixTime },
  target: Target,
): Promise<void> {
  const { start, end } = range;
  await client.call("events.assignRange", {
    start,
    end,
    category: target.category,
    project_id: target.projectId,
  });
}

/** Gives what is idle or empty of these ranges to a moment with that note. */
export async function addMoment(
  client: Client,
  ranges: MomentRange[],
  title: string,
  { category, projectId }: Target,
): Promise<Answer<"moments.add">> {
  return client.call("moments.add", { ranges, title: title.trim(), category, project_id: projectId });
}
