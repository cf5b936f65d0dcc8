import { useEffect, useMemo, useRef, useState } from "preact/hooks";
import type { Day, DayReport, UnixTime } from "../../bridge/routes";
import {
  everything,
  type Filter,
  filterBlocks,
  isFiltering,
  loadFilter,
  saveFilter,
} from "../../model/filter";
import { Button, Empty } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { BlockList, reveal } from "./block_list";
import { Breakdown } from "./breakdown";
import { ListTools } from "./list_tools";
import { PickedBar } from "./picked_bar";
import { Summary } from "./summary";
import { Timeline } from "./timeline";
import { useBar } from "./use_bar";
import { usePicked } from "./use_picked";

interface Props {
  report: DayReport;
  /** The day asked for; the report may still be the one of the day before. */
  day: Day;
  /** Null on other days than today. */
  now: UnixTime | null;
}

/** A day on which something was recorded: its sums, its timeline, its blocks. */
export function RecordedDay({ report, day, now }: Props) {
  const { blocks, totals, projects } = report;
  const [filter, setFilter] = useState<Filter>(loadFilter);
  useEffect(() => saveFilter(filter), [filter]);
  const flip = <K extends "cat" | "project" | "app" | "domain">(name: K, value: Filter[K]) =>
    setFilter((old) => ({ ...old, [name]: old[name] === value ? null : value }));
  const showAll = () => setFilter(everything);

  const list = useRef<HTMLDivElement>(null);
  const listed = useMemo(() => filterBlocks(blocks, filter), [blocks, filter]);
  const picked = usePicked(day, report, listed, (index) =>
    reveal(list.current?.querySelector<HTMLElement>(".blocks") ?? null, index),
  );
  const bar = useBar(list, picked.clear);
  useShortcuts({ "/": () => document.getElementById("search")?.focus() });
  return (
    <>
      <div class={report.date === day ? "" : "stale"}>
        <Summary report={report} chosen={filter.cat} onChoose={(cat) => flip("cat", cat)} />
        <Timeline {...{ report, now, picked }} onOpen={() => requestAnimationFrame(bar.enter)} />
        <div class="day-columns">
          <section class="list-pane" aria-label="Blocs" ref={list}>
            <ListTools
              {...{ filter, projects, blocks: listed }}
              onChange={(part) => setFilter((old) => ({ ...old, ...part }))}
              onReset={showAll}
            />
            {listed.length > 0 ? (
              <BlockList
                {...{ blocks: listed, projects, selection: picked.selection }}
                onSelect={picked.select}
                onOpen={bar.enter}
              />
            ) : isFiltering(filter) ? (
              <Empty title="Aucun bloc ne correspond au filtre.">
                <Button onClick={showAll}>Retirer le filtre</Button>
              </Empty>
            ) : (
              <Empty title="Rien que des passages très brefs." />
            )}
          </section>
          <Breakdown totals={totals} filter={filter} onFlip={flip} />
        </div>
      </div>
      <PickedBar {...{ day, projects, picked, bar }} />
    </>
  );
}
