// The day's list, timeline and messages in a real browser, over the store of a made-up month.
import assert from "node:assert/strict";
import { test } from "node:test";
import { plain, settled } from "./browser.mjs";
import { answer, blocks, shown, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();
const scroll = (page, by) => page.locator(".main").evaluate((main, y) => main.scrollBy(0, y), by);
/** Seconds of "45 s", "10 min", "1 h 02". */
const seconds = (text) => {
  const [first, second = 0] = text.match(/\d+/g).map(Number);
  if (text.includes("h")) return first * 3600 + second * 60;
  return text.endsWith("min") ? first * 60 : first;
};

test("the list's sum is the day's sum, with what is too brief for a row", async () => {
  const page = await open();
  let brief = 0;
  for (let day = 1; day <= 19; day++) {
    const report = await page.program.ask("day", { date: `2026-11-${String(day).padStart(2, "0")}` });
    const listed = report.blocks.filter(({ idle }) => !idle).reduce((sum, block) => sum + block.duration, 0);
    assert.ok(Math.abs(listed + report.brief.seconds - report.totals.active) < 1, `${day}`);
    brief += report.brief.count;
  }
  assert.ok(brief > 20);
  await page.waitForSelector(".block");
  const today = await page.program.ask("day");
  assert.ok(today.brief.count > 1);
  assert.equal(await shown(page.locator(".list-tools h2 .quiet")), await shown(page.locator(".hero b")));
  await scroll(page, 1e6);
  const rest = await shown(page.locator(".list-rest"));
  const [, count, time] = /^… et (\d+) passages brefs \((.+)\)$/.exec(rest);
  assert.equal(Number(count), today.brief.count);
  assert.ok(Math.abs(seconds(time) - today.brief.seconds) < 60, rest);
  await page.locator("#search").fill("code");
  await page.locator(".list-rest").waitFor({ state: "detached" });
});

test("today is read from now on back, another day as it went, sessions above their blocks", async () => {
  const page = await open();
  const starts = async () => {
    await page.waitForSelector(".block");
    const texts = await blocks(page).locator(".block-time").allInnerTexts();
    return texts.slice(0, 6).map((text) => text.slice(0, 5));
  };
  const today = await starts();
  assert.deepEqual(today, [...today].sort().reverse());
  const session = page.locator(".session").first();
  const time = await shown(session.locator(".block-duration"));
  await session.click();
  await page.locator(".assign").waitFor();
  const group = page.getByRole("group").filter({ has: page.locator(".session") }).first();
  assert.match(plain(await group.getAttribute("aria-label")), new RegExp(`à \\d\\d:\\d\\d, ${time}$`));
  const selected = group.locator(".block[aria-selected=true]");
  assert.ok((await selected.count()) > 1);
  assert.ok((await shown(page.locator(".assign-what"))).includes(time));
  assert.equal(await selected.locator(".project").count(), 0, "its heading names it");

  await page.keyboard.press("Escape");
  await page.getByRole("button", { name: "Jour précédent" }).click();
  await page.waitForFunction(() => document.querySelector("h1").textContent.startsWith("Mercredi"));
  await page.waitForFunction(() => !document.querySelector(".stale"));
  const before = await starts();
  assert.deepEqual(before, [...before].sort());
});

test("what comes in above moves nothing that is read, and no row lies half under the timeline", async () => {
  const page = await open();
  await page.waitForSelector(".block");
  const texts = () =>
    page.locator(".block").evaluateAll((rows) =>
      rows
        .filter((row) => getComputedStyle(row).opacity === "1")
        .map((row) => [row.getBoundingClientRect().top, row.innerText])
        .sort(([a], [b]) => a - b),
    );
  await scroll(page, 511);
  await settled(page);
  const seen = await texts();
  const { bottom } = await page.locator(".timeline").evaluate((one) => one.getBoundingClientRect().toJSON());
  assert.ok(seen[0][0] >= bottom && seen[0][0] < bottom + 40, `${seen[0]} under ${bottom}`);

  answer(page, "day", async (real) => {
    const { blocks: known, ...day } = await real();
    const newest = known.at(-1);
    const more = { ...newest, start: newest.end, end: newest.end + 90, ids: [987654], pid: null };
    return { ...day, blocks: [...known, more] };
  });
  await page.waitForFunction(() => document.querySelector(".list-tools h2").textContent.startsWith("45"), null, {
    timeout: 20_000,
  });
  await settled(page);
  assert.deepEqual((await texts()).slice(0, 8), seen.slice(0, 8));
});

test("a drag along the timeline selects no text, and says what whole blocks would leave out", async () => {
  const page = await open({ make: ["--blocks", "400"] });
  await page.waitForSelector(".block");
  const box = await page.locator(".plot").boundingBox();
  await page.mouse.move(box.x + box.width * 0.25, box.y + 8);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.5, box.y + 60, { steps: 6 });
  await page.mouse.move(box.x + box.width * 0.6, box.y + 240, { steps: 6 });
  await page.mouse.up();
  assert.equal(await page.evaluate(() => String(getSelection())), "");
  await page.getByRole("button", { name: /^Choisir les \d+.blocs entiers \(hors .+ de passages brefs\)$/ }).waitFor();
});

