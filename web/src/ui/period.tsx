import type { Day } from "../bridge/routes";
import { DayButton } from "./calendar";
import { Button, IconButton, ViewTitle } from "./parts";
import { useRoving } from "./roving";
import { useShortcuts } from "./shortcuts";

interface Props {
  title: string;
  /** What one step is called: "Jour" or "Semaine", with its gender's ending. */
  previous: string;
  next: string;
  back: string;
  day: Day;
  today: Day;
  /** Nothing comes after it. */
  isCurrent: boolean;
  /** It is where `back` leads, if that is not the same. */
  isNow?: boolean;
  onStep: (direction: -1 | 1) => void;
  onDay: (day: Day) => void;
}

/** The name of the day or week shown, and the ways to others. */
export function PeriodBar({
  title,
  previous,
  next,
  back,
  day,
  today,
  isCurrent,
  isNow = isCurrent,
  onStep,
  onDay,
}: Props) {
  useShortcuts({ c: () => document.getElementById("calendar")?.click() });
  const bar = useRoving<HTMLDivElement>("row");
  return (
    <div class="period" ref={bar}>
      <div class="button-group">
        <IconButton
          kind="square"
          icon="left"
          label={previous}
          title={`${previous} (←)`}
          onClick={() => onStep(-1)}
        />
        <IconButton
          kind="square"
          icon="right"
          label={next}
          title={`${next} (→)`}
          disabled={isCurrent}
          onClick={() => onStep(1)}
        />
      </div>
      <ViewTitle text={title} />
      <DayButton label="Choisir une date" icon="day" id="calendar" day={day} today={today} onPick={onDay} />
      <Button disabled={isNow} title={`${back} (A)`} onClick={() => onDay(today)}>
        {back}
      </Button>
    </div>
  );
}
