import { useLayoutEffect, useMemo, useState } from "preact/hooks";
import type { Block, Day, DayReport, Seconds, UnixTime } from "../../bridge/routes";
import { filling } from "../../model/away";
import { activeTime } from "../../model/categories";
import { nothing, selectedBlocks, type Selection } from "../../model/selection";
import { activity } from "../../model/timeline";
import type { Range } from "./drawing";

/** What is picked of the day: blocks of the list, or a range of the timeline. */
export interface Picked {
  selection: Selection;
  range: Range | null;
  selected: readonly Block[];
  /** The selected blocks, or those that the range touches. */
  blocks: readonly Block[];
  /** Their activity, within the range. */
  time: Seconds;
  /** What of the selection is time away, or may hold some of it. */
  away: readonly Range[];
  awayTime: Seconds;
  /** The listed blocks that the range touches. */
  whole: readonly Block[];
  isNothing: boolean;
  clear: () => void;
  select: (selection: Selection) => void;
  pickRange: (range: Range | null) => void;
  /** Picks the listed blocks of a stretch; `extend` when it joins what is selected. */
  pickBlocks: (start: UnixTime, end: UnixTime, extend: boolean) => void;
  /** The same of time away. */
  pickAway: (row: Block, extend: boolean) => void;
}

function touching(blocks: readonly Block[], start: UnixTime, end: UnixTime): Block[] {
  return blocks.filter((block) => block.end > start && block.start < end);
}

function within(blocks: readonly Block[], start: UnixTime, end: UnixTime): Block[] {
  return touching(blocks, start, end).filter(({ idle }) => !idle);
}

const sum = (blocks: readonly Block[]) => blocks.reduce((seconds, { duration }) => seconds + duration, 0);

/**
 * Nothing of it outlives the change to another `day`, and nothing can be picked while its report is awaited:
 * what is seen is still the day before it.
 */
export function usePicked(
  day: Day,
  { date, segments }: Pick<DayReport, "date" | "segments">,
  /** The day's blocks and its time away. */
  rows: readonly Block[],
  listed: readonly Block[],
  /** Until when time has passed. */
  now: UnixTime,
  onReveal: (index: number) => void,
): Picked {
  const [selection, setSelection] = useState<Selection>(nothing);
  const [range, setRange] = useState<Range | null>(null);
  const selected = useMemo(() => selectedBlocks(selection, rows), [selection, rows]);
  const touched = useMemo(() => {
    if (!range) {
      const [blocks, away] = [selected.filter(({ idle }) => !idle), selected.filter(({ idle }) => idle)];
      return { blocks, away, time: sum(blocks), awayTime: sum(away) };
    }
    const { start, end } = range;
    const blocks = within(rows, start, end);
    const { added: awayTime } = filling(segments, range, now);
    return { blocks, away: [range], time: activeTime(activity(segments, start, end)), awayTime };
  }, [range, selected, rows, segments, now]);

  const clear = () => {
    setSelection((old) => ({ ...nothing, active: old.active }));
    setRange(null);
  };
  useLayoutEffect(clear, [day]);
  const select = (next: Selection) => {
    if (date !== day) return;
    setRange(null);
    setSelection(next);
  };
  const pickRange = (next: Range | null) => {
    if (date !== day) return;
    setSelection(nothing);
    setRange(next);
  };
  const pick = (inside: readonly Block[]) => {
    const first = inside[0]?.ids[0] ?? null;
    select({ ids: new Set(inside.flatMap((block) => block.ids)), active: first, anchor: first });
    const place = inside[0] ? listed.indexOf(inside[0]) : -1;
    if (place >= 0) onReveal(place);
  };
  // An extension picks all that lies between it and what is selected.
  const joined = (start: UnixTime, end: UnixTime, extend: boolean) => {
    const known = extend ? selected : [];
    return [
      Math.min(start, ...known.map((block) => block.start)),
      Math.max(end, ...known.map((block) => block.end)),
    ] as const;
  };
  const pickBlocks = (start: UnixTime, end: UnixTime, extend: boolean) =>
    pick(within(listed, ...joined(start, end, extend)));
  const pickAway = (row: Block, extend: boolean) =>
    pick(extend ? touching(listed, ...joined(row.start, row.end, true)) : [row]);
  const whole = range ? within(listed, range.start, range.end) : [];
  const isNothing = !range && selected.length === 0;
  const ways = { clear, select, pickRange, pickBlocks, pickAway };
  return { selection, range, selected, ...touched, whole, isNothing, ...ways };
}
