import type { ProjectRow } from "../bridge/routes";
import { fold } from "./filter";

/** Whose the project is; "" for nobody's. */
export function clientOf({ client }: ProjectRow): string {
  return client?.trim() ?? "";
}

/** Whether these are one client: neither case nor accents tell two apart. */
export function sameClient(one: string, other: string): boolean {
  return fold(one) === fold(other);
}

/** The clients of the projects, each once as its first project spells it, in the order of the alphabet. */
export function clientsOf(projects: readonly ProjectRow[]): string[] {
  const spellings = new Map<string, string>();
  for (const client of [...projects].sort((a, b) => a.id - b.id).map(clientOf)) {
    if (client !== "" && !spellings.has(fold(client))) spellings.set(fold(client), client);
  }
  return [...spellings.values()].sort((a, b) => a.localeCompare(b, "fr"));
}

/** The projects of each client, and at the end those of none. */
export function byClient(projects: readonly ProjectRow[]): { client: string; rows: ProjectRow[] }[] {
  return [...clientsOf(projects), ""]
    .map((client) => ({ client, rows: projects.filter((project) => sameClient(clientOf(project), client)) }))
    .filter(({ rows }) => rows.length > 0);
}
