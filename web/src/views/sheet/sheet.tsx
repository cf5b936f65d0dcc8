import { useLayoutEffect, useState } from "preact/hooks";
import type { DateRange, FrozenSheet, Sheet, SheetRow } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { toFile } from "../../model/filter";
import { type Behind, behindProject } from "../../model/period";
import { finenesses, holds, kindOf } from "../../model/range";
import { loadOptions, type Options, questionOf, saveOptions } from "../../model/sheet";
import { dayOf, duration } from "../../model/time";
import { Dialog } from "../../ui/dialog";
import { Icon } from "../../ui/icons";
import { Button, Empty, Failure, Incomplete } from "../../ui/parts";
import { RangeBar } from "../../ui/range_bar";
import { useShortcuts } from "../../ui/shortcuts";
import { DayList, DaysDialog } from "../period/days_dialog";
import type { ViewProps } from "../props";
import { SheetActions } from "./actions";
import { FreezeDialog, FrozenHead, FrozenList } from "./frozen";
import { SheetOptions } from "./options";
import { SheetPrint } from "./sheet_print";
import { SheetTable } from "./sheet_table";

type Shown = Pick<ViewProps, "today" | "onOpenDay">;

/** What a bill is made from: projects by days, now or as it was sent. */
export function SheetView({ range, today, onRange, onOpenDay }: ViewProps) {
  const [options, setOptions] = useState<Options>(loadOptions);
  useLayoutEffect(() => saveOptions(options), [options]);
  const change = (part: Partial<Options>) => setOptions((old) => ({ ...old, ...part }));
  const [frozen, setFrozen] = useState<FrozenSheet | null>(null);
  const back = () => {
    setFrozen(null);
    document.querySelector("main")?.focus();
  };
  useShortcuts({ Escape: () => (frozen === null ? false : back()) });
  const landscape = { landscape: options.landscape, onLandscape: (on: boolean) => change({ landscape: on }) };
  return (
    <div class="view sheet-view">
      <RangeBar
        name="Feuille de temps"
        {...{ range, today }}
        onRange={(to) => {
          setFrozen(null);
          // What suits a year suits no month.
          if (kindOf(to) !== kindOf(range)) change({ columns: null });
          onRange(to);
        }}
      />
      {frozen ? (
        <Frozen {...{ frozen, today, onOpenDay, ...landscape }} onBack={back} />
      ) : (
        <Current {...{ range, today, options, onOpenDay, ...landscape }} onChange={change} />
      )}
      <FrozenList
        onOpen={(sheet) => {
          onRange({ from: sheet.from, to: sheet.to });
          setFrozen(sheet);
        }}
        onDeleted={({ id }) => id === frozen?.id && back()}
      />
    </div>
  );
}

interface Paper {
  landscape: boolean;
  onLandscape: (landscape: boolean) => void;
}

interface CurrentProps extends Shown, Paper {
  range: DateRange;
  options: Options;
  onChange: (part: Partial<Options>) => void;
}

function Current({ range, today, options, onOpenDay, onChange, ...paper }: CurrentProps) {
  const fine = finenesses(range);
  const columns = options.columns !== null && fine.includes(options.columns) ? options.columns : null;
  const question = questionOf(range, { ...options, columns });
  const { answer, error, reload } = useAnswer("sheet", question, holds(range, today) ? 60 : 0);
  const isStale = answer?.from !== range.from || answer.to !== range.to;
  const sheet = error && isStale ? undefined : answer;
  const [freezing, setFreezing] = useState(false);
  const [filing, setFiling] = useState(false);
  const rest = sheet?.unassigned;
  return (
    <>
      <SheetOptions {...{ range, onChange }} options={{ ...options, columns }} by={sheet?.by} />
      {error && <Failure text={error} retry={reload} />}
      <Incomplete text={sheet?.incomplete} />
      {sheet && (
        <div class={isStale ? "stale" : ""}>
          {rest && rest.raw >= 60 && (
            <Button
              kind="to-file"
              aria-haspopup="dialog"
              title="Travail et temps non classé, qui ne sont à aucun projet"
              onClick={() => setFiling(true)}
            >
              <Icon name="projects" />
              Sans projet, à ranger : {duration(rest.raw)}
            </Button>
          )}
          {sheet.rows.length > 0 ? (
            <>
              <SheetActions {...{ sheet, ...paper }} source={question} onFreeze={() => setFreezing(true)} />
              <TableOf {...{ sheet, today, onOpenDay }} />
              <SheetPrint sheet={sheet} client={options.client} landscape={paper.landscape} made={today} />
            </>
          ) : (
            <Empty title="Aucun temps sur un projet ces jours-là." />
          )}
        </div>
      )}
      {freezing && sheet && <FreezeDialog sheet={sheet} onClose={() => setFreezing(false)} />}
      {filing && <ToFile {...{ range, onOpenDay }} onClose={() => setFiling(false)} />}
    </>
  );
}

