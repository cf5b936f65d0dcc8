// Time away from the screen in a real browser: picked, noted and given, taken back; a week's gaps; pauses.
import assert from "node:assert/strict";
import { test } from "node:test";
import { complaints, plain } from "./browser.mjs";
import { stageOfTests } from "./stage.mjs";

const stage = await stageOfTests();

const day = "2026-11-19";
const away = (page) => page.locator(".block.idle");
const toast = (page, text) => page.locator(".toast", { hasText: text });
const moments = async (page) => {
  const { blocks } = await page.program.ask("day", { date: day });
  return blocks.filter(({ app }) => app === "Hors écran");
};
const open = async (options) => {
  const page = await stage.open(options);
  await page.waitForSelector(".block");
  return page;
};

test("time away is noted and given in two clicks, and taken back", async () => {
  const page = await open();
  const lunch = page.locator(".block.idle", { hasText: "12:2" });
  // The row that the keyboard is on stays drawn, whatever scrolls.
  const reached = page.locator(".block.idle.active", { hasText: "12:2" });
  await page.getByRole("listbox").focus();
  for (let row = 0; (await reached.count()) === 0 && row < 60; row++) await page.keyboard.press("ArrowDown");
  await lunch.click();
  await page.locator(".assign-what", { hasText: "Inactif, 12:2" }).waitFor();
  assert.ok(await page.getByRole("button", { name: "Ajouter", exact: true }).isDisabled());
  assert.deepEqual(await complaints(page), []);
  await page.getByLabel("Note", { exact: true }).fill("Réunion <b>client</b>");
  await page.locator(".offered", { hasText: "Boutique Lumière" }).click();
  await toast(page, "Ajouté").waitFor();
  const [one] = await moments(page);
  assert.deepEqual([one.title, one.pid, one.cat, one.manual], ["Réunion <b>client</b>", 1, "travail", true]);

  // Later it turns out to have been a call, and a short one.
  await page.locator(".block", { hasText: "Hors écran" }).first().click();
  await page.getByRole("button", { name: "Modifier…" }).click();
  const dialog = page.getByRole("dialog");
  assert.equal(await dialog.getByLabel("Note").inputValue(), "Réunion <b>client</b>");
  assert.deepEqual(await complaints(page), []);
  await dialog.getByLabel("Fin").fill("25:00");
  await page.keyboard.press("Enter");
  await dialog.getByRole("alert").filter({ hasText: /./ }).waitFor();
  await dialog.getByLabel("Note").fill("Appel");
  await dialog.getByLabel("Fin").fill("12:40");
  await page.keyboard.press("Enter");
  await toast(page, "Moment modifié").waitFor();
  const [call] = await moments(page);
  assert.deepEqual([call.title, call.pid, call.start, new Date(call.end * 1000).toISOString().slice(11, 16)], ["Appel", 1, one.start, "11:40"]);
  await page.keyboard.press("Control+z");
  await toast(page, "Annulé").waitFor();
  assert.deepEqual(await moments(page), [one]);
  const [change] = await page.program.ask("changes.list", { limit: 1 });
  assert.ok(plain(change.label).startsWith("Moment modifié : 19/11/2026, 12:2"), change.label);

  await page.keyboard.press("Control+z");
  await page.locator(".block", { hasText: "Hors écran" }).waitFor({ state: "detached" });
  assert.deepEqual(await moments(page), []);
});

