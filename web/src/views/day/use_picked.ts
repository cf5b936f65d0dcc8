import { useEffect, useMemo, useState } from "preact/hooks";
import type { Block, Day, DayReport, Seconds, UnixTime } from "../../bridge/routes";
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
  /** The listed blocks that the range touches. */
  whole: readonly Block[];
  isNothing: boolean;
  clear: () => void;
  select: (selection: Selection) => void;
  pickRange: (range: Range | null) => void;
  /** Picks the listed blocks of a stretch; `extend` when it joins what is selected. */
  pickBlocks: (start: UnixTime, end: UnixTime, extend: boolean) => void;
}

function within(blocks: readonly Block[], start: UnixTime, end: UnixTime): Block[] {
  return blocks.filter((block) => !block.idle && block.end > start && block.start < end);
}

/**
 * Nothing of it outlives the change to another `day`, and nothing can be picked while its report is awaited:
 * what is seen is still the day before it.
 */
export function usePicked(
  day: Day,
  { date, blocks, segments }: DayReport,
  listed: readonly Block[],
  onReveal: (index: number) => void,
): Picked {
  const [selection, setSelection] = useState<Selection>(nothing);
  const [range, setRange] = useState<Range | null>(null);
  const selected = useMemo(() => selectedBlocks(selection, blocks), [selection, blocks]);
  const [touched, time] = useMemo(() => {
    if (!range) return [selected, selected.reduce((sum, block) => sum + block.duration, 0)] as const;
    const { start, end } = range;
    return [within(blocks, start, end), activeTime(activity(segments, start, end))] as const;
  }, [range, selected, blocks, segments]);

  const clear = () => {
    setSelection((old) => ({ ...nothing, active: old.active }));
    setRange(null);
  };
  useEffect(clear, [day]);
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
  // An extension picks all that lies between it and what is selected.
  const pickBlocks = (start: UnixTime, end: UnixTime, extend: boolean) => {
    const known = extend ? selected : [];
    const from = Math.min(start, ...known.map((block) => block.start));
    const to = Math.max(end, ...known.map((block) => block.end));
    const inside = within(listed, from, to);
    const first = inside[0]?.ids[0] ?? null;
    select({ ids: new Set(inside.flatMap((block) => block.ids)), active: first, anchor: first });
    if (inside[0]) onReveal(listed.indexOf(inside[0]));
  };
  const whole = range ? within(listed, range.start, range.end) : [];
  const isNothing = !range && selected.length === 0;
  const ways = { clear, select, pickRange, pickBlocks };
  return { selection, range, selected, blocks: touched, time, whole, isNothing, ...ways };
}
