import type { Block } from "../../bridge/routes";
import type { Explanation, RuleFacts } from "../../bridge/rules";
import { useAnswer } from "../../client";
import { isOfApplication } from "../../model/rules";
import { count } from "../../model/time";
import { Foreign } from "../../ui/parts";
import { fieldLabel } from "../rules/labels";

interface Actions {
  onEditRule: (rule: RuleFacts) => void;
  onEditProject: (id: number) => void;
}

/** Why a block counts as it does: what a hand, a rule or a keyword decided, and the way to change that. */
export function Why({ block, ...actions }: Actions & { block: Block }) {
  const { answer } = useAnswer("events.explain", { ids: block.ids });
  const why = answer?.[0];
  const more = (answer?.length ?? 1) - 1;
  return (
    <p class="assign-why">
      {why && <Decision why={why} {...actions} />}
      {more > 0 && <span class="quiet">{`et ${count(more, "autre raison", "autres raisons")}`}</span>}
    </p>
  );
}

function Decision({ why, onEditRule, onEditProject }: Actions & { why: Explanation }) {
  const ruleOf = (id: number | null) => why.rules.find((rule) => rule.id === id);
  const categoryRule = ruleOf(why.category_rule);
  const projectRule = why.project_rule === why.category_rule ? undefined : ruleOf(why.project_rule);
  const manual = why.category_by === "manual" || why.project_by === "manual";
  const free = why.category_by === "none" && why.project_by === "none";
  const { project_id: id, keyword } = why;
  const byKeyword = why.project_by === "keyword" && keyword !== null;
  const byProject = why.category_by === "project";
  return (
    <>
      {manual && <span>Attribué à la main</span>}
      {free && <span>Aucune règle ne le classe</span>}
      {categoryRule && <ByRule rule={categoryRule} onEdit={onEditRule} />}
      {projectRule && <ByRule rule={projectRule} onEdit={onEditRule} />}
      {id !== null && why.project !== null && (byKeyword || byProject) && (
        <span>
          {byKeyword && (
            <>
              {"Mot-clé «\u00a0"}
              <Foreign text={keyword} length={30} />
              {"\u00a0» "}
            </>
          )}
          {byProject && (byKeyword ? "et catégorie du projet «\u00a0" : "Catégorie du projet «\u00a0")}
          {!byProject && "du projet «\u00a0"}
          <Foreign text={why.project} length={40} />
          {"\u00a0» "}
          <button type="button" class="link" onClick={() => onEditProject(id)}>
            Modifier ce projet
          </button>
        </span>
      )}
    </>
  );
}

function ByRule({ rule, onEdit }: { rule: RuleFacts; onEdit: (rule: RuleFacts) => void }) {
  return (
    <span>
      {isOfApplication(rule)
        ? "D’après l’application «\u00a0"
        : `Règle «\u00a0${fieldLabel(rule.field).toLowerCase()} contient `}
      <Foreign text={rule.pattern} length={40} />
      {"\u00a0» "}
      <button type="button" class="link" onClick={() => onEdit(rule)}>
        Modifier cette règle
      </button>
    </span>
  );
}
