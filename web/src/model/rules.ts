import type { Block, RuleRow, Seconds } from "../bridge/routes";
import { fold } from "./filter";
import { matches, type Pattern } from "./matching";

export type Source = "mine" | "learned" | "builtin";

export function sourceOf(rule: RuleRow, learned: ReadonlySet<number>): Source {
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

function length(pattern: string): number {
  return [...pattern].length;
}

/**
 * Of the blocks that a new rule catches, the time that would change its category. An assignment by hand
 * stays, and so does what an older rule with a longer pattern decides.
 */
export function changedBy(
  pattern: Pattern,
  category: string | null,
  blocks: readonly Block[],
  rules: readonly RuleRow[],
): Seconds {
  if (category === null) return 0;
  const wanted = pattern.pattern.toLowerCase();
  const stronger = rules.filter(
    (rule) =>
      rule.category !== null &&
      (rule.priority > 0 || (rule.priority === 0 && length(rule.pattern) >= length(pattern.pattern))) &&
      !(rule.field === pattern.field && rule.pattern.toLowerCase() === wanted),
  );
  return blocks
    .filter((block) => matches(pattern, block) && !block.manual && block.cat !== category)
    .filter((block) => !stronger.some((rule) => matches(rule, block)))
    .reduce((sum, block) => sum + block.duration, 0);
}
