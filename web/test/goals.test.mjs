// Goals and limits, time of other programs, and what is excluded with its past, in a real browser.
import assert from "node:assert/strict";
import { test } from "node:test";
import { complaints, plain } from "./browser.mjs";
import { button, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();

const text = async (locator) => plain(await locator.innerText()).replace(/\s+/g, " ");
const toast = (page) => page.locator(".toast-text");

test("a goal is written, seen under the day, told of a period, changed, deleted and brought back", async () => {
  const page = await open();
  await page.keyboard.press("g");
  await button(page, "Ajouter un objectif…").click();
  assert.deepEqual(await complaints(page), []);
  const dialog = page.getByRole("dialog");
  await dialog.getByText("Site", { exact: true }).click();
  await dialog.getByText("Au plus").click();
  await dialog.getByLabel("Heures").fill("0");
  await button(page, "Enregistrer").click();
  await dialog.getByText("Un site s’écrit exemple.fr.").waitFor();
  await dialog.getByPlaceholder("exemple.fr").fill("github.com");
  await button(page, "Enregistrer").click();
  await dialog.getByText("Une minute au moins.").waitFor();
  await dialog.getByLabel("Minutes").fill("1");
  await button(page, "Enregistrer").click();
  assert.equal(await text(toast(page)), "Objectif enregistré : github.com, au plus 1 min par jour");

  await page.keyboard.press("j");
  const goal = page.locator(".goal");
  assert.match(await text(goal), /^github\.com dépassé de .+ \/ max\. 1 min$/);
  assert.equal(await goal.locator(".goal-state svg").count(), 1, "not by its colour alone");
  await page.keyboard.press("ArrowLeft");
  await page.getByRole("heading", { name: /18 novembre/ }).waitFor();
  await goal.waitFor();
  await page.keyboard.press("a");
  await goal.click();
  await dialog.getByText("Au moins").click();
  await button(page, "Enregistrer").click();
  await page.getByText("atteint", { exact: true }).waitFor();
  assert.deepEqual(await complaints(page), []);

  await page.keyboard.press("e");
  assert.match(await text(page.locator(".goal-days")), /github\.com, au moins 1 min par jour 1 jour tenu sur 1/);
  assert.equal(await page.locator(".squares li").count(), 19);
  assert.equal(await page.locator(".squares .kept").count(), 1);
  assert.deepEqual(await complaints(page), []);

  await page.keyboard.press("g");
  await button(page, "Supprimer : github.com, au moins 1 min par jour").click();
  await page.getByText("Aucun objectif").waitFor();
  await button(page, "Annuler").click();
  await page.locator(".goal-row").waitFor();
});

const choose = (page, content, name = "heures.csv") =>
  page.locator('input[type="file"]').setInputFiles({ name, mimeType: "text/csv", buffer: Buffer.from(content) });
const hostile = `<img src=x onerror="document.title='non'">`;

test("a table is mapped by hand, previewed by month, imported and taken back", async () => {
  const page = await open();
  await page.keyboard.press("g");
  await choose(page, `quand;quoi;combien\n2026-09-07 09:00;${hostile};90\n2026-10-12 14:00;Rapport;30\nhier;?;1\n`, hostile);
  const dialog = page.getByRole("dialog");
  await dialog.getByRole("heading", { name: hostile }).waitFor();
  const field = (name) =>
    dialog.locator(".mapping .field", { has: page.getByText(name, { exact: true }) }).locator("select");
  const ask = page.program.ask.bind(page.program);
  let read;
  const slow = new Promise((done) => (read = done));
  page.program.ask = async (path, body) => (await (path === "import.preview" && slow), ask(path, body));
  await field("Début").selectOption({ index: 1 });
  await field("Durée").selectOption({ index: 3 });
  await field("Titre").selectOption({ index: 2 });
  read();
  await dialog.locator("table").waitFor();
  assert.deepEqual(await complaints(page), []);
  assert.match(await text(dialog.locator("tbody")), /^Septembre 2026 .+ – Octobre 2026 .+ –$/);
  await dialog.getByLabel("Premier mois").selectOption("2026-10");
  await dialog.getByText("1 activité (30").waitFor();
  await dialog.getByLabel("Premier mois").selectOption("2026-09");
  await dialog.getByText("2 activités (").waitFor();
  assert.match(await text(dialog.locator(".rejected")), /1 activité : début illisible \(ligne 4\)/);
  await button(dialog, "Importer").click();
  assert.match(await text(toast(page)), /^Importé : 2 activités \(.+\)\. 1 activité : début illisible/);
  const titles = async () => {
    const { blocks } = await page.program.ask("day", { date: "2026-09-07" });
    return blocks.map(({ title }) => title);
  };
  assert.deepEqual(await titles(), [hostile]);
  assert.equal(await page.title(), "Orvanta");
  await button(page, "Annuler").click();
  await page.getByText("Annulé").waitFor();
  assert.deepEqual(await titles(), []);
});

test("a file with nothing to import says why", async () => {
  const page = await open();
  await page.keyboard.press("g");
  const said = async (content, name) => {
    await choose(page, content, name);
    const dialog = page.getByRole("dialog");
    await dialog.locator(".field-error, .import-outcome p").first().waitFor();
    assert.ok(await button(dialog, "Importer").isDisabled());
    const found = await text(dialog.locator(".field-error, .import-outcome"));
    await page.keyboard.press("Escape");
    return found;
  };
  assert.match(await said("", "vide.csv"), /./);
  assert.match(await said("{", "liste.json"), /JSON/);
  assert.match(await said("Début;Fin\n2026-11-19 11:00;2026-11-19 11:10\n", "hier.csv"), /déjà enregistré/);
});

test("a site is excluded with its past, an application from now on", async () => {
  const page = await open();
  const site = page.locator(".breakdown .share", { hasText: "github.com" });
  await site.click();
  await button(page, "Exclure ce site…").click();
  const dialog = page.getByRole("dialog");
  const known = await page.program.ask("exclusions.preview", { site: "github.com" });
  await dialog.locator(".wishes").waitFor();
  assert.match(await text(dialog), new RegExp(`Déjà enregistré : ${known.spans} activités .+, depuis le \\d+ \\p{L}+ 2026`, "u"));
  assert.deepEqual(await complaints(page), []);
  await dialog.getByLabel("Effacer aussi tout son temps").check();
  await button(dialog, "Exclure et effacer le temps").click();
  assert.match(await text(toast(page)), new RegExp(`^Exclu : github\\.com\\. Effacé pour de bon : ${known.spans} activités`));
  await site.waitFor({ state: "detached" });
  const left = await page.program.ask("exclusions.preview", { site: "github.com" });
  assert.deepEqual([left.spans, left.excluded], [0, true]);

  await page.locator(".block:not(.idle)", { hasText: "Thunderbird" }).first().click();
  await button(page, "Exclure…").click();
  await button(dialog, "Exclure").click();
  await toast(page).filter({ hasText: "Thunderbird" }).waitFor();
  await page.keyboard.press("g");
  await button(page, "Ne plus exclure thunderbird").click();
  await button(page, "Ne plus exclure thunderbird").waitFor({ state: "detached" });

  // Where a site is named by hand, it is asked the same of what was recorded; of nothing there is no question.
  const field = page.getByLabel("Sites exclus");
  await field.fill("https://jamais-vu.example/");
  await page.keyboard.press("Enter");
  await button(page, "Ne plus exclure jamais-vu.example").waitFor();
  assert.equal(await dialog.count(), 0);
  await field.fill("youtube.com");
  await page.keyboard.press("Enter");
  await dialog.getByLabel("Effacer aussi son nom").check();
  await button(dialog, "Exclure et effacer les titres").click();
  await button(page, "Ne plus exclure youtube.com").waitFor();
  assert.equal(await field.inputValue(), "");
  assert.equal((await page.program.ask("exclusions.preview", { site: "youtube.com" })).spans, 0);
});

test("what was found is excluded, and all of it erased for good", async () => {
  const page = await open();
  await page.keyboard.press("Control+k");
  await page.getByRole("combobox", { name: "Retrouver" }).fill("le monde");
  const first = page.locator(".found-row").first();
  await first.click();
  await button(page, "Exclure…").click();
  const dialog = page.getByRole("dialog").last();
  await dialog.getByText(/^Exclure .?lemonde\.fr/).waitFor();
  await button(dialog, "Exclure").click();
  await toast(page).filter({ hasText: /Exclu.+lemonde\.fr/ }).waitFor();

  const known = await page.program.ask("search.erase", { text: "le monde", preview: true });
  assert.equal(known.seconds, (await page.program.ask("search.find", { text: "le monde" })).duration);
  await button(page, "Effacer tout…").click();
  await dialog.getByText(`(${known.spans} activités), du`).waitFor();
  assert.match(plain(await dialog.innerText()), /du \p{L}+ \d+(er)? \p{L}+ 2026, \d\d:\d\d au .+\s+C’est définitif\./su);
  assert.deepEqual(await complaints(page), []);
  await button(dialog, "Effacer tout pour de bon").click();
  await page.getByText("Rien de tel n’a été enregistré.").last().waitFor();
  assert.match(await text(toast(page).last()), new RegExp(`Effacé pour de bon : ${known.spans} activités`));
  assert.equal((await page.program.ask("search.find", { text: "le monde" })).first, null);
  await page.waitForFunction(() => document.activeElement.getAttribute("aria-label") === "Retrouver");

  // Enter opens the day, and is no press of the button that has the focus again.
  await page.keyboard.press("Escape");
  await page.getByRole("button", { name: "Retrouver" }).press("Enter");
  await page.keyboard.type("github");
  await page.locator(".found-row").first().waitFor();
  await page.keyboard.press("Enter");
  assert.equal(await dialog.count(), 0);
  await page.locator(".list-tools .chip", { hasText: "de 1" }).waitFor();
});
