import type { UnixTime, WeekReport } from "../bridge/routes";
import { activeTime, categories, categoryClass, categoryLabel } from "../model/categories";
import { scaleOf } from "../model/scale";
import { addDays, capitalize, clock, count, duration, plainDay, weekdayShort } from "../model/time";
import { CategoryTable } from "../ui/category_table";
import { Button, CategoryBar, CategoryLegend, Empty, projectRows, ShareList } from "../ui/parts";
import { useRoving } from "../ui/roving";
import { Gaps } from "./moments/gaps";
import type { ViewProps } from "./props";
import { WeekPage } from "./week_page";

export function WeekView(props: ViewProps) {
  const { today, status, onDay, onOpenDay } = props;
  const now = status?.now ?? Date.now() / 1000;
  return (
    <WeekPage {...props} route="week" name="Semaine">
      {(week, isCurrent) => {
        const active = week.days.reduce((sum, one) => sum + one.active, 0);
        if (active > 0) return <Week {...{ week, active, today, now, onOpenDay }} />;
        if (week.incomplete) return <Empty title="Rien n’a pu être lu pour cette semaine." />;
        return (
          <Empty title={isCurrent ? "La semaine commence." : "Rien d’enregistré cette semaine-là."}>
            <Button onClick={() => onDay(isCurrent ? addDays(week.monday, -7) : today)}>
              {isCurrent ? "Voir la semaine dernière" : "Revenir à cette semaine"}
            </Button>
          </Empty>
        );
      }}
    </WeekPage>
  );
}

interface WeekProps extends Pick<ViewProps, "today" | "onOpenDay"> {
  week: WeekReport;
  active: number;
  now: UnixTime;
}

function Week({ week, active, today, now, onOpenDay }: WeekProps) {
  const daysActive = week.days.filter((one) => one.active > 0).length;
  return (
    <>
      <section class="summary" aria-label="Résumé de la semaine">
        <p class="hero">
          <b>{duration(active)}</b>
          <span>actif</span>
        </p>
        <dl class="facts">
          <div>
            <dt>Moyenne sur {count(daysActive, "jour")}</dt>
            <dd>{duration(active / daysActive)}</dd>
          </div>
        </dl>
        <div class="summary-bar">
          <CategoryBar byCategory={week.by_category} />
          <CategoryLegend byCategory={week.by_category} />
        </div>
      </section>
      <div class="week-columns">
        <Chart {...{ week, today, onOpenDay }} />
        <ShareList
          title="Projets"
          rows={projectRows(week.by_project)}
          total={active}
          empty="Aucun temps sur un projet cette semaine."
          shown={12}
        />
      </div>
      <Gaps {...{ today, now }} monday={week.monday} />
    </>
  );
}

/** Seven columns of stacked categories; each is a button that opens its day. */
function Chart({ week, today, onOpenDay }: Omit<WeekProps, "active" | "now">) {
  const list = useRoving<HTMLOListElement>("row");
  const { top, lines } = scaleOf(week.days.map((day) => activeTime(day.by_category)));
  return (
    <section class="week-chart" aria-label="Jours de la semaine">
      <div class="week-grid" aria-hidden="true">
        {lines.map((hours) => (
          <span key={hours} style={{ bottom: `${((hours * 3600) / top) * 100}%` }}>
            {hours} h
          </span>
        ))}
      </div>
      <ol role="list" ref={list}>
        {week.days.map((day) => {
          const parts = categories.filter((cat) => (day.by_category[cat] ?? 0) > 0);
          return (
            <li key={day.date}>
              <button
                type="button"
                class={day.date === today ? "week-day today" : "week-day"}
                disabled={day.date > today}
                title={capitalize(plainDay(day.date))}
                onClick={() => onOpenDay(day.date)}
              >
                <span class="week-column">
                  {parts.map((cat) => (
                    <span
                      key={cat}
                      class={`fill ${categoryClass(cat)}`}
                      title={`${categoryLabel(cat)} ${duration(day.by_category[cat] ?? 0)}`}
                      style={{ "--part": `${((day.by_category[cat] ?? 0) / top) * 100}%` }}
                    />
                  ))}
                </span>
                <span class="week-name">
                  <b>{capitalize(weekdayShort(day.date))}</b> {Number(day.date.slice(8))}
                </span>
                <b class="week-active">{day.active > 0 ? duration(day.active) : "–"}</b>
                <span class="quiet">
                  {day.first !== null && day.last !== null
                    ? `${clock(day.first)} – ${clock(day.last)}`
                    : "\u00a0"}
                </span>
              </button>
            </li>
          );
        })}
      </ol>
      <CategoryTable
        caption="Temps par jour et par catégorie"
        head="Jour"
        rows={week.days.map((day) => ({ name: capitalize(plainDay(day.date)), parts: day.by_category }))}
      />
    </section>
  );
}
