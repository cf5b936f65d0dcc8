// The timesheet, now and as it was sent; what is agreed for each project, and what it took.
import type { DateRange, PeriodBy, PeriodKind } from "./periods";
import type { Day, Report, Seconds, UnixTime } from "./reports";

/** Minutes; 0 for none. */
export type RoundingStep = 0 | 5 | 6 | 10 | 15 | 30;
export type RoundingMode = "nearest" | "up";
export type RoundingScope = "day" | "total";
export type HourUnit = "hm" | "decimal";
export type SheetFormat = "csv" | "csv_plain" | "text" | "ics";

/** What is absent is as usual; without a rounding each project has its own. */
export interface SheetQuestion extends DateRange {
  columns?: PeriodBy;
  client?: string;
  project_id?: number;
  rounding?: RoundingStep;
  rounding_mode?: RoundingMode;
  rounding_scope?: RoundingScope;
  hours?: HourUnit;
}

/** As it is, and as it is counted. */
export interface SheetTime {
  raw: Seconds;
  raw_text: string;
  seconds: Seconds;
  text: string;
}

export interface SheetRow extends SheetTime {
  /** Null of what has none. */
  project_id: number | null;
  name: string;
  color: string;
  /** "" for none. */
  client: string;
  archived: boolean;
  billable: boolean;
  currency: string;
  /** Cents an hour. */
  rate: number | null;
  rate_text: string | null;
  rounding: { minutes: number; mode: RoundingMode; scope: RoundingScope; text: string };
  /** By column; null where nothing was done. */
  cells: (SheetTime | null)[];
  cents: number | null;
  amount: string | null;
}

export interface SheetTotals extends SheetTime {
  cells: (SheetTime | null)[];
  billable: Seconds;
  billable_text: string;
  amounts: { currency: string; cents: number; text: string }[];
}

export interface SheetColumn extends DateRange {
  label: string;
  name: string;
}

export interface Sheet extends Report, DateRange {
  kind: PeriodKind;
  name: string;
  title: string;
  hours: HourUnit;
  by: PeriodBy;
  /** What asks for this very sheet. */
  request: SheetQuestion;
  columns: SheetColumn[];
  rows: SheetRow[];
  clients: (SheetTotals & { client: string })[];
  totals: SheetTotals;
  /** Work that waits for a project; null where one client or project was asked for. */
  unassigned: SheetRow | null;
  /** How it is rounded. */
  rule: string;
}

/** A sheet that was kept as it was sent. */
export interface FrozenSheet extends DateRange {
  id: number;
  created: UnixTime;
  title: string;
  client: string;
  version: number;
}

/** A line that is no more as it was sent. */
export interface SheetChange {
  kind: string;
  about: string;
  sent: string | number | boolean | null;
  now: string | number | boolean | null;
  sent_text: string;
  now_text: string;
  text: string;
  change?: Seconds;
  change_text?: string;
  project_id?: number | null;
  column?: SheetColumn;
}

export interface SheetDiff extends FrozenSheet, Report {
  same: boolean;
  changes: SheetChange[];
  now: Sheet;
}

/** What is agreed for a project; null is not agreed. */
export interface Terms {
  /** Three letters. */
  currency: string;
  /** Cents an hour. */
  rate: number | null;
  billable: boolean;
  budget: Seconds | null;
  budget_from: Day | null;
  rounding: number | null;
  rounding_mode: RoundingMode | null;
  rounding_scope: RoundingScope | null;
}

export interface ProjectTerms extends Terms {
  project_id: number;
  client: string;
  rate_text: string | null;
}

export interface ProjectHours {
  project_id: number;
  this_month: Seconds;
  last_month: Seconds;
  per_week: Seconds;
  budget: Seconds | null;
  used: Seconds | null;
  used_percent: number | null;
  left: Seconds | null;
  runs_out: Day | null;
}
