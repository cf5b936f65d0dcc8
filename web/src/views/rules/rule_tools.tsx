import type { Origin, RuleRow } from "../../bridge/routes";
import { originOf, type Origins, type RuleFilter } from "../../model/rules";
import { count } from "../../model/time";
import { Icon } from "../../ui/icons";
import { Select } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { Said } from "../../ui/said";
import { fieldOptions } from "./labels";

const kinds: [Origin, string][] = [
  ["user", "Personnelles"],
  ["learned", "Apprises"],
  ["builtin", "Intégrées"],
  ["app", "D’après l’application"],
];

interface Props {
  rules: readonly RuleRow[] | undefined;
  origins: Origins;
  /** How many the filter lets through. */
  shown: number;
  filter: RuleFilter;
  onFilter: (filter: RuleFilter) => void;
}

/** What narrows the list of rules. */
export function RuleTools({ rules, origins, shown, filter, onFilter }: Props) {
  const counted = (origin: Origin) =>
    (rules ?? []).filter((rule) => originOf(rule, origins) === origin).length;
  const chips = useRoving<HTMLDivElement>("row");
  return (
    <div class="list-tools">
      <label class="search wide">
        <Icon name="search" />
        <input
          id="rule-search"
          class="input"
          type="search"
          placeholder="Texte, catégorie ou projet"
          aria-label="Chercher une règle"
          title="Chercher (/)"
          value={filter.text}
          onInput={(event) => onFilter({ ...filter, text: event.currentTarget.value })}
        />
      </label>
      <Select
        label="Champ"
        value={filter.field ?? ""}
        options={[["", "Tous les champs"], ...fieldOptions]}
        onChange={(field) => onFilter({ ...filter, field: field || null })}
      />
      <div class="chips" role="group" aria-label="Origine" ref={chips}>
        {kinds.map(([origin, label]) => (
          <button
            type="button"
            key={origin}
            class="chip"
            aria-pressed={filter.origin === origin}
            onClick={() => onFilter({ ...filter, origin: filter.origin === origin ? null : origin })}
          >
            {label} <span class="quiet">{counted(origin)}</span>
          </button>
        ))}
      </div>
      <span class="spacer" />
      <Said class="quiet" text={rules && count(shown, "règle")} />
    </div>
  );
}
