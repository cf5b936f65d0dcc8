// What the page says about the store, and what it can take back: a real browser, program and disk.
import assert from "node:assert/strict";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { complaints, plain, settled } from "./browser.mjs";
import { blocks, button, shown, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();
const banner = (page) => page.locator(".store-trouble");
const toast = (page, text) => page.locator(".toast", { hasText: text }).waitFor();
const writes = (page) =>
  page.asked.splice(0).filter(([route]) => /^(events|rules|projects|changes)\.(?!list|preview|pending|origins|hours|terms)/.test(route));
const view = async (page, key, title) => {
  await page.keyboard.press(key);
  await page.getByRole("heading", { level: 1, name: title }).waitFor();
};
const file = (page) => join(page.program.data, "Orvanta/orvanta.db");

// Nothing that was recorded late can be read any more; settings, projects and rules can.
function damage(page) {
  const bytes = readFileSync(file(page));
  bytes.fill(0x5a, Math.floor(bytes.length * 0.8));
  writeFileSync(file(page), bytes);
}

test("on a full disk one alert stays over every view, no success is told, and forms keep what was typed", async (t) => {
  const page = await open({ disk: "8m" });
  if (!page.disk) return t.skip("mounting a file system is not allowed here");
  page.disk.fill();
  await blocks(page).nth(1).click();
  await page.keyboard.press("2");
  await page.waitForSelector(".toast.failed");
  assert.match(await shown(page.locator(".toast")), /Le disque est plein/);
  assert.equal(await page.locator(".block-manual svg").count(), 0);

  await banner(page).getByText("Le disque est plein").waitFor();
  assert.match(await shown(banner(page)), /\. Depuis 16:4\d\.$/);
  assert.equal(await banner(page).getAttribute("role"), "alert");
  assert.deepEqual(await complaints(page), []);
  await banner(page).evaluate((element) => (element.firstChild.dataset.same = "1"));
  for (const key of "sbprgj") {
    await page.keyboard.press(key);
    await settled(page);
    // The very same element: it is not read out again.
    assert.equal(await banner(page).locator("[data-same]").count(), 1, `view ${key}`);
  }

  await view(page, "p", "Projets");
  await page.keyboard.press("n");
  await page.locator("dialog input.input").first().fill("Thèse");
  await button(page, "Enregistrer").click();
  await page.locator("dialog [role=alert]", { hasText: "Le disque est plein" }).waitFor();
  await page.keyboard.press("Escape");

  await view(page, "g", "Réglages");
  const idle = page.getByLabel("Seuil d’inactivité");
  await idle.fill("5");
  await idle.press("Enter");
  await page.locator(".field-error", { hasText: "Le disque est plein" }).waitFor();
  assert.equal(await idle.inputValue(), "5");

  await page.locator("h1").click();
  await view(page, "r", "Règles");
  await page.keyboard.press("n");
  await page.locator("dialog input").first().fill("exemple.fr");
  await button(page, "Enregistrer").click();
  await page.locator("dialog [role=alert]", { hasText: "Le disque est plein" }).waitFor();
  assert.equal(await page.locator("dialog input").first().inputValue(), "exemple.fr");
  page.disk.free();
  await button(page, "Enregistrer").click();
  await toast(page, "Règle enregistrée");
  await banner(page).getByText("Le disque est plein").waitFor({ state: "detached" });
});

test("reports that are not whole say so, and an empty one claims nothing", async () => {
  const page = await open();
  await page.program.stop();
  damage(page);
  page.program.launch();
  await page.keyboard.press("s");
  await page.locator("main").getByText("ce rapport n’est pas complet").waitFor();
  await page.keyboard.press("b");
  await page.locator("main").getByText("ce rapport n’est pas complet").waitFor();
  await page.keyboard.press("j");
  await page.getByText("Rien n’a pu être lu pour ce jour.").waitFor();
});

test("the program undoes and redoes: by mouse, by keys, for blocks and ranges", async () => {
  const page = await open();
  const manual = (count) =>
    page.waitForFunction((wanted) => document.querySelectorAll(".block-manual svg").length === wanted, count);
  await blocks(page).nth(1).click();
  await page.keyboard.press("2");
  await manual(1);
  writes(page);
  await button(page, "Annuler").click();
  await toast(page, "Annulé\u00a0:");
  await manual(0);
  await button(page, "Rétablir").focus();
  await page.keyboard.press("Enter");
  await toast(page, "Rétabli\u00a0:");
  await manual(1);
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "Annuler");
  await page.keyboard.press("Control+z");
  await toast(page, "Annulé\u00a0:");
  await page.keyboard.press("Control+Shift+Z");
  await toast(page, "Rétabli\u00a0:");
  await manual(1);
  assert.deepEqual(writes(page), [
    ["changes.undo", { id: 1 }],
    ["changes.redo", { id: 1 }],
    ["changes.undo", { id: 1 }],
    ["changes.redo", { id: 1 }],
  ]);

  await button(page, "Plage…").click();
  await page.locator(".assign").getByText("Autre", { exact: true }).click();
  await button(page, "Attribuer").click();
  await toast(page, "Attribué");
  writes(page);
  await page.keyboard.press("Control+z");
  await toast(page, "Annulé\u00a0:");
  assert.deepEqual(writes(page), [["changes.undo", { id: 2 }]]);
});

