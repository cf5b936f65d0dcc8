// Rules and projects: what they would do, what they did, and how they are written.
import assert from "node:assert/strict";
import { test } from "node:test";
import { plain, settled } from "./browser.mjs";
import { stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();

test("a rule shows what it would catch, change and leave, and then catches it", async () => {
  const page = await open();
  const dialog = page.locator("dialog");
  const effect = page.getByRole("region", { name: "Effet sur le passé" });
  const preview = page.locator(".preview");
  const saying = (text) => page.locator(".preview", { hasText: text }).waitFor();
  await page.keyboard.press("r");
  await page.keyboard.press("n");
  await dialog.locator("input").first().fill("LeMonde");
  await dialog.getByLabel("Catégorie").selectOption("autre");
  await saying(/ces 30 derniers jours/);
  await effect.getByText("Loisir").first().waitFor();
  const [, spans] = /(\d+) activités, .+ ces 30/.exec(plain(await preview.innerText()));
  assert.ok(Number(spans) > 1);
  const told = plain(await effect.innerText());
  const [, gained] = /\+ (.+) Autre,/.exec(told);
  assert.match(told, new RegExp(`${gained} du passé changent, .+inchangés.+\\+ ${gained}\\s+Autre\\s+− ${gained}\\s+Loisir`, "s"));
  // What it holds: titles, and the addresses that the list of the day does not show.
  await preview.locator("summary").first().click();
  await preview.getByText("https://lemonde.fr/").waitFor();
  await preview.getByText("Tout", { exact: true }).click();
  await saying("depuis le début");

  await dialog.locator("input").first().fill("rien de tel");
  await saying("Rien depuis le début.");
  await effect.getByText("Rien ne change dans le passé. La règle vaudra pour la suite.").first().waitFor();
  await dialog.getByLabel("Quand").selectOption("app");
  await dialog.locator("input").first().fill("inkscape");
  await saying("Attribué à la main, resterait tel quel");
  await dialog.getByLabel("Quand").selectOption("url");
  await dialog.locator("input").first().fill("lemonde.fr/0/");
  await preview.locator("summary", { hasText: "https://lemonde.fr/0/1" }).waitFor();

  await page.getByRole("button", { name: "Enregistrer" }).click();
  await dialog.waitFor({ state: "detached" });
  await page.locator("#rule-search").fill("lemonde");
  await page.waitForFunction(() => document.querySelectorAll(".windowed .rule-row").length === 2);
  assert.match(
    await page.locator(".windowed .rule-row").first().innerText(),
    /lemonde[\s\S]*Autre[\s\S]*Personnelle/,
  );
});

test("a block says why it counts as it does, and leads to what decided", async () => {
  const page = await open();
  const why = page.locator(".assign-why");
  const saying = (text) => page.locator(".assign-why", { hasText: text }).waitFor();
  await page.locator(".block", { hasText: "README.md — boutique-lumiere" }).first().click();
  await saying("Travail : la règle « Code »");
  await saying("Projet Boutique Lumière : mot-clé « lumiere »");
  await page.locator(".assign-what", { hasText: "Boutique Lumière" }).waitFor();
  await why.getByRole("button", { name: "la règle « Code »" }).click();
  const rule = page.getByRole("dialog", { name: "Modifier la règle" });
  assert.equal(await rule.locator("input").first().inputValue(), "Code");
  assert.equal(await rule.getByLabel("Catégorie").inputValue(), "travail");
  await page.keyboard.press("Escape");
  await why.getByRole("button", { name: "mot-clé « lumiere »" }).click();
  const project = page.getByRole("dialog", { name: "Modifier le projet" });
  assert.equal(await project.getByLabel("Nom").inputValue(), "Boutique Lumière");
  await page.keyboard.press("Escape");
  await page.getByRole("listbox").focus();
  await page.keyboard.press("2");
  await page.waitForSelector(".toast");
  await page.locator(".block", { hasText: "extranet-mairie.fr" }).first().click();
  await saying("Aucune règle ne le classe");
  await page.locator(".block", { hasText: "Attribué à la main" }).click();
  await saying("Loisir : attribué à la main");
  await why.getByRole("button", { name: "attribué à la main" }).first().click();
  await page.waitForFunction(() => document.activeElement?.type === "radio");
  await page.program.ask("projects.delete", { id: 4 }); // its keyword decides before the application
  const drawing = page.locator(".block", { hasText: "affiche-mémoire.svg" }).first();
  for (let day = 0; day < 7 && !(await drawing.isVisible()); ++day) {
    await page.getByRole("button", { name: "Jour précédent" }).click();
    await settled(page);
  }
  await drawing.click();
  await saying("l’application « Inkscape »");
});

test("a project: what is wrong is said beside the field, what is right holds", async () => {
  const page = await open();
  const dialog = page.locator("dialog");
  const saved = async (name) => (await page.program.ask("projects.list")).find((one) => one.name === name);
  await page.keyboard.press("p");
  await page.getByRole("button", { name: "Modifier Atelier CMD" }).waitFor();
  await page.keyboard.press("n");
  await dialog.waitFor();
  await page.keyboard.type("Atelier CMD"); // into the field that has the focus
  await page.keyboard.press("Enter");
  await dialog.getByText("Un projet porte déjà ce nom.").waitFor();
  await dialog.getByLabel("Nom").fill("  Thèse  ");
  await dialog.getByRole("radio", { name: "Rose" }).check();
  await dialog.getByLabel("Catégorie").selectOption("loisir");
  await dialog.getByLabel("Mots-clés").fill("thèse, soutenance");
  await page.keyboard.press("Enter");
  await page.getByRole("button", { name: "Modifier Thèse" }).click();
  const { color, category, keywords } = await saved("Thèse");
  assert.deepEqual([color, category, keywords], ["#c254a5", "loisir", "thèse, soutenance"]);
  await dialog.getByLabel("Nom").fill("Mémoire");
  await page.keyboard.press("Enter");
  await page.getByRole("button", { name: "Supprimer Mémoire" }).click();
  await dialog.waitFor();
  await page.keyboard.press("Enter"); // the focus is on the way out
  await dialog.waitFor({ state: "detached" });
  assert.equal((await saved("Mémoire")).color, "#c254a5");
});
