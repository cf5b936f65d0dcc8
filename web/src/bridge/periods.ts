// What is told of any range of days, and of the days behind one of its figures.
import type {
  AppTime,
  ByCategory,
  Cat,
  Day,
  DomainTime,
  ProjectTime,
  Report,
  Seconds,
  UnixTime,
} from "./reports";

/** Local dates, both included. */
export interface DateRange {
  from: Day;
  to: Day;
}

export type PeriodKind = "day" | "week" | "month" | "quarter" | "year" | "other";
export type PeriodBy = "day" | "week" | "month";
export type PeriodGroup = "category" | "project" | "client" | "app" | "site";

/** Beside the range before, where that was asked for. */
interface Compared {
  before: Seconds | null;
  change: Seconds | null;
}

export interface ClientTime {
  client: string;
  duration: Seconds;
}

interface Rest {
  count: number;
  duration: Seconds;
}

interface Extent {
  first: UnixTime | null;
  last: UnixTime | null;
}

export interface PeriodBucket extends DateRange, Extent {
  start: UnixTime;
  end: UnixTime;
  active: Seconds;
  pauses: Seconds;
  by_category: ByCategory;
  by_project: ProjectTime[];
  by_client: ClientTime[];
  /** Seconds of each of the report's groups, in their order. */
  parts: Seconds[];
}

export interface PeriodPart {
  /** A category, a project's id, a client, an application, a site; "" for what is none of them. */
  key: string;
  name: string;
  color: string | null;
  duration: Seconds;
  /** How many it stands for: the last one may be what the small ones make up. */
  count: number;
}

export interface PeriodReport extends Report, DateRange, Extent {
  kind: PeriodKind;
  name: string;
  by: PeriodBy;
  group: PeriodGroup;
  start: UnixTime;
  end: UnixTime;
  /** Now lies in it. */
  running: boolean;
  active: Seconds;
  /** Absences between the first and the last activity of each day. */
  pauses: Seconds;
  days_active: number;
  avg_per_day: Seconds;
  best_day: { date: Day; active: Seconds } | null;
  by_category: ByCategory;
  categories: ({ category: Cat; duration: Seconds } & Compared)[];
  by_project: (ProjectTime & Compared)[];
  by_client: (ClientTime & Compared)[];
  without_project: Seconds;
  apps: AppTime[];
  apps_rest: Rest;
  domains: DomainTime[];
  domains_rest: Rest;
  groups: PeriodPart[];
  buckets: PeriodBucket[];
  /** Seconds by weekday, Monday first, and hour of the clock. */
  heat: Seconds[][];
  heat_max: Seconds;
  /** The range before, up to the point in it that now is in this one. */
  before:
    | ({
        name: string;
        until: UnixTime;
        active: Seconds;
        change: Seconds;
        change_percent: number | null;
        by_category: ByCategory;
        apps: AppTime[];
      } & DateRange)
    | null;
}

/** Which activity is meant; what is absent does not matter, null is none. */
export interface Activity {
  category?: string;
  project_id?: number | null;
  client?: string;
  app?: string;
  domain?: string;
  /** 0 is Monday. */
  weekday?: number;
  hour?: number;
}

export interface PeriodDays extends Report, DateRange {
  /** Those with some of it; a level of 1 to 4 tells how much, beside the longest. */
  days: { date: Day; duration: Seconds; level: number }[];
  duration: Seconds;
}
