import { useMemo } from "preact/hooks";
import type { Day, RecapReport, Seconds, WeekSummary } from "../bridge/routes";
import { changes, type Compared, type Dimension } from "../model/recap";
import { capitalize, count, dayInWeek, duration, durationChange } from "../model/time";
import { CategoryMark, ProjectDot } from "../ui/icons";
import { Button, CategoryBar, CategoryLegend, Empty, Foreign } from "../ui/parts";
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

function Recap({ recap, isCurrent, onOpenDay }: RecapProps) {
  const { current, previous } = recap;
  const longest = Math.max(current.active, previous.active);
  return (
    <>
      <Tiles recap={recap} onOpenDay={onOpenDay} />
      <section class="versus" aria-label="Catégories des deux semaines">
        <WeekBar
          name={isCurrent ? "Cette semaine, en cours" : "Cette semaine-là"}
          week={current}
          longest={longest}
        />
        <WeekBar name="La précédente" week={previous} longest={longest} />
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
            la précédente
          </span>
        </span>
      </h2>
      <div class="change-columns">
        <Changes title="Catégories" recap={recap} dimension="category" />
        <Changes title="Projets" recap={recap} dimension="project" />
        <Changes title="Applications" recap={recap} dimension="app" />
      </div>
    </>
  );
}

function Tiles({ recap: { current, previous }, onOpenDay }: Omit<RecapProps, "isCurrent">) {
  const best = current.best_day;
  return (
    <dl class="tiles">
      <Tile name="Temps actif" now={current.active} before={previous.active} />
      <Tile
        name="Moyenne par jour actif"
        now={current.avg_per_day}
        before={previous.avg_per_day}
        note={`${count(current.days_active, "jour")}, contre ${previous.days_active}`}
      />
      <Tile
        name="Plus longue session"
        now={current.longest_session}
        before={previous.longest_session}
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
            {previous.best_day
              ? `avant : ${duration(previous.best_day.active)}, ${dayInWeek(previous.best_day.date)}`
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
  before: Seconds;
  note?: string;
}

function Tile({ name, now, before, note }: TileProps) {
  return (
    <div class="tile">
      <dt>{name}</dt>
      <dd>
        <b>{duration(now)}</b>
        <p class="delta">{durationChange(now - before)}</p>
        <p class="quiet">
          avant : {duration(before)}
          {note && ` · ${note}`}
        </p>
      </dd>
    </div>
  );
}

function WeekBar({ name, week, longest }: { name: string; week: WeekSummary; longest: number }) {
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
function Changes({ title, recap, dimension }: { title: string; recap: RecapReport; dimension: Dimension }) {
  const all = useMemo(() => changes(recap.current, recap.previous, dimension), [recap, dimension]);
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
