// Assigning time by hand, and taking it back.
import type { Client } from "../client";
import type { Block, LearnedRule, UnixTime } from "../bridge/routes";
import { isAssignable } from "./categories";
import { learnedRules } from "./learned";

export interface Target {
  category: string | null;
  projectId: number | null;
}

export interface Change {
  learned: LearnedRule[];
  /** Puts the spans back as they were and forgets the rules that were learnt. */
  undo: () => Promise<void>;
}

const automatic: Target = { category: null, projectId: null };

async function assignIds(client: Client, ids: number[], target: Target): Promise<LearnedRule[]> {
  if (target.category === null && target.projectId === null) {
    await client.call("events.assign", { ids, clear: true });
    return [];
  }
  const { category, projectId } = target;
  return (await client.call("events.assign", { ids, category, project_id: projectId })).learned ?? [];
}

// What was assigned to a block by hand. The program tells the effective category and project alone;
// given back explicitly, they classify the block as before.
function assigned(block: Block): Target {
  if (!block.manual) return automatic;
  return { category: isAssignable(block.cat) ? block.cat : null, projectId: block.pid };
}

// The learnt rules' ids; the answer of an assignment names them by field and pattern.
async function ruleIds(client: Client, learned: LearnedRule[]): Promise<number[]> {
  if (learned.length === 0) return [];
  const names = new Set(learned.map((rule) => `${rule.field}|${rule.pattern}`));
  const rules = await client.call("rules.list", {});
  return rules
    .filter((rule) => rule.priority >= 0 && names.has(`${rule.field}|${rule.pattern}`))
    .map(({ id }) => id);
}

async function forget(client: Client, ids: number[]): Promise<void> {
  for (const id of ids) await client.call("rules.delete", { id });
  learnedRules.remove(ids);
}

export async function assignBlocks(
  client: Client,
  blocks: readonly Block[],
  target: Target,
): Promise<Change> {
  const before = new Map<string, { target: Target; ids: number[] }>();
  for (const block of blocks) {
    const was = assigned(block);
    const key = `${was.category}|${was.projectId}`;
    const group = before.get(key) ?? { target: was, ids: [] };
    group.ids.push(...block.ids);
    before.set(key, group);
  }
  const learned = await assignIds(
    client,
    blocks.flatMap((block) => block.ids),
    target,
  );
  const rules = await ruleIds(client, learned);
  learnedRules.add(rules);
  return {
    learned,
    undo: async () => {
      await forget(client, rules);
      for (const group of before.values()) {
        // Giving back an assignment may teach its rule once more.
        const again = await assignIds(client, group.ids, group.target);
        await forget(client, await ruleIds(client, again));
      }
    },
  };
}

/** `blocks`: those of the day before the change, to know what was assigned by hand within the range. */
export async function assignRange(
  client: Client,
  start: UnixTime,
  end: UnixTime,
  blocks: readonly Block[],
  target: Target,
): Promise<Change> {
  const give = (from: UnixTime, to: UnixTime, { category, projectId }: Target) =>
    client.call("events.assignRange", { start: from, end: to, category, project_id: projectId });
  await give(start, end, target);
  return {
    learned: [],
    undo: async () => {
      await give(start, end, automatic);
      for (const block of blocks) {
        if (!block.manual || block.end <= start || block.start >= end) continue;
        await give(Math.max(block.start, start), Math.min(block.end, end), assigned(block));
      }
    },
  };
}
