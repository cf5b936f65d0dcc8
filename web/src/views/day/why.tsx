import type { ComponentChildren } from "preact";
import type { Block } from "../../bridge/routes";
import type { DecidedBy, Explanation, RuleFacts } from "../../bridge/rules";
import { useAnswer } from "../../client";
import { isOfApplication } from "../../model/rules";
import { count } from "../../model/time";
import { CategoryName } from "../../ui/icons";
import { Foreign } from "../../ui/parts";
import { fieldLabel } from "../rules/labels";

interface Actions {
  onEditRule: (rule: RuleFacts) => void;
  onEditProject: (id: number) => void;
  /** To what was chosen by hand. */
  onChoose: () => void;
}

/** Why a block counts as it does: what decided its category and what its project, and the way to each. */
export function Why({ block, ...actions }: Actions & { block: Block }) {
  const { answer } = useAnswer("events.explain", { ids: block.ids });
  const why = answer?.[0];
  const more = (answer?.length ?? 1) - 1;
  return (
    <p class="assign-why">
      {why && <Reasons why={why} {...actions} />}
      {more > 0 && <span class="quiet">{`et ${count(more, "autre raison", "autres raisons")}`}</span>}
    </p>
  );
}

function Reasons({ why, ...actions }: Actions & { why: Explanation }) {
  const { category, category_by, category_rule, project_id: id, project, project_by, project_rule } = why;
  if (category_by === "none" && project_by === "none") return <span>Aucune règle ne le classe</span>;
  const reason = (by: DecidedBy, rule: number | null) => <Reason {...{ why, by, rule, ...actions }} />;
  return (
    <>
      <span>
        <CategoryName cat={category} />
        {"\u00a0: "}
        {reason(category_by, category_rule)}
      </span>
      {id !== null && (
        <span>
          Projet <b>{project === null ? "supprimé" : <Foreign text={project} length={40} />}</b>
          {"\u00a0: "}
          {reason(project_by, project_rule)}
        </span>
      )}
    </>
  );
}

interface ReasonProps extends Actions {
  why: Explanation;
  by: DecidedBy;
  rule: number | null;
}

// What decided, which is the way to it.
function Reason({ why, by, rule: ruleId, onEditRule, onEditProject, onChoose }: ReasonProps) {
  const { project_id: id, project, keyword } = why;
  const rule = why.rules.find((one) => one.id === ruleId);
  if (by === "manual")
    return (
      <Way title="Choisir autrement" onClick={onChoose}>
        attribué à la main
      </Way>
    );
  if (rule)
    return (
      <Way title={`Modifier cette règle : ${fieldLabel(rule.field).toLowerCase()}`} onClick={() => onEditRule(rule)}>
        {isOfApplication(rule) ? "l’application" : "la règle"} <Quoted text={rule.pattern} />
      </Way>
    );
  if (id === null || (by !== "keyword" && by !== "project")) return <span class="quiet">aucune règle</span>;
  return (
    <Way title="Modifier ce projet" onClick={() => onEditProject(id)}>
      {by === "keyword" ? "mot-clé" : "catégorie du projet"}{" "}
      <Quoted text={(by === "keyword" ? keyword : project) ?? ""} />
    </Way>
  );
}

function Quoted({ text }: { text: string }) {
  return (
    <>
      {"«\u00a0"}
      <Foreign text={text} length={40} />
      {"\u00a0»"}
    </>
  );
}

interface WayProps {
  title: string;
  onClick: () => void;
  children: ComponentChildren;
}

function Way({ title, onClick, children }: WayProps) {
  return (
    <button type="button" class="link" title={title} onClick={onClick}>
      {children}
    </button>
  );
}