test("rules, projects and suggestions are taken back as they were", async () => {
  const page = await open();
  await view(page, "r", "Règles");
  const rows = () => page.locator(".windowed .rule-row").allInnerTexts();
  await page.locator("#rule-search").fill("intranet");
  await page.waitForFunction(() => document.querySelectorAll(".windowed .rule-row").length === 1);
  const before = await rows();
  const confirm = async (name) => {
    await page.locator("dialog").getByRole("button", { name, exact: true }).click();
    await page.locator("dialog").waitFor({ state: "detached" });
  };
  await page.getByRole("button", { name: /^Supprimer la règle intranet/ }).click();
  await page.locator("dialog .effect-none", { hasText: "Rien ne change" }).waitFor();
  await confirm("Supprimer");
  await page.getByText("Aucune règle ne correspond.").waitFor();
  await button(page, "Annuler").click();
  await page.locator(".windowed .rule-row").waitFor();
  assert.deepEqual(await rows(), before);
  // An edit is two changes of the program's, and one of the user's.
  await page.getByRole("button", { name: /^Modifier la règle intranet/ }).click();
  await page.locator("dialog input").first().fill("intranet.exemple.fr");
  await button(page, "Enregistrer").click();
  await page.locator(".rule-row", { hasText: "intranet.exemple.fr" }).waitFor();
  writes(page);
  await button(page, "Annuler").click();
  await page.locator(".rule-row", { hasText: "intranet.atelier-cmd.fr" }).waitFor();
  assert.deepEqual(await rows(), before);
  assert.deepEqual(
    writes(page).map(([route]) => route),
    ["changes.undo", "changes.undo"],
  );

  await view(page, "p", "Projets");
  const project = page.locator(".project-row", { hasText: "Boutique Lumière" });
  await page.locator(".project-row", { hasText: /Lumière.*\d\sh\s\d/s }).waitFor();
  const was = await project.innerText();
  await button(page, "Archiver Boutique Lumière").click();
  await confirm("Archiver");
  await button(page, "Annuler").click();
  await button(page, "Archiver Boutique Lumière").waitFor();
  await button(page, "Supprimer Boutique Lumière").click();
  assert.match(await page.locator("dialog").innerText(), /L’historique garde 90 jours de quoi l’annuler\./);
  await confirm("Supprimer");
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
  await confirm("Accepter");
  await toast(page, "va désormais à");
  const made = (await page.program.ask("rules.list")).filter(({ project_id }) => project_id !== null);
  assert.ok(made.some(({ pattern, project_id }) => pattern === "revue-typographie.fr" && project_id === 4));
  await button(page, "Annuler").click();
  await toast(page, "Annulé\u00a0:");
  await page.waitForFunction(
    (count) => document.querySelectorAll(".suggestions .soft").length === count,
    suggested,
  );
});

