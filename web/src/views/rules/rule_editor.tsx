import { useState } from "preact/hooks";
import type { ProjectRow, RuleField } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { Dialog, EditorFoot, Form } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Select } from "../../ui/parts";
import { TargetSelects } from "../../ui/target_fields";
import { useTask } from "../../ui/task";
import { type RuleDraft, stepsOf, useSaveRule } from "./draft";
import { fieldOptions } from "./labels";
import { RulePreview } from "./rule_preview";

interface Props {
  draft: RuleDraft;
  onClose: () => void;
}

/** A rule to write, beside what it would change, above what it catches. */
export function RuleEditor({ draft, onClose }: Props) {
  const projects = useAnswer("projects.list", {}).answer;
  const [rule, setRule] = useState(draft);
  const { error, setError, run } = useTask();
  const save = useSaveRule();
  return (
    <Dialog
      title={draft.replaces === undefined ? "Nouvelle règle" : "Modifier la règle"}
      onClose={onClose}
      wide
    >
      <Form
        onSubmit={() =>
          run(async () => {
            await save(rule);
            onClose();
          })
        }
      >
        <div class="dialog-body form split">
          <div>
            <RuleFields
              rule={rule}
              projects={projects ?? []}
              onChange={(part) => {
                setRule({ ...rule, ...part });
                setError("");
              }}
            />
          </div>
          <EffectPreview
            steps={stepsOf(rule)}
            hint="Ce que la règle change apparaîtra ici."
            none="Rien ne change dans le passé. La règle vaudra pour la suite."
          />
          <RulePreview rule={rule} />
        </div>
        <EditorFoot error={error} />
      </Form>
    </Dialog>
  );
}

interface FieldsProps {
  rule: RuleDraft;
  projects: readonly ProjectRow[];
  onChange: (part: Partial<RuleDraft>) => void;
}

function RuleFields({ rule, projects, onChange }: FieldsProps) {
  return (
    <>
      <div class="field-row">
        <label class="field">
          <span>Quand</span>
          <Select
            value={rule.field}
            options={fieldOptions}
            onChange={(field) => onChange({ field: field as RuleField })}
          />
        </label>
        <label class="field grow">
          <span>contient</span>
          <input
            class="input"
            autoFocus
            maxLength={500}
            value={rule.pattern}
            onInput={(event) => onChange({ pattern: event.currentTarget.value })}
          />
        </label>
      </div>
      <TargetSelects
        target={{ category: rule.category, projectId: rule.projectId }}
        projects={projects}
        onChange={onChange}
      />
    </>
  );
}
