import assert from "node:assert/strict";
import { test } from "node:test";
import type { PeriodBucket, PeriodPart, Sheet, SheetRow } from "../src/bridge/routes";
import { inOrder } from "../src/model/period";
import { current, kindOf, rangeAt, rangeName, rangeOf, stepped } from "../src/model/range";
import { scaleOf } from "../src/model/scale";
import { sheetHtml, sheetText } from "../src/model/sheet";
import { readHours, readMoney, readTerms, termsText } from "../src/model/terms";

test("ranges step by what they are all of", () => {
  const range = (from: string, to: string) => ({ from, to });
  const cases: [ReturnType<typeof range>, string, string, string, string][] = [
    [range("2026-11-19", "2026-11-19"), "day", "2026-11-18", "2026-11-18", "jeudi 19 novembre 2026"],
    [
      range("2026-12-28", "2027-01-03"),
      "week",
      "2026-12-21",
      "2026-12-27",
      "semaine du 28 décembre 2026 au 3 janvier 2027",
    ],
    [range("2024-03-01", "2024-03-31"), "month", "2024-02-01", "2024-02-29", "mars 2024"],
    [range("2026-01-01", "2026-03-31"), "quarter", "2025-10-01", "2025-12-31", "1er trimestre 2026"],
    [range("2026-01-01", "2026-12-31"), "year", "2025-01-01", "2025-12-31", "2026"],
    [range("2026-03-25", "2026-04-03"), "other", "2026-03-15", "2026-03-24", "du 25 mars 2026 au 3 avril 2026"],
  ];
  for (const [one, kind, from, to, name] of cases) {
    assert.equal(kindOf(one), kind);
    assert.deepEqual(stepped(one, -1), { from, to });
    assert.deepEqual(stepped(stepped(one, -1), 1), one);
    assert.equal(rangeName(one), name);
  }
  assert.deepEqual(rangeOf("quarter", "2026-05-31"), range("2026-04-01", "2026-06-30"));
  assert.deepEqual(rangeAt(range("2026-03-25", "2026-04-03"), "2026-05-01"), range("2026-05-01", "2026-05-10"));
  assert.deepEqual(current(range("2026-03-25", "2026-04-03"), "2026-11-19"), range("2026-11-10", "2026-11-19"));
});

test("a chart's lines are round hours, about five, up to its longest bar", () => {
  assert.deepEqual(scaleOf([]), { top: 3600, lines: [1] });
  assert.deepEqual(scaleOf([10.2 * 3600]).lines, [3, 6, 9, 12]);
  assert.deepEqual(scaleOf([203 * 3600]).lines, [60, 120, 180, 240]);
});

test("a chart's categories are stacked in the order of all lists, whichever is the longest", () => {
  const groups = ["nonclasse", "", "travail", "jeux", "loisir"].map((key) => ({ key }) as PeriodPart);
  const buckets = [{ parts: [1, 2, 3, 4, 5] } as PeriodBucket];
  const sorted = inOrder({ group: "category", groups, buckets });
  assert.deepEqual(sorted.groups.map(({ key }) => key), ["travail", "loisir", "nonclasse", "", "jeux"]);
  assert.deepEqual(sorted.buckets[0]?.parts, [3, 5, 1, 2, 4]);
  assert.deepEqual(inOrder({ group: "app", groups, buckets }).groups, groups);
});

test("amounts and hours are read as people write them", () => {
  const cases: [string, number | null, number | null][] = [
    ["85", 8500, 306_000],
    ["85,5", 8550, 307_800],
    [" 1 200.05 € ", 120_005, null],
    ["40h30", null, 145_800],
    ["40 h 30", null, 145_800],
    ["40:60", null, null],
    ["-3", null, null],
    ["", null, null],
    ["1e3", null, null],
  ];
  for (const [text, cents, seconds] of cases)
    assert.deepEqual([readMoney(text), readHours(text)], [cents, seconds], text);
  const agreed = readTerms({ ...termsText(), rate: "92,5", budget: "30 h 15", rounding: "6", mode: "up" });
  assert.ok(typeof agreed === "object");
  assert.deepEqual(readTerms(termsText(agreed)), agreed);
  assert.equal(typeof readTerms({ ...termsText(), currency: "€" }), "string");
});

test("a copied table holds names as text, and a line of text stays one", () => {
  const time = { raw: 3600, raw_text: "1:00", seconds: 3600, text: "1:00" };
  const row = { ...time, name: "a\tb\nc", client: `<b title="x">&`, cells: [time, null], amount: null } as SheetRow;
  const sheet = {
    title: "<i>",
    columns: [{ label: "1" }, { label: "2" }],
    rows: [row],
    totals: { ...time, cells: [time, null], amounts: [] },
  } as unknown as Sheet;
  assert.equal(
    sheetText(sheet),
    `Client\tProjet\t1\t2\tTotal\tMontant\n<b title="x">&\ta b c\t1:00\t\t1:00\t\n\tTotal\t1:00\t\t1:00\t\n`,
  );
  assert.ok(sheetHtml(sheet).includes("<td>&lt;b title=&quot;x&quot;&gt;&amp;</td>"));
  assert.ok(!/<[ib]>|<b /.test(sheetHtml(sheet)));
});
