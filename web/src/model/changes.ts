// Changes that the program can take back: it keeps their history, the page remembers their numbers.
import type { Body, Route, UnixTime } from "../bridge/routes";
import type { Change } from "../bridge/store";
import type { Client } from "../client";
import { learnedRules } from "./learned";

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

/** Runs a write, or the few that belong together, and finds what they are called in the history. */
export async function track<T>(client: Client, write: () => Promise<T>): Promise<Done<T>> {
  const before = await latest(client, 1);
  const known = learnedRules.all();
  const answer = await write();
  const newest = before && (await latest(client, 4));
  const last = before?.[0]?.id ?? 0;
  const changes = (newest ?? []).filter(({ id, undone }) => id > last && !undone);
  learnedRules.add(changes.flatMap((change) => change.learned_ids));

  // Rules come back under their old numbers, and so are told apart as before.
  const now = learnedRules.all();
  const gained = [...now].filter((id) => !known.has(id));
  const lost = [...known].filter((id) => !now.has(id));
  const all = async (
    route: Extract<Route, "changes.undo" | "changes.redo">,
    bodies: Body<"changes.undo">[],
  ) => {
    for (const body of bodies) await client.call(route, body);
  };
  const ids = changes.map(({ id }) => ({ id }));
  return {
    answer,
    changes,
    undo: async () => {
      await all("changes.undo", ids);
      learnedRules.remove(gained);
      learnedRules.add(lost);
    },
    redo: async () => {
      await all("changes.redo", [...ids].reverse());
      learnedRules.remove(lost);
      learnedRules.add(gained);
    },
  };
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
