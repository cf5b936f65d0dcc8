import type { Day, LikelyProject, Project } from "../../bridge/routes";
import { useAnswer } from "../../client";
import type { Target } from "../../model/changes";
import { duration } from "../../model/time";
import { Button, ProjectName } from "../../ui/parts";
import { towards } from "../../ui/target_fields";
import { type Choice, isFilling, isMixed } from "./use_assign";
import type { Picked } from "./use_picked";

interface Props {
  day: Day;
  picked: Picked;
  projects: readonly Project[];
  choice: Choice;
  onChange: (part: Partial<Choice>) => void;
  onGive: (target: Target) => void;
}

/** What becomes of the time away that is picked: whether it counts, what it was, whose it may have been. */
export function AwayFields({ day, picked, projects, choice, onChange, onGive }: Props) {
  const fills = isFilling(picked, choice);
  if (!fills && !isMixed(picked)) return null;
  return (
    <div class="assign-away">
      {isMixed(picked) && (
        <label class="check">
          <input
            type="checkbox"
            checked={fills}
            onChange={(event) => onChange({ filling: event.currentTarget.checked })}
          />
          {`Aussi l’absence (${duration(picked.awayTime)})`}
        </label>
      )}
      {fills && (
        <input
          class="input note"
          aria-label="Note"
          placeholder={"Note\u00a0: réunion, appel, visite…"}
          maxLength={300}
          value={choice.note}
          onInput={(event) => onChange({ note: event.currentTarget.value })}
        />
      )}
      {fills && picked.time === 0 && <Likely {...{ day, picked, projects, onGive }} />}
    </div>
  );
}

const mostOffered = 3;

// One click gives it to a project: those that are likely, and then others as far as there is room.
function Likely({ day, picked, projects, onGive }: Pick<Props, "day" | "picked" | "projects" | "onGive">) {
  const { answer } = useAnswer("moments.gaps", { from: day, to: day, min_seconds: 60 });
  const gaps = answer?.days.flatMap((one) => one.gaps) ?? [];
  const here = gaps.find(({ from, to }) => picked.away.some(({ start, end }) => start < to && end > from));
  const offered: { id: number; name: string; color: string | null; category: string | null }[] = [];
  for (const one of [...(here?.likely ?? []).map(asProject), ...projects.filter(({ archived }) => !archived)])
    if (offered.length < mostOffered && !offered.some(({ id }) => id === one.id)) offered.push(one);
  if (!answer) return null;
  return (
    <>
      {offered.map((project) => (
        <Button key={project.id} kind="small offered" onClick={() => onGive(towards(project))}>
          <ProjectName project={project} length={24} />
        </Button>
      ))}
    </>
  );
}

function asProject({ project_id: id, ...rest }: LikelyProject) {
  return { id, ...rest };
}
