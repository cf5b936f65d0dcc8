// What the page says about the store, and what it can take back, in a real browser on made-up data.
import assert from "node:assert/strict";
import { mkdtemp, rm } from "node:fs/promises";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { build } from "../build.mjs";
import { complaints, openDemo, plain, serve } from "./browser.mjs";

const now = "2026-11-19T16:42";
const full = "Le disque est plein : rien ne peut plus être enregistré.";
let folder, server, demo;

before(async () => {
  folder = await mkdtemp(join(tmpdir(), "orvanta-store-"));
  await build({ out: folder, demo: true });
  server = await serve(folder);
  demo = await openDemo(server.address);
});
after(async () => {
  await demo?.browser.close();
  server?.close();
  await rm(folder, { recursive: true });
});

const open = (query = "", options = {}) =>
  demo.open({ query: `?now=${now}${query}`, viewport: { width: 1180, height: 780 }, ...options });
const blocks = (page) => page.locator(".block:not(.idle)");
const button = (page, name) => page.getByRole("button", { name, exact: true });
const banner = (page) => page.locator(".store-trouble");
const shown = async (locator) => plain(await locator.innerText());
const toast = (page, text) => page.locator(".toast", { hasText: text }).waitFor();
const writes = (page) =>
  page.evaluate(() =>
    window.asked.splice(0).filter(([route]) => /^(events|rules|projects|changes)\.(?!list)/.test(route)),
  );
const view = async (page, key, title) => {
  await page.keyboard.press(key);
  await page.getByRole("heading", { level: 1, name: title }).waitFor();
};

for (const [state, words] of [
  ["full", "Le disque est plein"],
  ["readonly", "ne peut pas être modifié"],
  ["locked", "Un autre programme"],
  ["damaged", "est abîmé"],
  ["absent", "n’est plus à sa place"],
]) {
  test(`a store that is ${state}: one alert over every view, for as long as it lasts`, async () => {
    const page = await open(`&store=${state}`);
    await banner(page).getByText(words).waitFor();
    assert.match(await shown(banner(page)), /\. Depuis 15:11\.$/);
    assert.equal(await banner(page).getAttribute("role"), "alert");
    await banner(page).evaluate((element) => (element.firstChild.dataset.same = "1"));
    for (const key of "sbprgj") {
      await page.keyboard.press(key);
      await page.waitForTimeout(60);
      // The very same element: it is not read out again.
      assert.equal(await banner(page).locator("[data-same]").count(), 1, `view ${key}`);
    }
    await page.evaluate(() => delete window.canned.store);
    await banner(page).getByText(words).waitFor({ state: "detached" });
    await page.context().close();
  });
}

test("on a full disk no success is told, and forms keep what was typed", async () => {
  const page = await open("&store=full");
  await blocks(page).nth(1).click();
  await page.keyboard.press("2");
  await page.waitForSelector(".toast.failed");
  assert.equal((await shown(page.locator(".toast"))).trim(), full);
  assert.equal(await page.locator(".block-manual svg").count(), 0);

  await view(page, "r", "Règles");
  await page.keyboard.press("n");
  await page.locator("dialog input").fill("exemple.fr");
  await button(page, "Enregistrer").click();
  await page.locator("dialog [role=alert]", { hasText: "Le disque est plein" }).waitFor();
  assert.equal(await page.locator("dialog input").inputValue(), "exemple.fr");
  await page.evaluate(() => delete window.canned.store);
  await button(page, "Enregistrer").click();
  await toast(page, "Règle enregistrée");
  await page.evaluate(() => (window.canned.store = { state: "full", message: "Plein.", since: 0 }));

  await view(page, "p", "Projets");
  await page.keyboard.press("n");
  await page.locator("dialog input.input").first().fill("Thèse");
  await button(page, "Enregistrer").click();
  await page.locator("dialog [role=alert]", { hasText: "Plein." }).waitFor();
  await page.keyboard.press("Escape");

  await view(page, "g", "Réglages");
  const idle = page.getByLabel("Seuil d’inactivité");
  await idle.fill("300");
  await idle.press("Enter");
  await page.locator(".field-error", { hasText: "Plein." }).waitFor();
  assert.equal(await idle.inputValue(), "300");
  await button(page, "Exporter…").click();
  await page.waitForFunction(
    () =>
      [...document.querySelectorAll(".field-error")].filter((one) => one.textContent === "Plein.").length ===
      2,
  );
  assert.equal(await page.getByText("Exporté").count(), 0);
  await page.context().close();
});

test("the welcome says what is wrong and can be left", async () => {
  const page = await open("&store=full&new");
  await banner(page).getByText("Le disque est plein").waitFor();
  assert.deepEqual(await complaints(page), []);
  for (let step = 0; step < 2; step++) await button(page, "Continuer").click();
  await page.getByLabel("Nom").fill("Thèse");
  await button(page, "Créer et commencer").click();
  await page.locator(".form-error", { hasText: "Le disque est plein" }).waitFor();
  assert.equal(await page.getByLabel("Nom").inputValue(), "Thèse");
  await button(page, "Plus tard").click();
  await page.getByRole("heading", { name: "Jeudi 19 novembre 2026" }).waitFor();
  await toast(page, "Le disque est plein");
  await page.context().close();
});

