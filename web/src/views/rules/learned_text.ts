import type { LearnedRule } from "../../bridge/routes";
import { categoryLabel } from "../../model/categories";
import { isolated } from "../../model/time";

/** "Règle apprise : github.com → Travail, Refonte du site" */
export function learnedText(rule: LearnedRule): string {
  const target = [rule.category && categoryLabel(rule.category), rule.project && isolated(rule.project, 60)]
    .filter(Boolean)
    .join(", ");
  return `Règle apprise : ${isolated(rule.pattern, 60)} → ${target}`;
}
