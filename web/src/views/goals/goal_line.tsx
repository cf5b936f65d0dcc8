import { useState } from "preact/hooks";
import type { Day, GoalHistory } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { type GoalState, stateOf, stateText } from "../../model/goals";
import { clip, duration } from "../../model/time";
import { CategoryMark, Icon, ProjectDot } from "../../ui/icons";
import { Foreign, IconButton } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { GoalEditor } from "./goal_editor";

interface Props {
  day: Day;
  isToday: boolean;
}

/** How far each goal is on that day, or in its week; nothing where there are none. */
export function GoalLine({ day, isToday }: Props) {
  const { answer } = useAnswer("goals.history", { from: day, to: day }, isToday ? 10 : 0);
  const [edited, setEdited] = useState<GoalHistory | "new" | null>(null);
  const list = useRoving<HTMLUListElement>("row");
  const shown = (answer ?? []).filter(({ pieces, missing }) => !missing && pieces[0]);
  if (shown.length === 0) return null;
  return (
    <section class="goals" aria-label="Objectifs et limites">
      <ul role="list" ref={list}>
        {shown.map((goal) => (
          <li key={goal.id}>
            <button type="button" class="goal" title={`Modifier : ${clip(goal.text, 200)}`} onClick={() => setEdited(goal)}>
              <GoalFigures goal={goal} />
            </button>
          </li>
        ))}
      </ul>
      <IconButton icon="plus" label="Ajouter un objectif" title="Ajouter un objectif ou une limite" onClick={() => setEdited("new")} />
      {edited && <GoalEditor goal={edited === "new" ? undefined : edited} onClose={() => setEdited(null)} />}
    </section>
  );
}

const signs: Record<GoalState, "check" | "warning" | null> = {
  going: null,
  near: null,
  reached: "check",
  over: "warning",
};

function GoalFigures({ goal }: { goal: GoalHistory }) {
  const done = goal.pieces[0]?.done ?? 0;
  const state = stateOf(goal, done);
  const sign = signs[state];
  return (
    <>
      <span class="goal-name">
        <GoalMark goal={goal} />
        <Foreign text={goal.name} length={40} />
        <span class={`goal-state ${state}`}>
          {sign && <Icon name={sign} />}
          {stateText(goal, done)}
        </span>
      </span>
      <span class={`goal-bar ${state} ${goal.bound}`} aria-hidden="true">
        <span style={{ width: `${Math.min(done / goal.seconds, 1) * 100}%` }} />
      </span>
      <span class="goal-figures">
        <b>{duration(done)}</b>
        <span class="quiet">
          {" / "}
          {goal.bound === "most" && "max. "}
          {duration(goal.seconds)}
          {goal.period === "week" && " par semaine"}
        </span>
      </span>
    </>
  );
}

export function GoalMark({ goal }: { goal: Pick<GoalHistory, "subject" | "value" | "color"> }) {
  if (goal.subject === "category") return <CategoryMark cat={goal.value ?? ""} />;
  return goal.subject === "project" ? <ProjectDot color={goal.color} /> : null;
}
