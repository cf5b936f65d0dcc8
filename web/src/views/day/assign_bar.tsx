import { useEffect, useState } from "preact/hooks";
import type { Block, Day, Project, RuleFacts } from "../../bridge/routes";
import { categoryOptions, isAssignable } from "../../model/categories";
import type { Target } from "../../model/changes";
import { leftOut } from "../../model/day_list";
import { count, duration, plainDomain } from "../../model/time";
import { CategoryMark } from "../../ui/icons";
import { Button, Foreign, IconButton, ProjectName, ProjectSelect, Segmented } from "../../ui/parts";
import { RangeFields } from "./range_fields";
import type { Picked } from "./use_picked";
import { Why } from "./why";

interface Props {
  day: Day;
  picked: Picked;
  projects: readonly Project[];
  onAssign: (target: Target) => void;
  onNewRule: (block: Block) => void;
  onEditRule: (rule: RuleFacts) => void;
  onEditProject: (id: number) => void;
  onChoose: () => void;
  onDelete: () => void;
  onClose: () => void;
}

/** What to make of the selected blocks, or of the range dragged over the timeline. */
export function AssignBar(props: Props) {
  const { picked, projects, onAssign, onDelete, onClose, onNewRule, onEditRule, onEditProject, onChoose } = props;
  const { blocks, range, time } = picked;
  const [target, setTarget] = useTarget(picked);
  const one = !range && blocks.length === 1 ? blocks[0] : undefined;
  const toAutomatic = target.category === null && target.projectId === null;
  const isAutomatic = blocks.every((block) => !block.manual);
  return (
    <form
      class={one || range ? "assign tall" : "assign"}
      aria-label="Attribuer la sélection"
      data-region
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
        <Button kind="danger small" title="Suppr" onClick={onDelete}>
          Supprimer…
        </Button>
        <IconButton
          kind="ghost square"
          icon="close"
          label="Tout désélectionner"
          title="Échap"
          onClick={onClose}
        />
      </div>
      {one && <Why key={one.ids[0]} block={one} {...{ onEditRule, onEditProject, onChoose }} />}
      <div class="assign-how">
        <TargetFields target={target} projects={projects} onChange={setTarget} />
        <Button type="submit" kind="primary" disabled={time === 0 || (toAutomatic && isAutomatic)}>
          {toAutomatic && !isAutomatic ? "Rendre automatique" : "Attribuer"}
        </Button>
        {one && <Button onClick={() => onNewRule(one)}>Créer une règle…</Button>}
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

function What({ day, picked, projects, one }: Props & { one: Block | undefined }) {
  const { blocks, range, time, whole, pickRange, pickBlocks } = picked;
  // That they have, by whatever decided it.
  const [first] = blocks;
  const common = first && blocks.every(({ pid }) => pid === first.pid) ? first.pid : null;
  const project = projects.find(({ id }) => id === common);
  const without = range ? leftOut(time, whole, range) : 0;
  return (
    <div class="assign-what">
      {range ? (
        <RangeFields day={day} range={range} onRange={pickRange} />
      ) : (
        <b>{one ? <Foreign text={plainDomain(one.domain ?? one.app)} length={40} /> : count(blocks.length, "bloc")}</b>
      )}
      <p class="quiet">{time > 0 ? `${duration(time)}${range ? " d’activité" : ""}` : "aucune activité"}</p>
      {project && (
        <span class="assign-project">
          <span class="sr-only">Projet </span>
          <ProjectName project={project} />
        </span>
      )}
      {range && whole.length > 0 && (
        // Blocks teach rules, a range does not.
        <button type="button" class="link" onClick={() => pickBlocks(range.start, range.end, false)}>
          {whole.length === 1 ? "Choisir le bloc entier" : `Choisir les ${count(whole.length, "bloc")} entiers`}
          {without >= 1 && ` (hors ${duration(without)} de passages brefs)`}
        </button>
      )}
      {one?.title && (
        <p class="assign-title">
          <Foreign text={one.title} />
        </p>
      )}
    </div>
  );
}

const categoryChoices = [
  { value: null, label: "Auto", title: "Selon les règles (0)" },
  ...categoryOptions.map(([cat, label], index) => ({
    value: cat,
    label: (
      <>
        <CategoryMark cat={cat} />
        {label}
      </>
    ),
    title: `${label} (${index + 1})`,
  })),
];

interface TargetFieldsProps {
  target: Target;
  projects: readonly Project[];
  onChange: (target: Target) => void;
}

function TargetFields({ target, projects, onChange }: TargetFieldsProps) {
  const { category, projectId } = target;
  // A project's time counts as the project's category, unless another was chosen.
  const chooseProject = (id: number | null) => {
    const usual = projects.find((project) => project.id === id)?.category;
    onChange({ category: category ?? (isAssignable(usual) ? usual : null), projectId: id });
  };
  return (
    <>
      <Segmented
        legend="Catégorie"
        choices={categoryChoices}
        value={category}
        onChange={(cat) => onChange({ ...target, category: cat })}
      />
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
