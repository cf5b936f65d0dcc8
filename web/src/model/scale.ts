import type { Seconds } from "../bridge/routes";

const steps = [1, 2, 3, 4, 6, 8, 12, 20, 40, 60, 100, 200, 400, 1000, 2000, 5000];

/** How high a chart of these is, at least an hour, and the hours at which it has a line, about five. */
export function scaleOf(parts: readonly Seconds[]): { top: Seconds; lines: number[] } {
  const hours = Math.max(...parts, 3600) / 3600;
  const step = steps.find((one) => hours / one <= 5) ?? 10_000;
  const count = Math.ceil(hours / step);
  return { top: count * step * 3600, lines: Array.from({ length: count }, (_, index) => (index + 1) * step) };
}
