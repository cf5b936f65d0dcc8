import type { DateRange, HourUnit, PeriodBy, RoundingStep } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { clientsOf, sameClient } from "../../model/clients";
import type { Options } from "../../model/sheet";
import { finenesses } from "../../model/range";
import { clip } from "../../model/time";
import { Segmented, Select } from "../../ui/parts";
import { RoundingWays, roundings } from "../../ui/rounding";

interface Props {
  options: Options;
  range: DateRange;
  /** As the sheet has them where none are wished for. */
  by: PeriodBy | undefined;
  onChange: (part: Partial<Options>) => void;
}

const byNames: Record<PeriodBy, string> = { day: "Jours", week: "Semaines", month: "Mois" };
/** How the sheet is made: whose, in which columns, in which hours, how rounded. */
export function SheetOptions({ options, range, by, onChange }: Props) {
  const { answer: projects = [] } = useAnswer("projects.list", {});
  const clients = clientsOf(projects);
  // One that was chosen once, and has no project any more.
  const chosen = clients.find((one) => sameClient(one, options.client ?? "")) ?? options.client;
  if (chosen !== null && !clients.includes(chosen)) clients.push(chosen);
  const fine = finenesses(range);
  const { columns, hours, rounding, mode, scope } = options;
  return (
    <div class="sheet-options">
      {clients.length > 0 && (
        <Select
          label="Client"
          value={chosen ?? ""}
          options={[["", "Tous les clients"], ...clients.map((name) => [name, clip(name, 60)] as const)]}
          onChange={(client) => onChange({ client: client === "" ? null : client })}
        />
      )}
      {fine.length > 1 && (
        <Segmented
          legend="Colonnes"
          small
          choices={fine.map((value) => ({ value, label: byNames[value] }))}
          value={columns ?? by}
          onChange={(value) => onChange({ columns: value ?? null })}
        />
      )}
      <Segmented<HourUnit>
        legend="Heures"
        small
        choices={[
          { value: "hm", label: "7:30", title: "Heures et minutes" },
          { value: "decimal", label: "7,50", title: "Heures décimales" },
        ]}
        value={hours}
        onChange={(value) => onChange({ hours: value })}
      />
      <Select
        label="Arrondi"
        value={rounding === null ? "" : String(rounding)}
        options={roundings("Arrondi de chaque projet")}
        onChange={(value) => onChange({ rounding: value === "" ? null : (Number(value) as RoundingStep) })}
      />
      <RoundingWays minutes={rounding ?? 0} {...{ mode, scope, onChange }} />
    </div>
  );
}
