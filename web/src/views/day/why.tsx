import type { Block, Project, RuleRow } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { reason } from "../../model/matching";
import { Foreign } from "../../ui/parts";
import { fieldLabel } from "../rules/labels";

interface Props {
  block: Block;
  projects: readonly Project[];
  onEditRule: (rule: RuleRow) => void;
}

/** What decided on a block: a hand, a rule, a keyword, or nothing. */
export function Why({ block, projects, onEditRule }: Props) {
  const { answer: rules } = useAnswer("rules.list", {});
  if (!rules) return null;
  const why = reason(block, rules, projects);
  if (why.kind === "manual") return <span class="quiet">assigné à la main</span>;
  if (why.kind === "keyword")
    return (
      <span class="quiet">
        {"par le mot-clé «\u00a0"}
        <Foreign text={why.keyword} length={30} />
        {"\u00a0»"}
      </span>
    );
  if (why.kind === "none") {
    const free = block.cat === "nonclasse" && block.pid === null;
    return (
      <span class="quiet">{free ? "aucune règle" : "par une règle sur l’adresse ou un autre titre"}</span>
    );
  }
  const { rule } = why;
  return (
    <button type="button" class="link" onClick={() => onEditRule(rule)}>
      {`par la règle\u00a0: ${fieldLabel(rule.field).toLowerCase()} contient «\u00a0`}
      <Foreign text={rule.pattern} length={30} />
      {"\u00a0»"}
    </button>
  );
}
