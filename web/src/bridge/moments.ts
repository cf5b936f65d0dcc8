// Time away from the screen: what lies between activities, moments added by hand, pauses that end.
import type { DateRange } from "./periods";
import type { Day, Seconds, UnixTime } from "./reports";
import type { Ok } from "./store";

export interface MomentRange {
  from: UnixTime;
  to: UnixTime;
}

/** A project that a gap may have gone to. */
export interface LikelyProject {
  project_id: number;
  name: string;
  color: string;
  category: string;
}

/** Between two activities of one day. */
export interface Gap extends MomentRange {
  duration: Seconds;
  /** What of it was recorded as an absence; the rest is empty. */
  idle: Seconds;
  /** At most three, the likeliest first. */
  likely: LikelyProject[];
}

export interface GapReport {
  incomplete?: string;
  count: number;
  duration: Seconds;
  /** Those with gaps. */
  days: { date: Day; gaps: Gap[] }[];
}

/** Spans that follow each other under one note. */
export interface KeptMoment extends MomentRange {
  ids: number[];
  title: string | null;
}

export interface MomentRoutes {
  /** Fills what is idle or empty of the ranges; what was recorded there stays as it is. */
  "moments.add": [
    { ranges: MomentRange[]; title: string; category: string | null; project_id: number | null },
    Ok & { spans: number; added: Seconds; taken: Seconds; future: Seconds },
  ];
  "moments.get": [{ ids: number[] }, { moments: KeptMoment[] }];
  /** What it gives up is empty then, what it gains is filled as by adding one. */
  "moments.edit": [
    { ids: number[]; title: string; from: UnixTime; to: UnixTime },
    Ok & { added: Seconds; taken: Seconds },
  ];
  "moments.gaps": [DateRange & { min_seconds?: Seconds }, GapReport];
  /** These are gaps no more. */
  "moments.skip": [{ ranges: MomentRange[] }, Ok];
  /** From how long an absence on the user is asked for what it was; 0: never. */
  "absence.get": [Record<string, never>, { ask_minutes: number }];
  "absence.set": [{ ask_minutes: number }, Ok & { ask_minutes: number }];
  /** "15m", "1h", or "demain" for the next four in the morning. */
  "tracker.pauseFor": [{ length: string }, Ok & { until: UnixTime }];
}