test("reports that are not whole say so, and an empty one claims nothing", async () => {
  const page = await open("&store=damaged");
  for (const key of "jsb") {
    await page.keyboard.press(key);
    await page.locator("main").getByText("Une partie de cette période n’a pas pu être lue.").waitFor();
  }
  await page.context().close();
  const empty = await open("&store=damaged&empty");
  await empty.getByText("Rien n’a pu être lu pour ce jour.").waitFor();
  await empty.keyboard.press("s");
  await empty.getByText("Rien n’a pu être lu pour cette semaine.").waitFor();
  assert.equal(await empty.getByText("La semaine commence").count(), 0);
  await empty.context().close();
});

test("the program undoes and redoes: by mouse, by keys, for blocks and ranges", async () => {
  const page = await open();
  const manual = (count) =>
    page.waitForFunction((wanted) => document.querySelectorAll(".block-manual svg").length === wanted, count);
  await blocks(page).nth(1).click();
  await page.keyboard.press("2");
  await manual(1);
  await writes(page);
  await button(page, "Annuler").click();
  await toast(page, "Annulé");
  await manual(0);
  await button(page, "Rétablir").focus();
  await page.keyboard.press("Enter");
  await toast(page, "Rétabli");
  await manual(1);
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "Annuler");
  await page.keyboard.press("Control+z");
  await toast(page, "Annulé");
  await page.keyboard.press("Control+Shift+Z");
  await toast(page, "Rétabli");
  await manual(1);
  assert.deepEqual(await writes(page), [
    ["changes.undo", { id: 1 }],
    ["changes.redo", { id: 1 }],
    ["changes.undo", { id: 1 }],
    ["changes.redo", { id: 1 }],
  ]);

  await button(page, "Plage…").click();
  await page.locator(".assign").getByText("Autre").click();
  await button(page, "Assigner").click();
  await toast(page, "Assigné");
  await writes(page);
  await page.keyboard.press("Control+z");
  await toast(page, "Annulé");
  assert.deepEqual(await writes(page), [["changes.undo", { id: 2 }]]);
  await page.context().close();
});

test("rules, projects and suggestions are taken back as they were", async () => {
  const page = await open();
  await view(page, "r", "Règles");
  const rows = () => page.locator(".windowed .rule-row").allInnerTexts();
  await page.locator("#rule-search").fill("intranet");
  const before = await rows();
  await page.getByRole("button", { name: /^Supprimer la règle intranet/ }).click();
  await page.getByText("Aucune règle ne correspond.").waitFor();
  await button(page, "Annuler").click();
  await page.locator(".windowed .rule-row").waitFor();
  assert.deepEqual(await rows(), before);
  // An edit is two changes of the program's, and one of the user's.
  await page.getByRole("button", { name: /^Modifier la règle intranet/ }).click();
  await page.locator("dialog input").fill("intranet.exemple.fr");
  await button(page, "Enregistrer").click();
  await page.locator(".rule-row", { hasText: "intranet.exemple.fr" }).waitFor();
  await writes(page);
  await button(page, "Annuler").click();
  await page.locator(".rule-row", { hasText: "intranet.atelier-cmd.fr" }).waitFor();
  assert.deepEqual(await rows(), before);
  assert.deepEqual(
    (await writes(page)).map(([route]) => route),
    ["changes.undo", "changes.undo"],
  );

  await view(page, "p", "Projets");
  const project = page.locator(".project-row", { hasText: "Boutique Lumière" });
  const was = await project.innerText();
  await button(page, "Archiver Boutique Lumière").click();
  await button(page, "Annuler").click();
  await button(page, "Archiver Boutique Lumière").waitFor();
  await button(page, "Supprimer Boutique Lumière").click();
  assert.match(await page.locator("dialog").innerText(), /Le message qui suit permet de l’annuler\./);
  await page.locator("dialog").getByRole("button", { name: "Supprimer" }).click();
  await project.waitFor({ state: "detached" });
  await button(page, "Annuler").click();
  await project.waitFor();
  await page.waitForFunction(
    (text) => [...document.querySelectorAll(".project-row")].some((one) => one.innerText === text),
    was,
  );
  const accept = page.getByRole("button", { name: /^Accepter/ });
  const suggested = await accept.count();
  await accept.first().click();
  await toast(page, "va désormais à");
  await button(page, "Annuler").click();
  await toast(page, "Annulé");
  await page.waitForFunction(
    (count) => document.querySelectorAll(".suggestions .soft").length === count,
    suggested,
  );
  await page.context().close();
});

