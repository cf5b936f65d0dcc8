// What a rule catches, as far as the page can tell: the program does not send addresses, and of a
// block's titles only the one seen longest.
import type { Block, Project, RuleField, RuleRow, Seconds } from "../bridge/routes";

export interface Pattern {
  field: RuleField;
  pattern: string;
}

function value(block: Block, field: RuleField): string {
  if (field === "app") return block.app;
  if (field === "domain") return block.domain ?? "";
  if (field === "title") return block.title ?? "";
  return "";
}

/** A rule looks for its pattern anywhere in the field, whatever the case. */
export function matches({ field, pattern }: Pattern, block: Block): boolean {
  const wanted = pattern.toLowerCase();
  return wanted !== "" && !block.idle && value(block, field).toLowerCase().includes(wanted);
}

export interface Preview {
  spans: number;
  blocks: number;
  duration: Seconds;
  /** Of `duration`, what somebody assigned by hand: a rule never changes that. */
  manual: Seconds;
  /** Whose time it is, longest first: the distinct values of the field. */
  examples: { text: string; duration: Seconds }[];
}

export function preview(pattern: Pattern, blocks: readonly Block[]): Preview {
  const result: Preview = { spans: 0, blocks: 0, duration: 0, manual: 0, examples: [] };
  const values = new Map<string, Seconds>();
  for (const block of blocks) {
    if (!matches(pattern, block)) continue;
    result.spans += block.ids.length;
    result.blocks += 1;
    result.duration += block.duration;
    if (block.manual) result.manual += block.duration;
    const text = value(block, pattern.field);
    values.set(text, (values.get(text) ?? 0) + block.duration);
  }
  result.examples = [...values]
    .map(([text, duration]) => ({ text, duration }))
    .sort((a, b) => b.duration - a.duration)
    .slice(0, 5);
  return result;
}

export type Reason =
  | { kind: "manual" }
  | { kind: "rule"; rule: RuleRow }
  | { kind: "keyword"; project: Project; keyword: string }
  | { kind: "none" };

/** Why a block counts as it does. `rules` in the program's order: the first that matches decides. */
export function reason(block: Block, rules: readonly RuleRow[], projects: readonly Project[]): Reason {
  if (block.manual) return { kind: "manual" };
  const rule = rules.find(
    (candidate) =>
      matches(candidate, block) && (candidate.category === block.cat || candidate.project_id === block.pid),
  );
  if (rule && (rule.category || rule.project_id !== null)) return { kind: "rule", rule };
  const project = projects.find(({ id }) => id === block.pid);
  const haystack = [block.title, block.domain, block.app].join(" ").toLowerCase();
  const keyword = project?.keywords.split(", ").find((word) => word && haystack.includes(word));
  return project && keyword ? { kind: "keyword", project, keyword } : { kind: "none" };
}

/** The rule that a block suggests: its site, or else its application. */
export function patternOf(block: Block): Pattern {
  return block.domain ? { field: "domain", pattern: block.domain } : { field: "app", pattern: block.app };
}
