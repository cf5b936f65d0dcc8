// The geometry of the day's timeline: pure, so that it can be tested without a page.
import type { ByCategory, Category, Seconds, Segment, UnixTime } from "../bridge/routes";

export interface View {
  from: UnixTime;
  to: UnixTime;
}

const hour = 3600;
const narrowest = 10 * 60;

/** What there is to see, on whole hours, at least ten of them where the day has as many. */
export function fit(day: View, first: UnixTime | null, last: UnixTime | null): View {
  if (first === null || last === null)
    return clamp({ from: day.from + 8 * hour, to: day.from + 19 * hour }, day);
  const down = (time: UnixTime) => day.from + Math.floor((time - day.from) / hour) * hour;
  let from = down(first);
  let to = down(last - 1) + hour;
  while (to - from < 10 * hour && (from > day.from || to < day.to)) {
    if (to < day.to) to += hour;
    if (to - from < 10 * hour && from > day.from) from -= hour;
  }
  return clamp({ from, to }, day);
}

/** The view moved and cut so that it lies within the day. */
export function clamp(view: View, day: View): View {
  const length = Math.min(Math.max(view.to - view.from, narrowest), day.to - day.from);
  const from = Math.min(Math.max(view.from, day.from), day.to - length);
  return { from, to: from + length };
}

/** The view `factor` times as long, the instant `around` staying where it is. */
export function zoom(view: View, factor: number, around: UnixTime, day: View): View {
  const length = Math.max((view.to - view.from) * factor, narrowest);
  const ratio = (around - view.from) / (view.to - view.from);
  const from = around - ratio * length;
  return clamp({ from, to: from + length }, day);
}

const steps = [60, 5 * 60, 10 * 60, 15 * 60, 30 * 60, hour, 2 * hour, 3 * hour, 6 * hour];

/** Instants to label, at least `room` pixels apart, counted from the day's start. */
export function ticks(view: View, day: View, width: number, room = 52): UnixTime[] {
  const perPixel = (view.to - view.from) / Math.max(width, 1);
  const step = steps.find((candidate) => candidate / perPixel >= room) ?? 6 * hour;
  const result: UnixTime[] = [];
  for (let time = day.from + Math.ceil((view.from - day.from) / step) * step; time <= view.to; time += step) {
    result.push(time);
  }
  return result;
}

/** One drawn bar: a segment, or several that are too thin to be told apart. */
export interface Bar {
  x: number;
  width: number;
  segments: Segment[];
}

const thin = 2;

/** The bars of one category's lane, from left to right; `segments` in start order. */
export function bars(segments: readonly Segment[], lane: Category, view: View, width: number): Bar[] {
  const scale = width / (view.to - view.from);
  const result: Bar[] = [];
  let lastThin = false;
  for (const segment of segments) {
    if (segment.end <= view.from || segment.start >= view.to) continue;
    if (laneOf(segment) !== lane) continue;
    const x = Math.max(0, (segment.start - view.from) * scale);
    const end = Math.min(width, (segment.end - view.from) * scale);
    const last = result[result.length - 1];
    const isThin = end - x < thin;
    if (last && isThin && lastThin && x - (last.x + last.width) < 1) {
      last.width = Math.max(end - last.x, last.width);
      last.segments.push(segment);
    } else {
      result.push({ x, width: end - x, segments: [segment] });
    }
    lastThin = isThin;
  }
  for (const bar of result) bar.width = Math.max(bar.width, 1);
  return result;
}

/** How much of a stretch of the day is activity, and of which kind. */
export function activity(segments: readonly Segment[], from: UnixTime, to: UnixTime): ByCategory {
  const result: ByCategory = {};
  for (const segment of segments) {
    const seconds: Seconds = Math.min(segment.end, to) - Math.max(segment.start, from);
    if (seconds > 0) result[laneOf(segment)] = (result[laneOf(segment)] ?? 0) + seconds;
  }
  return result;
}

/** The day's hours that hold activity, with what of it is of which kind. */
export function hours(segments: readonly Segment[], day: View): { from: UnixTime; parts: ByCategory }[] {
  const found = new Map<number, ByCategory>();
  for (const { start, end, ...segment } of segments) {
    for (let at = day.from + Math.floor((start - day.from) / hour) * hour; at < end; at += hour) {
      const parts = found.get(at) ?? {};
      const lane = laneOf({ start, end, ...segment });
      parts[lane] = (parts[lane] ?? 0) + Math.min(end, at + hour) - Math.max(start, at);
      found.set(at, parts);
    }
  }
  return [...found].map(([from, parts]) => ({ from, parts })).sort((a, b) => a.from - b.from);
}

/** The lane that a segment is drawn in; a category that the page does not know counts as none. */
export function laneOf(segment: Segment): Category {
  return segment.cat === "travail" || segment.cat === "loisir" || segment.cat === "autre"
    ? segment.cat
    : "nonclasse";
}

/** Bars as one path: two thousand of them cost the page a single element. */
export function path(rects: readonly { x: number; width: number }[], y: number, height: number): string {
  const round = (n: number) => Math.round(n * 100) / 100;
  return rects
    .map(({ x, width }) => `M${round(x)} ${y}h${round(width)}v${height}h${round(-width)}z`)
    .join("");
}

/** Index of the segment at an instant, or of the nearest one that is at most `slack` seconds away. */
export function segmentAt(
  segments: readonly { start: UnixTime; end: UnixTime }[],
  time: UnixTime,
  slack: number,
): number {
  let low = 0;
  let high = segments.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if ((segments[middle]?.end ?? 0) < time) low = middle + 1;
    else high = middle;
  }
  let best = -1;
  let distance = slack;
  for (const index of [low - 1, low]) {
    const segment = segments[index];
    if (!segment) continue;
    const away = Math.max(segment.start - time, time - segment.end, 0);
    if (away <= distance) {
      best = index;
      distance = away;
    }
  }
  return best;
}