test("the tip of the timeline covers neither its buttons nor the bar of what is picked", async () => {
  const page = await open({ viewport: { width: 860, height: 560 } });
  await page.waitForSelector(".block");
  const point = async () => {
    const plot = await page.locator(".plot").boundingBox();
    await page.mouse.move(plot.x + plot.width * 0.3, plot.y + 40);
    await page.mouse.move(plot.x + plot.width * 0.35, plot.y + 40);
    const tip = await page.locator(".tip").boundingBox();
    for (const other of [".zoom", ".assign"]) {
      const that = await page.locator(other).boundingBox({ timeout: 500 }).catch(() => null);
      if (!that) continue;
      const apart = tip.y >= that.y + that.height || tip.y + tip.height <= that.y;
      assert.ok(apart, `${JSON.stringify(tip)} over ${other} ${JSON.stringify(that)}`);
    }
  };
  await point();
  await blocks(page).first().click();
  await page.locator(".main").evaluate((main) => (main.scrollTop = 60));
  await point();
});

test("a message answered by mouse holds none of the later ones, nor covers the row that it is about", async () => {
  const page = await open({ viewport: { width: 1180, height: 620 } });
  await page.waitForSelector(".block");
  const list = page.getByRole("listbox");
  await blocks(page).nth(1).click();
  await page.keyboard.press("2");
  await page.locator(".toast").getByRole("button", { name: "Annuler" }).click();
  await page.locator(".toast", { hasText: "Annulé" }).waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.role), "listbox", "the focus stays");
  await page.mouse.move(300, 20);
  // The last row in sight.
  await list.focus();
  const rows = await blocks(page).all();
  for (const row of rows.reverse()) {
    const { y, height } = await row.boundingBox();
    if (y + height > 620) continue;
    await row.click();
    break;
  }
  await page.clock.install({ time: Date.now() });
  await page.keyboard.press("3");
  await page.locator(".toast", { hasText: "Attribué" }).waitFor();
  await page.clock.runFor(500);
  const [row, toast] = [".block.active", ".toast"].map((one) => page.locator(one).boundingBox());
  const { y, height } = await row;
  const over = await toast;
  assert.ok(over.y >= y + height || over.y + over.height <= y, "beside the row");
  await page.mouse.move(300, 300);
  await page.clock.runFor(13_000);
  assert.equal(await page.locator(".toast").count(), 0);
});

test("an edited rule is compared with itself, and what is wrong with it is seen", async () => {
  const page = await open({ viewport: { width: 860, height: 560 } });
  const dialog = page.locator("dialog");
  const pattern = dialog.locator("input").first();
  await page.keyboard.press("r");
  await page.locator("#rule-search").fill("youtube.com");
  await page.getByRole("button", { name: "Modifier la règle youtube.com" }).click();
  const effect = (text) => page.locator(".effect-now:not(.dimmed)", { hasText: text }).waitFor();
  await effect("Rien ne change dans le passé.");
  const { height } = await page.locator(".effect").boundingBox();
  await pattern.fill("nulle part");
  await page.locator(".preview", { hasText: "Rien ces 30" }).waitFor();
  await effect(/\+.+Non classé.*−.+Loisir/s);
  assert.equal((await page.locator(".effect").boundingBox()).height, height, "nothing moves");
  await dialog.getByLabel("Quand").selectOption("app");
  await pattern.fill("e");
  await dialog.getByLabel("Catégorie").selectOption("");
  await page.locator(".preview", { hasText: "activités" }).waitFor();
  await pattern.press("Enter");
  const error = await dialog.getByText("Choisissez une catégorie ou un projet.").boundingBox();
  const end = await dialog.boundingBox();
  assert.ok(error.y + error.height <= end.y + end.height && error.y > end.y, "in sight");
  await dialog.getByLabel("Catégorie").selectOption("loisir");
  await pattern.fill("rien de tel");
  await pattern.press("Enter");
  await page.locator(".toast", { hasText: "Règle enregistrée" }).waitFor();
});

test("where nothing shows folders, the message tells where the folder is", async () => {
  const page = await open();
  const none = { ok: true, shown: false, message: "Aucun gestionnaire de fichiers n’est installé." };
  answer(page, "revealData", () => none);
  await page.keyboard.press("g");
  await page.getByRole("button", { name: "Montrer le dossier" }).click();
  await page.locator(".toast.failed", { hasText: "Aucun gestionnaire de fichiers n’est installé." }).waitFor();
});
