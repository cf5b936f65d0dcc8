import type { DateRange, GoalHistory, GoalPiece } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { keptText, outcomeNames } from "../../model/goals";
import { rangeName } from "../../model/range";
import { capitalize, duration, plainDay } from "../../model/time";
import { Failure, Foreign } from "../../ui/parts";
import { GoalMark } from "./goal_line";

/** How each goal was kept in these days; nothing where there are none. */
export function GoalDays({ range: { from, to } }: { range: DateRange }) {
  const { answer, error, reload } = useAnswer("goals.history", { from, to });
  const goals = (answer ?? []).filter(({ missing }) => !missing);
  if (error) return <Failure text={error} retry={reload} />;
  if (goals.length === 0) return null;
  return (
    <section class="goal-days" aria-labelledby="goal-days">
      <h2 id="goal-days">Objectifs et limites</h2>
      <ul role="list">
        {goals.map((goal) => (
          <li key={goal.id}>
            <p class="goal-text">
              <GoalMark goal={goal} />
              <Foreign text={goal.text} length={120} />
            </p>
            <p class="quiet">{keptText(goal)}</p>
            <Squares goal={goal} />
          </li>
        ))}
      </ul>
    </section>
  );
}

// Each outcome has a shape of its own: filled, crossed out, dotted.
function Squares({ goal }: { goal: GoalHistory }) {
  const told = goal.pieces.filter(({ outcome }) => outcome !== "before");
  return (
    <>
      <ol class="squares" aria-hidden="true">
        {goal.pieces.map((piece) => (
          <li key={piece.from} class={piece.outcome} title={describe(piece)} />
        ))}
      </ol>
      <ul class="sr-only" role="list">
        {told.map((piece) => (
          <li key={piece.from}>{describe(piece)}</li>
        ))}
      </ul>
    </>
  );
}

function describe({ from, to, done, outcome }: GoalPiece): string {
  const name = from === to ? plainDay(from) : rangeName({ from, to });
  const time = outcome === "off" || outcome === "before" ? "" : `, ${duration(done)}`;
  return `${capitalize(name)}${time}\u00a0: ${outcomeNames[outcome]}`;
}
