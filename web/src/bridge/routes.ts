// What can be asked of the program: for every route, the shape of its arguments and of its answer.
// Times are Unix seconds with fraction, durations seconds, days "yyyy-MM-dd" in local time.
import type { Backup, Change, RestorePreview, StoreStatus, StoreTrouble, Unstored } from "./store";

export type Category = "travail" | "loisir" | "autre" | "nonclasse";
/** What a span counts as: a category, or "inactif" for time away. */
export type Cat = Category | "inactif";
/** The categories that a person can give. */
export type Assignable = Exclude<Category, "nonclasse">;

export type Day = string;
export type Seconds = number;
export type UnixTime = number;

export interface Status {
  paused: boolean;
  current: {
    app: string;
    domain: string | null;
    title: string | null;
    idle: boolean;
    duration: Seconds;
  } | null;
  now: UnixTime;
  /** Window titles can be read on this desktop. */
  accessibility: boolean;
  current_project: number | null;
  current_project_name: string | null;
  current_project_since: UnixTime | null;
  db: string;
  onboarded: boolean;
  telemetry: boolean;
  install_id: string;
  version: string;
  update: { version: string; url: string } | null;
  /** Only while something is wrong. */
  store?: StoreTrouble;
}

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

interface Report {
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

/** A row of the table "projects". */
export interface ProjectRow {
  id: number;
  name: string;
  color: string | null;
  category: string | null;
  archived: number | null;
  keywords: string | null;
}

export type RuleField = "app" | "domain" | "title" | "url";

/** A row of the table "rules"; built-in rules have a negative priority. */
export interface RuleRow {
  id: number;
  field: RuleField;
  pattern: string;
  category: string | null;
  project_id: number | null;
  priority: number;
  created: UnixTime | null;
}

export interface LearnedRule {
  field: "app" | "domain";
  pattern: string;
  category: string | null;
  project: string | null;
}

/** Every setting is text; booleans are "1" and "0", lists JSON. */
export interface Settings {
  idle_threshold: string;
  min_span_seconds: string;
  min_block_seconds: string;
  privacy_mode: string;
  excluded_domains: string;
  retention_days: string;
}

export interface Permissions {
  accessibility: boolean;
  browsers_running: { bundle: string; name: string }[];
  browsers: Record<string, "ok" | "denied">;
  launch_at_login: boolean;
  /** Where each kind of observation comes from on this desktop. */
  probes?: Record<string, string>;
  /** Why window titles are missing and what helps; "" when they are not. */
  advice?: string;
}

interface Ok extends Unstored {
  ok: true;
}
type Saved = Ok & { id: number };
interface Attempt {
  ok: boolean;
  error: string | null;
}
type Nothing = Record<string, never>;
type OnDay = { date?: Day };

/** One line a route: what it takes, what it answers. */
export interface Routes {
  status: [Nothing, Status];
  day: [OnDay, DayReport];
  week: [OnDay, WeekReport];
  recap: [OnDay, RecapReport];
  suggestions: [Nothing, Suggestion[]];
  "projects.list": [Nothing, ProjectRow[]];
  "projects.save": [
    { id?: number; name: string; color: string; category: string; archived?: 0 | 1; keywords: string },
    Saved,
  ];
  "projects.delete": [{ id: number }, Ok];
  "rules.list": [Nothing, RuleRow[]];
  "rules.save": [
    { field: RuleField; pattern: string; category: string | null; project_id: number | null },
    Saved,
  ];
  "rules.delete": [{ id: number }, Ok];
  "rules.defaults": [Nothing, Ok & { added: number }];
  "events.assign": [
    { ids: number[]; clear?: boolean; category?: string | null; project_id?: number | null },
    Ok & { learned?: LearnedRule[] },
  ];
  "events.assignRange": [
    { start: UnixTime; end: UnixTime; category: string | null; project_id: number | null },
    Ok,
  ];
  /** Erases for good, from the backups too; `preview` only counts. */
  "events.delete": [
    ({ start: UnixTime; end: UnixTime } | { ids: number[] }) & { preview?: true },
    // The message tells of a copy that could not be cleaned.
    Ok & { deleted: number; seconds: Seconds; message?: string },
  ];
  "changes.list": [{ limit?: number }, Change[]];
  "changes.undo": [{ id: number }, Ok];
  "changes.redo": [{ id: number }, Ok];
  "store.status": [Nothing, StoreStatus];
  "store.backup": [Nothing, Ok & Backup];
  "store.check": [Nothing, { ok: boolean; message: string; problems: string[] }];
  "store.restorePreview": [{ file: string }, RestorePreview];
  "store.restore": [{ file: string }, Ok & { kept: string | null }];
  "settings.get": [Nothing, Settings];
  "settings.set": [Partial<Record<keyof Settings, string | number | string[]>>, Ok];
  "tracker.pause": [Nothing, Ok];
  "tracker.resume": [Nothing, Ok];
  "tracker.project": [{ project_id: number | null }, Ok];
  "permissions.status": [Nothing, Permissions];
  "permissions.requestAccessibility": [Nothing, Ok];
  "permissions.testBrowser": [{ bundle: string }, Attempt & Unstored];
  "permissions.openAutomation": [Nothing, Ok];
  launchAtLogin: [{ enabled: boolean }, Attempt & { enabled: boolean }];
  "telemetry.set": [{ enabled: boolean }, Ok & { enabled: boolean }];
  "update.check": [Nothing, Ok];
  "onboarding.done": [Nothing, Ok];
  export: [{ from: Day; to: Day }, { ok: boolean; written?: boolean; message?: string }];
  openURL: [{ url: string }, Ok];
  revealData: [Nothing, Ok];
  quit: [Nothing, Ok];
}

export type Route = keyof Routes;
export type Body<R extends Route> = Routes[R][0];
export type Answer<R extends Route> = Routes[R][1];