test("activity and time away together are one act, the latter only where it is meant", async () => {
  const page = await open();
  const first = page.locator(".block:not(.idle)").first();
  await page.getByRole("listbox").evaluate((list) => list.scrollIntoView());
  await first.click();
  await away(page).first().click({ modifiers: ["Control"] });
  await page.locator(".assign-what", { hasText: "d’absence" }).waitFor();
  const before = await page.program.ask("changes.list", { limit: 20 });
  await page.keyboard.press("2");
  await toast(page, "1 bloc et 1 absence").waitFor();
  assert.equal((await moments(page)).length, 1);
  await page.keyboard.press("Control+z");
  await toast(page, "Annulé : 2 changements").waitFor();
  assert.match(plain(await toast(page, "").innerText()), /Loisir : 1 activité\s+Ajout · Loisir : 19\/11\/2026, /);
  assert.deepEqual(await moments(page), []);
  const after = await page.program.ask("changes.list", { limit: 20 });
  assert.deepEqual(
    after.slice(0, after.length - before.length).map(({ undone }) => undone),
    [true, true],
  );

  // A range that is mostly activity leaves what lies between as it is, unless that is said.
  await page.getByRole("button", { name: "Plage…" }).click();
  await page.getByLabel("Début de la plage").fill("13:00");
  await page.getByLabel("Début de la plage").press("Enter");
  const box = page.getByLabel(/^Aussi l’absence/);
  assert.equal(await box.isChecked(), false);
  await box.check();
  await page.getByLabel("Note", { exact: true }).fill("Atelier");
  await page.getByLabel("Projet", { exact: true }).selectOption({ label: "Atelier CMD" });
  await page.getByRole("button", { name: "Attribuer", exact: true }).click();
  await toast(page, "d’absence ajoutées").waitFor();
  assert.ok((await moments(page)).every(({ title }) => title === "Atelier"));
});

test("a moment of any day says what it adds before it is added", async () => {
  const page = await open();
  await page.keyboard.press("n");
  const dialog = page.locator("dialog");
  await dialog.waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.ariaLabel), "Début");
  await page.keyboard.press("Control+a");
  await page.keyboard.type("7:00");
  await page.keyboard.press("Tab");
  await page.keyboard.press("Control+a");
  await page.keyboard.type("9h30");
  await dialog.getByText(/^Ajoute 2\sh\s\d\d\. \d+\smin déjà enregistrées/).waitFor();
  assert.deepEqual(await complaints(page), []);
  await dialog.getByLabel("Note").fill("Visite de chantier");
  await page.keyboard.press("Enter");
  await toast(page, "Ajouté").waitFor();
  assert.match(plain(await page.locator(".toast p").first().innerText()), /jeudi 19 novembre, 07:00 – 09:30 \(2 h \d\d\)/);
  assert.equal((await moments(page))[0].title, "Visite de chantier");

  // What lies ahead cannot be added, nor can nothing.
  await page.keyboard.press("n");
  await dialog.getByLabel("Début").fill("20:00");
  await dialog.getByLabel("Fin").fill("21:00");
  await dialog.getByText(/encore à venir/).waitFor();
  await dialog.getByRole("button", { name: "Ajouter" }).click();
  await dialog.getByText("Donnez une note, une catégorie ou un projet.").waitFor();
  await dialog.getByText("Travail", { exact: true }).click();
  await dialog.getByRole("button", { name: "Ajouter" }).click();
  await dialog.getByText("Ce temps est encore à venir.").waitFor();
});

test("a week’s gaps are worked through by keyboard", async () => {
  const page = await open();
  await page.keyboard.press("s");
  const rows = page.locator(".gap-row");
  await rows.first().waitFor();
  assert.deepEqual(await complaints(page), []);
  const asked = () => page.program.ask("moments.gaps", { from: "2026-11-16", to: day });
  const { count } = await asked();
  const times = (row) => rows.nth(row).locator(".gap-time").innerText();
  const [first, second, third, fourth] = [await times(0), await times(1), await times(2), await times(3)];
  const left = (wanted) => page.waitForFunction((n) => document.querySelectorAll(".gap-row").length === n, wanted);

  await page.keyboard.press("t");
  await page.keyboard.press("1");
  await left(count - 1);
  assert.equal(await times(0), second);
  const focused = () => page.evaluate(() => document.activeElement.querySelector(".gap-time")?.textContent);
  assert.equal(await focused(), second, "the next one has the focus");
  await page.keyboard.press("ArrowDown");
  assert.equal(await focused(), third);
  await page.keyboard.press("i");
  await left(count - 2);
  assert.equal(await focused(), fourth);
  await page.keyboard.press("Enter");
  await page.locator("dialog").getByLabel("Note").fill("Appel");
  await page.keyboard.press("Enter");
  await left(count - 3);
  assert.equal((await asked()).count, count - 3);
  for (const wanted of [count - 2, count - 1, count]) {
    await page.keyboard.press("Control+z");
    await left(wanted);
  }
  assert.equal(await times(0), first);
});

