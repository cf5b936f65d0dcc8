import type { ImportMonth, Seconds } from "../../../bridge/routes";
import { capitalize, duration, monthName } from "../../../model/time";

const figure = (seconds: Seconds) => (seconds < 1 ? "–" : duration(seconds));

/** By month, how much is in the file, how much of that would be stored and how much is there already. */
export function MonthTable({ months }: { months: readonly ImportMonth[] }) {
  if (months.length === 0) return null;
  return (
    <div class="months">
      <table>
        <thead>
          <tr>
            <th scope="col">Mois</th>
            <th scope="col">Dans le fichier</th>
            <th scope="col">À importer</th>
            <th scope="col">Déjà rempli</th>
          </tr>
        </thead>
        <tbody>
          {months.map(({ month, seconds, fills }) => (
            <tr key={month}>
              <th scope="row">{capitalize(monthName(`${month}-01`))}</th>
              <td>{figure(seconds)}</td>
              <td>
                <b>{figure(fills)}</b>
              </td>
              <td>{figure(seconds - fills)}</td>
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}
