import type { Block } from "../bridge/routes";
import { load, save } from "./stored";

/** Which blocks of the day are listed; null lets everything through. */
export interface Filter {
  text: string;
  cat: string | null;
  project: number | null;
  app: string | null;
  domain: string | null;
  /** Time away is listed too. */
  idle: boolean;
}

export const everything: Filter = { text: "", cat: null, project: null, app: null, domain: null, idle: true };

/** Without case and accents. */
export function fold(text: string): string {
  return text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();
}

export function isFiltering(filter: Filter): boolean {
  return (
    filter.text.trim() !== "" ||
    [filter.cat, filter.project, filter.app, filter.domain].some((part) => part !== null)
  );
}

export function filterBlocks(blocks: readonly Block[], filter: Filter): readonly Block[] {
  const filtering = isFiltering(filter);
  if (!filtering && filter.idle) return blocks;
  const words = fold(filter.text).split(/\s+/).filter(Boolean);
  return blocks.filter((block) => {
    if (block.idle) return filter.idle && !filtering;
    if (filter.cat !== null && block.cat !== filter.cat) return false;
    if (filter.project !== null && block.pid !== filter.project) return false;
    if (filter.app !== null && block.app !== filter.app) return false;
    if (filter.domain !== null && block.domain !== filter.domain) return false;
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
