import type { DayReport } from "../../bridge/routes";
import { clock, duration } from "../../model/time";
import { CategoryBar, CategoryLegend } from "../../ui/parts";

interface Props {
  report: DayReport;
  chosen: string | null;
  onChoose: (cat: string) => void;
}

/** The day in one line: how long, from when to when, and of what kind. */
export function Summary({ report, chosen, onChoose }: Props) {
  const { totals, first, last } = report;
  const away = totals.by_category.inactif ?? 0;
  return (
    <section class="summary" aria-label="Résumé du jour">
      <p class="hero">
        <b>{duration(totals.active)}</b>
        <span>actif</span>
      </p>
      <dl class="facts">
        <div title="De la première à la dernière activité">
          <dt>Activité</dt>
          <dd>{first === null || last === null ? "–" : `${clock(first)} – ${clock(last)}`}</dd>
        </div>
        <div>
          <dt>Inactif</dt>
          <dd>{duration(away)}</dd>
        </div>
      </dl>
      <div class="summary-bar">
        <CategoryBar byCategory={totals.by_category} />
        <CategoryLegend byCategory={totals.by_category} chosen={chosen} onChoose={onChoose} />
      </div>
    </section>
  );
}
