import type { LearnedRule } from "../../bridge/routes";
import { categoryLabel } from "../../model/categories";
import { clip } from "../../model/time";

/** "Règle apprise : github.com → Travail, Refonte du site" */
export function learnedText(rule: LearnedRule): string {
  const target = [rule.category && categoryLabel(rule.category), rule.project].filter(Boolean).join(", ");
  return `Règle apprise : ${clip(rule.pattern, 60)} → ${target}`;
}
