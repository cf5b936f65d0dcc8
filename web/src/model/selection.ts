// Which blocks are selected. Blocks are remembered by the spans that they are made of, because the
// list is read again every few seconds and blocks grow, split and join meanwhile.
import type { Block } from "../bridge/routes";

export interface Selection {
  /** Span ids of the selected blocks. */
  ids: ReadonlySet<number>;
  /** First span of the block that the keyboard is on. */
  active: number | null;
  /** First span of the block where a range of blocks starts. */
  anchor: number | null;
}

export const nothing: Selection = { ids: new Set(), active: null, anchor: null };

export function isSelected(selection: Selection, block: Block): boolean {
  return block.ids.some((id) => selection.ids.has(id));
}

export function selectedBlocks(selection: Selection, blocks: readonly Block[]): Block[] {
  return selection.ids.size === 0 ? [] : blocks.filter((block) => isSelected(selection, block));
}

/** Where a remembered block is now; -1 when it is gone. */
export function indexOf(blocks: readonly Block[], id: number | null): number {
  return id === null ? -1 : blocks.findIndex((block) => block.ids.includes(id));
}

export type Mode = "only" | "toggle" | "range" | "move";

/**
 * The selection after the block at `index` was clicked or reached: alone, in addition, from the anchor
 * to here, or without being selected. Time away is selected where it is meant: by itself, or as an end of
 * what is selected together; between two activities it is left out.
 */
export function select(selection: Selection, blocks: readonly Block[], index: number, mode: Mode): Selection {
  const block = blocks[index];
  if (!block) return selection;
  const id = block.ids[0] ?? null;
  if (mode === "move") return { ...selection, active: id };
  if (mode === "range") {
    const anchor = indexOf(blocks, selection.anchor);
    const from = anchor < 0 ? index : anchor;
    const span = blocks.slice(Math.min(from, index), Math.max(from, index) + 1);
    const meant = block.idle || blocks[from]?.idle === true;
    return {
      ids: idsOf(meant ? span : activities(span)),
      active: id,
      anchor: anchor < 0 ? id : selection.anchor,
    };
  }
  if (mode === "toggle") {
    const ids = new Set(selection.ids);
    const selected = isSelected(selection, block);
    for (const span of idsOf([block])) {
      if (selected) ids.delete(span);
      else ids.add(span);
    }
    return { ids, active: id, anchor: id };
  }
  return { ids: idsOf([block]), active: id, anchor: id };
}

export function selectAll(blocks: readonly Block[], selection: Selection): Selection {
  return { ...selection, ids: idsOf(activities(blocks)) };
}

function activities(blocks: readonly Block[]): Block[] {
  return blocks.filter((block) => !block.idle);
}

function idsOf(blocks: readonly Block[]): Set<number> {
  return new Set(blocks.flatMap((block) => block.ids));
}