interface FrozenProps extends Shown, Paper {
  frozen: FrozenSheet;
  onBack: () => void;
}

function Frozen({ frozen, today, onOpenDay, onBack, ...paper }: FrozenProps) {
  const { answer, error, reload } = useAnswer("sheets.get", { id: frozen.id });
  const sheet = answer?.id === frozen.id ? answer.sheet : undefined;
  return (
    <>
      <FrozenHead {...{ frozen, onBack }} />
      {error && <Failure text={error} retry={reload} />}
      {sheet && (
        <>
          <SheetActions {...{ sheet, ...paper }} source={{ id: frozen.id }} />
          <TableOf {...{ sheet, today, onOpenDay }} />
          <SheetPrint
            sheet={sheet}
            client={frozen.client || null}
            landscape={paper.landscape}
            made={dayOf(frozen.created)}
          />
        </>
      )}
    </>
  );
}

/** The table, what it comes to, and the days behind its cells. */
function TableOf({ sheet, today, onOpenDay }: Shown & { sheet: Sheet }) {
  const [behind, setBehind] = useState<(Behind & { range: DateRange }) | null>(null);
  const open = (row: SheetRow, index?: number) => {
    const found = behindProject(row.project_id, row.name);
    const { from, to } = index === undefined ? sheet : (sheet.columns[index] ?? sheet);
    if (from === to) onOpenDay(from, found.filter);
    else setBehind({ ...found, range: { from, to } });
  };
  const { billable, billable_text, seconds } = sheet.totals;
  return (
    <>
      <SheetTable {...{ sheet, today }} onOpen={open} />
      <p class="quiet sheet-rule">
        {sheet.rule}
        {billable !== seconds && ` Facturable : ${billable_text}.`}
      </p>
      {behind && <DaysDialog {...{ behind, onOpenDay }} range={behind.range} onClose={() => setBehind(null)} />}
    </>
  );
}

interface ToFileProps extends Pick<ViewProps, "onOpenDay"> {
  range: DateRange;
  onClose: () => void;
}

/** The days with work that waits for a project, each of which leads to those blocks. */
function ToFile({ range: { from, to }, onOpenDay, onClose }: ToFileProps) {
  const { answer, error, reload } = useAnswer("sheet", { from, to, columns: "day", rounding: 0 });
  const days = (answer?.columns ?? []).flatMap(({ from: date }, index) => {
    const cell = answer?.unassigned?.cells[index];
    return cell && cell.raw >= 1 ? [{ date, duration: cell.raw }] : [];
  });
  return (
    <Dialog title="Sans projet, à ranger" onClose={onClose}>
      <div class="dialog-body days-behind">
        {error && <Failure text={error} retry={reload} />}
        <p>
          Le travail qui n’est à aucun projet, et le temps non classé, qui peut en être. Loisir et Autre n’ont pas
          à l’être.
        </p>
        <DayList days={days} onOpen={(day) => onOpenDay(day, { project: toFile })} />
      </div>
    </Dialog>
  );
}
