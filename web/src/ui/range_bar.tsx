import type { DateRange, Day, PeriodKind } from "../bridge/routes";
import { current, holds, kindOf, rangeAt, rangeName, rangeOf, stepped } from "../model/range";
import { dateOnly } from "../model/time";
import { DayButton } from "./calendar";
import { Segmented } from "./parts";
import { PeriodBar } from "./period";

interface Props {
  /** What is shown of these days. */
  name: string;
  range: DateRange;
  today: Day;
  onRange: (range: DateRange) => void;
}

const kinds: { value: PeriodKind; label: string }[] = [
  { value: "day", label: "Jour" },
  { value: "week", label: "Semaine" },
  { value: "month", label: "Mois" },
  { value: "quarter", label: "Trimestre" },
  { value: "year", label: "Année" },
];
const words: Record<PeriodKind, [previous: string, next: string, back: string]> = {
  day: ["Jour précédent", "Jour suivant", "Aujourd’hui"],
  week: ["Semaine précédente", "Semaine suivante", "Cette semaine"],
  month: ["Mois précédent", "Mois suivant", "Ce mois-ci"],
  quarter: ["Trimestre précédent", "Trimestre suivant", "Ce trimestre"],
  year: ["Année précédente", "Année suivante", "Cette année"],
  other: ["Autant de jours avant", "Autant de jours après", "Jusqu’à aujourd’hui"],
};

/** The name of the days shown, and the ways to any others. */
export function RangeBar({ name, range, today, onRange }: Props) {
  const kind = kindOf(range);
  const [previous, next, back] = words[kind];
  // The day of the range that another kind of range is to hold.
  const day = holds(range, today) ? today : range.to < today ? range.to : range.from;
  const isCurrent = range.to >= today && stepped(range, 1).from > today;
  return (
    <div class="range-bar">
      <PeriodBar
        title={`${name}, ${rangeName(range)}`}
        {...{ previous, next, back, day, today, isCurrent }}
        isNow={sameRange(range, current(range, today))}
        onStep={(direction) => onRange(stepped(range, direction))}
        onDay={(to) => onRange(to === today ? current(range, today) : rangeAt(range, to))}
      />
      <div class="range-kinds">
        <Segmented
          legend="Longueur de la période"
          small
          choices={kinds}
          value={kind}
          onChange={(to) => to !== "other" && onRange(rangeOf(to, day))}
        />
        <div class="range-days">
          <DayButton
            label="Premier jour"
            text={dateOnly(range.from)}
            day={range.from}
            today={today}
            onPick={(from) => onRange({ from, to: from > range.to ? from : range.to })}
          />
          <p>–</p>
          <DayButton
            label="Dernier jour"
            text={dateOnly(range.to)}
            day={range.to > today ? today : range.to}
            today={today}
            onPick={(to) => onRange({ from: to < range.from ? to : range.from, to })}
          />
        </div>
      </div>
    </div>
  );
}

function sameRange(one: DateRange, other: DateRange): boolean {
  return one.from === other.from && one.to === other.to;
}
