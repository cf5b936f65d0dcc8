import type { RefObject } from "preact";
import { useEffect, useLayoutEffect, useMemo, useRef, useState } from "preact/hooks";
import type { DayReport, UnixTime } from "../../bridge/routes";
import { clamp, fit, type View, zoom } from "../../model/timeline";

/** Which part of the day the plot shows, and how wide. */
export interface Scale {
  day: View;
  view: View;
  width: number;
  /** Seconds. */
  perPixel: number;
  /** The part was chosen; it is all activity otherwise. */
  chosen: boolean;
  show: (view: View | null) => void;
  shift: (by: number) => void;
  zoomBy: (factor: number, around: UnixTime) => void;
  x: (time: UnixTime) => number;
  timeAt: (event: MouseEvent) => UnixTime;
}

export function useScale(report: DayReport, plot: RefObject<HTMLElement | null>): Scale {
  const day: View = useMemo(() => ({ from: report.start, to: report.end }), [report.start, report.end]);
  const [chosen, show] = useState<View | null>(null);
  useLayoutEffect(() => show(null), [report.date]);
  const width = useWidth(plot);
  const view = chosen ? clamp(chosen, day) : fit(day, report.first, report.last);
  const perPixel = (view.to - view.from) / Math.max(width, 1);
  return {
    day,
    view,
    width,
    perPixel,
    chosen: chosen !== null,
    show,
    shift: (by) => show(clamp({ from: view.from + by, to: view.to + by }, day)),
    zoomBy: (factor, around) => show(zoom(view, factor, around, day)),
    x: (time) => (time - view.from) / perPixel,
    timeAt: (event) => {
      const left = plot.current?.getBoundingClientRect().left ?? 0;
      return view.from + Math.min(Math.max(event.clientX - left, 0), width) * perPixel;
    },
  };
}

function useWidth(element: RefObject<HTMLElement | null>): number {
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

/** The wheel goes on with Shift and zooms with Ctrl. */
export function useWheel(plot: RefObject<HTMLElement | null>, scale: Scale): void {
  // Attached by hand: only a listener that is not passive may keep the page from scrolling.
  const wheel = useRef((_: WheelEvent) => {});
  wheel.current = (event) => {
    if (event.ctrlKey) scale.zoomBy(Math.exp(event.deltaY / 300), scale.timeAt(event));
    else if (event.deltaX !== 0 || event.shiftKey)
      scale.shift((event.deltaX || event.deltaY) * scale.perPixel);
    else return;
    event.preventDefault();
  };
  useEffect(() => {
    const listener = (event: WheelEvent) => wheel.current(event);
    const element = plot.current;
    element?.addEventListener("wheel", listener, { passive: false });
    return () => element?.removeEventListener("wheel", listener);
  }, []);
}
