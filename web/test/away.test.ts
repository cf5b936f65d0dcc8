import assert from "node:assert/strict";
import { test } from "node:test";
import type { Block, Segment } from "../src/bridge/routes";
import { filling, isGap, likeliest, readMoment, withGaps } from "../src/model/away";
import { nothing, select, selectAll, selectedBlocks } from "../src/model/selection";
import { until } from "../src/model/store";

const minutes = (n: number) => 1_795_000_000 + 60 * n;
let lastId = 0;
function block(from: number, to: number, idle = false): Block {
  const [start, end] = [minutes(from), minutes(to)];
  return {
    ...{ start, end, duration: end - start, ids: [++lastId], idle, cat: idle ? "inactif" : "travail" },
    ...{ app: "Code", domain: null, title: null, pid: null, manual: false },
  };
}
function segment(from: number, to: number): Segment {
  return { start: minutes(from), end: minutes(to), cat: "travail", pid: null, top: [] };
}

test("what is empty between two activities is a row from ten minutes on, what is recorded none", () => {
  const blocks = [block(0, 30), block(45, 60, true), block(60, 70), block(100, 120)];
  const [first, last] = [minutes(0), minutes(120)];
  // One of the segments is too brief to be a block.
  const segments = [segment(0, 30), segment(60, 70), segment(89, 90), segment(100, 120)];
  const rows = withGaps(blocks, { first, last, segments });
  const gaps = rows.filter(isGap);
  assert.deepEqual(
    gaps.map(({ start, end }) => [start, end]),
    [
      [minutes(30), minutes(45)],
      [minutes(70), minutes(89)],
      [minutes(90), minutes(100)],
    ],
  );
  assert.deepEqual(
    rows.map(({ start }) => start),
    rows.map(({ start }) => start).sort((a, b) => a - b),
  );
  assert.ok(!blocks.some(isGap));
  assert.deepEqual(withGaps(blocks, { first: null, last: null, segments }), blocks);
});

test("time away is selected where it is meant", () => {
  const rows = [block(0, 10), block(10, 20, true), block(20, 30), block(30, 90, true)];
  const at = (selection: Parameters<typeof selectedBlocks>[0]) =>
    selectedBlocks(selection, rows).map((row) => rows.indexOf(row));
  const one = select(nothing, rows, 0, "only");
  assert.deepEqual(at(select(nothing, rows, 1, "only")), [1]);
  assert.deepEqual(at(select(one, rows, 2, "range")), [0, 2], "between two activities it is left out");
  assert.deepEqual(at(select(one, rows, 3, "range")), [0, 1, 2, 3], "as an end it is meant");
  assert.deepEqual(at(select(one, rows, 1, "toggle")), [0, 1]);
  assert.deepEqual(at(selectAll(rows, one)), [0, 2]);
});

test("a moment takes nothing that is recorded, and nothing of the future", () => {
  const segments = [segment(0, 30), segment(40, 60)];
  const of = (from: number, to: number, now: number) =>
    filling(segments, { start: minutes(from), end: minutes(to) }, minutes(now));
  assert.deepEqual(of(20, 50, 90), { added: 600, taken: 1200, future: 0 });
  assert.deepEqual(of(55, 100, 70), { added: 600, taken: 300, future: 1800 });
  assert.deepEqual(of(100, 110, 70), { added: 0, taken: 0, future: 600 });
});

test("a moment’s times are read, past midnight too, and proposed where time is missing", () => {
  const at = (text: string) => new Date(text).getTime() / 1000;
  const day = "2026-11-19";
  const read = (from: string, to: string) => readMoment(day, from, to);
  assert.deepEqual(read("9h", "1030"), { start: at(`${day}T09:00`), end: at(`${day}T10:30`) });
  assert.deepEqual(read("23:30", "0:00"), { start: at(`${day}T23:30`), end: at("2026-11-20T00:00") });
  for (const [from, to] of [["14:00", "13:00"], ["9:00", "9:00"], ["25:00", "26:00"], ["9:00", ""]])
    assert.equal(typeof read(from!, to!), "string", `${from} ${to}`);

  const rows = [block(0, 30), block(30, 75, true), block(80, 85, true)];
  assert.equal(likeliest(rows, day, minutes(90)), rows[1]);
  const [noon, offered] = [at(`${day}T12:03:20`), { start: at(`${day}T11:00`), end: at(`${day}T12:00`) }];
  assert.deepEqual(likeliest([], day, noon), offered);
  assert.deepEqual(likeliest([], "2026-11-18", noon).start, at("2026-11-18T09:00"), "no hour of another day");
});

test("until when a pause lasts", () => {
  const at = (text: string) => new Date(text).getTime() / 1000;
  const now = at("2026-11-19T14:00");
  assert.equal(until(at("2026-11-19T14:30"), now), "jusqu’à 14:30");
  assert.equal(until(at("2026-11-20T04:00"), now), "jusqu’à demain, 04:00");
  assert.equal(until(at("2026-12-01T09:00"), now), "jusqu’au 1er décembre 2026, 09:00");
});
