import { useId, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Answer, Day } from "../bridge/routes";
import { useAnswer } from "../client";
import {
  addDays,
  addMonths,
  capitalize,
  duration,
  firstOfMonth,
  longDay,
  mondayOf,
  monthName,
} from "../model/time";
import { Icon, type IconName } from "./icons";
import { Button, IconButton } from "./parts";
import { usePopover } from "./popover";
import { Said } from "./said";

interface CalendarProps {
  day: Day;
  today: Day;
  onPick: (day: Day) => void;
}

const steps: Record<string, (day: Day) => Day> = {
  ArrowLeft: (day) => addDays(day, -1),
  ArrowRight: (day) => addDays(day, 1),
  ArrowUp: (day) => addDays(day, -7),
  ArrowDown: (day) => addDays(day, 7),
  Home: mondayOf,
  End: (day) => addDays(mondayOf(day), 6),
  PageUp: (day) => addMonths(day, -1),
  PageDown: (day) => addMonths(day, 1),
  "Shift+PageUp": (day) => addMonths(day, -12),
  "Shift+PageDown": (day) => addMonths(day, 12),
};
const jumps = {
  before: [
    ["farLeft", "Année précédente", -12],
    ["left", "Mois précédent", -1],
  ],
  after: [
    ["right", "Mois suivant", 1],
    ["farRight", "Année suivante", 12],
  ],
} as const;
const weekdays = ["lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi", "dimanche"];

/** A month to pick a day from, each tinted by what was done on it; days to come cannot be picked. */
function Calendar({ day, today, onPick }: CalendarProps) {
  const [cursor, setCursor] = useState(day);
  const grid = useRef<HTMLTableElement>(null);
  const heading = useId();
  const first = firstOfMonth(cursor);
  const start = mondayOf(first);
  const weeks = [0, 1, 2, 3, 4, 5].map((week) => weekdays.map((_, i) => addDays(start, week * 7 + i)));

  const recorded = useAnswer("period.days", { from: start, to: addDays(start, 41) }).answer;

  useLayoutEffect(() => {
    grid.current?.querySelector<HTMLElement>('[tabindex="0"]')?.focus();
  }, [cursor]);

  const move = (to: Day) => setCursor(to > today ? today : to);
  const onKeyDown = (event: KeyboardEvent) => {
    const step = steps[event.shiftKey && event.key.startsWith("Page") ? `Shift+${event.key}` : event.key];
    if (!step) return;
    event.preventDefault();
    event.stopPropagation();
    move(step(cursor));
  };

  return (
    <div class="calendar">
      <div class="calendar-head">
        <Jumps list={jumps.before} {...{ cursor, today }} onMove={move} />
        <Said id={heading} text={capitalize(monthName(cursor))} />
        <Jumps list={jumps.after} {...{ cursor, today }} onMove={move} />
      </div>
      <table role="grid" aria-labelledby={heading} ref={grid} onKeyDown={onKeyDown}>
        <thead>
          <tr>
            {weekdays.map((name) => (
              <th scope="col" abbr={name}>
                {name.slice(0, 2)}
              </th>
            ))}
          </tr>
        </thead>
        <tbody>
          {weeks.map((week) => (
            <tr>
              {week.map((date) => (
                <DayCell {...{ date, day, today, cursor, recorded, onPick }} />
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}

interface JumpsProps {
  list: readonly (readonly [IconName, string, number])[];
  cursor: Day;
  today: Day;
  onMove: (to: Day) => void;
}

function Jumps({ list, cursor, today, onMove }: JumpsProps) {
  return (
    <span>
      {list.map(([icon, label, by]) => (
        <IconButton
          key={by}
          icon={icon}
          label={label}
          disabled={by > 0 && addMonths(firstOfMonth(cursor), by) > today}
          onClick={() => onMove(addMonths(cursor, by))}
        />
      ))}
    </span>
  );
}

interface CellProps extends CalendarProps {
  date: Day;
  cursor: Day;
  recorded: Answer<"period.days"> | undefined;
}

function DayCell({ date, day, today, cursor, recorded, onPick }: CellProps) {
  const done = recorded?.days.find((one) => one.date === date);
  const chosen = date === day ? " chosen" : "";
  const now = date === today ? " today" : "";
  const outside = date.slice(0, 7) === cursor.slice(0, 7) ? "" : " outside";
  return (
    <td aria-selected={date === day}>
      <button
        type="button"
        class={`day${chosen}${now}${outside}${done ? ` level-${done.level}` : ""}`}
        tabIndex={date === cursor ? 0 : -1}
        disabled={date > today}
        // As it is seen, "1" for the first.
        aria-label={`${longDay(date).replace("1er", "1")}${done ? `, ${duration(done.duration)}` : ""}`}
        title={done && duration(done.duration)}
        aria-current={date === today ? "date" : undefined}
        onClick={() => onPick(date)}
      >
        {Number(date.slice(8))}
      </button>
    </td>
  );
}

interface DayButtonProps extends CalendarProps {
  label: string;
  text?: string;
  icon?: IconName;
  id?: string;
}

/** A button that opens the calendar under itself. */
export function DayButton({ label, text, icon, id, day, today, onPick }: DayButtonProps) {
  const { root, open, setOpen, close, onKeyDown } = usePopover();
  return (
    <div class="popover-root" ref={root} onKeyDown={onKeyDown}>
      <Button
        kind={text ? "" : "square"}
        id={id}
        aria-label={text ? `${label}\u00a0: ${text}` : label}
        aria-haspopup="dialog"
        aria-expanded={open}
        onClick={() => setOpen(!open)}
      >
        {icon && <Icon name={icon} />}
        {text}
      </Button>
      {open && (
        <div class="popover" role="dialog" aria-label={label}>
          <Calendar
            day={day}
            today={today}
            onPick={(picked) => {
              close();
              onPick(picked);
            }}
          />
        </div>
      )}
    </div>
  );
}
