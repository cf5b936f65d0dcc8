// What the timeline draws of a day, whoever points at it: hours, bars, time away, projects.
import { useMemo } from "preact/hooks";
import type { Block, DayReport, UnixTime } from "../../bridge/routes";
import { categories, categoryClass } from "../../model/categories";
import { bars, path, ticks, type View } from "../../model/timeline";
import { clock } from "../../model/time";
import { projectColor } from "../../ui/icons";

export interface Range {
  start: UnixTime;
  end: UnixTime;
}

// Pixels from the top: the hours, the lanes, the projects.
const laneHeight = 16;
const laneGap = 5;
const strip = 7;
export const axis = 20;
const lanesBottom = axis + categories.length * (laneHeight + laneGap);
// Centred where one lane more would be.
const stripTop = lanesBottom + (laneHeight - strip) / 2;
export const height = stripTop + strip + 4;

/** Pixels: of a label that tells a range above it, in place of the hours there. */
export const rangeLabel = 150;

/** `label`: from where on the hours make room for a label. */
export function Ticks({ view, day, width, label }: { view: View; day: View; width: number; label: number }) {
  const room = 20;
  const scale = width / (view.to - view.from);
  return (
    <g class="ticks">
      {ticks(view, day, width).map((time) => {
        const at = (time - view.from) * scale;
        return (
          <g key={time}>
            <line x1={at} x2={at} y1={axis - 6} y2={height} />
            {(at + room < label || at - room > label + rangeLabel) && (
              <text x={at} y={10} text-anchor="middle">
                {clock(time)}
              </text>
            )}
          </g>
        );
      })}
    </g>
  );
}

/** The bars themselves, one path a category: they change with the day and the scale alone. */
export function Bars({ report, view, width }: { report: DayReport; view: View; width: number }) {
  const { segments, blocks, projects } = report;
  return useMemo(() => {
    if (width === 0) return null;
    const scale = width / (view.to - view.from);
    const place = (from: UnixTime, to: UnixTime) => {
      const left = Math.max(from, view.from);
      return { x: (left - view.from) * scale, width: Math.max((Math.min(to, view.to) - left) * scale, 0) };
    };
    const visible = (item: { start: UnixTime; end: UnixTime }) =>
      item.end > view.from && item.start < view.to;
    const idle = blocks
      .filter((block) => block.idle && visible(block))
      .map((block) => place(block.start, block.end));
    const strips = projects
      .map((project) => ({
        project,
        rects: segments
          .filter((segment) => segment.pid === project.id && visible(segment))
          .map((segment) => place(segment.start, segment.end)),
      }))
      .filter(({ rects }) => rects.length > 0);
    return (
      <g>
        <defs>
          <pattern
            id="hatch"
            width="6"
            height="6"
            patternUnits="userSpaceOnUse"
            patternTransform="rotate(45)"
          >
            <rect class="hatch-ground" width="6" height="6" />
            <line class="hatch-line" x1="0" x2="0" y1="0" y2="6" />
          </pattern>
        </defs>
        <path class="idle" d={path(idle, axis, lanesBottom - axis - laneGap)} />
        {categories.map((cat, lane) => {
          const y = axis + lane * (laneHeight + laneGap);
          const drawn = bars(segments, cat, view, width);
          return (
            <g key={cat}>
              <path
                class={`bar ${categoryClass(cat)}`}
                d={path(
                  drawn.filter((bar) => bar.segments.length === 1),
                  y,
                  laneHeight,
                )}
              />
              <path
                class={`bar mixed ${categoryClass(cat)}`}
                d={path(
                  drawn.filter((bar) => bar.segments.length > 1),
                  y,
                  laneHeight,
                )}
              />
            </g>
          );
        })}
        {strips.map(({ project, rects }) => (
          <path
            key={project.id}
            d={path(rects, stripTop, strip)}
            style={{ fill: projectColor(project.color) }}
          />
        ))}
      </g>
    );
  }, [report, view.from, view.to, width]);
}

interface MarksProps {
  view: View;
  width: number;
  selected: readonly Block[];
  hovered: Range | undefined;
  cursor: Range | undefined;
  range: Range | null;
}

/** What is pointed at and selected, cut off where the plot ends. */
export function Marks({ view, width, selected, hovered, cursor, range }: MarksProps) {
  const scale = width / (view.to - view.from);
  const x = (time: UnixTime) => (time - view.from) * scale;
  const frame = (name: string, stretch: Range | undefined) =>
    stretch && (
      <rect
        class={name}
        x={x(stretch.start) - 1}
        y={axis - 1}
        width={(stretch.end - stretch.start) * scale + 2}
        height={lanesBottom - axis}
        rx="3"
      />
    );
  return (
    <svg class="marks" width={width} height={height}>
      {selected.length > 0 && (
        <path
          class="selected"
          d={path(
            selected
              .filter((block) => block.end > view.from && block.start < view.to)
              .map((block) => ({
                x: x(block.start),
                width: Math.max((block.end - block.start) * scale, 2),
              })),
            axis - 4,
            3,
          )}
        />
      )}
      {frame("hovered", hovered)}
      {frame("cursor", cursor)}
      {range && (
        <rect
          class="range"
          x={x(range.start)}
          y={axis - 6}
          width={Math.max((range.end - range.start) * scale, 1)}
          height={height - axis + 6}
        />
      )}
    </svg>
  );
}
