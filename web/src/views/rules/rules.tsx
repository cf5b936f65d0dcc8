import { useMemo, useRef, useState } from "preact/hooks";
import type { Day, RuleRow } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { learnedRules } from "../../model/learned";
import { filterRules, type RuleFilter, type Source, sourceOf } from "../../model/rules";
import { clip, count, isolated } from "../../model/time";
import { CategoryName, Icon, ProjectDot } from "../../ui/icons";
import { Confirm } from "../../ui/dialog";
import { Empty, Failure, Foreign } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { useAttempt, useUndoable } from "../../ui/toast";
import { useWindowed } from "../../ui/windowed";
import { fieldLabel, fields } from "./labels";
import { blankRule, type RuleDraft, RuleEditor } from "./rule_editor";

const rowHeight = 40;
const sources: [Source, string, string][] = [
  ["mine", "Les miennes", "À moi"],
  ["learned", "Apprises", "Apprise"],
  ["builtin", "Intégrées", "Intégrée"],
];

export function RulesView({ today }: { today: Day }) {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const { answer: rules, error, reload } = useAnswer("rules.list", {});
  const projects = useAnswer("projects.list", {});
  const [filter, setFilter] = useState<RuleFilter>({ text: "", field: null, source: null });
  const [draft, setDraft] = useState<RuleDraft | null>(null);
  const [restoring, setRestoring] = useState(false);
  const learned = useMemo(() => learnedRules.all(), [rules]);
  const byId = useMemo(
    () => new Map((projects.answer ?? []).map((project) => [project.id, project])),
    [projects.answer],
  );
  const shown = useMemo(
    () => filterRules(rules ?? [], filter, learned, (id) => (id === null ? "" : (byId.get(id)?.name ?? ""))),
    [rules, filter, learned, byId],
  );

  useShortcuts({
    "/": () => document.getElementById("rule-search")?.focus(),
    n: () => setDraft(blankRule),
  });

  const remove = (rule: RuleRow) =>
    attempt(() =>
      undoable(
        async () => {
          await client.call("rules.delete", { id: rule.id });
          learnedRules.remove([rule.id]);
        },
        () => ({ text: `Règle supprimée : ${isolated(rule.pattern, 60)}.` }),
      ),
    );

  const edit = (rule: RuleRow) =>
    setDraft({
      field: rule.field,
      pattern: rule.pattern,
      category: rule.category,
      projectId: rule.project_id,
      replaces: rule,
    });

  const counted = (source: Source) =>
    (rules ?? []).filter((rule) => sourceOf(rule, learned) === source).length;
  return (
    <div class="view">
      <div class="view-head">
        <h1>Règles</h1>
        <p class="quiet">Une règle vaut aussi pour le passé. La plus longue l’emporte.</p>
        <button type="button" class="button" onClick={() => setRestoring(true)}>
          Rétablir les règles intégrées
        </button>
        <button type="button" class="button primary" title="N" onClick={() => setDraft(blankRule)}>
          <Icon name="plus" />
          Nouvelle règle
        </button>
      </div>
      {error && <Failure text={error} retry={reload} />}
      <div class="list-tools">
        <label class="search wide">
          <Icon name="search" />
          <input
            id="rule-search"
            class="input"
            type="search"
            placeholder="Texte, catégorie ou projet"
            aria-label="Chercher une règle"
            title="Chercher (/)"
            value={filter.text}
            onInput={(event) => setFilter({ ...filter, text: event.currentTarget.value })}
          />
        </label>
        <select
          class="select"
          aria-label="Champ"
          value={filter.field ?? ""}
          onChange={(event) => setFilter({ ...filter, field: event.currentTarget.value || null })}
        >
          <option value="">Tous les champs</option>
          {fields.map((field) => (
            <option key={field} value={field}>
              {fieldLabel(field)}
            </option>
          ))}
        </select>
        <div class="chips" role="group" aria-label="Origine">
          {sources.map(([source, label]) => (
            <button
              type="button"
              key={source}
              class="chip"
              aria-pressed={filter.source === source}
              onClick={() => setFilter({ ...filter, source: filter.source === source ? null : source })}
            >
              {label} <span class="quiet">{counted(source)}</span>
            </button>
          ))}
        </div>
        <span class="spacer" />
        <span class="quiet" role="status">
          {rules && count(shown.length, "règle")}
        </span>
      </div>
      {rules && shown.length === 0 ? (
        <Empty title={rules.length === 0 ? "Aucune règle." : "Aucune règle ne correspond."}>
          {rules.length === 0 ? (
            <button type="button" class="button" onClick={() => setRestoring(true)}>
              Rétablir les règles intégrées
            </button>
          ) : (
            <button
              type="button"
              class="button"
              onClick={() => setFilter({ text: "", field: null, source: null })}
            >
              Tout montrer
            </button>
          )}
        </Empty>
      ) : (
        <RuleTable
          rules={shown}
          learned={learned}
          project={(id) => byId.get(id)}
          onEdit={edit}
          onDelete={(rule) => void remove(rule)}
        />
      )}
      {draft && <RuleEditor draft={draft} today={today} onClose={() => setDraft(null)} />}
      {restoring && (
        <Confirm
          title="Rétablir les règles intégrées ?"
          action="Rétablir"
          onClose={() => setRestoring(false)}
          onConfirm={async () => {
            await undoable(
              () => client.call("rules.defaults", {}),
              ({ answer: { added } }) => ({
                text:
                  added === 0
                    ? "Elles étaient toutes là."
                    : `${count(added, "règle rétablie", "règles rétablies")}.`,
              }),
            );
          }}
        >
          <p>
            Celles que vous avez supprimées reviennent. Les vôtres et les règles apprises gardent la priorité.
          </p>
        </Confirm>
      )}
    </div>
  );
}

