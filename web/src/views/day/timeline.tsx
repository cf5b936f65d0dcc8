import { useEffect, useLayoutEffect, useMemo, useRef, useState } from "preact/hooks";
import type { Block, DayReport, Project, Segment, UnixTime } from "../../bridge/routes";
import { categories, categoryLabel } from "../../model/categories";
import { clamp, fit, hours, segmentAt, type View, zoom } from "../../model/timeline";
import { clock, duration, longDay } from "../../model/time";
import { CategoryTable } from "../../ui/category_table";
import { CategoryMark, Icon } from "../../ui/icons";
import { useShortcuts } from "../../ui/shortcuts";
import { axis, Bars, height, Marks, type Range, Ticks } from "./drawing";
import { SegmentTip } from "./segment_tip";

interface Props {
  report: DayReport;
  now: UnixTime | null;
  selected: readonly Block[];
  range: Range | null;
  onRange: (range: Range | null) => void;
  /** A stretch was clicked on; `extend` when it joins what is selected. */
  onPick: (start: UnixTime, end: UnixTime, extend: boolean) => void;
  /** On to the choice of category and project, for what was picked just now. */
  onOpen: () => void;
}

/** The day from left to right, one lane a category; projects as a thin strip beneath. */
export function Timeline({ report, now, selected, range, onRange, onPick, onOpen }: Props) {
  const { segments } = report;
  const day: View = useMemo(() => ({ from: report.start, to: report.end }), [report.start, report.end]);
  const hourly = useMemo(
    () => hours(segments, day).map(({ from, parts }) => ({ name: clock(from), parts })),
    [segments, day],
  );
  const [chosenView, setChosenView] = useState<View | null>(null);
  const view = chosenView ? clamp(chosenView, day) : fit(day, report.first, report.last);
  const [cursor, setCursor] = useState<number | null>(null);
  const [hover, setHover] = useState<UnixTime | null>(null);
  const [dragged, setDragged] = useState<Range | null>(null);
  const plot = useRef<HTMLDivElement>(null);
  const width = useWidth(plot);
  const perPixel = (view.to - view.from) / Math.max(width, 1);
  const x = (time: UnixTime) => (time - view.from) / perPixel;

  useEffect(() => {
    setChosenView(null);
    setCursor(null);
    setHover(null);
  }, [report.date]);

  // Around the pointer, or else what is at hand.
  const zoomBy = (factor: number, around?: UnixTime) => {
    const { start, end } = range ?? segments[cursor ?? -1] ?? { start: view.from, end: view.to };
    setChosenView(zoom(view, factor, around ?? (start + end) / 2, day));
  };
  useShortcuts({
    "+": () => zoomBy(0.6),
    "=": () => zoomBy(0.6),
    "-": () => zoomBy(1 / 0.6),
    z: () => setChosenView(null),
  });

  const timeAt = (event: MouseEvent) => {
    const box = plot.current?.getBoundingClientRect();
    const offset = Math.min(Math.max(event.clientX - (box?.left ?? 0), 0), width);
    return view.from + offset * perPixel;
  };
  // Edges of segments attract; elsewhere whole minutes.
  const snapped = (time: UnixTime) => {
    const near = segments[segmentAt(segments, time, 6 * perPixel)];
    for (const edge of near ? [near.start, near.end] : []) {
      if (Math.abs(edge - time) < 6 * perPixel) return edge;
    }
    return Math.round(time / 60) * 60;
  };

  // What is dragged is known at once, not with the next drawing: the button may come up before that.
  const drag = useRef<{ from: UnixTime; x: number; range: Range | null } | null>(null);
  const onPointerDown = (event: PointerEvent) => {
    if (event.button !== 0) return;
    drag.current = { from: timeAt(event), x: event.clientX, range: null };
    plot.current?.setPointerCapture(event.pointerId);
  };
  const onPointerMove = (event: PointerEvent) => {
    const time = timeAt(event);
    setHover(time);
    const held = drag.current;
    if (!held || (!held.range && Math.abs(event.clientX - held.x) < 4)) return;
    const [a, b] = [snapped(held.from), snapped(time)];
    held.range = { start: Math.min(a, b), end: Math.max(a, b) };
    setDragged(held.range);
  };
  const onPointerUp = (event: PointerEvent) => {
    if (!drag.current) return;
    const { range: held } = drag.current;
    drag.current = null;
    if (held) {
      setDragged(null);
      onRange(held.end > held.start ? held : null);
      return;
    }
    const index = segmentAt(segments, timeAt(event), 4 * perPixel);
    const segment = segments[index];
    setCursor(segment ? index : null);
    if (segment) onPick(segment.start, segment.end, event.shiftKey);
    else onRange(null);
  };

  // Attached by hand: only a listener that is not passive may keep the page from scrolling.
  const wheel = useRef((_: WheelEvent) => {});
  wheel.current = (event) => {
    if (event.ctrlKey) zoomBy(Math.exp(event.deltaY / 300), timeAt(event));
    else if (event.deltaX !== 0 || event.shiftKey) {
      const by = (event.deltaX || event.deltaY) * perPixel;
      setChosenView(clamp({ from: view.from + by, to: view.to + by }, day));
    } else return;
    event.preventDefault();
  };
  useEffect(() => {
    const listener = (event: WheelEvent) => wheel.current(event);
    const element = plot.current;
    element?.addEventListener("wheel", listener, { passive: false });
    return () => element?.removeEventListener("wheel", listener);
  }, []);

  const reach = (index: number, extend: boolean) => {
    const next = segments[Math.min(Math.max(index, 0), segments.length - 1)];
    if (!next) return;
    setCursor(segments.indexOf(next));
    setHover(null);
    if (next.start < view.from || next.end > view.to) {
      const shift = next.start < view.from ? next.start - view.from : next.end - view.to;
      setChosenView(clamp({ from: view.from + shift, to: view.to + shift }, day));
    }
    if (!extend) return;
    const from = range ?? segments[cursor ?? index] ?? next;
    onRange({ start: Math.min(from.start, next.start), end: Math.max(from.end, next.end) });
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const at = cursor ?? -1;
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
      if (segment && !range) onPick(segment.start, segment.end, event.shiftKey);
      if ((segment || range) && event.key === "Enter") onOpen();
    } else return;
    event.preventDefault();
  };

  const shown = dragged ?? range;
  const current = cursor === null ? undefined : segments[cursor];
  const under = hover === null || dragged ? -1 : segmentAt(segments, hover, 2 * perPixel);
  const [focused, setFocused] = useState(false);
  const away = hover !== null && !dragged ? awayAt(report.blocks, hover) : undefined;
  const tip = segments[under] ?? away ?? (focused ? current : undefined);

  return (
    <section class="timeline" aria-label="Chronologie">
      <ul class="lanes" aria-hidden="true">
        {categories.map((cat) => (
          <li key={cat}>
            <CategoryMark cat={cat} />
            <span>{categoryLabel(cat)}</span>
          </li>
        ))}
        <li class="strip-label">Projets</li>
      </ul>
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
        onPointerDown={onPointerDown}
        onPointerMove={onPointerMove}
        onPointerUp={onPointerUp}
        onPointerLeave={() => setHover(null)}
        onPointerCancel={() => {
          drag.current = null;
          setDragged(null);
        }}
        onKeyDown={onKeyDown}
        onFocus={() => setFocused(true)}
        onBlur={() => setFocused(false)}
      >
        <svg width={width} height={height} aria-hidden="true">
          <Ticks view={view} day={day} width={width} />
          <Bars report={report} view={view} width={width} />
          <Marks
            view={view}
            width={width}
            selected={selected}
            hovered={segments[under]}
            cursor={focused || !tip ? current : undefined}
            range={shown}
          />
          {now !== null && now >= view.from && now <= view.to && (
            <g class="now-marker">
              <line x1={x(now)} x2={x(now)} y1={axis - 6} y2={height} />
              <circle cx={x(now)} cy={axis - 6} r="3" />
            </g>
          )}
        </svg>
        {shown && shown.end > view.from && shown.start < view.to && (
          <span
            class="range-label"
            style={{ left: `${Math.min(Math.max(x(shown.start), 0), width - 150)}px` }}
          >
            {clock(shown.start)} – {clock(shown.end)} · {duration(shown.end - shown.start)}
          </span>
        )}
        {tip && !shown && (
          <SegmentTip
            segment={tip}
            projects={report.projects}
            x={x((Math.max(tip.start, view.from) + Math.min(tip.end, view.to)) / 2)}
            width={width}
            near={neighbours(report, tip, perPixel)}
          />
        )}
      </div>
      <CategoryTable caption="Activité heure par heure" head="Heure" rows={hourly} />
      <div class="zoom">
        <button
          type="button"
          class="button ghost square small"
          aria-label="Réduire"
          title="Réduire (−)"
          onClick={() => zoomBy(1 / 0.6)}
        >
          <Icon name="minus" />
        </button>
        <button
          type="button"
          class="button ghost square small"
          aria-label="Agrandir"
          title="Agrandir (+)"
          onClick={() => zoomBy(0.6)}
        >
          <Icon name="plus" />
        </button>
        <button
          type="button"
          class="button ghost small"
          disabled={!chosenView}
          title="Voir toute l’activité (Z)"
          onClick={() => setChosenView(null)}
        >
          Tout
        </button>
        <button type="button" class="button ghost small" onClick={() => setChosenView(day)}>
          24 h
        </button>
        <button
          type="button"
          class="button ghost small"
          onClick={() => {
            onRange(current ?? lastHour(report, view));
            onOpen();
          }}
        >
          Plage…
        </button>
      </div>
    </section>
  );
}

