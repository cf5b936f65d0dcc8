// What is to be reached or not to be exceeded, and how far that is.
import type { DateRange } from "./periods";
import type { Seconds, UnixTime } from "./reports";

export type GoalSubject = "category" | "project" | "app" | "site";
export type GoalPeriod = "day" | "week";
export type GoalBound = "least" | "most";
export type GoalOutcome = "before" | "off" | "missed" | "kept" | "running";

export interface GoalFacts {
  id: number;
  subject: GoalSubject;
  /** A category, an application or a site; null of a project. */
  value: string | null;
  project_id: number | null;
  /** As it is shown. */
  name: string;
  color: string | null;
  period: GoalPeriod;
  bound: GoalBound;
  seconds: Seconds;
  created: UnixTime;
  /** Its project is gone. */
  missing: boolean;
  /** In French. */
  text: string;
}

/** How far it is now. */
export interface Goal extends GoalFacts {
  dates: DateRange;
  today: Seconds;
  week: Seconds;
  /** Of these two the one that counts. */
  done: Seconds;
  percent: number;
  level: 0 | 80 | 100;
}

export interface GoalPiece extends DateRange {
  done: Seconds;
  outcome: GoalOutcome;
}

export interface GoalHistory extends GoalFacts {
  /** Days, or whole weeks; none that is yet to come. */
  pieces: GoalPiece[];
  kept: number;
  counted: number;
  /** Kept one after the other up to the last. */
  streak: number;
}

/** With an id one that is changed. */
export type GoalWish = Pick<GoalFacts, "subject" | "period" | "bound" | "seconds"> & {
  id?: number;
  value?: string;
  project_id?: number;
};
