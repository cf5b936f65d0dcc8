// The timesheet as one wants it, and as a table for other programs.
import type {
  DateRange,
  HourUnit,
  PeriodBy,
  RoundingMode,
  RoundingScope,
  RoundingStep,
  Sheet,
  SheetColumn,
  SheetQuestion,
  SheetRow,
} from "../bridge/routes";
import { load, save } from "./stored";
import { capitalize, clip, dayShort, monthOnly, weekdayShort } from "./time";

export interface Options {
  /** Null for what suits the length of the range. */
  columns: PeriodBy | null;
  hours: HourUnit;
  /** Null for what is agreed for each project. */
  rounding: RoundingStep | null;
  mode: RoundingMode;
  scope: RoundingScope;
  client: string | null;
  landscape: boolean;
}

const usual: Options = {
  columns: null,
  hours: "hm",
  rounding: null,
  mode: "nearest",
  scope: "day",
  client: null,
  landscape: false,
};
const key = "sheet";

export function loadOptions(): Options {
  const valid = (value: unknown) => typeof value === "object" && value !== null;
  return { ...usual, ...load<Partial<Options>>(key, {}, valid) };
}

export function saveOptions(options: Options): void {
  save(key, options);
}

export function questionOf({ from, to }: DateRange, options: Options): SheetQuestion {
  const { columns, hours, rounding, mode, scope, client } = options;
  return {
    from,
    to,
    hours,
    ...(columns !== null && { columns }),
    ...(client !== null && { client }),
    ...(rounding !== null && { rounding, rounding_mode: mode, rounding_scope: scope }),
  };
}

/** The rows of each client, in their order. */
export function byClient(sheet: Sheet): { client: string; text: string; rows: SheetRow[] }[] {
  return sheet.clients.map(({ client, text }) => ({
    client,
    text,
    rows: sheet.rows.filter((row) => row.client === client),
  }));
}

export function clientName(client: string): string {
  return client === "" ? "Sans client" : client;
}

/** Over a column, in as few letters as tell it from the others. */
export function columnHead({ from, to }: SheetColumn, by: PeriodBy): [string, string] {
  if (from === to && by === "day") return [capitalize(weekdayShort(from)), String(Number(from.slice(8)))];
  if (by === "month") return [capitalize(monthOnly(from)), from.slice(0, 4)];
  return [dayShort(from), from === to ? "" : `– ${dayShort(to)}`];
}

/** Whether anything is printed otherwise than it was. */
export function isRounded(sheet: Sheet): boolean {
  return [...sheet.rows, sheet.totals].some(({ raw_text, text }) => raw_text !== text);
}

export function amountsText(sheet: Sheet): string {
  return sheet.totals.amounts.map(({ text }) => text).join(" + ");
}

/** The sheet as lines of cells, its head first, the total last. */
function lines(sheet: Sheet): string[][] {
  const head = ["Client", "Projet", ...sheet.columns.map(({ label }) => label), "Total", "Montant"];
  const cells = (all: Sheet["rows"][number]["cells"]) => all.map((cell) => cell?.text ?? "");
  const rows = sheet.rows.map((row) => [
    clip(row.client, 200),
    clip(row.name, 200),
    ...cells(row.cells),
    row.text,
    row.amount ?? "",
  ]);
  return [head, ...rows, ["", "Total", ...cells(sheet.totals.cells), sheet.totals.text, amountsText(sheet)]];
}

export function sheetText(sheet: Sheet): string {
  const plain = (cell: string) => cell.replace(/[\t\r\n]+/g, " ");
  return lines(sheet)
    .map((line) => `${line.map(plain).join("\t")}\n`)
    .join("");
}

const entities: Record<string, string> = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" };

function escaped(text: string): string {
  return text.replace(/[&<>"]/g, (sign) => entities[sign] ?? sign);
}

/** For a mail: names are text in it, whatever they are. */
export function sheetHtml(sheet: Sheet): string {
  const all = lines(sheet);
  const line = (cells: string[], tag: "td" | "th") =>
    `<tr>${cells.map((cell) => `<${tag}>${escaped(cell)}</${tag}>`).join("")}</tr>`;
  const rows = all.map((cells, at) => line(cells, at === 0 || at === all.length - 1 ? "th" : "td"));
  return `<p>${escaped(sheet.title)}</p><table border="1" cellspacing="0" cellpadding="4">${rows.join("")}</table>`;
}
