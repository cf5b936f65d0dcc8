import type { RuleRow } from "../../bridge/routes";
import { type RuleFilter, type Source, sourceOf } from "../../model/rules";
import { count } from "../../model/time";
import { Icon } from "../../ui/icons";
import { Select } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { Said } from "../../ui/said";
import { fieldOptions } from "./labels";

const sources: [Source, string][] = [
  ["mine", "Personnelles"],
  ["learned", "Apprises"],
  ["builtin", "Intégrées"],
  ["application", "D’après l’application"],
];

interface Props {
  rules: readonly RuleRow[] | undefined;
  learned: ReadonlySet<number>;
  /** How many the filter lets through. */
  shown: number;
  filter: RuleFilter;
  onFilter: (filter: RuleFilter) => void;
}

/** What narrows the list of rules. */
export function RuleTools({ rules, learned, shown, filter, onFilter }: Props) {
  const counted = (source: Source) =>
    (rules ?? []).filter((rule) => sourceOf(rule, learned) === source).length;
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
        {sources.map(([source, label]) => (
          <button
            type="button"
            key={source}
            class="chip"
            aria-pressed={filter.source === source}
            onClick={() => onFilter({ ...filter, source: filter.source === source ? null : source })}
          >
            {label} <span class="quiet">{counted(source)}</span>
          </button>
        ))}
      </div>
      <span class="spacer" />
      <Said class="quiet" text={rules && count(shown, "règle")} />
    </div>
  );
}
