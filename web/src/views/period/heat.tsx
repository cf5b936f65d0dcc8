import type { PeriodReport } from "../../bridge/routes";
import type { Behind } from "../../model/period";
import { capitalize, duration, hourName } from "../../model/time";
import { useRoving } from "../../ui/roving";

const weekdays = ["lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi", "dimanche"];
const levels = 4;

interface Props extends Pick<PeriodReport, "heat" | "heat_max"> {
  onBehind: (behind: Behind) => void;
}

/** When one works: every hour of the seven days, the darker the more; each leads to its days. */
export function Heat({ heat, heat_max, onBehind }: Props) {
  const table = useRoving<HTMLTableElement>("table");
  const [first, last] = hoursUsed(heat);
  const hours = Array.from({ length: last - first + 1 }, (_, index) => first + index);
  return (
    <section class="heat" aria-labelledby="heat-title">
      <h2 id="heat-title">Heures de la semaine</h2>
      <table ref={table}>
        <thead>
          <tr>
            <td />
            {hours.map((hour) => (
              <th scope="col" key={hour}>
                <span class={hour % 3 === 0 ? "" : "sr-only"}>{hour}&nbsp;h</span>
              </th>
            ))}
          </tr>
        </thead>
        <tbody>
          {weekdays.map((name, weekday) => (
            <tr key={name} role="row">
              <th scope="row">
                <abbr title={name}>{capitalize(name.slice(0, 3))}</abbr>
              </th>
              {hours.map((hour) => (
                <td key={hour}>
                  <Hour
                    seconds={heat[weekday]?.[hour] ?? 0}
                    most={heat_max}
                    name={`${name} ${hourName(hour)}`}
                    onOpen={(text) => onBehind({ name: text, activity: { weekday, hour }, filter: { hour } })}
                  />
                </td>
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </section>
  );
}

// From the first hour of the clock that has something to the last: the night is seldom worth its room.
function hoursUsed(heat: Props["heat"]): [number, number] {
  const used = Array.from({ length: 24 }, (_, hour) => hour).filter((hour) =>
    heat.some((day) => (day[hour] ?? 0) > 0),
  );
  return [Math.min(8, ...used), Math.max(18, ...used)];
}

interface HourProps {
  seconds: number;
  most: number;
  name: string;
  onOpen: (name: string) => void;
}

function Hour({ seconds, most, name, onOpen }: HourProps) {
  const level = seconds > 0 ? Math.ceil((seconds / most) * levels) : 0;
  const label = `${capitalize(name)}, ${seconds > 0 ? duration(seconds) : "rien"}`;
  return (
    <button
      type="button"
      class={`hour level-${level}`}
      aria-label={label}
      title={label}
      aria-haspopup="dialog"
      onClick={() => onOpen(name)}
    />
  );
}
