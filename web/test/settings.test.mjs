// What the settings say and do, in a real browser over the store of a made-up month.
import assert from "node:assert/strict";
import { test } from "node:test";
import { complaints, settled } from "./browser.mjs";
import { answer, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();

/** One after the other, and then always the last. */
const next = (list) => (list.length > 1 ? list.shift() : list[0]);

test("a setting that the program reads otherwise is said beside its field", async () => {
  const page = await open();
  await page.keyboard.press("g");
  // The page offers nothing of the kind; a program of other limits may.
  answer(page, "settings.set", () => ({ ok: true, read_as: { idle_threshold: 120 } }));
  await page.getByLabel("Seuil d’inactivité").fill("1,5");
  await page.keyboard.press("Enter");
  await page.getByText("Sera lu comme 2 minutes.").waitFor();
});

test("the program may take all the time that the save panel is open for", async () => {
  const page = await open();
  let choose;
  answer(page, "export", () => new Promise((done) => (choose = () => done({ ok: true }))));
  await page.keyboard.press("g");
  await page.clock.install();
  await page.getByRole("button", { name: "Exporter…" }).click();
  await page.getByText("Export en cours…").waitFor();
  await page.clock.runFor(60_000);
  assert.equal(await page.getByText("ne répond pas").count(), 0);
  choose();
  await page.getByText("Exporté :").waitFor();
});

test("a list of sites that says nothing usable is said to exclude none", async () => {
  const page = await open();
  answer(page, "settings.get", async (real) => ({ ...(await real()), excluded_domains: '["a.fr", 1]' }));
  await page.keyboard.press("g");
  await page.getByText("aucun site n’est exclu").waitFor();
  assert.equal(await page.getByText("a.fr", { exact: true }).count(), 0);
});

test("the look for a newer version tells what it found, and when it found nothing out", async () => {
  const page = await open();
  const told = [{ update_check: "going" }, { update_check: "failed" }];
  answer(page, "update.check", () => ({ ok: true }));
  answer(page, "status", async (real) => ({ ...(await real()), ...next(told) }));
  await page.keyboard.press("g");
  const look = page.getByRole("button", { name: "Vérifier maintenant" });
  await look.click();
  await page.getByText("La liste des versions n’a pas pu être lue").waitFor();
  told[0] = { update_check: "done" };
  await look.click();
  await page.getByText("Pas de version plus récente trouvée.").waitFor();
  assert.equal(await page.getByText("n’a pas pu être lue").count(), 0);
  told[0] = { update_check: "done", update: { version: "9.1", url: "https://exemple.fr" } };
  await look.click();
  await page.getByRole("button", { name: "Voir Orvanta 9.1" }).waitFor();
});

test("what another machine took along is shown, then in place with the choices of its page", async () => {
  const page = await open({ reducedMotion: "reduce" });
  const ask = page.program.ask.bind(page.program);
  await ask("page.mark", { key: "periodGroup", value: "client" });
  const { file } = await ask("store.backup");
  await ask("page.mark", { key: "periodGroup", value: null });
  await ask("projects.save", { name: "Entre-temps" });
  // Nobody chooses a file here; any backup will do.
  const picked = [{ ok: false }, { error: "Ce fichier n’est pas sur cet ordinateur." }, { ok: true, file }];
  answer(page, "store.pick", () => next(picked));
  await page.keyboard.press("g");
  const take = page.getByRole("button", { name: "Reprendre un fichier…" });
  const dialog = page.getByRole("dialog", { name: "Reprendre ce fichier" });
  const confirm = dialog.getByRole("button", { name: "Reprendre", exact: true });
  await take.click();
  await settled(page);
  assert.equal(await dialog.count(), 0, "the user thought better of it");
  await take.click();
  await page.locator(".field-error", { hasText: "sur cet ordinateur" }).waitFor();
  await take.click();
  await dialog.getByText("Le fichier actuel n’est pas effacé").waitFor();
  assert.deepEqual(await complaints(page), []);
  await confirm.click();
  await page.locator(".toast", { hasText: "Repris" }).waitFor();
  assert.ok(!(await ask("projects.list")).some(({ name }) => name === "Entre-temps"));
  await page.keyboard.press("e");
  await page.getByRole("heading", { name: "Période", level: 1 }).waitFor();
  assert.equal(await page.getByLabel("Ce que les barres montrent").inputValue(), "client");

  await page.keyboard.press("g");
  await page.getByRole("button", { name: "Revoir l’accueil" }).click();
  await page.getByRole("button", { name: "Reprendre d’un autre ordinateur…" }).click();
  await dialog.getByText("Le fichier actuel n’est pas effacé").waitFor();
  assert.deepEqual(await complaints(page), []);
  await confirm.click();
  await page.waitForSelector(".side");
});

test("nothing is erased without a yes", async () => {
  const page = await open();
  await page.keyboard.press("g");
  const retention = page.getByLabel("Garder titres et adresses");
  await retention.fill("30");
  await retention.press("Enter");
  await page.locator("dialog").getByRole("button", { name: "Annuler" }).click();
  assert.equal(await retention.inputValue(), "0");
  assert.equal((await page.program.ask("settings.get")).retention_days, "0");
});
