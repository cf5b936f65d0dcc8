// Time without activity: what of a day it is, and what becomes of it when a moment is added there.
import type { Block, Day, DayReport, MomentRange, Seconds, UnixTime } from "../bridge/routes";
import { activeTime } from "./categories";
import { addDays, instant, readClock } from "./time";
import { activity } from "./timeline";

interface Range {
  start: UnixTime;
  end: UnixTime;
}

/** Seconds; a shorter hole is no row of the list. */
const shortestGap = 600;
const longestNight = 12 * 3600;

/** Whether nothing at all was recorded in it. It is made of no span, so its id is one that none has. */
export function isGap({ ids }: Block): boolean {
  return ids.some((id) => !Number.isInteger(id));
}

function gap({ start, end }: Range): Block {
  const id = -Math.floor(start) - 0.5;
  return {
    ...{ start, end, duration: end - start, ids: [id], cat: "inactif", idle: true },
    ...{ app: "", domain: null, title: null, pid: null, manual: false },
  };
}

/** The blocks, in start order, with what lies empty between the day's first and last activity. */
export function withGaps(
  blocks: readonly Block[],
  { first, last, segments }: Pick<DayReport, "first" | "last" | "segments">,
): Block[] {
  if (first === null || last === null) return [...blocks];
  const recorded: Range[] = [...segments, ...blocks].sort((a, b) => a.start - b.start);
  const gaps: Block[] = [];
  let reached = first;
  for (const { start, end } of recorded) {
    const until = Math.min(start, last);
    if (until - reached >= shortestGap) gaps.push(gap({ start: reached, end: until }));
    reached = Math.max(reached, end);
  }
  return gaps.length === 0 ? [...blocks] : [...blocks, ...gaps].sort((a, b) => a.start - b.start);
}

/** What a moment in a range would add, what is recorded there already, and what is still to come. */
export interface Filling {
  added: Seconds;
  taken: Seconds;
  future: Seconds;
}

export function filling(segments: DayReport["segments"], { start, end }: Range, now: UnixTime): Filling {
  const past = Math.max(Math.min(end, now) - start, 0);
  const taken = Math.min(activeTime(activity(segments, start, Math.min(end, now))), past);
  return { added: past - taken, taken, future: end - start - past };
}

/** The times that are typed for a moment of a day, past midnight for less than a night; or what is wrong. */
export function readMoment(day: Day, from: string, to: string): Range | string {
  const [first, last] = [readClock(from), readClock(to)];
  if (!first || !last) return "Une heure s’écrit 09:30.";
  const start = instant(day, first.hours, first.minutes);
  const end = instant(day, last.hours, last.minutes);
  if (end > start) return { start, end };
  const next = instant(addDays(day, 1), last.hours, last.minutes);
  return end < start && next - start <= longestNight ? { start, end: next } : "La fin doit suivre le début.";
}

/** Where a moment is likeliest to be missing: the day's longest time away, else its last hour. */
export function likeliest(rows: readonly Block[], day: Day, now: UnixTime): Range {
  const away = rows.filter(({ idle }) => idle);
  const longest = away.reduce<Range | null>(
    (best, one) => (best && best.end - best.start >= one.end - one.start ? best : one),
    null,
  );
  if (longest && longest.end - longest.start >= shortestGap) return longest;
  const minutes = 5 * 60;
  const end = Math.floor(now / minutes) * minutes;
  const midnight = instant(day, 0, 0);
  if (end >= midnight + 3600 && end < instant(addDays(day, 1), 0, 0)) return { start: end - 3600, end };
  return { start: instant(day, 9, 0), end: instant(day, 10, 0) };
}

export function momentRange({ start, end }: Range): MomentRange {
  return { from: start, to: end };
}
