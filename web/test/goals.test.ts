import assert from "node:assert/strict";
import { test } from "node:test";
import type { GoalHistory } from "../src/bridge/routes";
import { keptText, lengthError, readLength, stateOf, stateText } from "../src/model/goals";
import { columnText, decoded, mapped, rejectedText } from "../src/model/imports";

const plain = (text: string) => text.replace(/\u00a0/g, " ");

test("how far a goal is, and how far beyond a limit", () => {
  const least = { bound: "least", seconds: 3600 } as const;
  const most = { bound: "most", seconds: 3600 } as const;
  const said = [0, 2880, 3600, 4200].map((done) =>
    [least, most].map((goal) => `${stateOf(goal, done)} ${plain(stateText(goal, done))}`),
  );
  assert.deepEqual(said, [
    ["going reste 1 h 00", "going reste 1 h 00"],
    ["going reste 12 min", "near reste 12 min"],
    ["reached atteint", "near reste 0 s"],
    ["reached atteint", "over dépassé de 10 min"],
  ]);
});

test("how a goal was kept", () => {
  const history = (part: Partial<GoalHistory>) =>
    plain(keptText({ period: "day", kept: 0, counted: 0, streak: 0, pieces: [], ...part } as GoalHistory));
  assert.equal(history({ kept: 12, counted: 15, streak: 5 }), "12 jours tenus sur 15, dont 5 de suite");
  assert.equal(history({ kept: 1, counted: 2, streak: 1, period: "week" }), "1 semaine tenue sur 2");
  assert.equal(history({}), "Rien à compter ces jours-là.");
  const running = { from: "2026-11-19", to: "2026-11-19", done: 0, outcome: "running" } as const;
  assert.equal(history({ pieces: [running] }), "En cours.");
});

test("a length is written as hours and minutes", () => {
  assert.equal(readLength("1", "30"), 5400);
  assert.equal(readLength("", " 45 "), 2700);
  for (const wrong of ["x", "1,5", "-1", "1000"]) assert.equal(readLength(wrong, ""), null);
  const said = (seconds: number | null, period: "day" | "week") => plain(lengthError(seconds, period));
  assert.equal(said(null, "day"), "Les heures et les minutes sont des nombres.");
  assert.equal(said(0, "day"), "Une minute au moins.");
  assert.equal(said(25 * 3600, "day"), "24 h au plus.");
  assert.equal(said(25 * 3600, "week"), "");
});

test("a file is text in whatever letters it was written", () => {
  const bytes = (text: string, encoding: BufferEncoding) => new Uint8Array(Buffer.from(text, encoding));
  assert.equal(decoded(bytes("Début", "utf8")), "Début");
  assert.equal(decoded(bytes("Début", "latin1")), "Début");
  assert.equal(decoded(bytes("\ufeffDébut", "utf16le")), "Début");
  assert.equal(decoded(new Uint8Array()), "");
});

test("columns are named, mapped and given back", () => {
  assert.equal(columnText({ name: " ", examples: ["", "09:00"] }, 2), "Colonne 3 (09:00)");
  assert.equal(columnText({ name: "Fin", examples: [] }, 0), "Fin");
  assert.deepEqual(mapped({ start: 0, end: 1 }, "end", 2), { start: 0, end: 2 });
  assert.deepEqual(mapped({ start: 0, end: 1 }, "end", null), { start: 0 });
  const said = (count: number, line: number) => plain(rejectedText({ reason: "fin illisible", count, line }));
  assert.equal(said(1, 5), "1 activité : fin illisible (ligne 5)");
  assert.equal(said(3, 5), "3 activités : fin illisible (la première à la ligne 5)");
  assert.equal(said(3, 0), "3 activités : fin illisible");
});
