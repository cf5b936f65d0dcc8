// Where the user is in the page, kept so that a reopened window shows the same place. The day is kept
// only until midnight: whoever opens the window in the morning wants to see today.
import type { DateRange, Day } from "../bridge/routes";
import { load, save } from "./stored";
import { dayOf, isDay } from "./time";

export interface Place {
  /** Its name; one that is no longer there is taken for the first. */
  view: string;
  /** The day shown; null follows today. The week and the recap show the week that holds it. */
  day: Day | null;
  /** The days of the period and of the timesheet; null follows this month. */
  range: DateRange | null;
}

const key = "place";
const today = () => dayOf(Date.now() / 1000);

function valid(value: unknown): boolean {
  const { view, day, range = null } = (value ?? {}) as Partial<Place>;
  const isRange = range === null || (isDay(range.from) && isDay(range.to) && range.from <= range.to);
  return typeof view === "string" && (day === null || isDay(day)) && isRange;
}

export function loadPlace(): Place {
  const nowhere = { view: "day", day: null, range: null };
  const { view, day, range, left } = load<Place & { left?: Day }>(key, nowhere, valid);
  return left === today() ? { view, day, range: range ?? null } : { ...nowhere, view };
}

export function savePlace(place: Place): void {
  save(key, { ...place, left: today() });
}
