import type { DateRange, PeriodBy, PeriodGroup, PeriodReport } from "../../bridge/routes";
import { type Loaded, useAnswer } from "../../client";

export interface Question extends DateRange {
  by?: PeriodBy;
  group: PeriodGroup;
}

function answers({ from, to, by, group }: Question, report: PeriodReport | undefined): boolean {
  return report?.from === from && report.to === to && report.group === group && (!by || report.by === by);
}

/** The report of a range: what it holds first, and beside the range before as soon as that is counted, too. */
export function usePeriod(question: Question, running: boolean): Loaded<PeriodReport> & { isStale: boolean } {
  const first = useAnswer("period", { ...question, compare: false });
  const known = answers(question, first.answer);
  const whole = useAnswer("period", known ? { ...question, compare: true } : null, running ? 60 : 0);
  const report = answers(question, whole.answer) ? whole.answer : first.answer;
  const isStale = !answers(question, report);
  // Another range's report stands in for the moment that its successor takes, not for one that fails.
  return {
    answer: first.error && isStale ? undefined : report,
    error: first.error ?? whole.error,
    reload: known ? whole.reload : first.reload,
    isStale,
  };
}
