import assert from "node:assert/strict";
import { test } from "node:test";
import { UnstoredError } from "../src/bridge/bridge";
import type { Block } from "../src/bridge/routes";
import { Client } from "../src/client";
import { assignIds, assignRange, type Target, track } from "../src/model/changes";
import { learnedRules } from "../src/model/learned";
import { instant } from "../src/model/time";
import { cannedBridge, cannedMonth } from "../demo/canned";

const opened = instant("2026-11-19", 16, 42);
const open = () => new Client(cannedBridge(cannedMonth(opened)));
const assign = (client: Client, blocks: Block[], target: Target) =>
  track(client, () =>
    assignIds(
      client,
      blocks.flatMap(({ ids }) => ids),
      target,
    ),
  );
const stored = new Map<string, string>();
Object.assign(globalThis, {
  localStorage: {
    getItem: (key: string) => stored.get(key) ?? null,
    setItem: (key: string, value: string) => stored.set(key, value),
  },
});
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
  const first = await assign(client, before.monday, to);
  assert.deepEqual(
    first.changes.map(({ learned }) => learned),
    [[]],
  );
  const second = await assign(client, before.thursday, to);
  assert.deepEqual(second.changes[0]?.learned, [
    { field: "domain", pattern: "youtube.com", category: "travail", project: "Boutique Lumière" },
  ]);
  const [rule] = second.changes[0].learned_ids;
  assert.ok(rule && learnedRules.all().has(rule));
  assert.ok(
    (await find(client, "2026-11-12", "youtube.com")).every((block) => block.cat === "travail"),
    "the rule holds for the past",
  );
  await second.undo();
  assert.deepEqual(await find(client, "2026-11-19", "youtube.com"), before.thursday);
  assert.deepEqual(await client.call("rules.list", {}), rules);
  assert.ok(!learnedRules.all().has(rule));
  assert.ok(
    (await find(client, "2026-11-17", "youtube.com")).every((block) => block.manual && block.pid === 1),
    "the first assignment stays",
  );
  await second.redo();
  assert.ok((await find(client, "2026-11-19", "youtube.com")).every((block) => block.manual));
  assert.ok(learnedRules.all().has(rule));
});

test("a range is undone with the pieces that it cut", async () => {
  const client = open();
  const day = () => client.call("day", { date: "2026-11-19" });
  const before = await day();
  const range = { start: instant("2026-11-19", 10, 0), end: instant("2026-11-19", 10, 15) };
  const { undo } = await track(client, () =>
    assignRange(client, range, { category: "loisir", projectId: null }),
  );
  const during = (await day()).segments.find(({ cat, start }) => cat === "loisir" && start >= range.start);
  assert.deepEqual([during?.start, during?.end], [range.start, range.end]);
  await undo();
  assert.deepEqual(await day(), before);
});

test("what belongs together is undone together, and an older change is left alone", async () => {
  const client = open();
  const rules = () => client.call("rules.list", {});
  const mine = { field: "domain", pattern: "exemple.fr", category: "autre", project_id: null } as const;
  await client.call("rules.save", mine);
  const before = await rules();
  const old = before.find(({ pattern }) => pattern === "exemple.fr");
  assert.ok(old);
  learnedRules.add([old.id]);
  const edited = await track(client, async () => {
    await client.call("rules.save", { ...mine, pattern: "exemple.org" });
    await client.call("rules.delete", { id: old.id });
    learnedRules.remove([old.id]);
  });
  assert.deepEqual(
    edited.changes.map(({ kind }) => kind),
    ["rule.delete", "rule.save"],
  );
  await edited.undo();
  assert.deepEqual(await rules(), before);
  assert.ok(learnedRules.all().has(old.id), "it is told apart as before");

  const nothing = await track(client, () => assignIds(client, [-1], { category: null, projectId: null }));
  assert.deepEqual(nothing.changes, [], "what changed nothing is not undone by undoing another change");
});

test("what could not be written fails with its sentence, and everybody is told to read again", async () => {
  const canned = cannedMonth(opened);
  const client = new Client(cannedBridge(canned));
  let told = 0;
  client.onChange(() => told++);
  const message = "Le disque est plein.";
  canned.store = { state: "full", message, since: opened };
  const block = (await find(client, "2026-11-19", "Code"))[0];
  assert.ok(block);
  const unstored = (error: unknown) => error instanceof UnstoredError && error.message === message;
  await assert.rejects(assign(client, [block], { category: "autre", projectId: null }), unstored);
  await assert.rejects(client.call("export", { from: "2026-11-19", to: "2026-11-19" }), unstored);
  await assert.rejects(client.call("settings.set", { idle_threshold: 60 }), unstored);
  assert.equal((await find(client, "2026-11-19", "Code"))[0]?.manual, false);
  await new Promise((resolve) => setTimeout(resolve));
  assert.ok(told > 0);
  delete canned.store;
  assert.equal((await assign(client, [block], { category: "autre", projectId: null })).changes.length, 1);
});

test("a preview of what would be deleted deletes nothing, and nobody reads again for it", async () => {
  const client = open();
  let told = 0;
  client.onChange(() => told++);
  const day = () => client.call("day", { date: "2026-11-19" });
  const before = await day();
  const range = { start: instant("2026-11-19", 10, 0), end: instant("2026-11-19", 10, 15) };
  const preview = await client.call("events.delete", { ...range, preview: true });
  await new Promise((resolve) => setTimeout(resolve));
  assert.deepEqual(await day(), before);
  assert.equal(told, 0);
  assert.deepEqual(await client.call("events.delete", range), preview);
  assert.ok(Math.abs(before.totals.active - (await day()).totals.active - preview.seconds) < 1);
});
