// Where the user is in the page, kept so that a reopened window shows the same place. The day is kept
// only until midnight: whoever opens the window in the morning wants to see today.
import type { Day } from "../bridge/routes";
import { load, save } from "./stored";
import { dayOf, isDay } from "./time";

export interface Place {
  /** Its name; one that is no longer there is taken for the first. */
  view: string;
  /** The day shown; null follows today. The week and the recap show the week that holds it. */
  day: Day | null;
}

const key = "place";
const today = () => dayOf(Date.now() / 1000);

function valid(value: unknown): boolean {
  const { view, day } = (value ?? {}) as Partial<Place>;
  return typeof view === "string" && (day === null || isDay(day));
}

export function loadPlace(): Place {
  const { view, day, left } = load<Place & { left?: Day }>(key, { view: "day", day: null }, valid);
  return { view, day: left === today() ? day : null };
}

export function savePlace(place: Place): void {
  save(key, { ...place, left: today() });
}
