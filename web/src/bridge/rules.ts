// What can be asked about rules: what one would catch, and why spans count as they do.
import type { Day, Seconds, UnixTime } from "./reports";

export type RuleField = "app" | "domain" | "title" | "url";

export interface SpanCount {
  spans: number;
  seconds: Seconds;
}

export interface TextShare {
  text: string;
  seconds: Seconds;
}

export interface RuleFacts {
  id: number;
  field: RuleField;
  pattern: string;
  category: string | null;
  project_id: number | null;
  /** Negative for a rule that the program made: -10 for a built-in one, -20 for an application's. */
  priority: number;
}

/** A row of the table "rules". */
export interface RuleRow extends RuleFacts {
  created: UnixTime | null;
}

/** What a rule would catch, if it were saved. */
export interface RulePreview extends SpanCount {
  /** Null for all that was ever recorded. */
  from: Day | null;
  to: Day | null;
  /** Of a rule that is edited, also what it catches now and would no longer. */
  changed: SpanCount;
  /** What was assigned by hand, which no rule changes. */
  kept: SpanCount;
  /** The largest first. */
  changes: (SpanCount & {
    from_category: string;
    to_category: string;
    from_project: number | null;
    to_project: number | null;
  })[];
  /** The distinct texts of the rule's field, the largest first, with what was seen there. */
  examples: (SpanCount & { text: string; titles: TextShare[]; urls: TextShare[] })[];
  incomplete?: string;
}

export type DecidedBy = "none" | "idle" | "manual" | "rule" | "keyword" | "project";

/** One decision about spans, and how much it was taken for. */
export interface Explanation extends SpanCount {
  category: string;
  category_by: DecidedBy;
  category_rule: number | null;
  project_id: number | null;
  project: string | null;
  project_by: DecidedBy;
  project_rule: number | null;
  keyword: string | null;
  /** Those that are named. */
  rules: RuleFacts[];
  titles: TextShare[];
  urls: TextShare[];
}
