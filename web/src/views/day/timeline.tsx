import { useLayoutEffect, useMemo, useRef, useState } from "preact/hooks";
import type { Block, DayReport, Project, Segment, UnixTime } from "../../bridge/routes";
import { isGap } from "../../model/away";
import { categories, categoryLabel } from "../../model/categories";
import { hours, segmentAt, type View } from "../../model/timeline";
import { clock, duration, longDay, plainDomain } from "../../model/time";
import { CategoryTable } from "../../ui/category_table";
import { CategoryMark } from "../../ui/icons";
import { axis, Bars, height, Marks, type Range, rangeLabel, Ticks } from "./drawing";
import { SegmentTip } from "./segment_tip";
import type { Picked } from "./use_picked";
import { usePointer } from "./use_pointer";
import { type Scale, useScale, useWheel } from "./use_scale";
import { Zoom } from "./zoom";

interface Props {
  report: DayReport;
  /** Its blocks and its time away. */
  rows: readonly Block[];
  now: UnixTime | null;
  picked: Picked;
  /** On to the choice of category and project, for what was picked just now. */
  onOpen: () => void;
}

/** The day from left to right, one lane a category; projects as a thin strip beneath. */
export function Timeline({ report, rows, now, picked, onOpen }: Props) {
  const { segments } = report;
  const { range, pickRange, pickBlocks, pickAway } = picked;
  const plot = useRef<HTMLDivElement>(null);
  const scale = useScale(report, plot);
  useWheel(plot, scale);
  const [cursor, setCursor] = useState<number | null>(null);
  const [focused, setFocused] = useState(false);
  const current = cursor === null ? undefined : segments[cursor];
  const absences = useMemo(() => rows.filter(({ idle }) => idle), [rows]);
  const { hover, dragged, leave, handlers } = usePointer(scale, segments, absences, pickRange, (index, extend, time) => {
    setCursor(index);
    const segment = segments[index ?? -1];
    const row = awayAt(absences, time);
    if (segment) pickBlocks(segment.start, segment.end, extend);
    else if (row) pickAway(row, extend);
    else pickRange(null);
  });
  useLayoutEffect(() => {
    setCursor(null);
    leave();
  }, [report.date]);
  const onKeyDown = cursorKeys({ segments, scale, cursor, picked, onOpen }, (index) => {
    setCursor(index);
    leave();
  });

  const under = hover === null ? undefined : segments[segmentAt(segments, hover, 2 * scale.perPixel)];
  const away = hover === null ? undefined : awayAt(absences, hover);
  const tip = under ?? (away && asSegment(away)) ?? (focused ? current : undefined);
  return (
    <section class="timeline" aria-label="Chronologie" data-sticky>
      <Lanes />
      <div
        class="plot"
        ref={plot}
        role="slider"
        tabIndex={0}
        data-arrows
        aria-label={`Passages du ${longDay(report.date)}`}
        aria-valuemin={0}
        aria-valuemax={segments.length}
        aria-valuenow={cursor === null ? 0 : cursor + 1}
        aria-valuetext={current ? describe(current, report.projects) : `${segments.length} passages`}
        {...handlers}
        onKeyDown={onKeyDown}
        onFocus={() => setFocused(true)}
        onBlur={() => setFocused(false)}
      >
        <Drawing
          {...{ report, now, scale, tip }}
          selected={picked.selected}
          hovered={under}
          cursor={focused || !tip ? current : undefined}
          range={dragged ?? range}
        />
      </div>
      <HourTable report={report} day={scale.day} />
      <Zoom
        scale={scale}
        onZoom={(factor) => {
          const { start, end } = range ?? current ?? { start: scale.view.from, end: scale.view.to };
          scale.zoomBy(factor, (start + end) / 2);
        }}
        onRange={() => {
          pickRange(current ?? lastHour(report, scale.view));
          onOpen();
        }}
      />
    </section>
  );
}

interface DrawingProps {
  report: DayReport;
  now: UnixTime | null;
  scale: Scale;
  selected: readonly Block[];
  hovered: Segment | undefined;
  cursor: Segment | undefined;
  range: Range | null;
  tip: Segment | undefined;
}

