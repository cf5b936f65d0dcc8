import type { ImportMapping, ImportPreview } from "../../../bridge/routes";
import { columnNames, columnsOfImport, columnText, mapped } from "../../../model/imports";
import { Select } from "../../../ui/parts";

interface Props {
  preview: ImportPreview;
  onMapping: (mapping: ImportMapping) => void;
  onMonthFirst: (monthFirst: boolean) => void;
}

/** Which column is what: as it was guessed, to be changed. */
export function MappingFields({ preview, onMapping, onMonthFirst }: Props) {
  const { columns, mapping, month_first } = preview;
  const options = [
    ["", "–"] as const,
    ...columns.map((column, index) => [String(index), columnText(column, index)] as const),
  ];
  return (
    <fieldset class="mapping">
      <legend>Colonnes du fichier</legend>
      {columnsOfImport.map((one) => (
        <label key={one} class="field">
          <span>{columnNames[one]}</span>
          <Select
            value={mapping[one] === undefined ? "" : String(mapping[one])}
            options={options}
            onChange={(index) => onMapping(mapped(mapping, one, index === "" ? null : Number(index)))}
          />
        </label>
      ))}
      <label class="check">
        <input
          type="checkbox"
          checked={month_first}
          onChange={(event) => onMonthFirst(event.currentTarget.checked)}
        />
        Le mois est avant le jour (10/25/2026)
      </label>
    </fieldset>
  );
}
