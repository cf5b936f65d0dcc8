// What a search over all years tells.
import type { Cat, Day, Report, Seconds, UnixTime } from "./reports";

/** The spans of one day that are one activity. */
export interface FoundRow {
  start: UnixTime;
  end: UnixTime;
  duration: Seconds;
  app: string;
  domain: string | null;
  title: string | null;
  url: string | null;
  category: Cat;
  project_id: number | null;
  ids: number[];
}

export interface FoundDay {
  date: Day;
  duration: Seconds;
  rows: FoundRow[];
  /** How many rows are not among them. */
  more: number;
}

export interface Found extends Report {
  /** What was asked for. */
  text: string;
  duration: Seconds;
  first: UnixTime | null;
  last: UnixTime | null;
  /** "2026-11" and what is in it; those without any are left out. */
  months: { month: string; duration: Seconds }[];
  subjects: { kind: "project" | "domain" | "app"; name: string; project_id: number | null; duration: Seconds }[];
  /** The newest first. */
  days: FoundDay[];
  more: boolean;
  /** Its oldest days are not looked through yet. */
  building: boolean;
}
