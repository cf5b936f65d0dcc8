// What can be asked of the program: for every route, the shape of its arguments and of its answer.
import type {
  Day,
  DayReport,
  LearnedRule,
  RecapReport,
  Seconds,
  Suggestion,
  UnixTime,
  WeekReport,
} from "./reports";
import type { Activity, DateRange, PeriodBy, PeriodDays, PeriodGroup, PeriodReport } from "./periods";
import type {
  FrozenSheet,
  ProjectHours,
  ProjectTerms,
  Sheet,
  SheetDiff,
  SheetFormat,
  SheetQuestion,
  Terms,
} from "./sheets";
import type { Effect, PendingRule, RuleOrigin } from "./effects";
import type { Goal, GoalHistory, GoalWish } from "./goals";
import type {
  ExclusionPreview,
  ExclusionSubject,
  ImportPreview,
  ImportQuestion,
  PastWish,
  Rejected,
} from "./imports";
import type { MomentRoutes } from "./moments";
import type { Explanation, RuleField, RulePreview, RuleRow, SpanCount } from "./rules";
import type { Found } from "./search";
import type { Backup, Change, Ok, RestorePreview, StoreStatus, StoreTrouble, Unstored } from "./store";

export type * from "./effects";
export type * from "./goals";
export type * from "./imports";
export type * from "./moments";
export type * from "./periods";
export type * from "./reports";
export type * from "./rules";
export type * from "./search";
export type * from "./sheets";

export interface Status {
  paused: boolean;
  /** When it goes on by itself; absent of a pause without an end. */
  paused_until?: UnixTime;
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
  /** How the last look for a newer version went, once there was one. */
  update_check?: "going" | "done" | "failed";
  /** Only while something is wrong. */
  store?: StoreTrouble;
}

/** A row of the table "projects". */
export interface ProjectRow {
  id: number;
  name: string;
  color: string | null;
  category: string | null;
  archived: number | null;
  created: UnixTime | null;
  external_id: string | null;
  client: string | null;
  keywords: string | null;
}

/** Every setting is text; booleans are "1" and "0", lists JSON. */
export interface Settings {
  idle_threshold: string;
  min_span_seconds: string;
  min_block_seconds: string;
  privacy_mode: string;
  excluded_domains: string;
  retention_days: string;
  onboarded: string;
  paused: string;
  telemetry: string;
  install_id: string;
}

/** A row of the program's table of settings. */
export interface SettingRow {
  key: string;
  default: string;
  kind: "text" | "number" | "flag" | "choice" | "list";
  /** What a person is offered of a number; null of anything else. */
  smallest: number | null;
  largest: number | null;
  choices?: string[];
  writer: "user" | "program";
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
  /** What it costs that nothing here tells of a film; absent where something does. */
  films?: string;
}

/** A browser of this user. */
export interface BrowserState {
  bundle: string;
  name: string;
  running: boolean;
  /** Its extension is there. */
  connected: boolean;
  /** Why the extension does not help, and what does; "" when it does. */
  obstacle: string;
  steps: {
    text: string;
    /** What the step takes: an address, a setting, a file; "" for none. */
    copy: string;
    /** Of the button that opens the step's page; "" where there is none. */
    button: string;
    done: boolean;
  }[];
}

type Saved = Ok & { id: number };
interface Attempt {
  ok: boolean;
  error: string | null;
}
interface Exported {
  /** False where somebody thought better of it. */
  ok: boolean;
  written?: boolean;
  message?: string;
}
type Nothing = Record<string, never>;
type OnDay = { date?: Day };

type Rehearsed =
  | "rules.save"
  | "rules.delete"
  | "rules.defaults"
  | "projects.save"
  | "projects.delete"
  | "projects.archive"
  | "events.assign"
  | "events.assignRange";

/** A change that can be tried out. */
export type Step = { [R in Rehearsed]: { path: R; body: Body<R> } }[Rehearsed];

/** A route only reads, or writes, or takes as long as somebody to decide, or as going through all data. */
export type RouteKind = "read" | "write" | "ask";