test("deleting says how much is gone for good, and offers no way back", async () => {
  const page = await open();
  const count = await page.locator(".list-tools h2").innerText();
  await blocks(page).nth(1).click();
  await blocks(page)
    .nth(3)
    .click({ modifiers: ["Shift"] });
  await page.keyboard.press("Delete");
  await page.getByRole("dialog", { name: /Supprimer 3 blocs/ }).waitFor();
  await page.getByText("3\u00a0activités").waitFor();
  assert.match(
    plain(await page.locator("dialog").innerText()),
    /\(15 min\)[\s\S]*C’est définitif[\s\S]*sauvegardes/,
  );
  assert.deepEqual(await complaints(page), []);
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "Annuler");
  await page.keyboard.press("Enter");
  assert.equal(await page.evaluate(() => document.activeElement.getAttribute("role")), "listbox");
  assert.equal(await page.locator(".list-tools h2").innerText(), count, "a preview deletes nothing");

  await button(page, "Supprimer…").click();
  await page.locator("dialog").getByRole("button", { name: "Supprimer pour de bon" }).click();
  await toast(page, "Supprimé");
  assert.match(await shown(page.locator(".toast")), /Supprimé : 3 activités \(15 min\)\./);
  assert.equal(await button(page, "Annuler").count(), 0);
  await page.waitForFunction((old) => document.querySelector(".list-tools h2").innerText !== old, count);
  assert.equal(await page.locator(".assign").count(), 0);
  await page.waitForFunction(() => document.activeElement.getAttribute("role") === "listbox");

  await button(page, "Plage…").click();
  const range = await page.locator(".range-label").innerText();
  await button(page, "Supprimer…").click();
  await page.locator("dialog h2").waitFor();
  assert.ok(plain(await page.locator("dialog h2").innerText()).includes(plain(range).split(" · ")[0]));
  await page.evaluate(() => (window.canned.store = { state: "full", message: "Plein.", since: 0 }));
  await button(page, "Supprimer pour de bon").click();
  await page.locator("dialog [role=alert]", { hasText: "Plein." }).waitFor();
  await page.context().close();
});

for (const colorScheme of ["light", "dark"]) {
  test(`the data's rows: size, backups and the way back, check, ${colorScheme}`, async () => {
    const page = await open("", { colorScheme, reducedMotion: "reduce" });
    await view(page, "g", "Réglages");
    const row = (label) => page.locator(".settings-row", { hasText: label });
    await row("Fichier des données").locator("b").waitFor();
    assert.match(await shown(row("Fichier des données")), /2,11 Mo\ndu 20 octobre 2026 au 19 novembre 2026/);
    assert.match(await shown(row("Sauvegardes")), /Dernière : hier à 09:12\./);
    await button(page, "Sauvegarder maintenant").click();
    await toast(page, "Sauvegardé");
    await row("Sauvegardes").getByText("aujourd’hui à 16:42").waitFor();
    await button(page, "Vérifier les données").click();
    await row("Vérification").getByText("Le fichier est entier.").waitFor();

    await button(page, "Restaurer…").click();
    const dialog = page.getByRole("dialog", { name: "Restaurer une sauvegarde" });
    const confirm = dialog.getByRole("button", { name: "Restaurer" });
    assert.ok(await confirm.isDisabled());
    await dialog.getByRole("radio", { name: /Le 16 novembre 2026 à 09:12/ }).check();
    await dialog.getByText("19 novembre 2026").waitFor();
    const text = plain(await dialog.innerText());
    assert.match(text, /Dernier jour\s+19 novembre 2026\s+14 novembre 2026/);
    assert.match(text, /329 activités \(38 h 43\) du fichier actuel ne sont pas dans cette sauvegarde/);
    assert.match(text, /Le fichier actuel n’est pas effacé/);
    assert.deepEqual(await complaints(page), []);
    await confirm.click();
    await toast(page, "Restauré");
    await page.locator(".store-notice", { hasText: "orvanta.db.avant-restauration" }).waitFor();
    await row("Fichier des données").getByText("14 novembre 2026").waitFor();
    assert.equal(await page.evaluate(() => document.activeElement.textContent), "Restaurer…");
    assert.deepEqual(await complaints(page), []);
    await page.context().close();

    const bad = await open("&store=damaged&notice", { colorScheme, reducedMotion: "reduce" });
    const notice = bad.locator(".store-notice");
    await notice.getByText("12\u00a0804\u00a0activités").waitFor();
    await view(bad, "g", "Réglages");
    await button(bad, "Vérifier les données").click();
    await bad.getByText("btreeInitPage").waitFor();
    await button(bad, "Sauvegarder maintenant").click();
    await bad.locator(".field-error", { hasText: "est abîmé" }).waitFor();
    assert.deepEqual(await complaints(bad), []);
    await button(bad, "Restaurer…").click();
    await bad.locator("dialog").getByRole("radio").first().check();
    await bad.locator("dialog .preview", { hasText: "n’est pas connu" }).waitFor();
    await bad.keyboard.press("Escape");
    await button(bad, "Ne plus montrer").click();
    assert.equal(await notice.innerText(), "");
    await bad.getByText("Dernière réparation ou restauration").waitFor();
    await bad.reload();
    await bad.getByText("Dernière réparation ou restauration").waitFor();
    assert.equal(await notice.innerText(), "", "it was put away for good");
    await bad.context().close();
  });
}

test("nothing was complained about in the console, the policy's refusals included", () => {
  assert.deepEqual(demo.errors, []);
});