function Drawing({ report, now, scale, selected, hovered, cursor, range, tip }: DrawingProps) {
  const { day, view, width, x } = scale;
  const told = range && range.end > view.from && range.start < view.to ? range : null;
  const label = told ? Math.min(Math.max(x(told.start), 0), width - rangeLabel) : Infinity;
  return (
    <>
      <svg width={width} height={height} aria-hidden="true">
        <Ticks {...{ view, day, width, label }} />
        <Bars report={report} view={view} width={width} />
        <Marks {...{ view, width, selected, hovered, cursor, range }} />
        {now !== null && now >= view.from && now <= view.to && (
          <g class="now-marker">
            <line x1={x(now)} x2={x(now)} y1={axis - 6} y2={height} />
            <circle cx={x(now)} cy={axis - 6} r="3" />
          </g>
        )}
      </svg>
      {told && (
        <span class="range-label" style={{ left: `${label}px`, minWidth: `${rangeLabel}px` }}>
          {clock(told.start)} – {clock(told.end)} · {duration(told.end - told.start)}
        </span>
      )}
      {tip && !range && (
        <SegmentTip
          segment={tip}
          projects={report.projects}
          x={x((Math.max(tip.start, view.from) + Math.min(tip.end, view.to)) / 2)}
          width={width}
          near={neighbours(report.segments, tip, scale.perPixel)}
        />
      )}
    </>
  );
}

function Lanes() {
  return (
    <ul class="lanes" aria-hidden="true">
      {categories.map((cat) => (
        <li key={cat}>
          <CategoryMark cat={cat} />
          <span>{categoryLabel(cat)}</span>
        </li>
      ))}
      <li class="strip-label">Projets</li>
    </ul>
  );
}

function HourTable({ report: { segments }, day }: { report: DayReport; day: View }) {
  const rows = useMemo(
    () => hours(segments, day).map(({ from, parts }) => ({ name: clock(from), parts })),
    [segments, day],
  );
  return <CategoryTable caption="Activité heure par heure" head="Heure" rows={rows} />;
}

interface Keyboard {
  segments: readonly Segment[];
  scale: Scale;
  cursor: number | null;
  picked: Picked;
  onOpen: () => void;
}

// Arrows go from segment to segment and extend a range with Shift; Space and Enter pick the segment.
function cursorKeys(
  { segments, scale, cursor, picked: { range, pickRange, pickBlocks }, onOpen }: Keyboard,
  onCursor: (index: number) => void,
) {
  const at = cursor ?? -1;
  const reach = (wanted: number, extend: boolean) => {
    const index = Math.min(Math.max(wanted, 0), segments.length - 1);
    const next = segments[index];
    if (!next) return;
    onCursor(index);
    if (next.start < scale.view.from) scale.shift(next.start - scale.view.from);
    else if (next.end > scale.view.to) scale.shift(next.end - scale.view.to);
    if (!extend) return;
    const from = range ?? segments[cursor ?? wanted] ?? next;
    pickRange({ start: Math.min(from.start, next.start), end: Math.max(from.end, next.end) });
  };
  return (event: KeyboardEvent) => {
    const targets: Record<string, number> = {
      ArrowRight: at + 1,
      ArrowLeft: at - 1,
      ArrowUp: at - 1,
      ArrowDown: at + 1,
      Home: 0,
      End: segments.length - 1,
    };
    const target = targets[event.key];
    if (target !== undefined) reach(target, event.shiftKey);
    else if (event.key === "Enter" || event.key === " ") {
      const segment = segments[at];
      if (segment && !range) pickBlocks(segment.start, segment.end, event.shiftKey);
      if ((segment || range) && event.key === "Enter") onOpen();
    } else return;
    event.preventDefault();
  };
}

// A range to start from: the last hour of activity that is in sight.
function lastHour(report: DayReport, view: View): Range {
  const last = Math.min(report.last ?? view.to, view.to);
  const end = Math.max(Math.ceil(last / 60) * 60, report.start + 3600);
  return { start: end - 3600, end };
}

function describe({ start, end, cat, pid, top }: Segment, projects: readonly Project[]): string {
  const project = projects.find(({ id }) => id === pid);
  return [`${clock(start)} à ${clock(end)}`, categoryLabel(cat), project?.name, ...top.map(plainDomain)]
    .filter(Boolean)
    .join(", ");
}

function awayAt(absences: readonly Block[], time: UnixTime): Block | undefined {
  return absences.find((one) => one.start <= time && time < one.end);
}

function asSegment(away: Block): Segment {
  const { start, end, cat, pid } = away;
  return { start, end, cat, pid, top: isGap(away) ? ["Rien d’enregistré"] : [] };
}

// The segments drawn as one with this one, being too thin on this scale.
function neighbours(segments: readonly Segment[], { start, end }: Segment, perPixel: number): Segment[] {
  if ((end - start) / perPixel >= 2) return [];
  const around = 3 * perPixel;
  return segments.filter((other) => other.end > start - around && other.start < end + around);
}
