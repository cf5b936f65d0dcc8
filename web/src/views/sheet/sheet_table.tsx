import { useRef } from "preact/hooks";
import type { Sheet, SheetRow, SheetTime } from "../../bridge/routes";
import { amountsText, byClient, clientName, columnHead } from "../../model/sheet";
import { weekday } from "../../model/time";
import { ProjectDot } from "../../ui/icons";
import { Foreign } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useEdges } from "./use_edges";

interface Props {
  sheet: Sheet;
  today: string;
  /** Shows the days behind a cell; behind the total where no column is named. */
  onOpen: (row: SheetRow, column?: number) => void;
}

/** Client ▸ project by days, weeks or months; every cell leads to what it counts. */
export function SheetTable({ sheet, today, onOpen }: Props) {
  const table = useRoving<HTMLTableElement>("table");
  const place = useRef<HTMLDivElement>(null);
  useEdges(place, "thead th:is(:first-child, .sheet-total, .sheet-amount)");
  const paid = sheet.totals.amounts.length > 0;
  const amounts = [...sheet.rows.map(({ amount }) => amount ?? ""), ...sheet.totals.amounts.map(({ text }) => text)];
  const longest = Math.max(9, ...amounts.map(({ length }) => length));
  const width = sheet.columns.length + 2 + (paid ? 1 : 0);
  return (
    <div class="sheet-scroll" role="region" aria-label={sheet.title} ref={place}>
      <table class={paid ? "sheet paid" : "sheet"} style={{ "--amount": String(longest) }} ref={table}>
        <SheetHead {...{ sheet, paid }} />
        {byClient(sheet).map(({ client, text, rows }) => (
          <tbody key={client}>
            <tr class="sheet-client">
              <th scope="rowgroup" colSpan={width}>
                <span>
                  <Foreign text={clientName(client)} length={80} />
                  <span class="quiet">{text}</span>
                </span>
              </th>
            </tr>
            {rows.map((row) => (
              <Row key={row.project_id} {...{ row, sheet, paid, today, onOpen }} />
            ))}
          </tbody>
        ))}
        <tfoot>
          <tr>
            <th scope="row">Total</th>
            {sheet.totals.cells.map((cell, index) => (
              <td key={index}>{cell && <Time time={cell} />}</td>
            ))}
            <td class="sheet-total">
              <Time time={sheet.totals} />
            </td>
            {paid && <td class="sheet-amount">{amountsText(sheet)}</td>}
          </tr>
        </tfoot>
      </table>
    </div>
  );
}

type Shown = Pick<Props, "sheet"> & { paid: boolean };

function SheetHead({ sheet, paid }: Shown) {
  return (
    <thead>
      <tr>
        <th scope="col">Projet</th>
        {sheet.columns.map((column) => {
          const [over, under] = columnHead(column, sheet.by);
          const off = sheet.by === "day" && weekday(column.from) > 4;
          return (
            <th scope="col" key={column.from} title={column.name} class={off ? "off" : ""}>
              <span aria-hidden="true">
                {over}
                {under && <b>{under}</b>}
              </span>
              <span class="sr-only">{column.name}</span>
            </th>
          );
        })}
        <th scope="col" class="sheet-total">
          Total
        </th>
        {paid && (
          <th scope="col" class="sheet-amount">
            Montant
          </th>
        )}
      </tr>
    </thead>
  );
}

type RowProps = Shown & Pick<Props, "today" | "onOpen"> & { row: SheetRow };

function Row({ row, sheet, paid, today, onOpen }: RowProps) {
  const cost = row.billable ? row.rate_text : "Non facturable";
  return (
    <tr role="row">
      <th scope="row" title={row.rounding.text}>
        <span class="project">
          <ProjectDot color={row.color} />
          <Foreign text={row.name} length={80} />
        </span>
        {cost !== null && <small>{cost}</small>}
      </th>
      {row.cells.map((cell, index) => {
        const column = sheet.columns[index]!;
        return (
          <td key={index} class={sheet.by === "day" && weekday(column.from) > 4 ? "off" : ""}>
            <button
              type="button"
              class="cell"
              disabled={column.from > today}
              onClick={() => onOpen(row, index)}
            >
              <Where row={row} column={column.name} />
              {cell ? <Time time={cell} /> : <span class="sr-only">rien</span>}
            </button>
          </td>
        );
      })}
      <td class="sheet-total">
        <button type="button" class="cell" onClick={() => onOpen(row)}>
          <Where row={row} column="total" />
          <Time time={row} />
        </button>
      </td>
      {paid && <td class="sheet-amount">{row.amount}</td>}
    </tr>
  );
}

/** For those who hear of a cell alone. */
function Where({ row, column }: { row: SheetRow; column: string }) {
  return (
    <span class="sr-only">
      <Foreign text={row.name} length={80} />, {column}&nbsp;:{" "}
    </span>
  );
}

/** As it is counted; beneath, as it is, where that is not the same. */
function Time({ time: { text, raw_text } }: { time: SheetTime }) {
  return (
    <>
      {text}
      {raw_text !== text && (
        <small title="Sans arrondi">
          <span class="sr-only">, sans arrondi </span>
          {raw_text}
        </small>
      )}
    </>
  );
}
