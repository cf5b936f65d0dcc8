import { useMemo, useState } from "preact/hooks";
import type { RuleRow } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { filterRules, originsOf, type RuleFilter } from "../../model/rules";
import { count, isolated } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Icon } from "../../ui/icons";
import { Button, Empty, Failure, ViewTitle } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { useUndoable } from "../../ui/toast";
import type { ViewProps } from "../props";
import { blankRule, draftOf, type RuleDraft } from "./draft";
import { PendingRules } from "./pending_rules";
import { RuleEditor } from "./rule_editor";
import { RuleTable } from "./rule_table";
import { RuleTools } from "./rule_tools";

const allRules: RuleFilter = { text: "", field: null, origin: null };

export function RulesView({ pending }: ViewProps) {
  const { answer: rules, error, reload } = useAnswer("rules.list", {});
  const projects = useAnswer("projects.list", {}).answer;
  const [filter, setFilter] = useState(allRules);
  const [draft, setDraft] = useState<RuleDraft | null>(null);
  const [restoring, setRestoring] = useState(false);
  const [deleting, setDeleting] = useState<RuleRow | null>(null);
  const told = useAnswer("rules.origins", {}).answer;
  const origins = useMemo(() => originsOf(told), [told]);
  const byId = useMemo(() => new Map((projects ?? []).map((one) => [one.id, one])), [projects]);
  const project = (id: number | null) => (id === null ? undefined : byId.get(id));
  const shown = useMemo(
    () => filterRules(rules ?? [], filter, origins, (id) => project(id)?.name ?? ""),
    [rules, filter, origins, byId],
  );
  useShortcuts({
    "/": () => document.getElementById("rule-search")?.focus(),
    n: () => setDraft(blankRule),
  });
  return (
    <div class="view listing">
      <div class="view-head">
        <ViewTitle text="Règles" />
        <p class="quiet">Une règle vaut aussi pour le passé ; le texte le plus long l’emporte.</p>
        <Button onClick={() => setRestoring(true)}>Rétablir les règles intégrées</Button>
        <Button kind="primary" title="N" onClick={() => setDraft(blankRule)}>
          <Icon name="plus" />
          Nouvelle règle
        </Button>
      </div>
      {error && <Failure text={error} retry={reload} />}
      {pending.length > 0 && <PendingRules pending={pending} />}
      <RuleTools {...{ rules, origins, filter }} shown={shown.length} onFilter={setFilter} />
      {rules?.length === 0 && (
        <Empty title="Aucune règle.">
          <Button onClick={() => setRestoring(true)}>Rétablir les règles intégrées</Button>
        </Empty>
      )}
      {rules && rules.length > 0 && shown.length === 0 && (
        <Empty title="Aucune règle ne correspond.">
          <Button onClick={() => setFilter(allRules)}>Tout montrer</Button>
        </Empty>
      )}
      {shown.length > 0 && (
        <RuleTable
          rules={shown}
          {...{ origins, project }}
          onEdit={(rule) => setDraft(draftOf(rule))}
          onDelete={setDeleting}
        />
      )}
      {draft && <RuleEditor draft={draft} onClose={() => setDraft(null)} />}
      {deleting && <DeleteRule rule={deleting} onClose={() => setDeleting(null)} />}
      {restoring && <RestoreDefaults onClose={() => setRestoring(false)} />}
    </div>
  );
}

function DeleteRule({ rule, onClose }: { rule: RuleRow; onClose: () => void }) {
  const client = useClient();
  const undoable = useUndoable();
  const name = isolated(rule.pattern, 60);
  const remove = () =>
    undoable(
      () => client.call("rules.delete", { id: rule.id }),
      () => ({ text: `Règle supprimée : ${name}.` }),
    );
  return (
    <Confirm
      title={`Supprimer la règle « ${name} » ?`}
      action="Supprimer"
      danger
      onClose={onClose}
      onConfirm={remove}
    >
      <EffectPreview steps={[{ path: "rules.delete", body: { id: rule.id } }]} />
    </Confirm>
  );
}

function RestoreDefaults({ onClose }: { onClose: () => void }) {
  const client = useClient();
  const undoable = useUndoable();
  const restore = () =>
    undoable(
      () => client.call("rules.defaults", {}),
      ({ answer: { added } }) => ({
        text:
          added === 0 ? "Elles étaient déjà toutes là." : `${count(added, "règle rétablie", "règles rétablies")}.`,
      }),
    );
  return (
    <Confirm title="Rétablir les règles intégrées ?" action="Rétablir" onClose={onClose} onConfirm={restore}>
      <p>
        Celles que vous avez supprimées reviennent. Les vôtres et les règles apprises gardent la priorité.
      </p>
      <EffectPreview steps={[{ path: "rules.defaults", body: {} }]} />
    </Confirm>
  );
}
