import type { Day, Sheet, SheetColumn } from "../../bridge/routes";
import { amountsText, byClient, clientName, columnHead, isRounded } from "../../model/sheet";
import { capitalize, dateOnly } from "../../model/time";
import { Foreign } from "../../ui/parts";

interface Props {
  sheet: Sheet;
  /** Null where it is of all clients. */
  client: string | null;
  landscape: boolean;
  /** When it was made. */
  made: Day;
}

/** What goes on paper: head, sums, days, and a line to sign on. Nothing of it is seen on the screen. */
export function SheetPrint({ sheet, client, landscape, made }: Props) {
  // A week is headed by two dates.
  const across = sheet.by === "week" ? (landscape ? 18 : 11) : landscape ? 31 : 16;
  const parts = Math.ceil(sheet.columns.length / across);
  const each = Math.ceil(sheet.columns.length / parts);
  return (
    <div class={landscape ? "paper landscape" : "paper"}>
      <header>
        <h2>
          <Foreign text={sheet.title} length={200} />
        </h2>
        <dl>
          {client !== null && (
            <div>
              <dt>Client</dt>
              <dd>
                <Foreign text={client} length={200} />
              </dd>
            </div>
          )}
          <div>
            <dt>Période</dt>
            <dd>
              {capitalize(sheet.name)}, du {dateOnly(sheet.from)} au {dateOnly(sheet.to)}
            </dd>
          </div>
          <div>
            <dt>Établie le</dt>
            <dd>{dateOnly(made)}</dd>
          </div>
        </dl>
      </header>
      <Sums sheet={sheet} />
      {Array.from({ length: parts }, (_, index) => (
        <Part
          key={index}
          sheet={sheet}
          first={index * each}
          columns={sheet.columns.slice(index * each, (index + 1) * each)}
        />
      ))}
      <p class="paper-rule">{sheet.rule}</p>
      <footer>
        <p>Date et signature du prestataire</p>
        <p>Date et signature du client</p>
      </footer>
    </div>
  );
}

function Sums({ sheet }: Pick<Props, "sheet">) {
  const rounded = isRounded(sheet);
  const paid = sheet.totals.amounts.length > 0;
  return (
    <table class="paper-sums">
      <thead>
        <tr>
          <th>Client, projet</th>
          <th>Heures</th>
          {rounded && <th>Sans arrondi</th>}
          {paid && <th>Tarif</th>}
          {paid && <th>Montant</th>}
        </tr>
      </thead>
      {byClient(sheet).map(({ client, rows }) => (
        <tbody key={client}>
          {sheet.clients.length > 1 && (
            <tr class="paper-client">
              <th colSpan={5}>
                <Foreign text={clientName(client)} length={120} />
              </th>
            </tr>
          )}
          {rows.map((row) => (
            <tr key={row.project_id}>
              <th>
                <Foreign text={row.name} length={120} />
              </th>
              <td>{row.text}</td>
              {rounded && <td>{row.raw_text}</td>}
              {paid && <td>{row.billable ? row.rate_text : "non facturable"}</td>}
              {paid && <td>{row.amount}</td>}
            </tr>
          ))}
        </tbody>
      ))}
      <tfoot>
        <tr>
          <th>Total</th>
          <td>{sheet.totals.text}</td>
          {rounded && <td>{sheet.totals.raw_text}</td>}
          {paid && <td />}
          {paid && <td>{amountsText(sheet)}</td>}
        </tr>
      </tfoot>
    </table>
  );
}

function Part({ sheet, first, columns }: Pick<Props, "sheet"> & { first: number; columns: SheetColumn[] }) {
  const of = <T,>(cells: readonly T[]) => cells.slice(first, first + columns.length);
  const rows = sheet.rows.filter((row) => of(row.cells).some((cell) => cell !== null));
  return (
    <table class="paper-days">
      <thead>
        <tr>
          <th>Détail</th>
          {columns.map((column) => {
            const [over, under] = columnHead(column, sheet.by);
            return (
              <th key={column.from}>
                {over}
                {under && <b>{under}</b>}
              </th>
            );
          })}
        </tr>
      </thead>
      <tbody>
        {rows.map((row) => (
          <tr key={row.project_id}>
            <th>
              <Foreign text={row.name} length={60} />
            </th>
            {of(row.cells).map((cell, index) => (
              <td key={index}>{cell?.text}</td>
            ))}
          </tr>
        ))}
      </tbody>
      <tfoot>
        <tr>
          <th>Total</th>
          {of(sheet.totals.cells).map((cell, index) => (
            <td key={index}>{cell?.text}</td>
          ))}
        </tr>
      </tfoot>
    </table>
  );
}
