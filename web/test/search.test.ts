import assert from "node:assert/strict";
import { test } from "node:test";
import type { Found, FoundRow } from "../src/bridge/routes";
import { foundText, hits, moved, ruleFor } from "../src/model/search";

const row = (part: Partial<FoundRow>): FoundRow => ({
  start: 1_753_800_000,
  end: 1_753_800_180,
  duration: 180,
  app: "Firefox",
  domain: null,
  title: null,
  url: null,
  category: "autre",
  project_id: null,
  ids: [1],
  ...part,
});
const day = (date: string, ...rows: FoundRow[]) => ({ date, duration: 180, rows, more: 0 });

test("the arrows go through the rows of all days, and around", () => {
  const days = [day("2025-07-29", row({ ids: [3] }), row({ ids: [4] })), day("2025-07-28", row({ ids: [1] }))];
  const all = hits(days);
  assert.deepEqual(
    all.map((hit) => [hit.day.date, hit.row.ids[0]]),
    [
      ["2025-07-29", 3],
      ["2025-07-29", 4],
      ["2025-07-28", 1],
    ],
  );
  assert.deepEqual([moved(-1, 1, 3), moved(0, 1, 3), moved(2, 1, 3), moved(0, -1, 3), moved(-1, -1, 3)], [0, 1, 0, 2, 2]);
  assert.equal(moved(-1, 1, 0), -1);
});

test("what is found is told with when it ended last", () => {
  const found = { duration: 3900, first: 1_700_000_000, last: 1_753_800_180 } as Found;
  assert.equal(
    foundText(found),
    "1\u00a0h\u00a005 en tout. Dernière fois\u00a0: mardi 29 juillet 2025, 16:43.",
  );
  assert.equal(foundText({ ...found, first: null, last: null }), "Rien de tel n’a été enregistré.");
  const building = { ...found, building: true };
  assert.match(foundText(building), / pour l’instant\./, "not of all years yet");
  assert.equal(foundText({ ...building, first: null, last: null }), "Rien de tel pour l’instant.");
});

test("a rule looks for the site that was searched for, or else for the words in the title", () => {
  const site = [{ kind: "domain" as const, name: "ecole.fr", project_id: null, duration: 180 }];
  const at = (part: Partial<FoundRow>) => ({ day: day("2025-07-29"), row: row(part) });
  const school = at({ domain: "ecole.fr", title: "Devis de l’École" });
  assert.deepEqual(ruleFor("ecole", school, site), { field: "domain", pattern: "ecole.fr" });
  assert.deepEqual(ruleFor("« Devis de »", school, []), { field: "title", pattern: "Devis de" });
  assert.deepEqual(ruleFor("ecole devis", school, []), { field: "domain", pattern: "ecole.fr" });
  assert.deepEqual(ruleFor("ecole", at({ title: "École" }), []), { field: "app", pattern: "Firefox" });
});
