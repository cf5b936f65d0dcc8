import { useLayoutEffect, useMemo, useRef, useState } from "preact/hooks";
import type { Day, DayReport, UnixTime } from "../../bridge/routes";
import { likeliest, withGaps } from "../../model/away";
import {
  everything,
  type Filter,
  filterBlocks,
  isFiltering,
  loadFilter,
  saveFilter,
} from "../../model/filter";
import { dayList, sessions, withinDay } from "../../model/day_list";
import { count, duration } from "../../model/time";
import { Button, Empty } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { GoalLine } from "../goals/goal_line";
import { BlockList, reveal } from "./block_list";
import { Breakdown } from "./breakdown";
import type { Range } from "./drawing";
import { briefReason, ListTools } from "./list_tools";
import { PickedBar } from "./picked_bar";
import { Summary } from "./summary";
import { Timeline } from "./timeline";
import { useBar } from "./use_bar";
import { type Picked, usePicked } from "./use_picked";

interface Props {
  report: DayReport;
  /** The day asked for; the report may still be the one of the day before. */
  day: Day;
  /** Null on other days than today. */
  now: UnixTime | null;
  /** Adds a moment, first of all in that range. */
  onAdd: (range: Range) => void;
}

/** A day on which something was recorded: its sums, its timeline, its blocks. */
export function RecordedDay({ report, day, now, onAdd }: Props) {
  const { brief, totals, projects } = report;
  const [filter, setFilter] = useState<Filter>(loadFilter);
  useLayoutEffect(() => saveFilter(filter), [filter]);
  const flip = <K extends "cat" | "project" | "app" | "domain">(name: K, value: Filter[K]) =>
    setFilter((old) => ({ ...old, [name]: old[name] === value ? null : value }));
  const showAll = () => setFilter(everything);

  const pane = useRef<HTMLDivElement>(null);
  const isToday = now !== null;
  const isNarrowed = isFiltering(filter);
  const rows = useMemo(() => withGaps(withinDay(report), report), [report]);
  const list = useMemo(() => {
    const known = new Set(projects.map(({ id }) => id));
    const runs = isNarrowed ? new Map() : sessions(rows, known);
    // Today is read from now on back, another day as a story.
    return dayList(filterBlocks(rows, filter), runs, isToday);
  }, [rows, filter, isToday]);
  const picked = usePicked(day, report, rows, list.blocks, now ?? report.end, (index) =>
    reveal(pane.current?.querySelector<HTMLElement>(".blocks") ?? null, list.places[index] ?? 0),
  );
  const bar = useBar(pane, picked.clear);
  const add = () => onAdd(spanned(picked) ?? likeliest(rows, day, now ?? report.end));
  useShortcuts({ "/": () => document.getElementById("search")?.focus(), n: add });
  return (
    <>
      <div class={report.date === day ? "" : "stale"}>
        <Summary report={report} chosen={filter.cat} onChoose={(cat) => flip("cat", cat)} />
        <GoalLine {...{ day, isToday }} />
        <Timeline {...{ report, rows, now, picked }} onOpen={() => requestAnimationFrame(bar.enter)} />
        <div class="day-columns">
          <section class="list-pane" aria-label="Blocs" ref={pane}>
            <ListTools
              {...{ filter, projects, blocks: list.blocks }}
              whole={isNarrowed ? null : totals}
              onChange={(part) => setFilter((old) => ({ ...old, ...part }))}
              onReset={showAll}
              onAdd={add}
            />
            {list.blocks.length > 0 ? (
              <BlockList
                {...{ list, projects, selection: picked.selection }}
                onSelect={picked.select}
                onOpen={bar.enter}
              />
            ) : isNarrowed ? (
              <Empty title="Aucun bloc ne correspond au filtre.">
                <Button onClick={showAll}>Retirer le filtre</Button>
              </Empty>
            ) : (
              <Empty title="Seulement des passages très brefs." />
            )}
            {!isNarrowed && brief.seconds >= 1 && (
              <p class="list-rest" title={briefReason}>
                … et {count(brief.count, "passage bref", "passages brefs")} ({duration(brief.seconds)})
              </p>
            )}
          </section>
          <Breakdown totals={totals} filter={filter} onFlip={flip} />
        </div>
      </div>
      <PickedBar {...{ day, projects, picked, bar }} />
    </>
  );
}

// From the start of what is picked to its end.
function spanned({ range, selected }: Picked): Range | null {
  if (range || selected.length === 0) return range;
  return {
    start: Math.min(...selected.map(({ start }) => start)),
    end: Math.max(...selected.map(({ end }) => end)),
  };
}
