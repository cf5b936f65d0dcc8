// How hours are rounded for a bill.
import type { RoundingMode, RoundingScope } from "../bridge/routes";
import { Segmented } from "./parts";

const modes = [
  { value: "nearest" as const, label: "Au plus proche" },
  { value: "up" as const, label: "Vers le haut" },
];
const scopes = [
  { value: "day" as const, label: "Chaque jour" },
  { value: "total" as const, label: "Le total" },
];

/** Minutes, and what rounding to them is called; none where nothing is agreed. */
export function roundings(none: string): [string, string][] {
  const steps = [5, 6, 10, 15, 30].map((minutes): [string, string] => [
    String(minutes),
    `Arrondi à ${minutes}\u00a0min`,
  ]);
  return [["", none], ["0", "Sans arrondi"], ...steps];
}

interface Props {
  /** Nothing is to be chosen where there are none. */
  minutes: number;
  mode: RoundingMode;
  scope: RoundingScope;
  onChange: (part: { mode: RoundingMode } | { scope: RoundingScope }) => void;
}

/** Which way is rounded, and what. */
export function RoundingWays({ minutes, mode, scope, onChange }: Props) {
  if (minutes === 0) return null;
  return (
    <div class="field-row wrap">
      <Segmented
        legend="Sens de l’arrondi"
        small
        choices={modes}
        value={mode}
        onChange={(value) => onChange({ mode: value })}
      />
      <Segmented
        legend="Ce qui est arrondi"
        small
        choices={scopes}
        value={scope}
        onChange={(value) => onChange({ scope: value })}
      />
    </div>
  );
}
