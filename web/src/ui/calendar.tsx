import { useEffect, useId, useRef, useState } from "preact/hooks";
import type { Day } from "../bridge/routes";
import {
  addDays,
  addMonths,
  capitalize,
  firstOfMonth,
  longDay,
  mondayOf,
  monthName,
  weekday,
} from "../model/time";
import { Icon, type IconName } from "./icons";

interface CalendarProps {
  day: Day;
  today: Day;
  onPick: (day: Day) => void;
}

/** A month to pick a day from; days to come cannot be picked. */
function Calendar({ day, today, onPick }: CalendarProps) {
  const [cursor, setCursor] = useState(day);
  const grid = useRef<HTMLTableElement>(null);
  const heading = useId();
  const first = firstOfMonth(cursor);
  const start = mondayOf(first);
  const weeks = [0, 1, 2, 3, 4, 5].map((week) =>
    [0, 1, 2, 3, 4, 5, 6].map((i) => addDays(start, week * 7 + i)),
  );

  useEffect(() => {
    grid.current?.querySelector<HTMLElement>('[tabindex="0"]')?.focus();
  }, [cursor]);

  const move = (to: Day) => setCursor(to > today ? today : to);
  const steps: Record<string, () => Day> = {
    ArrowLeft: () => addDays(cursor, -1),
    ArrowRight: () => addDays(cursor, 1),
    ArrowUp: () => addDays(cursor, -7),
    ArrowDown: () => addDays(cursor, 7),
    Home: () => addDays(cursor, -weekday(cursor)),
    End: () => addDays(cursor, 6 - weekday(cursor)),
    PageUp: () => addMonths(cursor, -1),
    PageDown: () => addMonths(cursor, 1),
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const step = steps[event.key];
    if (!step) return;
    event.preventDefault();
    event.stopPropagation();
    move(step());
  };

  return (
    <div class="calendar">
      <div class="calendar-head">
        <button
          type="button"
          class="button ghost square"
          aria-label="Mois précédent"
          onClick={() => move(addMonths(cursor, -1))}
        >
          <Icon name="left" />
        </button>
        <span id={heading} aria-live="polite">
          {capitalize(monthName(cursor))}
        </span>
        <button
          type="button"
          class="button ghost square"
          aria-label="Mois suivant"
          disabled={addMonths(first, 1) > today}
          onClick={() => move(addMonths(cursor, 1))}
        >
          <Icon name="right" />
        </button>
      </div>
      <table role="grid" aria-labelledby={heading} ref={grid} onKeyDown={onKeyDown}>
        <thead>
          <tr>
            {["lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi", "dimanche"].map((name) => (
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
                <td aria-selected={date === day}>
                  <button
                    type="button"
                    class={`day${date === day ? " chosen" : ""}${date === today ? " today" : ""}${
                      date.slice(0, 7) === cursor.slice(0, 7) ? "" : " outside"
                    }`}
                    tabIndex={date === cursor ? 0 : -1}
                    disabled={date > today}
                    aria-label={longDay(date)}
                    aria-current={date === today ? "date" : undefined}
                    onClick={() => onPick(date)}
                  >
                    {Number(date.slice(8))}
                  </button>
                </td>
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </div>
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
      <button
        type="button"
        class={text ? "button" : "button square"}
        id={id}
        aria-label={text ? `${label}\u00a0: ${text}` : label}
        aria-haspopup="dialog"
        aria-expanded={open}
        onClick={() => setOpen(!open)}
      >
        {icon && <Icon name={icon} />}
        {text}
      </button>
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