// A range to start from: the last hour of activity that is in sight.
function lastHour(report: DayReport, view: View): Range {
  const last = Math.min(report.last ?? view.to, view.to);
  const end = Math.max(Math.ceil(last / 60) * 60, report.start + 3600);
  return { start: end - 3600, end };
}

function describe(
  segment: { start: UnixTime; end: UnixTime; cat: string; pid: number | null; top: string[] },
  projects: readonly Project[],
): string {
  const project = projects.find(({ id }) => id === segment.pid);
  return [
    `${clock(segment.start)} à ${clock(segment.end)}`,
    categoryLabel(segment.cat),
    project?.name,
    ...segment.top,
  ]
    .filter(Boolean)
    .join(", ");
}

// Time away, as if it were a segment.
function awayAt(blocks: readonly Block[], time: UnixTime): Segment | undefined {
  const block = blocks.find((one) => one.idle && one.start <= time && time < one.end);
  return block && { start: block.start, end: block.end, cat: "inactif", pid: null, top: [] };
}

// The segments drawn as one with this one, being too thin on this scale.
function neighbours(report: DayReport, segment: DayReport["segments"][number], perPixel: number) {
  if ((segment.end - segment.start) / perPixel >= 2) return [];
  const around = 3 * perPixel;
  return report.segments.filter(
    (other) => other.end > segment.start - around && other.start < segment.end + around,
  );
}

function useWidth(element: { current: HTMLElement | null }): number {
  const [width, setWidth] = useState(0);
  useLayoutEffect(() => {
    const target = element.current;
    if (!target) return;
    const measure = () => setWidth(target.clientWidth);
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(target);
    return () => observer.disconnect();
  }, []);
  return width;
}
