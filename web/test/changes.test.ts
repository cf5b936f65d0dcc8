import assert from "node:assert/strict";
import { test } from "node:test";
import { Client } from "../src/client";
import { assignBlocks, assignRange } from "../src/model/changes";
import { instant } from "../src/model/time";
import { cannedBridge, cannedMonth } from "../demo/canned";

const open = () => new Client(cannedBridge(cannedMonth(instant("2026-11-19", 16, 42))));
const find = async (client: Client, date: string, name: string) =>
  (await client.call("day", { date })).blocks.filter((block) => (block.domain ?? block.app) === name);

test("an assignment and the rule that it taught are undone together", async () => {
  const client = open();
  const rules = await client.call("rules.list", {});
  const before = {
    monday: await find(client, "2026-11-17", "youtube.com"),
    thursday: await find(client, "2026-11-19", "youtube.com"),
  };
  assert.ok(before.monday.length > 0 && before.thursday.length > 0);
  const to = { category: "travail", projectId: 1 };
  assert.deepEqual((await assignBlocks(client, before.monday, to)).learned, []);
  const second = await assignBlocks(client, before.thursday, to);
  assert.deepEqual(second.learned, [
    { field: "domain", pattern: "youtube.com", category: "travail", project: "Boutique Lumière" },
  ]);
  assert.ok(
    (await find(client, "2026-11-12", "youtube.com")).every((block) => block.cat === "travail"),
    "the rule holds for the past",
  );
  await second.undo();
  assert.deepEqual(await find(client, "2026-11-19", "youtube.com"), before.thursday);
  assert.deepEqual(await client.call("rules.list", {}), rules);
  assert.ok(
    (await find(client, "2026-11-17", "youtube.com")).every((block) => block.manual && block.pid === 1),
    "the first assignment stays",
  );
});

test("undoing gives back what had been assigned by hand before", async () => {
  const client = open();
  const blocks = (await find(client, "2026-11-19", "Code")).slice(0, 1);
  await assignBlocks(client, blocks, { category: "autre", projectId: 2 });
  const [assigned] = await find(client, "2026-11-19", "Code");
  assert.ok(assigned);
  const { undo } = await assignBlocks(client, [assigned], { category: null, projectId: null });
  assert.equal((await find(client, "2026-11-19", "Code"))[0]?.manual, false);
  await undo();
  assert.deepEqual((await find(client, "2026-11-19", "Code"))[0], assigned);
});

test("a range cuts spans at its ends and is undone within them", async () => {
  const client = open();
  const report = await client.call("day", { date: "2026-11-19" });
  const [start, end] = [instant("2026-11-19", 10, 0), instant("2026-11-19", 10, 15)];
  const inside = async () =>
    (await client.call("day", { date: "2026-11-19" })).segments.filter(
      (one) => one.start < end && one.end > start,
    );
  const before = await inside();
  const { undo } = await assignRange(client, start, end, report.blocks, {
    category: "loisir",
    projectId: null,
  });
  const during = (await inside()).find((one) => one.cat === "loisir");
  assert.deepEqual([during?.start, during?.end], [start, end]);
  await undo();
  assert.deepEqual(await inside(), before);
});
