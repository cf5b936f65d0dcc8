// Any period, the timesheet and what is agreed for projects: a real browser, program and store.
import assert from "node:assert/strict";
import { test } from "node:test";
import { atOnce, complaints, plain } from "./browser.mjs";
import { button, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();

const choice = (page, name) => page.getByText(name, { exact: true });
const title = (page, name) => page.getByRole("heading", { level: 1, name }).waitFor();
// What the window reads of the paper when the page wants to be printed.
const watchPaper = (page) =>
  page.evaluate(() => {
    window.print = () => {
      const paper = document.querySelector(".paper");
      window.printed = [paper.querySelector("h2").textContent, paper.matches(".landscape")];
    };
  });
const november = { from: "2026-11-01", to: "2026-11-30" };
const hostile = `<img src=x onerror="hit=1">`;
const terms = {
  currency: "EUR",
  rate: 8550,
  billable: true,
  budget: 900_000,
  budget_from: "2026-11-01",
  rounding: 15,
  rounding_mode: "up",
  rounding_scope: "day",
};

// Two projects of one client and one of another, whose name is hostile.
async function bill(page) {
  const projects = await page.program.ask("projects.list");
  for (const [id, client] of [
    [1, "Galerie Lumière"],
    [3, "Galerie Lumière"],
    [2, hostile],
  ]) {
    const { name, color, category, keywords } = projects.find((one) => one.id === id);
    const saved = await page.program.ask("projects.save", { id, name, color, category, keywords, client, terms });
    assert.ok(saved.ok);
  }
}

test("a year shows before it is compared, and every bar and row leads to days and blocks", async () => {
  const page = await open({ make: ["--days", "60"] });
  await bill(page);
  await page.keyboard.press("e");
  await title(page, "Période, novembre 2026");
  await page.locator(".period-versus", { hasText: "octobre" }).waitFor();
  page.asked.length = 0;
  await choice(page, "Année").click();
  await title(page, "Période, 2026");
  await page.waitForFunction(() => !document.querySelector(".stale") && document.querySelector(".period-bar"));
  await page.locator(".period-versus", { hasText: "2025" }).waitFor();
  const asked = page.asked.filter(([route]) => route === "period").map(([, { compare }]) => compare);
  assert.deepEqual(asked, [false, true]);

  const year = await page.program.ask("period", { from: "2026-01-01", to: "2026-12-31", compare: false });
  const bars = page.locator(".period-bar");
  assert.equal(await bars.count(), 12);
  const hero = await page.locator(".hero b").innerText();
  assert.ok(plain(hero).startsWith(`${Math.floor(year.active / 3600)} h `), hero);
  await bars.nth(9).click();
  await title(page, "Période, octobre 2026");
  await page.waitForFunction(() => document.querySelectorAll(".period-bar").length === 31);
  await page.locator("h1").click();
  await page.keyboard.press("ArrowLeft");
  await title(page, "Période, septembre 2026");
  await page.keyboard.press("a");
  await title(page, "Période, novembre 2026");
  await page.locator(".share", { hasText: "Atelier CMD" }).click();
  const days = await page.program.ask("period.days", { ...november, project_id: 3 });
  const rows = page.locator("dialog .share");
  await rows.first().waitFor();
  assert.equal(await rows.count(), days.days.length);
  await rows.first().click();
  await page.locator(".list-tools .chip", { hasText: "Atelier CMD" }).waitFor();
  await page.waitForFunction(() => [...document.querySelectorAll(".block")].every((one) => /Atelier/.test(one.innerText)));

  // A client is its projects, an hour what touches it.
  await page.keyboard.press("e");
  await page.getByRole("region", { name: "Clients" }).locator(".share", { hasText: "Galerie Lumière" }).click();
  await rows.last().click();
  await page.locator(".list-tools .chip", { hasText: "Galerie Lumière" }).waitFor();
  await page.waitForFunction(() =>
    [...document.querySelectorAll(".block")].every((one) => /Atelier|Boutique/.test(one.innerText)),
  );
  await page.keyboard.press("e");
  await page.getByRole("button", { name: /^Mercredi de 10 à 11/ }).click();
  await rows.last().click();
  await page.locator(".list-tools .chip", { hasText: "de 10 à 11" }).waitFor();
  await title(page, /^Mercredi/);
  await page.waitForFunction(() => {
    const times = [...document.querySelectorAll(".block:not(.idle)")].map((one) => one.innerText.match(/\d\d:\d\d/g));
    return times.length > 0 && times.every(([from, to]) => from < "11:00" && to >= "10:00");
  });
});

test("the week that runs stands beside as much of the one before, a whole one beside all of it", async () => {
  const page = await open();
  const active = async () => plain(await page.locator(".tile").first().innerText());
  await page.keyboard.press("b");
  await page.locator(".versus").waitFor();
  const { before } = await page.program.ask("period", { from: "2026-11-16", to: "2026-11-22" });
  const { previous } = await page.program.ask("recap");
  assert.ok(before.active < previous.active - 3600);
  const hour = (seconds) => Math.floor(seconds / 3600);
  assert.match(await active(), new RegExp(`\\+[^]*avant, au même moment : ${hour(before.active)} h`));
  const code = (list) => list.find(({ name }) => name === "Code").duration;
  const gain = Math.round((code((await page.program.ask("recap")).current.apps) - code(before.apps)) / 60);
  const change = page.getByRole("region", { name: "Applications" }).locator(".change", { hasText: "Code" });
  assert.match(plain(await change.locator("> b").innerText()), new RegExp(`${Math.abs(gain) % 60}\\b`));
  await page.keyboard.press("ArrowLeft");
  await page.locator("h1", { hasText: "9 au 15" }).waitFor();
  await page.waitForFunction(() => !document.querySelector(".stale"));
  const [past, all] = [previous.active, (await page.program.ask("recap", { date: "2026-11-09" })).previous.active];
  assert.match(await active(), new RegExp(`^Temps actif\\s+${hour(past)} h[^]*avant : ${hour(all)} h`));
});

test("a calendar jumps by months and years, and tints the days that have something", async () => {
  const page = await open();
  await page.keyboard.press("c");
  const day = (name) => page.getByRole("button", { name });
  await page.locator(".day.level-4").first().waitFor();
  assert.match(plain(await day(/^jeudi 12 novembre 2026/).getAttribute("aria-label")), /, \d+ h \d\d$/);
  assert.equal(await day("mercredi 11 novembre 2026").getAttribute("class"), "day");
  await page.keyboard.press("Shift+PageUp");
  await page.getByText("Novembre 2025", { exact: true }).waitFor();
  const focused = () => page.evaluate(() => document.activeElement.ariaLabel);
  assert.match(await focused(), /^mercredi 19 novembre 2025/);
  await page.keyboard.press("Enter");
  await title(page, "Mercredi 19 novembre 2025");
  const [day19, day18] = await atOnce(page, "c", "ArrowLeft");
  assert.match(day19, /^mercredi 19 novembre 2025/);
  assert.match(day18, /^mardi 18 novembre 2025/);
  await button(page, "Mois précédent").click();
  await page.getByText("Octobre 2025", { exact: true }).waitFor();
  await button(page, "Année suivante").click();
  await day(/^lundi 19 octobre 2026/).click();
  await title(page, "Lundi 19 octobre 2026");
});

test("the timesheet is a table for the keyboard, its cells lead to the day, its names stay text", async () => {
  const page = await open({ permissions: ["clipboard-read", "clipboard-write"] });
  await bill(page);
  await page.keyboard.press("f");
  await title(page, "Feuille de temps, novembre 2026");
  const sheet = await page.program.ask("sheet", november);
  const cells = page.locator(".sheet tbody tr[role=row]").first().locator(".cell");
  await cells.first().focus();
  await page.keyboard.press("ArrowRight");
  await page.keyboard.press("ArrowDown");
  const named = plain(await page.evaluate(() => document.activeElement.textContent));
  const [, { name, cells: times }] = sheet.rows;
  assert.ok(named.startsWith(`${name}, ${plain(sheet.columns[1].name)} : ${times[1].text}`), named);

  // As in any table, Home and End stay in the row.
  const place = async () =>
    plain(await page.evaluate(() => document.activeElement.textContent)).replace(/ :.*/, "");
  await page.keyboard.press("End");
  assert.equal(await place(), `${name}, total`);
  await page.keyboard.press("Home");
  assert.equal(await place(), `${name}, ${plain(sheet.columns[0].name)}`);
  await page.keyboard.press("Control+Home");
  assert.equal(await place(), `${sheet.rows[0].name}, ${plain(sheet.columns[0].name)}`);

  await button(page, "Copier").click();
  await page.locator(".toast", { hasText: "Tableau copié." }).waitFor();
  const [html, text] = await page.evaluate(async () => {
    const [item] = await navigator.clipboard.read();
    return Promise.all(["text/html", "text/plain"].map(async (type) => (await item.getType(type)).text()));
  });
  assert.ok(!/<img/i.test(html) && text.includes(hostile));
  const total = text.trim().split("\n").at(-1).split("\t");
  assert.deepEqual([total[1], total.at(-2)], ["Total", sheet.totals.text]);

  const rest = page.locator(".to-file");
  assert.match(plain(await rest.innerText()), /^Sans projet, à ranger : \d+ h \d\d$/);
  await rest.click();
  await page.locator("dialog .share").last().click();
  await page.locator(".list-tools .chip", { hasText: "à ranger" }).waitFor();
  assert.equal(await page.locator(".block .project").count(), 0);

  await page.keyboard.press("f");
  await page.locator(".sheet .cell", { hasText: /\d:\d\d/ }).first().click();
  await page.locator(".list-tools .chip", { hasText: sheet.rows[0].name }).waitFor();
});

test("files and paper are of the very sheet that is shown", async () => {
  const page = await open();
  await bill(page);
  await page.keyboard.press("f");
  await choice(page, "7,50").click();
  await choice(page, "Semaines").click();
  await page.getByLabel("Client").selectOption("Galerie Lumière");
  await page.waitForFunction(() => document.querySelectorAll(".sheet thead th").length === 9);
  const files = {};
  for (const [name, format] of [
    ["CSV…", "csv"],
    ["CSV simple…", "csv_plain"],
    ["Agenda (ICS)…", "ics"],
  ]) {
    page.asked.length = 0;
    await button(page, name).click();
    await page.waitForFunction(() => !document.querySelector(".sheet-actions :disabled"));
    const [, body] = page.asked.find(([route]) => route === "sheet.export");
    assert.deepEqual([body.format, body.client, body.columns], [format, "Galerie Lumière", "week"]);
    files[format] = (await page.program.ask("sheet.text", body)).text;
  }
  const total = plain(await page.locator(".sheet tfoot .sheet-total").innerText()).split("\n")[0];
  const amount = plain(await page.locator(".sheet tfoot .sheet-amount").innerText()).replace(/[ €]/g, "");
  assert.match(total, /^\d+,\d\d$/);
  const ends = (text, sign) => text.trim().split("\r\n").at(-1).split(sign);
  assert.equal(ends(files.csv, ";").at(-5), total);
  assert.equal(ends(files.csv, ";").at(-2), amount);
  assert.ok(files.csv.startsWith('\ufeff"Client";"Projet";'));
  assert.equal(ends(files.csv_plain, ",").at(-2), amount.replace(",", "."));
  assert.ok(/SUMMARY:Boutique Lumière\r\n/.test(files.ics) && !files.ics.includes("Saint-Herblain"));

  await watchPaper(page);
  await choice(page, "Paysage").click();
  await button(page, "Imprimer, PDF…").click();
  const printed = await page.evaluate(() => window.printed);
  assert.deepEqual(printed, ["Feuille de temps, novembre 2026", true]);
});

test("a sheet stays as it was sent, and says what is no more so", async () => {
  const page = await open();
  await bill(page);
  await page.keyboard.press("f");
  await button(page, "Figer…").click();
  await page.getByLabel("Titre").fill(`Facture 12 ${hostile}`);
  await button(page, "Figer").click();
  await page.locator(".toast", { hasText: "version 1" }).waitFor();
  const sent = await page.locator(".sheet").innerText();
  const { blocks } = await page.program.ask("day", { date: "2026-11-18" });
  const ids = blocks.filter(({ idle, pid }) => !idle && pid !== 1).flatMap((block) => block.ids);
  await page.program.ask("events.assign", { ids, category: "travail", project_id: 1 });
  await page.locator(".frozen .link").click();
  await page.locator(".sheet-diff", { hasText: "Boutique Lumière, total" }).waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.className), "frozen-head");
  await page.keyboard.press("Escape");
  await page.locator(".frozen-head").waitFor({ state: "detached" });
  assert.equal(await page.evaluate(() => document.activeElement.tagName), "MAIN");
  await page.locator(".frozen .link").click();
  await page.locator(".sheet-diff", { hasText: "Boutique Lumière, total" }).waitFor();
  assert.equal(await page.locator(".sheet").innerText(), sent);
  assert.deepEqual(await complaints(page), []);
  await page.emulateMedia({ media: "print" });
  assert.ok(await page.locator(".paper").isVisible());
  for (const away of [".side", ".top", ".sheet-actions", ".frozen-head", ".sheet"])
    assert.ok(!(await page.locator(away).first().isVisible()), away);
  await page.emulateMedia({ media: null });
  await button(page, "Revenir à la feuille d’aujourd’hui").click();
  await page.waitForFunction((text) => document.querySelector(".sheet")?.innerText !== text, sent);
  await page.locator(".frozen .button").click();
  await page.locator("dialog").getByRole("button", { name: "Supprimer", exact: true }).click();
  await page.locator(".frozen").waitFor({ state: "detached" });
  assert.deepEqual(await page.program.ask("sheets.list"), []);
});

