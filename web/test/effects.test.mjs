// Changes that reach into the past: seen before they hold, answered when they were learnt, and taken back
// whenever. In a real browser, over two years of the real program.
import assert from "node:assert/strict";
import { test } from "node:test";
import { plain, violations } from "./browser.mjs";
import { answer, shown, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();

const twoYears = () => open({ make: ["--days", "730"] });
/** Hours of "+ 1 768 h", "− 9 h 40", "35 min". */
const hours = (text) => {
  const [, number, unit, minutes = "0"] = /(\d[\d ]*) (h|min|s)(?: (\d\d))?/.exec(text);
  const value = Number(number.replaceAll(" ", ""));
  return unit === "h" ? value + Number(minutes) / 60 : unit === "min" ? value / 60 : value / 3600;
};

/** Seconds of every project and category in all that is recorded, as the program's weeks tell them. */
async function totals(page) {
  const sums = {};
  const add = (name, seconds) => (sums[name] = (sums[name] ?? 0) + seconds);
  for (let day = Date.UTC(2024, 10, 18); day < Date.UTC(2026, 10, 23); day += 7 * 86_400_000) {
    const week = await page.program.ask("week", { date: new Date(day).toISOString().slice(0, 10) });
    for (const { name, duration } of week.by_project) add(name, duration);
    for (const [category, duration] of Object.entries(week.by_category)) add(category, duration);
  }
  return sums;
}

/** By how much each differs, without what differs by nothing. */
function differences(one, other) {
  const names = [...new Set([...Object.keys(one), ...Object.keys(other)])];
  const all = names.map((name) => [name, (other[name] ?? 0) - (one[name] ?? 0)]);
  return Object.fromEntries(all.filter(([, seconds]) => Math.abs(seconds) > 1));
}

/** Drags over the afternoon and gives its blocks to a project; tells for how long they are. */
async function assignAfternoon(page, project) {
  await page.waitForFunction(() => !document.querySelector(".stale") && document.querySelector(".block"));
  await page.locator(".main").evaluate((main) => main.scrollTo(0, 0));
  const { x, y, width } = await page.locator(".plot").boundingBox();
  await page.mouse.move(x + width * 0.55, y + 30);
  await page.mouse.down();
  await page.mouse.move(x + width * 0.8, y + 34, { steps: 5 });
  await page.mouse.move(x + width * 0.96, y + 34, { steps: 5 });
  await page.mouse.up();
  await page.getByRole("button", { name: /blocs entiers/ }).click();
  await page.locator(".assign").getByText("Travail").click();
  await page.locator(".assign").getByRole("combobox", { name: "Projet" }).selectOption({ label: project });
  const time = await page.locator(".assign-what > p.quiet").first().innerText();
  await page.getByRole("button", { name: "Attribuer", exact: true }).click();
  await page.locator(".toast", { hasText: "Attribué" }).waitFor();
  return hours(plain(time)) * 3600;
}

/** Today's and yesterday's. */
async function assignTwoAfternoons(page, project) {
  const first = await assignAfternoon(page, project);
  await page.getByRole("button", { name: "Jour précédent" }).click();
  await page.waitForFunction(() => document.querySelector("h1").textContent.startsWith("Mercredi"));
  return first + (await assignAfternoon(page, project));
}

test("two afternoons given to a project: what was learnt is seen, and the advice leaves the past alone", async () => {
  const page = await twoYears();
  const before = await totals(page);
  const assigned = await assignTwoAfternoons(page, "Boutique Lumière");
  const panel = page.locator(".learnt");
  await panel.waitFor();
  await page.getByRole("status").filter({ hasText: "F6 y mène" }).waitFor({ state: "attached" });
  assert.deepEqual(await violations(page), []);
  const pending = await page.program.ask("rules.pending");
  assert.ok(pending.length > 1);
  assert.equal(await panel.locator(".pending-list > li").count(), pending.length);
  const gained = await panel.locator(".figure", { hasText: "Boutique Lumière" }).allInnerTexts();
  const most = Math.max(...gained.map((text) => hours(plain(text))));
  assert.ok(most * 3600 > 4 * assigned, `${gained}`);
  const learnt = differences(before, await totals(page));
  assert.ok(learnt["Boutique Lumière"] > 4 * assigned, "what would have gone unnoticed");

  // By the keyboard alone, and no other key is taken.
  for (let turn = 0; turn < 9 && !(await panel.evaluate((one) => one.contains(document.activeElement))); turn++)
    await page.keyboard.press("F6");
  assert.ok(await panel.evaluate((one) => one.contains(document.activeElement)));
  const advised = pending.filter(({ advice }) => advice === "forget").length;
  assert.equal(await panel.getByRole("radio", { name: "Oublier", checked: true }).count(), advised);
  await panel.getByRole("button", { name: "Valider" }).press("Enter");
  await panel.waitFor({ state: "detached" });
  assert.equal(await page.evaluate(() => document.activeElement.role), "listbox", "back to the list");
  for (const [name, seconds] of Object.entries(differences(before, await totals(page))))
    assert.ok(Math.abs(seconds) <= assigned + 60, `${name}: ${seconds} of ${assigned}`);
  assert.deepEqual(await page.program.ask("rules.pending"), []);
});

test("unanswered, learnt rules wait in the list of rules; with their assignment they are taken back", async () => {
  const page = await twoYears();
  await assignTwoAfternoons(page, "Atelier CMD");
  const panel = page.locator(".learnt");
  await panel.waitFor();
  const [{ pattern }] = await page.program.ask("rules.pending");
  await page.reload();
  await panel.waitFor();
  await panel.getByRole("button", { name: "Plus tard" }).click();
  await panel.waitFor({ state: "detached" });
  await page.reload();
  await page.getByRole("button", { name: /Règles \d+ à confirmer/ }).click();
  await page.locator(".pending", { hasText: pattern }).waitFor();
  await page.locator("#rule-search").fill(pattern);
  await page.locator(".windowed .rule-row", { hasText: "Apprise" }).first().waitFor();
  await page.locator("h1").click();
  await page.keyboard.press("Control+z");
  await page.locator(".toast", { hasText: "Annulé" }).waitFor();
  await page.locator(".pending").waitFor({ state: "detached" });
  assert.deepEqual(await page.program.ask("rules.pending"), []);
});

test("a project that is put away keeps its past, or the figures say where it goes", async () => {
  const page = await twoYears();
  const before = await totals(page);
  const dialog = page.locator("dialog");
  await page.keyboard.press("p");
  await page.getByRole("button", { name: "Archiver Boutique Lumière" }).click();
  const keep = dialog.getByRole("checkbox", { name: "Garder ce temps au projet" });
  assert.ok(await keep.isChecked());
  const given = hours(await shown(dialog.locator("b", { hasText: "h" }).first())) * 3600;
  await dialog.locator(".effect-none", { hasText: "son temps lui reste" }).waitFor();
  await keep.click();
  const loss = dialog.locator(".effect-now:not(.dimmed) .effect-nets li", { hasText: "Boutique" });
  assert.ok(Math.abs(hours(await shown(loss)) * 3600 - given) <= 3600);
  await keep.click();
  await dialog.locator(".effect-none", { hasText: "son temps lui reste" }).waitFor();
  await dialog.getByRole("button", { name: "Archiver" }).click();
  await page.locator(".toast", { hasText: "est archivé" }).waitFor();
  assert.deepEqual(differences(before, await totals(page)), {});

  await page.getByRole("button", { name: "Réactiver Boutique Lumière" }).click();
  await dialog.locator(".effect-none", { hasText: "Rien ne change" }).waitFor();
  await dialog.getByRole("button", { name: "Réactiver" }).click();
  await page.locator(".toast", { hasText: "de nouveau actif" }).waitFor();
  assert.deepEqual(differences(before, await totals(page)), {});
});

test("the history outlives the program, and takes back what nothing depends on", async () => {
  const page = await twoYears();
  const before = await totals(page);
  const dialog = page.locator("dialog");
  await page.keyboard.press("r");
  await page.keyboard.press("n");
  await dialog.locator("input").first().fill("youtube.com");
  await dialog.getByLabel("Catégorie").selectOption("autre");
  await dialog.locator(".effect-now:not(.dimmed)", { hasText: "Autre" }).waitFor();
  await dialog.getByRole("button", { name: "Enregistrer" }).click();
  await page.locator(".toast", { hasText: "Règle enregistrée" }).waitFor();
  const { blocks } = await page.program.ask("day", { date: "2026-11-17" });
  const ids = blocks.filter(({ idle }) => !idle).flatMap((block) => block.ids);
  for (const category of ["loisir", "travail"]) await page.program.ask("events.assign", { ids, category });
  const changed = await totals(page);
  assert.ok(differences(before, changed).autre > 3600);

  await page.program.stop();
  page.program.launch();
  await page.reload();
  await page.waitForSelector(".version");
  await page.keyboard.press("h");
  const rows = page.locator(".change-row");
  await rows.nth(2).waitFor();
  assert.equal(await rows.count(), 3);
  await rows.nth(1).getByRole("button", { name: /^Annuler/ }).click();
  await rows.nth(1).getByRole("alert").filter({ hasText: "ne peut pas être annulé" }).waitFor();
  await rows.nth(2).locator("summary").first().click();
  await rows.nth(2).locator(".effect", { hasText: "Autre" }).waitFor();
  await rows.nth(2).getByRole("button", { name: /^Annuler/ }).click();
  await rows.nth(2).getByRole("button", { name: /^Rétablir/ }).waitFor();

  // The keys go on from any view, the newest first; in a field they are the field's.
  await page.keyboard.press("j");
  await page.locator("#search").click();
  await page.keyboard.type("code");
  page.asked.length = 0;
  await page.keyboard.press("Control+z");
  await page.waitForTimeout(200);
  assert.ok(!page.asked.some(([path]) => path === "changes.undo"));
  await page.locator("h1").click();
  const undone = async () => (await page.program.ask("changes.list")).filter((change) => change.undone).length;
  for (const [category, count] of [["Travail", 2], ["Loisir", 3]]) {
    await page.keyboard.press("Control+z");
    await page.locator(".toast", { hasText: new RegExp(`Annulé.+${category}`) }).waitFor();
    assert.equal(await undone(), count);
  }
  assert.deepEqual(differences(before, await totals(page)), {});
  await page.keyboard.press("Control+y");
  await page.locator(".toast", { hasText: /Rétabli\s:/ }).waitFor();
  await page.keyboard.press("Control+z");
  await page.locator(".toast").getByRole("button", { name: "Historique…" }).click();
  await rows.nth(2).waitFor();
});

test("a key costs one question at most, and what is seen keeps its place", async () => {
  const page = await twoYears();
  let [going, most] = [0, 0];
  answer(page, "changes.preview", async (real) => {
    most = Math.max(most, ++going);
    await new Promise((done) => setTimeout(done, 150));
    const effect = await real();
    going--;
    return effect;
  });
  await page.keyboard.press("p");
  await page.getByRole("button", { name: "Modifier Atelier CMD" }).click();
  const effect = page.locator(".effect");
  await effect.locator(".effect-none", { hasText: "Rien ne change" }).waitFor();
  const place = await effect.boundingBox();
  const asked = () => page.asked.filter(([path]) => path === "changes.preview").length;
  const first = asked();
  await page.getByLabel("Mots-clés").fill("");
  await page.keyboard.type("github.com, code", { delay: 60 });
  await page.locator(".effect-now:not(.dimmed) .effect-sum").waitFor();
  assert.equal(most, 1);
  assert.ok(asked() - first <= 16);
  assert.deepEqual(await effect.boundingBox(), place);
  const { projects } = await page.program.ask("changes.preview", page.asked.findLast(([path]) => path === "changes.preview")[1]);
  const [net] = projects.filter(({ name }) => name === "Atelier CMD");
  assert.ok(Math.abs(hours(await shown(effect.locator(".effect-nets li", { hasText: "Atelier CMD" }))) * 3600 - net.seconds) <= 1800);
});
