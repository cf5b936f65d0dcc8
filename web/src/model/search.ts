// What a search shows: the rows that the keyboard goes through, and what is made of one.
import type { Found, FoundDay, FoundRow } from "../bridge/search";
import type { RuleField } from "../bridge/rules";
import type { UnixTime } from "../bridge/reports";
import { clock, dayOf, duration, longDay } from "./time";

export interface Hit {
  day: FoundDay;
  row: FoundRow;
}

/** Every row of the days, in the order in which they stand. */
export function hits(days: readonly FoundDay[]): Hit[] {
  return days.flatMap((day) => day.rows.map((row) => ({ day, row })));
}

/** Where an arrow leads from a row; -1 is the field. It goes round. */
export function moved(at: number, direction: -1 | 1, count: number): number {
  if (count === 0) return -1;
  if (at < 0) return direction === 1 ? 0 : count - 1;
  return (at + direction + count) % count;
}

/** "mardi 29 juillet 2025, 16:43" */
export function moment(time: UnixTime): string {
  return `${longDay(dayOf(time))}, ${clock(time)}`;
}

/** All of it in a sentence, to be read out. */
export function foundText(found: Found): string {
  const { duration: seconds, first, last } = found;
  if (first === null) return found.building ? "Rien de tel pour l’instant." : "Rien de tel n’a été enregistré.";
  const end = last === null ? "" : ` Dernière fois\u00a0: ${moment(last)}.`;
  return `${duration(seconds)} ${extent(found)}.${end}`;
}

/** How much of what there is has been looked at. */
export function extent({ building }: Found): string {
  return building ? "pour l’instant" : "en tout";
}

/** The month bars' view of it. */
export function monthsOf({ months }: Found): { month: string; seconds: number }[] {
  return months.map(({ month, duration: seconds }) => ({ month, seconds }));
}

/** What a rule would look for: a site or application that has the words in its name, the words where the title has them, or else the site. */
export function ruleFor(text: string, { row }: Hit, subjects: Found["subjects"]): { field: RuleField; pattern: string } {
  const named = (kind: "domain" | "app", name: string | null) =>
    subjects.some((subject) => subject.kind === kind && subject.name === name);
  if (row.domain && named("domain", row.domain)) return { field: "domain", pattern: row.domain };
  if (named("app", row.app)) return { field: "app", pattern: row.app };
  const words = text.replace(/["“”«»]/g, "").trim();
  const at = row.title?.toLowerCase().indexOf(words.toLowerCase()) ?? -1;
  if (words && row.title && at >= 0) return { field: "title", pattern: row.title.slice(at, at + words.length) };
  return row.domain ? { field: "domain", pattern: row.domain } : { field: "app", pattern: row.app };
}
