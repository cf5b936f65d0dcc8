import { useRef, useState } from "preact/hooks";
import type { Segment, UnixTime } from "../../bridge/routes";
import { segmentAt } from "../../model/timeline";
import type { Range } from "./drawing";
import type { Scale } from "./use_scale";

interface Pointer {
  /** What the pointer is over; nothing while it drags. */
  hover: UnixTime | null;
  dragged: Range | null;
  leave: () => void;
  handlers: Record<"onPointerDown" | "onPointerMove" | "onPointerUp", (event: PointerEvent) => void> & {
    onPointerLeave: () => void;
    onPointerCancel: () => void;
  };
}

/** Pointing at the plot, dragging a range over it, and clicking on the segment of an index, or on none. */
export function usePointer(
  scale: Scale,
  segments: readonly Segment[],
  away: readonly Range[],
  onRange: (range: Range | null) => void,
  onClick: (index: number | null, extend: boolean, time: UnixTime) => void,
): Pointer {
  const { perPixel, timeAt } = scale;
  const [hover, setHover] = useState<UnixTime | null>(null);
  const [dragged, setDragged] = useState<Range | null>(null);
  // What is dragged is known at once, not with the next drawing: the button may come up before that.
  const drag = useRef<{ from: UnixTime; x: number; range: Range | null } | null>(null);
  const leave = () => setHover(null);

  // Edges of segments and of time away attract, the nearest one first; elsewhere whole minutes.
  const snapped = (time: UnixTime) => {
    const reach = 6 * perPixel;
    const near = [segments, away].flatMap((list: readonly Range[]) => list[segmentAt(list, time, reach)] ?? []);
    const [edge] = near
      .flatMap(({ start, end }) => [start, end])
      .sort((a, b) => Math.abs(a - time) - Math.abs(b - time));
    return edge !== undefined && Math.abs(edge - time) < reach ? edge : Math.round(time / 60) * 60;
  };
  const onPointerDown = (event: PointerEvent) => {
    if (event.button !== 0) return;
    drag.current = { from: timeAt(event), x: event.clientX, range: null };
    (event.currentTarget as HTMLElement).setPointerCapture(event.pointerId);
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
    const { range } = drag.current;
    drag.current = null;
    setDragged(null);
    if (range) return onRange(range.end > range.start ? range : null);
    const time = timeAt(event);
    const index = segmentAt(segments, time, 4 * perPixel);
    onClick(index < 0 ? null : index, event.shiftKey, time);
  };
  const onPointerCancel = () => {
    drag.current = null;
    setDragged(null);
  };
  const handlers = { onPointerDown, onPointerMove, onPointerUp, onPointerLeave: leave, onPointerCancel };
  return { hover: dragged ? null : hover, dragged, leave, handlers };
}
