import { useRef, useState } from "preact/hooks";
import type { Day, Gap, LikelyProject, MomentRange, UnixTime } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { addMoment } from "../../model/changes";
import { addDays, capitalize, clock, count, dayInWeek, duration, isolated } from "../../model/time";
import { Button, Failure, IconButton, Incomplete, ProjectName } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useShortcuts } from "../../ui/shortcuts";
import { towards } from "../../ui/target_fields";
import { useAttempt, useUndoable } from "../../ui/toast";
import { MomentDialog } from "./moment_dialog";

interface Props {
  monday: Day;
  today: Day;
  now: UnixTime;
}

interface Place {
  date: Day;
  gap: Gap;
}

/** The week's time between activities that nothing is known of, to be given to projects one by one. */
export function Gaps({ monday, today, now }: Props) {
  const sunday = addDays(monday, 6);
  const { answer, error, reload } = useAnswer("moments.gaps", { from: monday, to: sunday < today ? sunday : today });
  const [other, setOther] = useState<Place | null>(null);
  if (error) return <Failure text={error} retry={reload} />;
  if (!answer) return null;
  return (
    <section class="gaps" aria-label="Trous à remplir" data-region>
      <h2>
        Trous à remplir{" "}
        {answer.count > 0 && (
          <span class="quiet">
            {count(answer.count, "trou")}, {duration(answer.duration)}
          </span>
        )}
      </h2>
      <Incomplete text={answer.incomplete} />
      {answer.count === 0 && <p class="quiet">Aucun trou de dix minutes ou plus.</p>}
      <GapList
        places={answer.days.flatMap(({ date, gaps }) => gaps.map((gap) => ({ date, gap })))}
        onOther={setOther}
      />
      {other && (
        <MomentDialog
          {...{ today, now }}
          day={other.date}
          range={{ start: other.gap.from, end: other.gap.to }}
          onClose={() => setOther(null)}
        />
      )}
    </section>
  );
}

function GapList({ places, onOther }: { places: readonly Place[]; onOther: (place: Place) => void }) {
  const list = useRoving<HTMLUListElement>("grid");
  useShortcuts({ t: () => list.current?.querySelector("button")?.focus() });
  const { give, skip } = useGapActions();
  return (
    <ul role="list" ref={list}>
      {places.map((place) => (
        <GapRow
          key={place.gap.from}
          {...place}
          onGive={(project) => give(place.gap, project)}
          onOther={() => onOther(place)}
          onSkip={() => skip(place.gap)}
        />
      ))}
    </ul>
  );
}

// One at a time: a key that is held fills one gap, and not twice.
function useGapActions() {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const busy = useRef(false);
  const run = async (write: () => Promise<unknown>, text: string) => {
    if (busy.current) return;
    busy.current = true;
    await attempt(() => undoable(write, () => ({ text })));
    busy.current = false;
  };
  const give = (gap: Gap, project: LikelyProject) =>
    run(
      () => addMoment(client, [rangeOf(gap)], "", towards({ ...project, id: project.project_id })),
      `${isolated(project.name, 40)}\u00a0: ${times(gap)} (${duration(gap.duration)}).`,
    );
  const skip = (gap: Gap) =>
    run(() => client.call("moments.skip", { ranges: [rangeOf(gap)] }), `Ignoré\u00a0: ${times(gap)}.`);
  return { give, skip };
}

function rangeOf({ from, to }: Gap): MomentRange {
  return { from, to };
}

function times({ from, to }: Gap): string {
  return `${clock(from)} – ${clock(to)}`;
}

interface RowProps extends Place {
  onGive: (project: LikelyProject) => void;
  onOther: () => void;
  onSkip: () => void;
}

function GapRow({ date, gap, onGive, onOther, onSkip }: RowProps) {
  const onKeyDown = (event: KeyboardEvent) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.repeat) return;
    const digit = /^Digit([1-3])$/.exec(event.code)?.[1] ?? /^[1-3]$/.exec(event.key)?.[0];
    const project = digit && gap.likely[Number(digit) - 1];
    if (project) onGive(project);
    else if (event.key.toLowerCase() === "i") onSkip();
    else return;
    event.preventDefault();
  };
  return (
    <li class="gap-row" onKeyDown={onKeyDown}>
      <button type="button" class="gap-what" title="Autre projet, note (Entrée)" onClick={onOther}>
        <span class="gap-day">{capitalize(dayInWeek(date))}</span>
        <span class="gap-time">{times(gap)}</span>
        <b>{duration(gap.duration)}</b>
      </button>
      <span class="gap-likely">
        {gap.likely.map((project, index) => (
          <Button key={project.project_id} kind="small offered" title={`${index + 1}`} onClick={() => onGive(project)}>
            <kbd aria-hidden="true">{index + 1}</kbd>
            <ProjectName project={project} length={24} />
          </Button>
        ))}
      </span>
      <span class="gap-ways">
        <IconButton icon="edit" label="Autre projet, note" title="Autre projet, note (Entrée)" onClick={onOther} />
        <Button kind="ghost small" title="Ignorer (I)" aria-keyshortcuts="I" onClick={onSkip}>
          Ignorer
        </Button>
      </span>
    </li>
  );
}
