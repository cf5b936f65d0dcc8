import type { RuleRow } from "../bridge/routes";
import type { RuleFacts } from "../bridge/rules";
import { fold } from "./filter";

export type Source = "mine" | "learned" | "builtin" | "application";

/** Whether the program made it from what an application's desktop file says: it means just that name. */
export function isOfApplication({ priority, field, category, project_id }: RuleFacts): boolean {
  return priority === -20 && field === "app" && category !== null && project_id === null;
}

export function sourceOf(rule: RuleRow, learned: ReadonlySet<number>): Source {
  if (isOfApplication(rule)) return "application";
  if (rule.priority < 0) return "builtin";
  return learned.has(rule.id) ? "learned" : "mine";
}

export interface RuleFilter {
  text: string;
  field: string | null;
  source: Source | null;
}

export function filterRules(
  rules: readonly RuleRow[],
  filter: RuleFilter,
  learned: ReadonlySet<number>,
  projectName: (id: number | null) => string,
): RuleRow[] {
  const words = fold(filter.text).split(/\s+/).filter(Boolean);
  return rules.filter((rule) => {
    if (filter.field !== null && rule.field !== filter.field) return false;
    if (filter.source !== null && sourceOf(rule, learned) !== filter.source) return false;
    if (words.length === 0) return true;
    const text = fold(`${rule.pattern} ${rule.category ?? ""} ${projectName(rule.project_id)}`);
    return words.every((word) => text.includes(word));
  });
}
