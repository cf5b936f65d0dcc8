import type { Day, RecapReport, Seconds, Totals, WeekSummary } from "../bridge/routes";
import { type Loaded, useAnswer } from "../client";
import { changes, type Compared, type Dimension } from "../model/recap";
import { addDays, capitalize, count, dayInWeek, duration, durationChange } from "../model/time";
import { CategoryMark, ProjectDot } from "../ui/icons";
import { Button, CategoryBar, CategoryLegend, Empty, Failure, Foreign } from "../ui/parts";
import type { ViewProps } from "./props";
import { WeekPage } from "./week_page";

export function RecapView(props: ViewProps) {
  const { today, onDay, onOpenDay } = props;
  return (
    <WeekPage {...props} route="recap" name="Bilan">
      {(recap, isCurrent) =>
        recap.current.active > 0 || recap.previous.active > 0 ? (
          <Recap {...{ recap, isCurrent, onOpenDay }} />
        ) : (
          <Empty title="Rien à comparer.">
            {!recap.incomplete && <p>Ni cette semaine ni la précédente n’ont d’activité.</p>}
            {!isCurrent && <Button onClick={() => onDay(today)}>Revenir à cette semaine</Button>}
          </Empty>
        )
      }
    </WeekPage>
  );
}

interface RecapProps {
  recap: RecapReport;
  isCurrent: boolean;
  onOpenDay: (day: Day) => void;
}

/** What stands beside a week: all of the one before, or as much of it as has passed of one that runs. */
type Before = Omit<Totals, "domains"> & Partial<WeekSummary>;

function useBefore({ monday, previous }: RecapReport, isCurrent: boolean): Loaded<Before> {
  const running = { from: monday, to: addDays(monday, 6), compare: true };
  const { answer, ...asked } = useAnswer("period", isCurrent ? running : null, 60);
  if (!isCurrent) return { ...asked, answer: previous };
  const before = answer?.from === monday && answer.before;
  if (!before) return { ...asked, answer: undefined };
  const by_project = answer.by_project.map((project) => ({ ...project, duration: project.before ?? 0 }));
  return { ...asked, answer: { ...before, by_project } };
}

function Recap({ recap, isCurrent, onOpenDay }: RecapProps) {
  const { current } = recap;
  const { answer: before, error, reload } = useBefore(recap, isCurrent);
  if (!before) return error ? <Failure text={error} retry={reload} /> : null;
  const longest = Math.max(current.active, before.active);
  const sides = { current, before };
  return (
    <>
      <Tiles {...{ ...sides, onOpenDay }} then={isCurrent ? "avant, au même moment" : "avant"} />
      <section class="versus" aria-label="Catégories des deux semaines">
        <WeekBar
          name={isCurrent ? "Cette semaine, en cours" : "Cette semaine-là"}
          week={current}
          longest={longest}
        />
        <WeekBar
          name={isCurrent ? "La précédente, au même moment" : "La précédente"}
          week={before}
          longest={longest}
        />
        <CategoryLegend byCategory={current.by_category} />
      </section>
      <h2 class="section-title">
        Ce qui a le plus changé
        <span class="change-key" aria-hidden="true">
          <span>
            <span class="share-fill now" />
            {isCurrent ? "cette semaine" : "cette semaine-là"}
          </span>
          <span>
            <span class="share-fill before" />
            {isCurrent ? "la précédente, au même moment" : "la précédente"}
          </span>
        </span>
      </h2>
      <div class="change-columns">
        <Changes title="Catégories" {...sides} dimension="category" />
        <Changes title="Projets" {...sides} dimension="project" />
        <Changes title="Applications" {...sides} dimension="app" />
      </div>
    </>
  );
}

interface Sides {
  current: WeekSummary;
  before: Before;
}

type TilesProps = Sides & Pick<RecapProps, "onOpenDay"> & { then: string };

function Tiles({ current, before, then, onOpenDay }: TilesProps) {
  const best = current.best_day;
  const days = count(current.days_active, "jour");
  return (
    <dl class="tiles">
      <Tile name="Temps actif" now={current.active} before={before.active} then={then} />
      <Tile
        name="Moyenne par jour actif"
        now={current.avg_per_day}
        before={before.avg_per_day}
        then={then}
        note={before.days_active === undefined ? days : `${days}, contre ${before.days_active}`}
      />
      <Tile
        name="Plus longue session"
        now={current.longest_session}
        before={before.longest_session}
        then={then}
        note="sans inactivité"
      />
      <div class="tile">
        <dt>Jour le plus actif</dt>
        <dd>
          {best ? (
            <>
              <b>{duration(best.active)}</b>
              <button type="button" class="link" onClick={() => onOpenDay(best.date)}>
                {capitalize(dayInWeek(best.date))}
              </button>
            </>
          ) : (
            <b>–</b>
          )}
          <p class="quiet">
            {before.best_day
              ? `avant : ${duration(before.best_day.active)}, ${dayInWeek(before.best_day.date)}`
              : ""}
          </p>
        </dd>
      </div>
    </dl>
  );
}

interface TileProps {
  name: string;
  now: Seconds;
  /** Absent where it cannot be compared. */
  before: Seconds | undefined;
  then: string;
  note?: string;
}

function Tile({ name, now, before, then, note }: TileProps) {
  const beside = before !== undefined && `${then}\u00a0: ${duration(before)}`;
  return (
    <div class="tile">
      <dt>{name}</dt>
      <dd>
        <b>{duration(now)}</b>
        {before !== undefined && <p class="delta">{durationChange(now - before)}</p>}
        <p class="quiet">{[beside, note].filter(Boolean).join(" · ")}</p>
      </dd>
    </div>
  );
}

function WeekBar({ name, week, longest }: { name: string; week: Before; longest: number }) {
  return (
    <div class="versus-row">
      <p>{name}</p>
      <div class="versus-bar">
        <div style={{ width: `${longest > 0 ? (week.active / longest) * 100 : 0}%` }}>
          <CategoryBar byCategory={week.by_category} />
        </div>
      </div>
      <b>{duration(week.active)}</b>
    </div>
  );
}

/** Two bars an entry: this week over the one before. */
function Changes({ title, current, before, dimension }: Sides & { title: string; dimension: Dimension }) {
  const all = changes(current, before, dimension);
  const longest = Math.max(...all.map((item) => Math.max(item.current, item.previous)), 1);
  return (
    <section class="changes" aria-label={title}>
      <h3>{title}</h3>
      {all.length === 0 && <p class="quiet">Pas de changement.</p>}
      <ul role="list">
        {all.slice(0, 8).map((item) => (
          <ChangeRow key={item.key} item={item} longest={longest} dimension={dimension} />
        ))}
      </ul>
    </section>
  );
}

function ChangeRow({ item, longest, dimension }: { item: Compared; longest: number; dimension: Dimension }) {
  const width = (seconds: number) => ({ width: `${(seconds / longest) * 100}%` });
  return (
    <li class="change" title={`${duration(item.previous)} → ${duration(item.current)}`}>
      <span class="share-name">
        {dimension === "category" && <CategoryMark cat={item.key} />}
        {item.color !== undefined && <ProjectDot color={item.color} />}
        <Foreign text={item.name} length={60} />
      </span>
      <b>{durationChange(item.current - item.previous)}</b>
      <span class="sr-only">
        , {duration(item.current)} contre {duration(item.previous)}
      </span>
      <span class="change-bars" aria-hidden="true">
        <span class="share-fill now" style={width(item.current)} />
        <span class="share-fill before" style={width(item.previous)} />
      </span>
    </li>
  );
}
