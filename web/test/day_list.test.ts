import assert from "node:assert/strict";
import { test } from "node:test";
import type { Block } from "../src/bridge/routes";
import { dayList, leftOut, sessions, withinDay } from "../src/model/day_list";

const minute = 60;
let lastId = 0;

/** Blocks of so many minutes of these projects, one after the other; "-" is time away, "." no project. */
function day(...plan: [string | number, number][]): Block[] {
  let at = 0;
  return plan.map(([what, minutes]) => {
    const start = at;
    at += minutes * minute;
    return {
      start,
      end: at,
      duration: at - start,
      app: "Code",
      domain: null,
      cat: what === "-" ? "inactif" : "travail",
      pid: typeof what === "number" ? what : null,
      idle: what === "-",
      ids: [++lastId],
      manual: false,
      title: null,
    };
  });
}

/** Of each session its project, its first and last minute, its own minutes. */
function found(blocks: Block[], known = [1, 2]): number[][] {
  return [...new Set(sessions(blocks, new Set(known)).values())].map(({ pid, start, end, duration }) => [
    pid,
    start / minute,
    end / minute,
    duration / minute,
  ]);
}

test("a session is a run of one project, whatever short things come between", () => {
  assert.deepEqual(found(day([".", 9], [1, 5], [".", 14], [1, 5], [".", 9])), [[1, 9, 33, 10]]);
  assert.deepEqual(found(day([1, 5], [".", 16], [1, 5], [1, 5])), [[1, 21, 31, 10]], "too long between");
  assert.deepEqual(found(day([1, 5], [2, 5], [1, 5], [2, 5])), [], "one block needs no heading");
  assert.deepEqual(found(day([1, 5], [1, 5], [2, 5], [2, 5])), [
    [1, 0, 10, 10],
    [2, 10, 20, 10],
  ]);
  assert.deepEqual(found(day([1, 5], ["-", 4], [1, 5])), [], "time away ends it");
  assert.deepEqual(found(day([3, 5], [3, 5])), [], "a project that was deleted has no name");
});

test("rows follow each other in either direction, a session's heading above its blocks", () => {
  const blocks = day([".", 1], [1, 2], [".", 3], [1, 4], ["-", 5]);
  const shown = (newestFirst: boolean) => {
    const { rows, places, blocks: ordered } = dayList(blocks, sessions(blocks, new Set([1])), newestFirst);
    assert.deepEqual(places.map((place) => rows[place]?.block), ordered);
    return rows.map(({ block }) => (block ? block.duration / minute : "session"));
  };
  assert.deepEqual(shown(false), [1, "session", 2, 3, 4, 5]);
  assert.deepEqual(shown(true), [5, "session", 4, 3, 2, 1]);
});

test("the night is no row, a day without anybody is", () => {
  const blocks = day(["-", 480], [1, 60], ["-", 30], [1, 60], ["-", 300]);
  const listed = (first: number | null, last: number | null) => withinDay({ blocks, first, last }).length;
  assert.equal(listed(480 * minute, 630 * minute), 3);
  assert.equal(listed(null, null), 5);
});

test("whole blocks in place of a range leave out what is in none of them", () => {
  const [block] = day([1, 10]);
  const range = { start: 5 * minute, end: 20 * minute };
  assert.equal(leftOut(8 * minute, [block!], range), 3 * minute);
  assert.equal(leftOut(4 * minute, [block!], range), 0, "gaps in a block are no activity");
});
