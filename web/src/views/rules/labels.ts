import type { RuleField } from "../../bridge/routes";

export const fields: readonly RuleField[] = ["domain", "app", "title", "url"];

const labels: Record<RuleField, string> = {
  domain: "Site",
  app: "Application",
  title: "Titre",
  url: "Adresse",
};

/** A field that the page does not know is shown under its own name. */
export function fieldLabel(field: string): string {
  return labels[field as RuleField] ?? field;
}
