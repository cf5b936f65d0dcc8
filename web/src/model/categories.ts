import type { Assignable, ByCategory, Cat, Category } from "../bridge/routes";

/** In the order of display. */
export const categories: readonly Category[] = ["travail", "loisir", "autre", "nonclasse"];
export const assignable: readonly Assignable[] = ["travail", "loisir", "autre"];

const labels: Record<Cat, string> = {
  travail: "Travail",
  loisir: "Loisir",
  autre: "Autre",
  nonclasse: "Non classé",
  inactif: "Inactif",
};

/** What a person chooses from: name and label. */
export const categoryOptions = assignable.map((cat) => [cat, labels[cat]] as const);

/** A category that the page does not know is shown under its own name. */
export function categoryLabel(cat: string): string {
  return labels[cat as Cat] ?? cat;
}

export function isAssignable(text: string | null | undefined): text is Assignable {
  return assignable.includes(text as Assignable);
}

/** The name under which the style sheet knows a category. */
export function categoryClass(cat: string): string {
  return cat in labels ? `cat-${cat}` : "cat-nonclasse";
}

/** Seconds of the four categories, without the time away. */
export function activeTime(byCategory: ByCategory): number {
  return categories.reduce((sum, cat) => sum + (byCategory[cat] ?? 0), 0);
}
