import type { ComponentChildren } from "preact";
import type { Answer } from "../bridge/routes";
import { useAnswer } from "../client";
import { addDays, mondayOf, weekName } from "../model/time";
import { Failure, Incomplete } from "../ui/parts";
import { PeriodBar } from "../ui/period";
import type { ViewProps } from "./props";

interface Props<R extends "week" | "recap"> extends Pick<ViewProps, "day" | "today" | "onDay"> {
  route: R;
  /** What its weeks are called. */
  name: string;
  children: (report: Answer<R>, isCurrent: boolean) => ComponentChildren;
}

/** A view of the report on the week that `day` is in. */
export function WeekPage<R extends "week" | "recap">({ route, name, day, today, onDay, children }: Props<R>) {
  const monday = mondayOf(day);
  const isCurrent = monday === mondayOf(today);
  const { answer, error, reload } = useAnswer(route, { date: monday }, isCurrent ? 60 : 0);
  // Another week's report stands in for the moment that its successor takes, not for one that fails.
  const report = error && answer?.monday !== monday ? undefined : answer;
  return (
    <div class="view">
      <PeriodBar
        title={`${name} ${weekName(monday)}`}
        previous="Semaine précédente"
        next="Semaine suivante"
        back="Cette semaine"
        day={day}
        today={today}
        isCurrent={isCurrent}
        onStep={(direction) => onDay(addDays(day, 7 * direction))}
        onDay={onDay}
      />
      {error && <Failure text={error} retry={reload} />}
      <Incomplete text={report?.incomplete} />
      {report && <div class={report.monday === monday ? "" : "stale"}>{children(report, isCurrent)}</div>}
    </div>
  );
}
