import type { Seconds, Totals } from "../bridge/routes";
import { categories, categoryLabel } from "./categories";

/** One thing in this week and in the last. */
export interface Compared {
  key: string;
  name: string;
  color?: string;
  current: Seconds;
  previous: Seconds;
}

type Sums = Pick<Totals, "by_category" | "by_project" | "apps">;

interface Item {
  key: string;
  name: string;
  duration: Seconds;
  color?: string;
}

export type Dimension = "category" | "project" | "app";

function items(totals: Sums, dimension: Dimension): Item[] {
  if (dimension === "category") {
    return categories.map((cat) => ({
      key: cat,
      name: categoryLabel(cat),
      duration: totals.by_category[cat] ?? 0,
    }));
  }
  if (dimension === "project") {
    return totals.by_project.map(({ id, name, color, duration }) => ({
      key: String(id),
      name,
      color,
      duration,
    }));
  }
  return totals.apps.map(({ name, duration }) => ({ key: name, name, duration }));
}

/** What changed by a minute or more, the biggest change first. */
export function changes(current: Sums, previous: Sums, dimension: Dimension): Compared[] {
  const all = new Map<string, Compared>();
  for (const { duration, ...item } of items(current, dimension)) {
    all.set(item.key, { ...item, current: duration, previous: 0 });
  }
  for (const { duration, ...item } of items(previous, dimension)) {
    all.set(item.key, { ...item, current: all.get(item.key)?.current ?? 0, previous: duration });
  }
  const change = (item: Compared) => Math.abs(item.current - item.previous);
  return [...all.values()].filter((item) => change(item) >= 60).sort((a, b) => change(b) - change(a));
}
