// What is told of recorded time, and the words for it.
// Times are Unix seconds with fraction, durations seconds, days "yyyy-MM-dd" in local time.

export type Category = "travail" | "loisir" | "autre" | "nonclasse";
/** What a span counts as: a category, or "inactif" for time away. */
export type Cat = Category | "inactif";
/** The categories that a person can give. */
export type Assignable = Exclude<Category, "nonclasse">;

export type Day = string;
export type Seconds = number;
export type UnixTime = number;

export type ByCategory = Partial<Record<Cat, Seconds>>;

export interface ProjectTime {
  id: number;
  name: string;
  color: string;
  duration: Seconds;
}

export interface AppTime {
  name: string;
  duration: Seconds;
  /** At most five, longest first. */
  cats: [Cat, Seconds][];
}

export interface DomainTime extends AppTime {
  app: string;
}

/** Every list is ordered by duration, longest first. */
export interface Totals {
  active: Seconds;
  by_category: ByCategory;
  by_project: ProjectTime[];
  apps: AppTime[];
  domains: DomainTime[];
}

/** A run of one category and project; time away is in none. */
export interface Segment {
  start: UnixTime;
  end: UnixTime;
  cat: Cat;
  pid: number | null;
  /** At most three domains or applications, longest first. */
  top: string[];
}

/** A run of one application, domain, category and project. */
export interface Block {
  start: UnixTime;
  end: UnixTime;
  duration: Seconds;
  app: string;
  domain: string | null;
  cat: Cat;
  pid: number | null;
  idle: boolean;
  /** The spans that it is made of; `ids[0]` stays while the block grows. */
  ids: number[];
  /** Somebody assigned its first span. */
  manual: boolean;
  title: string | null;
}

export interface Project {
  id: number;
  name: string;
  color: string;
  category: string;
  archived: boolean;
  /** Joined with ", ". */
  keywords: string;
}

export interface Report {
  /** Why the report is not whole, as a French sentence. */
  incomplete?: string;
}

export interface DayReport extends Report {
  date: Day;
  start: UnixTime;
  end: UnixTime;
  first: UnixTime | null;
  last: UnixTime | null;
  segments: Segment[];
  blocks: Block[];
  /** What is too short to be a block. */
  brief: { count: number; seconds: Seconds };
  totals: Totals;
  projects: Project[];
}

export interface WeekReport extends Report {
  monday: Day;
  days: {
    date: Day;
    active: Seconds;
    by_category: ByCategory;
    first: UnixTime | null;
    last: UnixTime | null;
  }[];
  by_category: ByCategory;
  by_project: ProjectTime[];
}

export interface WeekSummary extends Totals {
  days_active: number;
  avg_per_day: Seconds;
  longest_session: Seconds;
  best_day: { date: Day; active: Seconds } | null;
}

export interface RecapReport extends Report {
  monday: Day;
  current: WeekSummary;
  previous: WeekSummary;
}

export interface Suggestion {
  name: string;
  field: "app" | "domain";
  duration: Seconds;
  project_id: number;
  project: string;
  color: string;
}

export interface LearnedRule {
  field: "app" | "domain";
  pattern: string;
  category: string | null;
  project: string | null;
}
