import { useEffect, useId, useRef, useState } from "preact/hooks";
import type { Day } from "../bridge/routes";
import { addDays, addMonths, capitalize, firstOfMonth, longDay, mondayOf, monthName } from "../model/time";
import { Icon, type IconName } from "./icons";
import { Button, IconButton } from "./parts";
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
};
const weekdays = ["lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi", "dimanche"];

/** A month to pick a day from; days to come cannot be picked. */
function Calendar({ day, today, onPick }: CalendarProps) {
  const [cursor, setCursor] = useState(day);
  const grid = useRef<HTMLTableElement>(null);
  const heading = useId();
  const first = firstOfMonth(cursor);
  const start = mondayOf(first);
  const weeks = [0, 1, 2, 3, 4, 5].map((week) => weekdays.map((_, i) => addDays(start, week * 7 + i)));

  useEffect(() => {
    grid.current?.querySelector<HTMLElement>('[tabindex="0"]')?.focus();
  }, [cursor]);

  const move = (to: Day) => setCursor(to > today ? today : to);
  const onKeyDown = (event: KeyboardEvent) => {
    const step = steps[event.key];
    if (!step) return;
    event.preventDefault();
    event.stopPropagation();
    move(step(cursor));
  };

  return (
    <div class="calendar">
      <div class="calendar-head">
        <IconButton
          kind="ghost square"
          icon="left"
          label="Mois précédent"
          onClick={() => move(addMonths(cursor, -1))}
        />
        <Said id={heading} text={capitalize(monthName(cursor))} />
        <IconButton
          kind="ghost square"
          icon="right"
          label="Mois suivant"
          disabled={addMonths(first, 1) > today}
          onClick={() => move(addMonths(cursor, 1))}
        />
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
                <DayCell {...{ date, day, today, cursor, onPick }} />
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}

function DayCell({ date, day, today, cursor, onPick }: CalendarProps & { date: Day; cursor: Day }) {
  const chosen = date === day ? " chosen" : "";
  const now = date === today ? " today" : "";
  const outside = date.slice(0, 7) === cursor.slice(0, 7) ? "" : " outside";
  return (
    <td aria-selected={date === day}>
      <button
        type="button"
        class={`day${chosen}${now}${outside}`}
        tabIndex={date === cursor ? 0 : -1}
        disabled={date > today}
        // As it is seen, "1" for the first.
        aria-label={longDay(date).replace("1er", "1")}
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
  const [open, setOpen] = useState(false);
  const root = useRef<HTMLDivElement>(null);
  const close = () => {
    setOpen(false);
    root.current?.querySelector("button")?.focus();
  };
  useEffect(() => {
    if (!open) return;
    root.current?.querySelector(".popover")?.scrollIntoView({ block: "nearest" });
    const outside = (event: Event) => {
      if (event.target instanceof Node && !root.current?.contains(event.target)) setOpen(false);
    };
    document.addEventListener("pointerdown", outside);
    document.addEventListener("focusin", outside);
    return () => {
      document.removeEventListener("pointerdown", outside);
      document.removeEventListener("focusin", outside);
    };
  }, [open]);
  return (
    <div
      class="popover-root"
      ref={root}
      onKeyDown={(event) => {
        if (event.key !== "Escape" || !open) return;
        event.stopPropagation();
        event.preventDefault();
        close();
      }}
    >
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