test("a pause ends when it was told to, and how soon one is asked is a setting", async () => {
  const page = await open({ viewport: { width: 640, height: 480 } });
  await page.getByRole("button", { name: "Durée de la pause" }).click();
  assert.deepEqual(await complaints(page), []);
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "15\u00a0min");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("Enter");
  const paused = page.locator(".now.paused b", { hasText: /jusqu’à 17:4\d$/ });
  await paused.waitFor();
  assert.ok(await paused.evaluate(({ scrollWidth, clientWidth }) => scrollWidth <= clientWidth), "all of it is seen");
  await page.getByRole("button", { name: "Reprendre" }).first().click();
  await paused.waitFor({ state: "detached" });

  await page.keyboard.press("g");
  const ask = page.getByLabel("Au retour, demander ce que c’était");
  await ask.selectOption({ label: "Jamais" });
  await page.waitForFunction((select) => select.value === "0", await ask.elementHandle());
  assert.deepEqual(await page.program.ask("absence.get"), { ask_minutes: 0 });
});

// How many were asked of the program since this was called, and the way to let their answers through.
async function held(page, path) {
  const asked = () => page.asked.filter(([name, { preview }]) => name === path && !preview).length;
  const before = asked();
  const answers = [];
  await page.route("**/ask", async (route) => {
    const { path: name, body } = route.request().postDataJSON();
    if (name !== path || body.preview) return route.continue();
    const response = await route.fetch();
    answers.push(() => route.fulfill({ response }));
  });
  return {
    count: () => asked() - before,
    first: async () => {
      while (answers.length === 0) await page.waitForTimeout(10);
    },
    let: async () => {
      for (const answer of answers) await answer();
      await page.unroute("**/ask");
    },
  };
}

test("keys that come faster than the answer neither do twice, nor close what says how it went", async () => {
  const page = await open();
  const dialog = page.locator("dialog");
  const fast = async (keys) => {
    for (const key of keys) await page.keyboard.press(key);
  };
  await page.keyboard.press("n");
  await dialog.getByLabel("Début").fill("7:00");
  await dialog.getByLabel("Fin").fill("7:30");
  // What is wrong with what was typed last is told, however soon it is sent.
  const end = dialog.getByLabel("Fin");
  await end.evaluate(async (field) => {
    field.value = "7:3x";
    field.dispatchEvent(new Event("input", { bubbles: true }));
    await null;
    field.form.requestSubmit();
  });
  await dialog.getByRole("alert").filter({ hasText: /./ }).waitFor();
  await end.fill("7:30");
  await dialog.getByLabel("Note").fill("Appel");
  const adding = await held(page, "moments.add");
  await fast(["Enter", "Enter", "Escape", "Escape"]);
  await adding.first();
  await dialog.getByRole("button", { name: "Annuler" }).click();
  assert.equal(await dialog.count(), 1, "open until the answer is there");
  await adding.let();
  await dialog.waitFor({ state: "detached" });
  await toast(page, "Ajouté").waitFor();
  assert.equal(adding.count(), 1);

  await page.locator(".list-pane").getByRole("listbox").evaluate((list) => list.scrollIntoView());
  await page.locator(".block:not(.idle)").first().click();
  await page.keyboard.press("Delete");
  const erase = dialog.getByRole("button", { name: "Supprimer pour de bon" });
  await page.waitForFunction((button) => !button.disabled, await erase.elementHandle());
  const erasing = await held(page, "events.delete");
  await erase.focus();
  await fast(["Enter", "Enter", "Escape", "Escape"]);
  await erasing.first();
  assert.equal(await dialog.count(), 1, "open until the answer is there");
  await erasing.let();
  await dialog.waitFor({ state: "detached" });
  await toast(page, "Supprimé").waitFor();
  assert.equal(erasing.count(), 1);
});