test("deleting says how much is gone for good, and offers no way back", async () => {
  const page = await open({ disk: "8m" });
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
    /\(26 min\)[\s\S]*C’est définitif[\s\S]*sauvegardes/,
  );
  assert.deepEqual(await complaints(page), []);
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "Annuler");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.activeElement.getAttribute("role") === "listbox");
  assert.equal(await page.locator(".list-tools h2").innerText(), count, "a preview deletes nothing");

  await button(page, "Supprimer…").click();
  await page.locator("dialog").getByRole("button", { name: "Supprimer pour de bon" }).click();
  await toast(page, "Supprimé");
  assert.match(await shown(page.locator(".toast")), /Supprimé : 3 activités \(26 min\)\./);
  assert.equal(await button(page, "Annuler").count(), 0);
  await page.waitForFunction((old) => document.querySelector(".list-tools h2").innerText !== old, count);
  assert.equal(await page.locator(".assign").count(), 0);
  await page.waitForFunction(() => document.activeElement.getAttribute("role") === "listbox");

  await view(page, "h", "Historique des changements");
  await page.locator(".change-row", { hasText: /Définitif/ }).waitFor();
  assert.equal(await page.locator(".change-row button").count(), 0);
  await view(page, "j", /^Jeudi/);

  await button(page, "Plage…").click();
  const range = await page.locator(".range-label").innerText();
  await button(page, "Supprimer…").click();
  await page.locator("dialog h2").waitFor();
  assert.ok(plain(await page.locator("dialog h2").innerText()).includes(plain(range).split(" · ")[0]));
  if (page.disk) {
    page.disk.fill();
    await button(page, "Supprimer pour de bon").click();
    await page.locator("dialog [role=alert]", { hasText: "Le disque est plein" }).waitFor();
  }
});

for (const colorScheme of ["light", "dark"]) {
  test(`the data's rows: size, backups and the way back, check, ${colorScheme}`, async () => {
    const page = await open({ colorScheme, reducedMotion: "reduce" });
    const row = (label) => page.locator(".settings-row", { hasText: label });
    await view(page, "g", "Réglages");
    await row("Fichier des données").locator("b").waitFor();
    assert.match(await shown(row("Fichier des données")), /\d ko\ndu 20 octobre 2026 au 19 novembre 2026/);
    assert.match(await shown(row("Sauvegardes")), /Dernière : hier à 09:12\./);
    await button(page, "Vérifier les données").click();
    await row("Vérification").getByText("est intact.").waitFor();
    await button(page, "Restaurer…").click();
    const dialog = page.getByRole("dialog", { name: "Restaurer une sauvegarde" });
    const confirm = dialog.getByRole("button", { name: "Restaurer" });
    assert.ok(await confirm.isDisabled());
    await dialog.getByRole("radio", { name: /Hier à 09:12/ }).check();
    await dialog.getByText("19 novembre 2026").waitFor();
    const text = plain(await dialog.innerText());
    assert.match(text, /Dernier jour\s+19 novembre 2026\s+17 novembre 2026/);
    assert.match(text, /132 activités \(14 h 5\d\) du fichier actuel n’y sont pas/);
    assert.match(text, /Le fichier actuel n’est pas effacé/);
    assert.deepEqual(await complaints(page), []);
    await confirm.click();
    await toast(page, "Restauré");
    const notice = page.locator(".store-notice");
    await notice.getByText("orvanta.db.avant-restauration").waitFor();
    await row("Fichier des données").getByText("17 novembre 2026").waitFor();
    assert.equal(await page.evaluate(() => document.activeElement.textContent), "Restaurer…");
    await button(page, "Sauvegarder maintenant").click();
    await toast(page, "Sauvegardé");
    await row("Sauvegardes").getByText("aujourd’hui à 16:4").waitFor();
    assert.deepEqual(await complaints(page), []);
    await button(page, "Ne plus montrer").click();
    assert.equal(await notice.innerText(), "");
    await page.getByText("Dernière réparation ou restauration").waitFor();

    await page.program.stop();
    damage(page);
    page.program.launch();
    await page.reload();
    await page.getByText("Dernière réparation ou restauration").waitFor();
    assert.equal(await notice.innerText(), "", "it was put away for good");
    await button(page, "Vérifier les données").click();
    await page.locator(".check-result code").first().waitFor();
    await button(page, "Sauvegarder maintenant").click();
    await page.locator(".field-error", { hasText: "est abîmé" }).waitFor();
    assert.deepEqual(await complaints(page), []);
    await button(page, "Restaurer…").click();
    await dialog.getByRole("radio").first().check();
    await dialog.locator(".preview", { hasText: "n’est pas connu" }).waitFor();
  });
}
