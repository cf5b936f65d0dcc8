import { useMemo, useState } from "preact/hooks";
import type { Change } from "../../bridge/store";
import type { Day, UnixTime } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { addDays, capitalize, dayOf, longDay, plainDay } from "../../model/time";
import { Button, Empty, Failure, ViewTitle } from "../../ui/parts";
import type { ViewProps } from "../props";
import { ChangeRow } from "./change_row";

const step = 100;

/** What was changed by hand these last months, each with its effect and the way back. */
export function HistoryView({ today }: ViewProps) {
  const [limit, setLimit] = useState(step);
  const { answer, error, reload } = useAnswer("changes.list", { limit });
  const days = useMemo(() => byDay(answer ?? []), [answer]);
  return (
    <div class="view listing">
      <div class="view-head">
        <ViewTitle text="Historique des changements" />
        <p class="quiet">
          Ce que vous avez changé, jusqu’à 90 jours en arrière, chaque fois avec son effet et le retour.
        </p>
      </div>
      {error && <Failure text={error} retry={reload} />}
      {answer?.length === 0 && (
        <Empty title="Aucun changement.">
          <p>Ce que vous attribuez, et les règles, projets et réglages que vous changez, apparaîtront ici.</p>
        </Empty>
      )}
      {days.map(([day, changes]) => (
        <section key={day} class="history-day" aria-labelledby={`history-${day}`}>
          <h2 id={`history-${day}`}>{dayTitle(day, today)}</h2>
          <ul role="list">
            {changes.map((change) => (
              <ChangeRow key={change.id} change={change} />
            ))}
          </ul>
        </section>
      ))}
      {answer?.length === limit && (
        <Button onClick={() => setLimit(limit + step)}>Montrer les plus anciens</Button>
      )}
    </div>
  );
}

function byDay(changes: readonly Change[]): [Day, Change[]][] {
  const days = new Map<Day, Change[]>();
  for (const change of changes) {
    const day = dayOf(change.at as UnixTime);
    days.set(day, [...(days.get(day) ?? []), change]);
  }
  return [...days];
}

function dayTitle(day: Day, today: Day): string {
  if (day === today) return "Aujourd’hui";
  if (day === addDays(today, -1)) return "Hier";
  return capitalize(day.slice(0, 4) === today.slice(0, 4) ? plainDay(day) : longDay(day));
}