/** One line a route: what it takes, what it answers. */
export interface Routes extends MomentRoutes {
  status: [Nothing, Status];
  "routes.list": [Nothing, { name: string; kind: RouteKind; arguments: string }[]];
  day: [OnDay, DayReport];
  week: [OnDay, WeekReport];
  recap: [OnDay, RecapReport];
  period: [DateRange & { by?: PeriodBy; group?: PeriodGroup; compare?: boolean }, PeriodReport];
  "period.days": [DateRange & Activity, PeriodDays];
  sheet: [SheetQuestion, Sheet];
  /** Of the sheet asked for, or of the one that was kept. */
  "sheet.text": [(SheetQuestion | { id: number }) & { format: SheetFormat }, { name: string; text: string }];
  "sheet.export": [(SheetQuestion | { id: number }) & { format: SheetFormat }, Exported];
  "sheets.list": [Nothing, FrozenSheet[]];
  "sheets.freeze": [SheetQuestion & { title?: string }, Saved & { version: number }];
  "sheets.get": [{ id: number }, FrozenSheet & { sheet: Sheet }];
  "sheets.diff": [{ id: number }, SheetDiff];
  "sheets.delete": [{ id: number }, Ok];
  /** What has all of these words, of all years. */
  "search.find": [{ text: string; before?: Day; days?: number }, Found];
  /** All of it, as far as that many can be changed at once. */
  "search.spans": [{ text: string }, { ids: number[]; duration: Seconds; more: boolean }];
  "search.export": [{ text: string }, Exported];
  /** For good, in the backups too; the message tells of a copy that could not be cleaned. */
  "search.erase": [
    { text: string; preview?: true },
    Ok & SpanCount & { first: UnixTime | null; last: UnixTime | null; message?: string },
  ];
  suggestions: [Nothing, Suggestion[]];
  "projects.list": [Nothing, ProjectRow[]];
  "projects.save": [
    {
      id?: number;
      name: string;
      color: string;
      category: string;
      archived?: 0 | 1;
      keywords: string;
      /** These two stay as they are where they are not sent. */
      client?: string;
      terms?: Terms;
    },
    Saved,
  ];
  "projects.delete": [{ id: number }, Ok];
  /** Puts a project away; `keep` gives it, by hand, what its keywords gave it. */
  "projects.archive": [{ id: number; keep: boolean }, Ok & SpanCount];
  "projects.terms": [Nothing, ProjectTerms[]];
  "projects.hours": [Nothing, ProjectHours[]];
  "goals.list": [Nothing, Goal[]];
  "goals.save": [GoalWish, Saved];
  "goals.delete": [{ id: number }, Ok];
  "goals.history": [DateRange, GoalHistory[]];
  "import.preview": [ImportQuestion, ImportPreview];
  "import.run": [
    ImportQuestion & { create_projects: boolean },
    Ok & SpanCount & { projects?: number; rejected?: Rejected[] },
  ];
  "rules.list": [Nothing, RuleRow[]];
  "rules.save": [
    { field: RuleField; pattern: string; category: string | null; project_id: number | null },
    Saved,
  ];
  "rules.delete": [{ id: number }, Ok];
  /** Of the last 30 days, unless told otherwise; `replaces` is the rule that this one is an edition of. */
  "rules.preview": [
    {
      field: RuleField;
      pattern: string;
      category: string | null;
      project_id: number | null;
      replaces?: number | undefined;
      all?: boolean;
    },
    RulePreview,
  ];
  "rules.defaults": [Nothing, Ok & { added: number }];
  "rules.origins": [Nothing, RuleOrigin[]];
  "rules.pending": [Nothing, PendingRule[]];
  "rules.confirm": [{ ids: number[] }, Ok];
  "events.explain": [{ ids: number[] }, Explanation[]];
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
  "exclusions.preview": [ExclusionSubject, ExclusionPreview];
  /** What is blanked or erased is so for good, in the backups too. */
  "exclusions.add": [ExclusionSubject & { past: PastWish }, Ok & SpanCount & { message?: string }];
  "exclusions.remove": [ExclusionSubject, Ok];
  /** Changes nothing: measures what these changes would do. */
  "changes.preview": [
    Step | { steps: Step[] },
    Effect & { learned: Pick<LearnedRule, "field" | "pattern" | "category" | "project">[] },
  ];
  "changes.list": [{ limit?: number }, Change[]];
  "changes.undo": [{ id: number }, Ok];
  "changes.redo": [{ id: number }, Ok];
  "store.status": [Nothing, StoreStatus];
  "store.backup": [Nothing, Ok & Backup];
  /** `file` and `size` once the user has chosen a place. */
  "store.takeAll": [Nothing, { ok: boolean; file?: string; size?: number; written?: false; message?: string }];
  /** A file of the user's choice, which "store.restore" takes then. */
  "store.pick": [Nothing, { ok: boolean; file?: string }];
  "store.check": [Nothing, { ok: boolean; message: string; problems: string[] }];
  "store.restorePreview": [{ file: string }, RestorePreview];
  "store.restore": [{ file: string }, Ok & { kept: string | null }];
  "page.marks": [Nothing, Record<string, unknown>];
  "page.mark": [{ key: string; value: unknown }, Ok];
  // Beside these, what the program itself notes.
  "settings.get": [Nothing, Settings & Record<string, string>];
  "settings.describe": [Nothing, SettingRow[]];
  "settings.set": [
    Partial<Record<keyof Settings, string | number | string[]>>,
    // What is read instead of what was stored, where that is not the same.
    Ok & { read_as?: Record<string, string | number | boolean | string[]> },
  ];
  "tracker.pause": [Nothing, Ok];
  "tracker.resume": [Nothing, Ok];
  "tracker.project": [{ project_id: number | null }, Ok];
  "permissions.status": [Nothing, Permissions];
  /** What these are called. */
  "permissions.sources": [Nothing, Record<string, string>];
  "permissions.browsers": [Nothing, BrowserState[]];
  "permissions.connectBrowser": [{ bundle: string }, Attempt];
  "permissions.openBrowserPage": [{ bundle: string; step: number }, Attempt];
  "permissions.requestAccessibility": [Nothing, Ok];
  "permissions.testBrowser": [{ bundle: string }, Attempt & Unstored];
  "permissions.openAutomation": [Nothing, Ok];
  launchAtLogin: [{ enabled: boolean }, Attempt & { enabled: boolean }];
  "telemetry.set": [{ enabled: boolean }, Ok & { enabled: boolean }];
  "update.check": [Nothing, Ok];
  "onboarding.done": [Nothing, Ok];
  export: [{ from: Day; to: Day }, Exported];
  openURL: [{ url: string }, Ok];
  /** The message tells where the folder is when nothing shows folders. */
  revealData: [Nothing, Ok & { shown?: false; message?: string }];
  quit: [Nothing, Ok];
}

export type Route = keyof Routes;
export type Body<R extends Route> = Routes[R][0];
export type Answer<R extends Route> = Routes[R][1];
