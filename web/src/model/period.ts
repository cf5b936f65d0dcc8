// What a period's report is drawn with, and which days stand behind one of its figures.
import type { Activity, PeriodBucket, PeriodBy, PeriodGroup, PeriodPart, PeriodReport } from "../bridge/routes";
import { categories, categoryClass, categoryLabel } from "./categories";
import { type Filter, noProject } from "./filter";
import { capitalize, dayShort, longDay, monthName, monthOnly, plainDomain } from "./time";
import { rangeName } from "./range";

export const groupNames: Record<PeriodGroup, string> = {
  category: "Catégories",
  project: "Projets",
  client: "Clients",
  app: "Applications",
  site: "Sites",
};
export const groups = Object.keys(groupNames) as PeriodGroup[];

/** Some activity, what it is called, and the filter that shows the blocks of it on a day. */
export interface Behind {
  name: string;
  activity: Activity;
  filter: Partial<Filter>;
}

export const behindCategory = (cat: string): Behind => ({
  name: categoryLabel(cat),
  activity: { category: cat },
  filter: { cat },
});
export const behindProject = (id: number | null, name: string): Behind => ({
  name,
  activity: { project_id: id },
  filter: { project: id ?? noProject },
});
export const behindClient = (client: string): Behind => ({
  name: client,
  activity: { client },
  // Whoever knows the projects adds them.
  filter: { client: { name: client, projects: [] } },
});
export const behindApp = (app: string): Behind => ({ name: app, activity: { app }, filter: { app } });
export const behindSite = (domain: string): Behind => ({
  name: plainDomain(domain),
  activity: { domain },
  filter: { domain },
});

/** Null of what several small ones make up, or of what has no client and the like. */
export function behindPart(group: PeriodGroup, { key, name, count }: PeriodPart): Behind | null {
  if (count > 1) return null;
  if (group === "project") return behindProject(key === "" ? null : Number(key), name);
  if (key === "") return null;
  return { category: behindCategory, client: behindClient, app: behindApp, site: behindSite }[group](key);
}

export function partName(group: PeriodGroup, { key, name, count }: PeriodPart): string {
  if (count > 1) return `${name} (${count})`;
  if (group === "category") return categoryLabel(key);
  return group === "site" ? plainDomain(name) : name;
}

/** Its categories as they stand everywhere else; what there may be besides comes after them. */
export function inOrder<R extends Pick<PeriodReport, "group" | "groups" | "buckets">>(report: R): R {
  if (report.group !== "category") return report;
  const place = ({ key }: PeriodPart) => (categories as readonly string[]).indexOf(key) >>> 0;
  const order = [...report.groups.keys()].sort((a, b) => place(report.groups[a]!) - place(report.groups[b]!));
  const sorted = <T>(list: readonly T[]) => order.map((index) => list[index]!);
  const buckets = report.buckets.map((bucket) => ({ ...bucket, parts: sorted(bucket.parts) }));
  return { ...report, groups: sorted(report.groups), buckets };
}

/** How a part is painted, as the style sheet calls it; a project has its own colour instead. */
export function partClass(group: PeriodGroup, { key, count }: PeriodPart, index: number): string {
  if (key === "" || count > 1) return "cat-nonclasse";
  return group === "category" ? categoryClass(key) : `series-${index % 12}`;
}

/** "Lundi 5 octobre 2026", "Semaine du 5 au 11 octobre 2026", "Octobre 2026" */
export function bucketName({ from, to }: PeriodBucket, by: PeriodBy): string {
  if (by === "day") return capitalize(longDay(from));
  const isMonth = by === "month" && from.slice(0, 7) === to.slice(0, 7);
  return capitalize(isMonth ? monthName(from) : rangeName({ from, to }));
}

/** Under its bar. */
export function bucketLabel({ from }: PeriodBucket, by: PeriodBy): string {
  if (by !== "month") return dayShort(from);
  return from.slice(5, 7) === "01" ? from.slice(0, 4) : monthOnly(from);
}
