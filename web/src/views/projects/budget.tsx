import type { ProjectHours } from "../../bridge/routes";
import { budgetName } from "../../model/terms";
import { dateOnly, duration } from "../../model/time";

/** How much of its hours a project has had, what is left, and when that is gone at today's pace. */
export function Budget({ hours }: { hours: ProjectHours | undefined }) {
  if (!hours || hours.budget === null || hours.left === null) return <span />;
  const { budget, left, used_percent, runs_out } = hours;
  const over = left < 0;
  const rest = over ? `${duration(-left)} de trop` : `reste ${duration(left)}`;
  const pace = runs_out ? `Au rythme des quatre dernières semaines, jusqu’au ${dateOnly(runs_out)}` : undefined;
  return (
    <span class={over ? "budget over" : "budget"} title={pace}>
      <span class="share-bar" aria-hidden="true">
        <span class="share-fill" style={{ width: `${Math.min(used_percent ?? 100, 100)}%` }} />
      </span>
      <span>
        {rest} <span class="quiet">sur {budgetName(budget)}</span>
      </span>
      {runs_out && (
        <small>
          <span class="sr-only">à ce rythme </span>jusqu’au {dateOnly(runs_out)}
        </small>
      )}
    </span>
  );
}
