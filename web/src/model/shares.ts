import type { Seconds } from "../bridge/routes";
import { share } from "./time";

/**
 * The parts of a whole in percent, which add up to what the parts do: of those that were cut, the most cut
 * are rounded up.
 */
export function shares(parts: readonly Seconds[], whole: Seconds): string[] {
  const exact = parts.map((part) => (whole > 0 ? (100 * part) / whole : 0));
  const percents = exact.map(Math.floor);
  const sum = (numbers: readonly number[]) => numbers.reduce((total, number) => total + number, 0);
  const mostCut = exact.map((_, at) => at).sort((a, b) => (exact[b]! % 1) - (exact[a]! % 1));
  const missing = Math.round(sum(exact)) - sum(percents);
  for (const at of mostCut.slice(0, missing)) percents[at]! += 1;
  return percents.map((percent, at) => share(percent === 0 ? Math.min(exact[at]!, 0.1) : percent, 100));
}
