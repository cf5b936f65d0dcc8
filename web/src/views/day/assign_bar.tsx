import type { KeptMoment } from "../../bridge/moments";
import type { Block, Day, Project, RuleFacts } from "../../bridge/routes";
import { isGap } from "../../model/away";
import type { Target } from "../../model/changes";
import { leftOut } from "../../model/day_list";
import { clock, count, duration, plainDomain } from "../../model/time";
import { Button, Foreign, IconButton, ProjectName } from "../../ui/parts";
import { TargetFields } from "../../ui/target_fields";
import { useMoments } from "../moments/edit_dialog";
import { AwayFields } from "./away_fields";
import { RangeFields } from "./range_fields";
import { type Choice, isFilling } from "./use_assign";
import type { Picked } from "./use_picked";
import { Why } from "./why";

interface Props {
  day: Day;
  picked: Picked;
  projects: readonly Project[];
  choice: Choice;
  onChange: (part: Partial<Choice>) => void;
  onAssign: (target: Target) => void;
  onNewRule: (block: Block) => void;
  onEditRule: (rule: RuleFacts) => void;
  onEditProject: (id: number) => void;
  onChoose: () => void;
  onExclude: (block: Block) => void;
  onEditMoment: (moments: readonly KeptMoment[]) => void;
  /** Absent where there is nothing that could be. */
  onDelete: (() => void) | undefined;
  onClose: () => void;
}

/** What to make of the selected blocks, or of the range dragged over the timeline. */
export function AssignBar(props: Props) {
  const { picked, projects, choice, onChange, onAssign, onExclude, onDelete, onClose, onNewRule, onEditRule } = props;
  const { onEditProject, onChoose, onEditMoment } = props;
  const { blocks, range, time } = picked;
  const one = !range && blocks.length === 1 && picked.away.length === 0 ? blocks[0] : undefined;
  const moments = useMoments(one);
  const toAutomatic = choice.category === null && choice.projectId === null;
  const isAutomatic = blocks.every((block) => !block.manual);
  const isNoted = isFilling(picked, choice) && choice.note.trim() !== "";
  const changes = isFilling(picked, choice) ? !toAutomatic || isNoted : time > 0;
  const isAway = time === 0 && picked.awayTime > 0;
  return (
    <form
      class={one || range || picked.away.length > 0 ? "assign tall" : "assign"}
      aria-label="Attribuer la sélection"
      data-region
      onSubmit={(event) => {
        event.preventDefault();
        onAssign(choice);
      }}
      onKeyDown={(event) => {
        if (event.key === "Escape") onClose();
      }}
    >
      <What {...props} one={one} />
      <div class="assign-end">
        {moments.length > 0 && (
          <Button kind="small" onClick={() => onEditMoment(moments)}>
            Modifier…
          </Button>
        )}
        {one && moments.length === 0 && (
          <Button kind="small" onClick={() => onExclude(one)}>
            Exclure…
          </Button>
        )}
        {onDelete && (
          <Button kind="danger small" title="Suppr" onClick={onDelete}>
            Supprimer…
          </Button>
        )}
        <IconButton
          kind="ghost square"
          icon="close"
          label="Tout désélectionner"
          title="Échap"
          onClick={onClose}
        />
      </div>
      {one && <Why key={one.ids[0]} block={one} {...{ onEditRule, onEditProject, onChoose }} />}
      <AwayFields {...props} onGive={onAssign} />
      <div class="assign-how">
        <TargetFields target={choice} projects={projects} onChange={onChange} />
        <Button type="submit" kind="primary" disabled={!changes || (toAutomatic && isAutomatic && !isNoted)}>
          {toAutomatic && !isAutomatic ? "Rendre automatique" : isAway ? "Ajouter" : "Attribuer"}
        </Button>
        {one && <Button onClick={() => onNewRule(one)}>Créer une règle…</Button>}
      </div>
    </form>
  );
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
        <b>{one ? <Foreign text={plainDomain(one.domain ?? one.app)} length={40} /> : nameOfAway(picked)}</b>
      )}
      <p class="quiet">{lengths(picked)}</p>
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

function nameOfAway({ blocks, away, selected }: Picked): string {
  if (blocks.length > 0) return count(blocks.length, "bloc");
  const [first] = away;
  if (away.length !== 1 || !first) return count(away.length, "absence");
  const what = selected.some(isGap) ? "Rien d’enregistré" : "Inactif";
  return `${what}, ${clock(first.start)} – ${clock(first.end)}`;
}

// Of activity and of time away, as far as there is any.
function lengths({ range, time, awayTime }: Picked): string {
  if (time === 0) return awayTime < 1 ? "aucune activité" : `${duration(awayTime)}${range ? " sans activité" : ""}`;
  if (range) return `${duration(time)} d’activité`;
  return duration(time) + (awayTime > 0 ? ` et ${duration(awayTime)} d’absence` : "");
}
