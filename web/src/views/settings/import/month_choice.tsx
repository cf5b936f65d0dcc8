import type { DateRange, ImportMonth } from "../../../bridge/routes";
import { addDays, addMonths, monthName } from "../../../model/time";
import { Select } from "../../../ui/parts";

interface Props {
  /** All that the file has. */
  months: readonly ImportMonth[];
  /** Null for all of them. */
  days: DateRange | null;
  onDays: (days: DateRange | null) => void;
}

/** Some months of a file alone: what was imported too much at once could not be taken back. */
export function MonthChoice({ months, days, onDays }: Props) {
  const first = months[0]?.month ?? "";
  const last = months.at(-1)?.month ?? "";
  const from = days?.from.slice(0, 7) ?? first;
  const to = days?.to.slice(0, 7) ?? last;
  const options = months.map(({ month }) => [month, monthName(`${month}-01`)] as const);
  const choose = (one: string, other: string) =>
    onDays(
      one === first && other === last
        ? null
        : { from: `${one}-01`, to: addDays(addMonths(`${other}-01`, 1), -1) },
    );
  return (
    <div class="with-unit month-choice">
      <p>Importer de</p>
      <Select
        label="Premier mois"
        value={from}
        options={options}
        onChange={(month) => choose(month, month > to ? month : to)}
      />
      <p>à</p>
      <Select
        label="Dernier mois"
        value={to}
        options={options}
        onChange={(month) => choose(month < from ? month : from, month)}
      />
    </div>
  );
}
