import { useEffect, useMemo, useRef, useState } from "preact/hooks";
import type { Block, RuleRow, UnixTime } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { activeTime, assignable } from "../../model/categories";
import { assignIds, assignRange, type Target } from "../../model/changes";
import {
  everything,
  type Filter,
  filterBlocks,
  isFiltering,
  loadFilter,
  saveFilter,
} from "../../model/filter";
import { type Pattern, reason } from "../../model/matching";
import { nothing, selectedBlocks, type Selection } from "../../model/selection";
import { addDays, capitalize, clock, count, duration, isolated, longDay } from "../../model/time";
import { activity } from "../../model/timeline";
import { Empty, Failure, Incomplete } from "../../ui/parts";
import { openCalendar, PeriodBar } from "../../ui/period";
import { useShortcuts } from "../../ui/shortcuts";
import { useAttempt, useUndoable } from "../../ui/toast";
import type { ViewProps } from "../props";
import { learnedText } from "../rules/learned_text";
import { RuleEditor, type RuleDraft } from "../rules/rule_editor";
import { AssignBar } from "./assign_bar";
import { BlockList, reveal } from "./block_list";
import { Breakdown } from "./breakdown";
import { DeleteDialog, type Deletion } from "./delete_dialog";
import type { Range } from "./drawing";
import { EmptyDay } from "./empty_day";
import { ListTools } from "./list_tools";
import { Summary } from "./summary";
import { Timeline } from "./timeline";

const noBlocks: Block[] = [];

function within(blocks: readonly Block[], start: UnixTime, end: UnixTime): Block[] {
  return blocks.filter((block) => !block.idle && block.end > start && block.start < end);
}

