import type { Origin, RuleFacts, RuleOrigin, RuleRow } from "../bridge/routes";
import { fold } from "./filter";

/** Where the rules come from, by their ids. */
export type Origins = ReadonlyMap<number, Origin>;

export function originsOf(known: readonly RuleOrigin[] | undefined): Origins {
  return new Map(known?.map(({ id, origin }) => [id, origin]));
}

/** Whether the program made it from what an application's desktop file says: it means just that name. */
export function isOfApplication({ priority, field, category, project_id }: RuleFacts): boolean {
  return priority === -20 && field === "app" && category !== null && project_id === null;
}

/** Of a rule that the program tells nothing of, what its priority says. */
export function originOf(rule: RuleRow, origins: Origins): Origin {
  const known = origins.get(rule.id);
  if (known) return known;
  if (isOfApplication(rule)) return "app";
  return rule.priority < 0 ? "builtin" : "user";
}

export interface RuleFilter {
  text: string;
  field: string | null;
  origin: Origin | null;
}

export function filterRules(
  rules: readonly RuleRow[],
  filter: RuleFilter,
  origins: Origins,
  projectName: (id: number | null) => string,
): RuleRow[] {
  const words = fold(filter.text).split(/\s+/).filter(Boolean);
  return rules.filter((rule) => {
    if (filter.field !== null && rule.field !== filter.field) return false;
    if (filter.origin !== null && originOf(rule, origins) !== filter.origin) return false;
    if (words.length === 0) return true;
    const text = fold(`${rule.pattern} ${rule.category ?? ""} ${projectName(rule.project_id)}`);
    return words.every((word) => text.includes(word));
  });
}
