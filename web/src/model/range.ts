// Ranges of days as people name them, and the ways from one to the next.
import type { DateRange, Day, PeriodKind } from "../bridge/routes";
import { addDays, addMonths, dateOnly, firstOfMonth, longDay, mondayOf, monthName, weekName } from "./time";

const months: Partial<Record<PeriodKind, number>> = { month: 1, quarter: 3, year: 12 };

function lengthOf({ from, to }: DateRange): number {
  return Math.round((Date.parse(`${to}T00:00:00Z`) - Date.parse(`${from}T00:00:00Z`)) / 86_400_000) + 1;
}

/** The day, week, month, quarter or year that holds the day. */
export function rangeOf(kind: Exclude<PeriodKind, "other">, day: Day): DateRange {
  if (kind === "day") return { from: day, to: day };
  if (kind === "week") return { from: mondayOf(day), to: addDays(mondayOf(day), 6) };
  const long = months[kind] ?? 1;
  const from = addMonths(firstOfMonth(day), -((Number(day.slice(5, 7)) - 1) % long));
  return { from, to: addDays(addMonths(from, long), -1) };
}

/** What these days are all of. */
export function kindOf({ from, to }: DateRange): PeriodKind {
  for (const kind of ["day", "week", "month", "quarter", "year"] as const)
    if (rangeOf(kind, from).from === from && rangeOf(kind, from).to === to) return kind;
  return "other";
}

/** The next one of its kind, or the one before; as many days, where they are of no kind. */
export function stepped(range: DateRange, direction: -1 | 1): DateRange {
  const kind = kindOf(range);
  if (kind !== "other") return rangeOf(kind, direction > 0 ? addDays(range.to, 1) : addDays(range.from, -1));
  const days = lengthOf(range) * direction;
  return { from: addDays(range.from, days), to: addDays(range.to, days) };
}

/** The one of the same kind that holds the day, or as many days from it on. */
export function rangeAt(range: DateRange, day: Day): DateRange {
  const kind = kindOf(range);
  if (kind !== "other") return rangeOf(kind, day);
  return { from: day, to: addDays(day, lengthOf(range) - 1) };
}

/** The one of the same kind that is going on, or as many days that end today. */
export function current(range: DateRange, today: Day): DateRange {
  const kind = kindOf(range);
  return kind === "other" ? rangeAt(range, addDays(today, 1 - lengthOf(range))) : rangeOf(kind, today);
}

export function holds(range: DateRange, day: Day): boolean {
  return range.from <= day && day <= range.to;
}

/** "novembre 2026", "4e trimestre 2026", "du 3 au 9 mars 2026" */
export function rangeName(range: DateRange): string {
  const { from, to } = range;
  switch (kindOf(range)) {
    case "day":
      return longDay(from);
    case "week":
      return `semaine ${weekName(from)}`;
    case "month":
      return monthName(from);
    case "quarter": {
      const number = Math.ceil(Number(from.slice(5, 7)) / 3);
      return `${number === 1 ? "1er" : `${number}e`} trimestre ${from.slice(0, 4)}`;
    }
    case "year":
      return from.slice(0, 4);
    default:
      return `du ${dateOnly(from)} au ${dateOnly(to)}`;
  }
}

/** How finely a range can be drawn: at most about a hundred bars. */
export function finenesses(range: DateRange): ("day" | "week" | "month")[] {
  const days = lengthOf(range);
  const fits = { day: days <= 100, week: days > 7 && days <= 740, month: days > 31 };
  return (["day", "week", "month"] as const).filter((by) => fits[by]);
}