export function DayView({ day, today, onDay, status }: ViewProps) {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const { answer, error, reload } = useAnswer("day", { date: day }, day === today ? 10 : 0);
  // Another day's report stands in for the moment that its successor takes, not for one that fails.
  const report = error && answer?.date !== day ? undefined : answer;
  const rules = useAnswer("rules.list", {});
  const [selection, setSelection] = useState<Selection>(nothing);
  const [range, setRange] = useState<Range | null>(null);
  const [filter, setFilter] = useState<Filter>(loadFilter);
  const [deleting, setDeleting] = useState<Deletion | null>(null);
  const [draft, setDraft] = useState<RuleDraft | null>(null);
  const list = useRef<HTMLDivElement>(null);

  const blocks = report?.blocks ?? noBlocks;
  const listed = useMemo(() => filterBlocks(blocks, filter), [blocks, filter]);
  const selected = useMemo(() => selectedBlocks(selection, blocks), [selection, blocks]);
  const [touched, time] = useMemo(() => {
    if (!range) return [selected, selected.reduce((sum, block) => sum + block.duration, 0)] as const;
    const { start, end } = range;
    return [within(blocks, start, end), activeTime(activity(report?.segments ?? [], start, end))] as const;
  }, [range, selected, blocks, report]);

  const clear = () => {
    setSelection((old) => ({ ...nothing, active: old.active }));
    setRange(null);
  };
  useEffect(clear, [day]);
  useEffect(() => saveFilter(filter), [filter]);
  const change = (part: Partial<Filter>) => setFilter((old) => ({ ...old, ...part }));
  const flip = <K extends "cat" | "project" | "app" | "domain">(name: K, value: Filter[K]) =>
    setFilter((old) => ({ ...old, [name]: old[name] === value ? null : value }));

  const pickRange = (next: Range | null) => {
    setSelection(nothing);
    setRange(next);
  };
  // A stretch of the timeline stands for the listed blocks in it, and an extension for all that lie
  // between it and what is selected.
  const pickBlocks = (start: number, end: number, extend: boolean) => {
    const known = extend ? selected : [];
    const from = Math.min(start, ...known.map((block) => block.start));
    const to = Math.max(end, ...known.map((block) => block.end));
    const inside = within(listed, from, to);
    const first = inside[0]?.ids[0] ?? null;
    setRange(null);
    setSelection({ ids: new Set(inside.flatMap((block) => block.ids)), active: first, anchor: first });
    const at = inside[0] ? listed.indexOf(inside[0]) : -1;
    if (at >= 0) reveal(list.current?.querySelector<HTMLElement>(".blocks") ?? null, at);
  };

  // To the bar, and back to where one came from.
  const origin = useRef<HTMLElement | null>(null);
  const enterBar = () => {
    origin.current = document.activeElement instanceof HTMLElement ? document.activeElement : null;
    document.querySelector<HTMLElement>(".assign .clock, .assign input:checked")?.focus();
  };
  const focusList = () => {
    const blocks = list.current?.querySelector<HTMLElement>(".blocks");
    (origin.current?.isConnected ? origin.current : blocks)?.focus({ preventScroll: true });
  };
  const leaveBar = () => {
    if (document.activeElement?.closest(".assign")) focusList();
    origin.current = null;
    clear();
  };

  const what = range ? `${clock(range.start)} – ${clock(range.end)}` : count(selected.length, "bloc");
  const ids = selected.flatMap((block) => block.ids);
  const assign = (target: Target) =>
    attempt(async () => {
      const automatic = target.category === null && target.projectId === null;
      await undoable(
        () => (range ? assignRange(client, range, target) : assignIds(client, ids, target)),
        ({ changes }) => ({
          text: `${automatic ? "De nouveau automatique" : "Assigné"} : ${what} (${duration(time)}).`,
          details: changes.flatMap(({ learned }) => learned.map(learnedText)),
        }),
      );
      leaveBar();
    });
  // One key gives a category and leaves the project that was given by hand.
  const quick = (category: string | null) => {
    if (time === 0) return false;
    const [first] = touched;
    const keep =
      category !== null && first && touched.every((block) => block.manual && block.pid === first.pid);
    void assign({ category, projectId: keep ? first.pid : null });
    return true;
  };

  const one = selected.length === 1 ? selected[0] : undefined;
  const remove = () => {
    const name = one && `${isolated(one.domain ?? one.app, 40)}, ${clock(one.start)} – ${clock(one.end)}`;
    setDeleting({ what: name ?? what, spans: range ? { ...range } : { ids } });
  };

  useShortcuts({
    ...Object.fromEntries(assignable.map((cat, index) => [String(index + 1), () => quick(cat)])),
    "0": () => quick(null),
    Delete: () => {
      if (!range && selected.length === 0) return false;
      remove();
      return true;
    },
    Escape: () => {
      if (!range && selected.length === 0) return false;
      clear();
      return true;
    },
    "/": () => document.getElementById("search")?.focus(),
    c: openCalendar,
  });

  const isToday = day === today;
  const projects = report?.projects ?? [];
  const totals = report?.totals;
  const why = one && rules.answer ? reason(one, rules.answer, projects) : null;
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
      {report && totals && blocks.length === 0 && report.segments.length === 0 && totals.active === 0 && (
        <EmptyDay
          isToday={isToday}
          paused={status?.paused ?? false}
          incomplete={report.incomplete !== undefined}
          onToday={() => onDay(today)}
          onYesterday={() => onDay(addDays(today, -1))}
        />
      )}
      {report && totals && (blocks.length > 0 || totals.active > 0) && (
        <div class={report.date === day ? "" : "stale"}>
          <Summary report={report} chosen={filter.cat} onChoose={(cat) => flip("cat", cat)} />
          <Timeline
            report={report}
            now={isToday ? (status?.now ?? null) : null}
            selected={selected}
            range={range}
            onRange={pickRange}
            onPick={pickBlocks}
            onOpen={() => requestAnimationFrame(enterBar)}
          />
          <div class="day-columns">
            <Breakdown totals={totals} filter={filter} onFlip={flip} />
            <section class="list-pane" aria-label="Blocs" ref={list}>
              <ListTools
                filter={filter}
                projects={projects}
                blocks={listed}
                onChange={change}
                onReset={() => setFilter(everything)}
              />
              {listed.length === 0 ? (
                <Empty
                  title={
                    isFiltering(filter)
                      ? "Aucun bloc ne correspond au filtre."
                      : "Rien que des passages très brefs."
                  }
                >
                  {isFiltering(filter) && (
                    <button type="button" class="button" onClick={() => setFilter(everything)}>
                      Retirer le filtre
                    </button>
                  )}
                </Empty>
              ) : (
                <BlockList
                  blocks={listed}
                  projects={projects}
                  selection={selection}
                  onSelect={(next) => {
                    setRange(null);
                    setSelection(next);
                  }}
                  onOpen={enterBar}
                />
              )}
            </section>
          </div>
        </div>
      )}
      {(range || selected.length > 0) && (
        <AssignBar
          day={day}
          blocks={touched}
          time={time}
          range={range}
          projects={projects}
          why={why}
          onAssign={(target) => void assign(target)}
          onRange={setRange}
          whole={range ? within(listed, range.start, range.end).length : 0}
          onWhole={() => range && pickBlocks(range.start, range.end, false)}
          onRule={(pattern: Pattern) =>
            setDraft({ ...pattern, category: one?.cat ?? null, projectId: one?.pid ?? null })
          }
          onEditRule={(rule: RuleRow) =>
            setDraft({
              field: rule.field,
              pattern: rule.pattern,
              category: rule.category,
              projectId: rule.project_id,
              replaces: rule,
            })
          }
          onDelete={remove}
          onClose={leaveBar}
        />
      )}
      {deleting && (
        <DeleteDialog
          {...deleting}
          onDeleted={leaveBar}
          onClose={() => {
            setDeleting(null);
            // What was asked from is gone with the selection.
            requestAnimationFrame(() => {
              if (document.activeElement === document.body) focusList();
            });
          }}
        />
      )}
      {draft && <RuleEditor draft={draft} today={today} onClose={() => setDraft(null)} />}
    </div>
  );
}
