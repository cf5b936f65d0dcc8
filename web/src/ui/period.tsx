import type { Day } from "../bridge/routes";
import { Icon } from "./icons";
import { DayButton } from "./calendar";
import { addDays, mondayOf, weekName } from "../model/time";

interface Props {
  title: string;
  /** What one step is called: "Jour" or "Semaine", with its gender's ending. */
  previous: string;
  next: string;
  back: string;
  day: Day;
  today: Day;
  isCurrent: boolean;
  onStep: (direction: -1 | 1) => void;
  onDay: (day: Day) => void;
}

/** The name of the day or week shown, and the ways to others. */
export function PeriodBar({ title, previous, next, back, day, today, isCurrent, onStep, onDay }: Props) {
  return (
    <div class="period">
      <div class="button-group">
        <button
          type="button"
          class="button square"
          aria-label={previous}
          title={`${previous} (←)`}
          onClick={() => onStep(-1)}
        >
          <Icon name="left" />
        </button>
        <button
          type="button"
          class="button square"
          aria-label={next}
          title={`${next} (→)`}
          disabled={isCurrent}
          onClick={() => onStep(1)}
        >
          <Icon name="right" />
        </button>
      </div>
      <h1>{title}</h1>
      <DayButton label="Choisir une date" icon="day" id="calendar" day={day} today={today} onPick={onDay} />
      <button
        type="button"
        class="button"
        disabled={isCurrent}
        title={`${back} (A)`}
        onClick={() => onDay(today)}
      >
        {back}
      </button>
    </div>
  );
}

/** The bar of a view of the week that `day` is in. */
export function WeekPeriodBar({
  name,
  day,
  today,
  onDay,
}: { name: string } & Pick<Props, "day" | "today" | "onDay">) {
  const monday = mondayOf(day);
  return (
    <PeriodBar
      title={`${name} du ${weekName(monday)}`}
      previous="Semaine précédente"
      next="Semaine suivante"
      back="Cette semaine"
      day={day}
      today={today}
      isCurrent={monday === mondayOf(today)}
      onStep={(direction) => onDay(addDays(day, 7 * direction))}
      onDay={onDay}
    />
  );
}

/** Opens the calendar of the period bar, from anywhere. */
export function openCalendar(): void {
  document.getElementById("calendar")?.click();
}
