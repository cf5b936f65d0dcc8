// What a change does to all that was ever recorded, as the program measures it.
import type { RuleField, SpanCount } from "./rules";
import type { Seconds, UnixTime } from "./reports";

/** Where time goes from and where to; its seconds are positive. Erased time goes to no category. */
export interface Move extends SpanCount {
  from_category: string | null;
  to_category: string | null;
  from_project: number | null;
  to_project: number | null;
}

/** Its spans and seconds are those that get another category or project. */
export interface Effect extends SpanCount {
  /** Of the first of them. */
  since: UnixTime | null;
  /** Positive for what is gained; what neither gains nor loses is not listed. */
  categories: { category: string; seconds: Seconds }[];
  projects: { id: number; name: string; color: string | null; seconds: Seconds }[];
  /** The largest first. */
  moves: Move[];
  /** Ascending; the months in between that are not listed have none. */
  months: { month: string; seconds: Seconds }[];
  /** A site, or else an application, and the title that was most seen there; the largest first. */
  examples: (SpanCount & { text: string; field: "app" | "domain"; title: string | null })[];
  /** Why it was not measured in full. */
  incomplete?: string;
}

export type Origin = "user" | "learned" | "builtin" | "app";

export interface RuleOrigin {
  id: number;
  origin: Origin;
  at: UnixTime | null;
  /** The entry of the history that made it. */
  change: number | null;
  /** It was learnt, and nobody has said yet whether it is to stay. */
  pending: boolean;
}

/** A learnt rule that waits for its answer. */
export interface PendingRule {
  id: number;
  field: RuleField;
  pattern: string;
  category: string | null;
  project: string | null;
  project_id: number | null;
  at: UnixTime;
  /** What was assigned by hand and taught it. */
  taught: Seconds;
  advice: "keep" | "forget";
  /** Why it had better go: it is at home in several projects, or moves more than it was taught. */
  because: "projects" | "more" | null;
  /** What it does to the whole past today. */
  effect: Effect;
}
