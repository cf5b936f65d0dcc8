import { useEffect, useState } from "preact/hooks";
import type { Block, Day, Project } from "../../bridge/routes";
import { assignable, categoryLabel, isAssignable } from "../../model/categories";
import type { Target } from "../../model/changes";
import { patternOf } from "../../model/matching";
import { count, duration } from "../../model/time";
import { CategoryMark } from "../../ui/icons";
import { Foreign, IconButton, ProjectSelect } from "../../ui/parts";
import type { RuleDraft } from "../rules/rule_editor";
import { RangeFields } from "./range_fields";
import type { Picked } from "./use_picked";
import { Why } from "./why";

interface Props {
  day: Day;
  picked: Picked;
  projects: readonly Project[];
  onAssign: (target: Target) => void;
  onDraft: (draft: RuleDraft) => void;
  onDelete: () => void;
  onClose: () => void;
}

/** What to make of the selected blocks, or of the range dragged over the timeline. */
export function AssignBar(props: Props) {
  const { picked, projects, onAssign, onDraft, onDelete, onClose } = props;
  const { blocks, range, time } = picked;
  const [target, setTarget] = useTarget(picked);
  const one = !range && blocks.length === 1 ? blocks[0] : undefined;
  const toAutomatic = target.category === null && target.projectId === null;
  const isAutomatic = blocks.every((block) => !block.manual);
  return (
    <form
      class={one || range ? "assign tall" : "assign"}
      aria-label="Assigner la sélection"
      onSubmit={(event) => {
        event.preventDefault();
        onAssign(target);
      }}
      onKeyDown={(event) => {
        if (event.key === "Escape") onClose();
      }}
    >
      <What {...props} one={one} />
      <div class="assign-end">
        <button type="button" class="button danger small" title="Suppr" onClick={onDelete}>
          Supprimer…
        </button>
        <IconButton
          kind="ghost square"
          icon="close"
          label="Ne rien sélectionner"
          title="Échap"
          onClick={onClose}
        />
      </div>
      <div class="assign-how">
        <TargetFields target={target} projects={projects} onChange={setTarget} />
        <button type="submit" class="button primary" disabled={time === 0 || (toAutomatic && isAutomatic)}>
          {toAutomatic && !isAutomatic ? "Rendre automatique" : "Assigner"}
        </button>
        {one && (
          <button
            type="button"
            class="button"
            onClick={() => onDraft({ ...patternOf(one), category: one.cat, projectId: one.pid })}
          >
            Créer une règle…
          </button>
        )}
      </div>
    </form>
  );
}

// What is to be given: at first what all the blocks have been given by hand already.
function useTarget({ blocks, range }: Picked) {
  const state = useState<Target>({ category: null, projectId: null });
  const what = range ? `${range.start}` : blocks.map((block) => block.ids[0]).join(",");
  useEffect(() => {
    const [first] = blocks;
    const same =
      first &&
      !range &&
      blocks.every((block) => block.cat === first.cat && block.pid === first.pid && block.manual);
    const category = same && isAssignable(first.cat) ? first.cat : null;
    state[1]({ category, projectId: same ? first.pid : null });
  }, [what]);
  return state;
}

function What({ day, picked, projects, one, onDraft }: Props & { one: Block | undefined }) {
  const { blocks, range, time, whole, pickRange, pickBlocks } = picked;
  return (
    <div class="assign-what">
      {range ? (
        <RangeFields day={day} range={range} onRange={pickRange} />
      ) : (
        <b>{one ? <Foreign text={one.domain ?? one.app} length={40} /> : count(blocks.length, "bloc")}</b>
      )}
      <span class="quiet">{time > 0 ? duration(time) : "aucune activité"}</span>
      {range && whole > 0 && (
        // Blocks teach rules, a range does not.
        <button type="button" class="link" onClick={() => pickBlocks(range.start, range.end, false)}>
          {whole === 1 ? "Plutôt le bloc entier" : `Plutôt les ${count(whole, "bloc")} entiers`}
        </button>
      )}
      {one?.title && (
        <span class="assign-title">
          <Foreign text={one.title} />
        </span>
      )}
      {one && (
        <Why
          block={one}
          projects={projects}
          onEditRule={(rule) =>
            onDraft({
              field: rule.field,
              pattern: rule.pattern,
              category: rule.category,
              projectId: rule.project_id,
              replaces: rule,
            })
          }
        />
      )}
    </div>
  );
}

interface TargetFieldsProps {
  target: Target;
  projects: readonly Project[];
  onChange: (target: Target) => void;
}

function TargetFields({ target, projects, onChange }: TargetFieldsProps) {
  const { category, projectId } = target;
  const radio = (cat: string | null) => (
    <input
      type="radio"
      name="category"
      checked={category === cat}
      onChange={() => onChange({ ...target, category: cat })}
    />
  );
  // A project's time counts as the project's category, unless another was chosen.
  const chooseProject = (id: number | null) => {
    const usual = projects.find((project) => project.id === id)?.category;
    onChange({ category: category ?? (isAssignable(usual) ? usual : null), projectId: id });
  };
  return (
    <>
      <fieldset class="segmented">
        <legend class="sr-only">Catégorie</legend>
        <label title="Selon les règles (0)">
          {radio(null)}
          <span>Auto</span>
        </label>
        {assignable.map((cat, index) => (
          <label key={cat} title={`${categoryLabel(cat)} (${index + 1})`}>
            {radio(cat)}
            <span>
              <CategoryMark cat={cat} />
              {categoryLabel(cat)}
            </span>
          </label>
        ))}
      </fieldset>
      <ProjectSelect
        label="Projet"
        none="Sans projet"
        projects={projects}
        value={projectId}
        onChange={chooseProject}
      />
    </>
  );
}
