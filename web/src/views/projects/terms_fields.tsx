import type { TermsText } from "../../model/terms";
import { Select } from "../../ui/parts";
import { RoundingWays, roundings } from "../../ui/rounding";

interface ClientProps {
  client: string;
  clients: readonly string[];
  onChange: (client: string) => void;
}

export function ClientField({ client, clients, onChange }: ClientProps) {
  return (
    <label class="field">
      <span>Client</span>
      <input
        class="input"
        maxLength={200}
        list="clients"
        value={client}
        onInput={(event) => onChange(event.currentTarget.value)}
      />
      <datalist id="clients">
        {clients.map((name) => (
          <option key={name} value={name} />
        ))}
      </datalist>
    </label>
  );
}

interface Props {
  terms: TermsText;
  onChange: (part: Partial<TermsText>) => void;
}

/** What is agreed for a project: what an hour costs, how many there are, how they are rounded. */
export function TermsFields({ terms, onChange }: Props) {
  const { rate, currency, billable, budget, from, rounding, mode, scope } = terms;
  return (
    <details class="terms" open={rate !== "" || budget !== "" || rounding !== "" || !billable}>
      <summary>Tarif, budget, arrondi</summary>
      <div class="form">
        <label class="check">
          <input
            type="checkbox"
            checked={billable}
            onChange={(event) => onChange({ billable: event.currentTarget.checked })}
          />
          Facturable
        </label>
        <div class="field-row">
          <Text name="Tarif à l’heure" value={rate} onInput={(value) => onChange({ rate: value })} />
          <Text name="Devise" value={currency} onInput={(value) => onChange({ currency: value })} />
        </div>
        <div class="field-row">
          <Text name="Budget d’heures" value={budget} onInput={(value) => onChange({ budget: value })} />
          <Text
            name="Compté depuis le"
            hint="jj/mm/aaaa"
            value={from}
            onInput={(value) => onChange({ from: value })}
          />
        </div>
        <label class="field">
          <span>Arrondi de la feuille de temps</span>
          <Select
            value={rounding}
            options={roundings("Aucun convenu")}
            onChange={(value) => onChange({ rounding: value })}
          />
        </label>
        <RoundingWays minutes={Number(rounding)} {...{ mode, scope, onChange }} />
      </div>
    </details>
  );
}

interface TextProps {
  name: string;
  hint?: string;
  value: string;
  onInput: (value: string) => void;
}

function Text({ name, hint, value, onInput }: TextProps) {
  return (
    <label class="field grow">
      <span>{name}</span>
      <input
        class="input"
        maxLength={20}
        placeholder={hint}
        value={value}
        onInput={(event) => onInput(event.currentTarget.value)}
      />
    </label>
  );
}
