import type { RuleField } from "../../bridge/routes";

const labels: Record<RuleField, string> = {
  domain: "Site",
  app: "Application",
  title: "Titre",
  url: "Adresse",
};

/** In the order of display. */
export const fieldOptions = Object.entries(labels);

/** A field that the page does not know is shown under its own name. */
export function fieldLabel(field: string): string {
  return labels[field as RuleField] ?? field;
}