test("what is agreed is typed as people write it, and holds", async () => {
  const page = await open();
  await bill(page);
  await page.reload();
  await page.waitForSelector(".version");
  await page.keyboard.press("p");
  const row = page.locator(".project-row", { hasText: "Boutique Lumière" });
  await row.locator(".budget").waitFor();
  assert.match(plain(await row.innerText()), /85,50 €\/h · (?!Galerie)[^]*reste \d+ h \d\d sur 250 h\b/);
  await button(page, "Modifier Boutique Lumière").click();
  const field = (name) => page.locator("dialog").getByLabel(name, { exact: true });
  assert.equal(await field("Budget d’heures").inputValue(), "250");
  await field("Tarif à l’heure").fill("cher");
  await button(page, "Enregistrer").click();
  await page.locator(".form-error", { hasText: "Le tarif n’est pas un montant" }).waitFor();
  await field("Tarif à l’heure").fill("92,5");
  assert.equal(await field("Compté depuis le").inputValue(), "01/11/2026");
  await field("Compté depuis le").fill("31/11/2026");
  await button(page, "Enregistrer").click();
  await page.locator(".form-error", { hasText: "n’est pas un jour" }).waitFor();
  await field("Compté depuis le").fill("2/11/2026");
  await field("Budget d’heures").fill("300 h 30");
  await field("Client").fill("Musée");
  assert.deepEqual(await complaints(page), []);
  await button(page, "Enregistrer").click();
  await page.getByRole("heading", { name: "Musée" }).waitFor();
  await page.locator("dialog").waitFor({ state: "detached" });
  const focused = () => page.evaluate(() => document.activeElement.ariaLabel);
  assert.equal(await focused(), "Modifier Boutique Lumière", "in its new place");
  const stored = (await page.program.ask("projects.terms")).find((one) => one.project_id === 1);
  const { rate, budget, client, rounding, budget_from } = stored;
  assert.deepEqual(
    { rate, budget, client, rounding, budget_from },
    { rate: 9250, budget: 1_081_800, client: "Musée", rounding: 15, budget_from: "2026-11-02" },
  );
  await page.keyboard.press("Control+z");
  await page.getByRole("heading", { name: "Musée" }).waitFor({ state: "detached" });
  assert.equal(await focused(), "Modifier Boutique Lumière", "and back");
});
