// What can be asked about the file that keeps everything, and about what was changed in it.
import type { Effect } from "./effects";
import type { LearnedRule, Seconds, UnixTime } from "./reports";

export type StoreState = "readonly" | "full" | "locked" | "damaged" | "absent";

/** Why nothing can be stored; the message is a French sentence for the user. */
export interface StoreTrouble {
  state: StoreState;
  message: string;
  since: UnixTime;
}

export interface Backup {
  /** Its path, by which it is named. */
  file: string;
  time: UnixTime;
  /** Bytes. */
  size: number;
}

export interface StoreStatus {
  state: "ok" | StoreState;
  message: string | null;
  since: UnixTime | null;
  /** Spans that wait in memory until they can be written. */
  waiting: number;
  /** Bytes. */
  size: number;
  first: UnixTime | null;
  last: UnixTime | null;
  /** What the last repair or restore saved, and what it did not. */
  notice: string | null;
  last_backup: UnixTime | null;
  /** Newest first. */
  backups: Backup[];
}

export interface StoreContent {
  spans: number;
  first: UnixTime | null;
  last: UnixTime | null;
  projects: number;
  rules: number;
}

/** What a backup holds, beside what is recorded now. */
export interface RestorePreview extends StoreContent {
  file: string;
  time: UnixTime;
  /** Recorded now, and not in the backup; null when today's file cannot be read in full. */
  lost_spans: number | null;
  lost_seconds: Seconds | null;
  current: StoreContent;
}

/** One entry of the program's history; ids grow. */
export interface Change {
  id: number;
  /** "assign", "rule.save" and the like: what was changed, and how. */
  kind: string;
  /** In French; names what was changed, so it may hold text from the outside. */
  label: string;
  at: UnixTime;
  spans: number;
  seconds: Seconds;
  /** The rules that an assignment taught. */
  learned: LearnedRule[];
  learned_ids: number[];
  undone: boolean;
  /** Null where nothing was measured. */
  effect: Effect | null;
  /** An erasure is not. */
  undoable: boolean;
}

/** What the answer of a write tells in addition when it could not be stored. */
export interface Unstored {
  stored?: boolean;
  message?: string;
}

export interface Ok extends Unstored {
  ok: true;
}
