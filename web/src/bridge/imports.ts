// What is in a file of another program, and what of it can be stored; what is recorded of a site or an
// application that is to be excluded.
import type { Day, Seconds, UnixTime } from "./reports";

export type ImportColumn =
  | "start"
  | "start_date"
  | "end"
  | "end_date"
  | "duration"
  | "app"
  | "title"
  | "url"
  | "domain"
  | "category"
  | "project";

/** Columns by number, from 0. */
export type ImportMapping = Partial<Record<ImportColumn, number>>;

export interface ImportQuestion {
  text: string;
  name: string;
  /** As it is guessed, where there is none. */
  mapping?: ImportMapping;
  /** "03/04" is March 4th. */
  month_first?: boolean;
  /** The first and the last day that is wanted. */
  from?: Day;
  to?: Day;
}

interface ImportSums {
  /** Of the file. */
  events: number;
  seconds: Seconds;
  /** That would be stored. */
  spans: number;
  fills: Seconds;
}

export interface ImportMonth extends ImportSums {
  /** "2026-10" */
  month: string;
}

export interface Rejected {
  reason: string;
  count: number;
  /** The first, from 1; 0 where there are no lines. */
  line: number;
}

export interface ImportPreview extends ImportSums {
  name: string;
  kind: string;
  /** Why nothing can be read as it is mapped. */
  problem: string | null;
  columns: { name: string; examples: string[] }[];
  mapping: ImportMapping;
  month_first: boolean;
  months: ImportMonth[];
  rejected: Rejected[];
  new_projects: string[];
}

export type ExclusionSubject = { site: string } | { app: string };
export type PastWish = "keep" | "blank" | "erase";

export interface ExclusionPreview {
  name: string;
  excluded: boolean;
  spans: number;
  seconds: Seconds;
  /** Of how many spans something beside the application is known. */
  shown: number;
  first: UnixTime | null;
  last: UnixTime | null;
}
