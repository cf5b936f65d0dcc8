import { useState } from "preact/hooks";
import { useAnswer } from "../../client";
import { likeliest } from "../../model/away";
import { addDays, capitalize, longDay } from "../../model/time";
import { Failure, Incomplete } from "../../ui/parts";
import { PeriodBar } from "../../ui/period";
import { MomentDialog } from "../moments/moment_dialog";
import type { ViewProps } from "../props";
import type { Range } from "./drawing";
import { EmptyDay } from "./empty_day";
import { RecordedDay } from "./recorded_day";

export function DayView({ day, today, onDay, status }: ViewProps) {
  const isToday = day === today;
  const [adding, setAdding] = useState<Range | null>(null);
  const { answer, error, reload } = useAnswer("day", { date: day }, isToday ? 10 : 0);
  const now = status?.now ?? Date.now() / 1000;
  // Another day's report stands in for the moment that its successor takes, not for one that fails.
  const report = error && answer?.date !== day ? undefined : answer;
  const recorded = report && (report.blocks.length > 0 || report.totals.active > 0);
  return (
    <div class="view day-view">
      <PeriodBar
        title={capitalize(longDay(day))}
        previous="Jour précédent"
        next="Jour suivant"
        back="Aujourd’hui"
        day={day}
        today={today}
        isCurrent={isToday}
        onStep={(direction) => onDay(addDays(day, direction))}
        onDay={onDay}
      />
      {error && <Failure text={error} retry={reload} />}
      <Incomplete text={report?.incomplete} />
      {report && !recorded && report.segments.length === 0 && (
        <EmptyDay
          isToday={isToday}
          paused={status?.paused ?? false}
          incomplete={report.incomplete !== undefined}
          onToday={() => onDay(today)}
          onYesterday={() => onDay(addDays(today, -1))}
          onAdd={() => setAdding(likeliest([], day, now))}
        />
      )}
      {recorded && <RecordedDay {...{ report, day }} now={isToday ? (status?.now ?? null) : null} onAdd={setAdding} />}
      {adding && <MomentDialog {...{ day, today, now }} range={adding} onClose={() => setAdding(null)} />}
    </div>
  );
}
