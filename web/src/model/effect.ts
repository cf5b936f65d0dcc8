// What a change does to the past, in words and figures.
import type { Effect } from "../bridge/effects";
import type { Seconds } from "../bridge/routes";
import { categoryLabel } from "./categories";
import { duration, dayOf, isolated, monthShort, wholeNumber } from "./time";

const nbsp = "\u00a0";
// A clock that was once wrong makes no picture of a million bars.
const mostMonths = 1200;

/** "1 768 h", "9 h 40", "35 min": as exact as its size makes sense. */
export function amount(seconds: Seconds): string {
  return seconds < 10 * 3600 ? duration(seconds) : `${wholeNumber(seconds / 3600)}${nbsp}h`;
}

/** "+ 1 768 h", "− 35 min" */
export function signed(seconds: Seconds): string {
  return `${seconds < 0 ? "−" : "+"}${nbsp}${amount(Math.abs(seconds))}`;
}

/** What a project or a category gains or loses. */
export interface Net {
  key: string;
  name: string;
  seconds: Seconds;
  /** Absent for a category. */
  color?: string | null;
}

// What is gained before what is lost, the largest first.
function sorted(all: Net[]): Net[] {
  return all
    .filter(({ seconds }) => Math.abs(seconds) >= 1)
    .sort((a, b) => Number(b.seconds > 0) - Number(a.seconds > 0) || Math.abs(b.seconds) - Math.abs(a.seconds));
}

export function projectNets({ projects }: Effect): Net[] {
  return sorted(projects.map(({ id, name, color, seconds }) => ({ key: `p${id}`, name, color, seconds })));
}

export function categoryNets({ categories }: Effect): Net[] {
  return sorted(
    categories.map(({ category, seconds }) => ({ key: category, name: categoryLabel(category), seconds })),
  );
}

/** "depuis nov. 2024", or "en nov. 2026" where it is all of one month; empty where nothing changes. */
export function sinceWhen({ since, months }: Effect): string {
  if (since === null) return "";
  return `${months.length === 1 ? "en" : "depuis"} ${monthShort(dayOf(since))}`.replaceAll(" ", nbsp);
}

export type MonthTime = Effect["months"][number];

/** Every month from the first to the last, also those in which nothing moves. */
export function filledMonths(months: readonly MonthTime[]): MonthTime[] {
  const [first, last] = [months[0], months[months.length - 1]];
  if (!first || !last) return [];
  const known = new Map(months.map(({ month, seconds }) => [month, seconds]));
  const all = [];
  for (let [year = 0, month = 1] = first.month.split("-").map(Number); ; month++) {
    if (month > 12) [year, month] = [year + 1, 1];
    const name = `${String(year).padStart(4, "0")}-${String(month).padStart(2, "0")}`;
    all.push({ month: name, seconds: known.get(name) ?? 0 });
    if (name >= last.month || all.length >= mostMonths) return all;
  }
}

/** "+ 1 768 h Boutique, − 576 h Loisir, depuis nov. 2024": all of it, to be read out. */
export function effectText(effect: Effect): string {
  if (effect.spans === 0) return "Rien ne change dans le passé.";
  const nets = [...projectNets(effect), ...categoryNets(effect)];
  const parts = nets.map(({ name, seconds }) => `${signed(seconds)} ${isolated(name, 60)}`);
  if (parts.length === 0) parts.push(`${amount(effect.seconds)} changent de place`);
  return `${[...parts, sinceWhen(effect)].join(", ")}.`;
}
