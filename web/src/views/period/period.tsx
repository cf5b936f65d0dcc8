import type { ComponentChildren } from "preact";
import { useLayoutEffect, useState } from "preact/hooks";
import type { DateRange, PeriodBy, PeriodGroup, PeriodReport } from "../../bridge/routes";
import { type Behind, groupNames, groups } from "../../model/period";
import { finenesses, holds, rangeOf } from "../../model/range";
import { load, save } from "../../model/stored";
import { capitalize, clock, count, dayOf, duration, durationChange, plainDay } from "../../model/time";
import {
  Button,
  CategoryBar,
  CategoryLegend,
  Empty,
  Failure,
  Incomplete,
  Segmented,
  Select,
} from "../../ui/parts";
import { RangeBar } from "../../ui/range_bar";
import { GoalDays } from "../goals/goal_days";
import type { ViewProps } from "../props";
import { Chart } from "./chart";
import { DaysDialog } from "./days_dialog";
import { Heat } from "./heat";
import { PartLists } from "./part_lists";
import { usePeriod } from "./use_period";

const key = "periodGroup";
const byNames: Record<PeriodBy, string> = { day: "Par jour", week: "Par semaine", month: "Par mois" };

/** Any range of days: what it went to, when, and beside the range before. */
export function PeriodView({ range, today, onRange, onOpenDay }: ViewProps) {
  const [group, setGroup] = useState(() =>
    load<PeriodGroup>(key, "category", (value) => groups.includes(value as PeriodGroup)),
  );
  useLayoutEffect(() => save(key, group), [group]);
  const [wanted, setWanted] = useState<PeriodBy | null>(null);
  const fine = finenesses(range);
  const by = wanted !== null && fine.includes(wanted) ? wanted : undefined;
  const question = { from: range.from, to: range.to, group, ...(by && { by }) };
  const { answer: report, error, reload, isStale } = usePeriod(question, holds(range, today));
  return (
    <div class="view">
      <RangeBar name="Période" {...{ range, today, onRange }} />
      {error && <Failure text={error} retry={reload} />}
      <Incomplete text={report?.incomplete} />
      {report && (
        <div class={isStale ? "stale" : ""}>
          {report.active > 0 || (report.before?.active ?? 0) > 0 ? (
            <Period {...{ report, today, onRange, onOpenDay }}>
              {fine.length > 1 && (
                <Segmented
                  legend="Barres"
                  small
                  choices={fine.map((value) => ({ value, label: byNames[value] }))}
                  value={report.by}
                  onChange={setWanted}
                />
              )}
              <Select
                label="Ce que les barres montrent"
                value={group}
                options={groups.map((one) => [one, groupNames[one]] as const)}
                onChange={(value) => setGroup(value as PeriodGroup)}
              />
            </Period>
          ) : (
            <NothingThere {...{ report, today, onRange }} />
          )}
        </div>
      )}
    </div>
  );
}

type Shown = Pick<ViewProps, "today" | "onRange" | "onOpenDay"> & { report: PeriodReport };

function NothingThere({ report, today, onRange }: Omit<Shown, "onOpenDay">) {
  if (report.incomplete) return <Empty title="Rien n’a pu être lu pour ces jours." />;
  return (
    <Empty title={report.running ? "La période commence." : "Rien d’enregistré ces jours-là."}>
      <Button
        onClick={() => {
          onRange(rangeOf("year", today));
          document.querySelector("main")?.focus();
        }}
      >
        Voir l’année
      </Button>
    </Empty>
  );
}

interface PeriodProps extends Shown {
  /** What chooses how the bars are drawn. */
  children: ComponentChildren;
}

function Period({ report, today, onRange, onOpenDay, children }: PeriodProps) {
  const [behind, setBehind] = useState<Behind | null>(null);
  const isDay = report.from === report.to;
  const open = ({ from, to }: DateRange) => (from === to ? onOpenDay(from) : onRange({ from, to }));
  return (
    <>
      <section class="summary" aria-label="Résumé de la période">
        <p class="hero">
          <b>{duration(report.active)}</b>
          <span>actif</span>
        </p>
        <Facts {...{ report, onOpenDay }} />
        <div class="summary-bar">
          <CategoryBar byCategory={report.by_category} />
          <CategoryLegend byCategory={report.by_category} />
        </div>
      </section>
      <Versus before={report.before} />
      {isDay ? (
        <Button onClick={() => onOpenDay(report.from)}>Voir les blocs de ce jour</Button>
      ) : (
        <>
          <div class="period-tools">{children}</div>
          <Chart {...{ report, today }} onRange={open} onBehind={setBehind} />
        </>
      )}
      <Heat heat={report.heat} heat_max={report.heat_max} onBehind={setBehind} />
      <GoalDays range={report} />
      <PartLists report={report} onBehind={setBehind} />
      {behind && <DaysDialog range={report} {...{ behind, onOpenDay }} onClose={() => setBehind(null)} />}
    </>
  );
}

function Facts({ report, onOpenDay }: Pick<Shown, "report" | "onOpenDay">) {
  const { days_active, avg_per_day, pauses, best_day: best } = report;
  return (
    <dl class="facts">
      <div>
        <dt>Moyenne sur {count(days_active, "jour actif", "jours actifs")}</dt>
        <dd>{duration(avg_per_day)}</dd>
      </div>
      <div title="Inactivité entre la première et la dernière activité de chaque jour">
        <dt>Pauses</dt>
        <dd>{duration(pauses)}</dd>
      </div>
      {best && report.from !== report.to && (
        <div>
          <dt>Jour le plus actif</dt>
          <dd>
            <button type="button" class="link" onClick={() => onOpenDay(best.date)}>
              {capitalize(plainDay(best.date))}
            </button>
            , {duration(best.active)}
          </dd>
        </div>
      )}
    </dl>
  );
}

/** How it stands beside the range before, up to the same point where it still goes on. */
function Versus({ before }: Pick<PeriodReport, "before">) {
  if (!before) return <p class="period-versus quiet">&nbsp;</p>;
  const percent = before.change_percent;
  const isCut = dayOf(before.until - 1) < before.to;
  const until = isCut ? `, jusqu’au ${plainDay(dayOf(before.until))} à ${clock(before.until)}` : "";
  if (before.active < 1) return <p class="period-versus quiet">{`Rien avant (${before.name}${until}).`}</p>;
  return (
    <p class="period-versus">
      <b class="delta">{durationChange(before.change)}</b>
      {percent !== null && (
        <span class="quiet">
          ({percent > 0 ? "+" : percent < 0 ? "−" : ""}
          {Math.abs(percent)}&nbsp;%)
        </span>
      )}
      <span>{` contre ${duration(before.active)} avant (${before.name}${until})`}</span>
    </p>
  );
}
