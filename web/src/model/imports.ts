// A file of another program, as it is read in the page and mapped by hand.
import type { ImportColumn, ImportMapping, ImportPreview, Rejected } from "../bridge/routes";
import { clip, count } from "./time";

export const columnNames: Record<ImportColumn, string> = {
  start: "Début",
  start_date: "Jour du début",
  end: "Fin",
  end_date: "Jour de la fin",
  duration: "Durée",
  app: "Application",
  title: "Titre",
  url: "Adresse",
  domain: "Site",
  category: "Catégorie",
  project: "Projet",
};
export const columnsOfImport = Object.keys(columnNames) as ImportColumn[];

const kinds: Record<string, string> = { csv: "Tableau", ics: "Agenda", json: "Liste d’activités" };

/** "Tableau, 120 activités" */
export function kindText({ kind, events }: Pick<ImportPreview, "kind" | "events">): string {
  return `${kinds[kind] ?? kind}, ${count(events, "activité")}`;
}

/** Bytes as text: Unicode where they say or can be it, else the letters of western Europe. */
export function decoded(bytes: Uint8Array): string {
  const mark = `${bytes[0]},${bytes[1]}`;
  if (mark === "255,254") return new TextDecoder("utf-16le").decode(bytes);
  if (mark === "254,255") return new TextDecoder("utf-16be").decode(bytes);
  try {
    return new TextDecoder("utf-8", { fatal: true }).decode(bytes);
  } catch {
    return new TextDecoder("windows-1252").decode(bytes);
  }
}

/** The mapping with one thing read from another column, or from none. */
export function mapped(mapping: ImportMapping, column: ImportColumn, index: number | null): ImportMapping {
  const { [column]: _, ...rest } = mapping;
  return index === null ? rest : { ...rest, [column]: index };
}

/** What a column is called to choose it by: its name, else its place, and what is in it. */
export function columnText({ name, examples }: ImportPreview["columns"][number], index: number): string {
  const title = name.trim() === "" ? `Colonne ${index + 1}` : clip(name, 30);
  const example = examples.find((text) => text.trim() !== "");
  return example === undefined ? title : `${title} (${clip(example, 24)})`;
}

/** "3 lignes : début illisible (ligne 17)" */
export function rejectedText({ reason, count: lines, line }: Rejected): string {
  const where = line > 0 ? ` (${lines > 1 ? "la première à la ligne" : "ligne"} ${line})` : "";
  return `${count(lines, "activité")}\u00a0: ${reason}${where}`;
}