interface TableProps {
  rules: readonly RuleRow[];
  learned: ReadonlySet<number>;
  project: (id: number) => { name: string; color: string | null } | undefined;
  onEdit: (rule: RuleRow) => void;
  onDelete: (rule: RuleRow) => void;
}

function RuleTable({ rules, learned, project, onEdit, onDelete }: TableProps) {
  const body = useRef<HTMLDivElement>(null);
  const { first, end } = useWindowed(body, rules.length, rowHeight);
  return (
    <div class="table" role="table" aria-label="Règles" aria-rowcount={rules.length + 1}>
      <div role="rowgroup">
        <div class="rule-row head" role="row" aria-rowindex={1}>
          <span role="columnheader">Champ</span>
          <span role="columnheader">Contient</span>
          <span role="columnheader">Catégorie</span>
          <span role="columnheader">Projet</span>
          <span role="columnheader">Origine</span>
          <span role="columnheader" class="sr-only">
            Actions
          </span>
        </div>
      </div>
      <div class="windowed" role="rowgroup" ref={body} style={{ height: `${rules.length * rowHeight}px` }}>
        {rules.slice(first, end).map((rule, offset) => {
          const index = first + offset;
          const to = rule.project_id === null ? undefined : project(rule.project_id);
          const name = clip(rule.pattern, 60);
          return (
            <div
              key={rule.id}
              class="rule-row"
              role="row"
              aria-rowindex={index + 2}
              style={{ transform: `translateY(${index * rowHeight}px)` }}
            >
              <span role="cell" class="quiet">
                {fieldLabel(rule.field)}
              </span>
              <b role="cell" title={clip(rule.pattern, 500)}>
                <Foreign text={rule.pattern} length={120} />
              </b>
              <span role="cell">
                {rule.category ? <CategoryName cat={rule.category} /> : <span class="quiet">–</span>}
              </span>
              <span role="cell">
                {to && (
                  <span class="project">
                    <ProjectDot color={to.color} />
                    <Foreign text={to.name} length={40} />
                  </span>
                )}
              </span>
              <span role="cell" class="quiet">
                {sources.find(([source]) => source === sourceOf(rule, learned))?.[2]}
              </span>
              <span role="cell" class="row-actions">
                <button
                  type="button"
                  class="button ghost square small"
                  aria-label={`Modifier la règle ${name}`}
                  onClick={() => onEdit(rule)}
                >
                  <Icon name="edit" />
                </button>
                <button
                  type="button"
                  class="button ghost square small"
                  aria-label={`Supprimer la règle ${name}`}
                  onClick={() => onDelete(rule)}
                >
                  <Icon name="trash" />
                </button>
              </span>
            </div>
          );
        })}
      </div>
    </div>
  );
}
