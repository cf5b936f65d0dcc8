import type { Block } from "../bridge/routes";
import { load, save } from "./stored";

/** Which blocks of the day are listed; null lets everything through. */
export interface Filter {
  text: string;
  cat: string | null;
  project: number | null;
  app: string | null;
  domain: string | null;
  /** By its projects, as they were when it was chosen. */
  client: { name: string; projects: number[] } | null;
  /** Of the clock: what has any of it. */
  hour: number | null;
  /** Time away is listed too. */
  idle: boolean;
}

/** In the place of a project: what has none, and of it what is work or may be. */
export const noProject = 0;
export const toFile = -1;

export const everything: Filter = {
  text: "",
  cat: null,
  project: null,
  app: null,
  domain: null,
  client: null,
  hour: null,
  idle: true,
};

/** Without case and accents. */
export function fold(text: string): string {
  return text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();
}

export function isFiltering(filter: Filter): boolean {
  return (
    filter.text.trim() !== "" ||
    [filter.cat, filter.project, filter.app, filter.domain, filter.client, filter.hour].some(
      (part) => part !== null,
    )
  );
}

function isOf(project: number, { pid, cat }: Block): boolean {
  if (project === toFile) return pid === null && cat !== "loisir" && cat !== "autre";
  return project === noProject ? pid === null : pid === project;
}

// Hour by hour, as the clock shows them: where it is put back, one comes twice.
function isIn(hour: number, { start, end }: Block): boolean {
  for (let at = start; at < end; at = (Math.floor(at / 900) + 1) * 900)
    if (new Date(at * 1000).getHours() === hour) return true;
  return false;
}

export function filterBlocks(blocks: readonly Block[], filter: Filter): readonly Block[] {
  const filtering = isFiltering(filter);
  if (!filtering && filter.idle) return blocks;
  const words = fold(filter.text).split(/\s+/).filter(Boolean);
  return blocks.filter((block) => {
    if (block.idle) return filter.idle && !filtering;
    if (filter.cat !== null && block.cat !== filter.cat) return false;
    if (filter.project !== null && !isOf(filter.project, block)) return false;
    if (filter.app !== null && block.app !== filter.app) return false;
    if (filter.domain !== null && block.domain !== filter.domain) return false;
    if (filter.client !== null && !filter.client.projects.includes(block.pid ?? noProject)) return false;
    if (filter.hour !== null && !isIn(filter.hour, block)) return false;
    if (words.length === 0) return true;
    const text = fold(`${block.app} ${block.domain ?? ""} ${(block.title ?? "").slice(0, 2000)}`);
    return words.every((word) => text.includes(word));
  });
}

const key = "filter";

export function loadFilter(): Filter {
  const valid = (value: unknown) =>
    typeof value === "object" && value !== null && Object.keys(everything).every((name) => name in value);
  const filter = load(key, everything, valid);
  return typeof filter.text === "string" ? filter : everything;
}

export function saveFilter(filter: Filter): void {
  save(key, filter);
}
