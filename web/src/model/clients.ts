import type { ProjectRow } from "../bridge/routes";

/** Whose the project is; "" for nobody's. */
export function clientOf({ client }: ProjectRow): string {
  return client?.trim() ?? "";
}

/** The clients of the projects, each once, in the order of the alphabet. */
export function clientsOf(projects: readonly ProjectRow[]): string[] {
  const all = projects.map(clientOf).filter((client) => client !== "");
  return [...new Set(all)].sort((a, b) => a.localeCompare(b, "fr"));
}

/** The projects of each client, and at the end those of none. */
export function byClient(projects: readonly ProjectRow[]): { client: string; rows: ProjectRow[] }[] {
  return [...clientsOf(projects), ""]
    .map((client) => ({ client, rows: projects.filter((project) => clientOf(project) === client) }))
    .filter(({ rows }) => rows.length > 0);
}
