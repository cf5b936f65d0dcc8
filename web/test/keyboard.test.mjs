// What the keyboard does, and where focus, selection and place stay, over the store of a made-up month.
import assert from "node:assert/strict";
import { test } from "node:test";
import { atOnce, plain, settled, viewKeys } from "./browser.mjs";
import { blocks, stageOfTests } from "./stage.mjs";

const { open } = await stageOfTests();

test("the keyboard alone selects, assigns and takes back; the rule that was learnt waits for its answer", async () => {
  const page = await open();
  const list = page.getByRole("listbox");
  await page.locator("#search").fill("youtube");
  await page.waitForFunction(() => {
    const rows = [...document.querySelectorAll(".block")];
    return rows.length > 0 && rows.every((row) => /youtube/i.test(row.textContent));
  });
  await list.focus();
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("Shift+End");
  const count = await page.locator(".block[aria-selected=true]").count();
  assert.equal(count, await page.locator(".block").count());
  await page.keyboard.press("1");
  await page.waitForSelector(".toast");
  await page.waitForFunction(
    (wanted) => document.querySelectorAll(".block-manual svg").length === wanted,
    count,
  );

  await page.locator("h1").click();
  for (const name of ["Mercredi", "Mardi"]) {
    await page.keyboard.press("ArrowLeft");
    await page.waitForFunction((day) => document.querySelector("h1").textContent.startsWith(day), name);
  }
  // Until then the list is the one of the day before, in which nothing can be picked.
  await page.waitForFunction(() => !document.querySelector(".stale") && document.querySelector(".block"));
  await list.focus();
  await page.keyboard.press("Control+a");
  // The first key of the digits' row on an AZERTY keyboard.
  await list.dispatchEvent("keydown", { key: "&", code: "Digit1", bubbles: true });
  const panel = page.getByRole("complementary", { name: "1 règle apprise" });
  await panel.waitFor();
  assert.match(plain(await panel.innerText()), /Site\s+youtube\.com\s+→\s+(compte comme\s+)?Travail/);
  assert.equal(await page.evaluate(() => document.activeElement.role), "listbox", "the focus stays");
  await page.keyboard.press("Control+z");
  await page.waitForFunction(() => document.querySelectorAll(".block-manual svg").length === 0);
  await panel.waitFor({ state: "detached" });
  await page.keyboard.press("r");
  await page.locator("#rule-search").fill("youtube");
  await page.waitForFunction(() => document.querySelectorAll(".rule-row:not(.head)").length === 1);
  const origins = page.locator(".rule-row:not(.head) > :nth-child(5)");
  assert.deepEqual(await origins.allInnerTexts(), ["Intégrée"]);
  await page.locator("#rule-search").fill("");
  await page.getByRole("button", { name: "D’après l’application 1" }).click();
  await page.waitForFunction(() => document.querySelectorAll(".rule-row:not(.head)").length === 1);
  assert.deepEqual(await origins.allInnerTexts(), ["D’après l’application"]);
  assert.ok(await origins.evaluate((cell) => cell.scrollWidth <= cell.clientWidth), "it is not cut short");
});

test("the welcome and a dialogue have the keyboard to themselves; the start with the session is a choice", async () => {
  const page = await open({ make: ["--kind", "new"] });
  const next = page.getByRole("button", { name: "Continuer" });
  const launches = async () => (await page.program.ask("permissions.status")).launch_at_login;
  const choice = page.getByRole("switch", { name: "Lancer Orvanta à l’ouverture de la session" });
  assert.ok(await choice.isChecked());
  await choice.click();
  await next.click();
  await next.click();
  await page.keyboard.type("Projet Boutique"); // into the field that has the focus
  assert.equal(await page.getByLabel("Nom").inputValue(), "Projet Boutique");
  await page.locator("h1").click();
  await page.keyboard.type("Projet ?");
  assert.equal(await page.locator("h1").innerText(), "Un premier projet");
  await page.getByRole("button", { name: "Créer et commencer" }).click();
  await page.waitForSelector(".side");
  assert.ok(!(await launches()));

  await page.keyboard.press("p");
  await page.locator("h1", { hasText: "Projets" }).waitFor();
  assert.deepEqual(await atOnce(page, "n"), ["Nom"]);
  await page.evaluate(() => document.activeElement.blur());
  await page.keyboard.type("Projet ?");
  assert.equal(await page.locator("dialog h2").innerText(), "Nouveau projet");
  assert.equal((await page.program.ask("status")).paused, false);
  assert.deepEqual(page.asked.filter(([path]) => path.startsWith("tracker.")), []);
  await page.keyboard.press("Escape");

  // Seen again, it shows what holds.
  await page.keyboard.press("g");
  await page.getByRole("button", { name: "Revoir l’accueil" }).click();
  assert.ok(!(await choice.isChecked()));
  await choice.click();
  await next.click();
  await next.click();
  assert.ok(!(await launches()), "nothing is written before the end");
  await page.getByRole("button", { name: "Plus tard" }).click();
  await page.waitForSelector(".side");
  assert.ok(await launches());
});

// What has the focus, and the side on which something cuts its ring.
const focused = (page) =>
  page.evaluate(() => {
    const one = document.activeElement;
    const style = getComputedStyle(one);
    const box = one.getBoundingClientRect();
    const drawn = style.outlineStyle !== "none";
    const around = drawn ? parseFloat(style.outlineWidth) + parseFloat(style.outlineOffset) : 0;
    const cut = [];
    for (let up = one.parentElement; up; up = up.parentElement) {
      if (getComputedStyle(up).overflow === "visible") continue;
      const clip = up.getBoundingClientRect();
      if (box.left - around < clip.left) cut.push("left");
      if (box.right + around > clip.right) cut.push("right");
      if (box.height > clip.height) continue;
      if (box.top - around < clip.top) cut.push("top");
      if (box.bottom + around > clip.bottom) cut.push("bottom");
    }
    const by = document.getElementById(one.getAttribute("aria-labelledby")) ?? one.labels?.[0] ?? one;
    const name = one.ariaLabel ?? by.textContent;
    return { name, role: one.role ?? one.localName, row: one.closest("[role=row]")?.ariaRowIndex, cut };
  });

test("Tab goes from group to group, arrows within, F6 from region to region; no ring is cut", async () => {
  const page = await open();
  const press = async (key) => {
    await page.keyboard.press(key);
    return focused(page);
  };
  for (const key of await viewKeys(page)) {
    await page.keyboard.press(key);
    await settled(page);
    assert.equal((await focused(page)).role, "main");
    const shown = await page.locator("[data-view][aria-current]").getAttribute("aria-keyshortcuts");
    assert.equal(shown?.toLowerCase(), key, "no two views have one key");
    // Once around, by way of the browser's own frame.
    const found = [await press("Tab")];
    for (let one = await press("Tab"); one.name !== found[0].name; one = await press("Tab")) {
      if (one.role !== "body") found.push(one);
      assert.ok(found.length < 50, `view ${key}: ${JSON.stringify(found)}`);
    }
    assert.deepEqual(found.filter(({ name, cut }) => !name || cut.length > 0), [], `view ${key}`);
    assert.ok(found.some(({ name }) => name === "Aller au contenu"));
    const list = found.findIndex(({ role }) => role === "listbox");
    if (key === "j") assert.ok(list >= 0 && list < 8, JSON.stringify(found));
  }
  await page.locator("h1").click();
  await page.keyboard.press("r");
  await page.waitForSelector(".windowed .rule-row");
  const names = [];
  for (const key of ["F6", "ArrowDown", "Home", "F6", "F6", "Shift+F6", "Shift+F6"])
    names.push((await press(key)).name.slice(0, 16));
  assert.deepEqual(names, ["Règles", "Historique", "Jour", "Je travaille sur", "Règles", "Je travaille sur", "Jour"]);
  await page.locator(".windowed button").first().focus();
  const rows = await page.locator("[role=table]").getAttribute("aria-rowcount");
  assert.equal((await press("End")).row, rows);
  assert.match((await press("ArrowRight")).name, /^Supprimer/);
  // Also before the list has seen how far it is scrolled.
  assert.equal((await press("Home")).row, "2");
  const [, , above] = await atOnce(page, "End", "ArrowRight", "ArrowUp");
  assert.match(above, /^Supprimer/);
  assert.equal((await focused(page)).row, String(rows - 1));
});

test("a live refresh keeps selection, focus and scroll", async () => {
  const page = await open();
  await page.clock.install({ time: Date.now() });
  await page.reload();
  // With the status comes what stands above the day.
  await page.waitForSelector(".version");
  await page.waitForSelector(".block");
  await blocks(page).nth(4).click();
  await page.locator(".assign-why span").first().waitFor();
  await page.locator(".main").evaluate((main) => main.scrollBy(0, 300));
  const place = () =>
    page.evaluate(() => [
      document.querySelector(".main").scrollTop,
      document.activeElement.className,
      document.querySelectorAll("[aria-selected=true]").length,
    ]);
  const before = await place();
  // By the page's clock a program that takes a second would be silent for longer than is waited for.
  const ask = page.program.ask.bind(page.program);
  let unanswered = 0;
  page.program.ask = async (path, body) => {
    unanswered++;
    return ask(path, body).finally(() => unanswered--);
  };
  const asked = page.asked.length;
  for (let seconds = 0; seconds < 25; seconds++) {
    await page.clock.runFor(1000);
    do await page.waitForTimeout(20);
    while (unanswered > 0);
  }
  assert.ok(page.asked.length > asked + 5);
  assert.deepEqual(await place(), before);
  assert.ok(before[0] > 0 && before[2] === 1);
});

test("a reopened page shows the same place, and a day later that day", async () => {
  const page = await open();
  const reopened = async () => {
    await page.reload();
    await page.waitForSelector(".block");
    return (await page.locator("h1").innerText()).split(" ")[0];
  };
  // Kept before the page is painted again: somebody may close it that soon.
  const kept = await page.evaluate(async () => {
    window.dispatchEvent(new KeyboardEvent("keydown", { key: "ArrowLeft" }));
    await null;
    return JSON.parse(localStorage["orvanta.place"]).day;
  });
  assert.equal(kept, "2026-11-18");
  assert.equal(await reopened(), "Mercredi");
  await page.evaluate(() => {
    const place = JSON.parse(localStorage["orvanta.place"]);
    localStorage["orvanta.place"] = JSON.stringify({ ...place, left: "2026-01-01" });
  });
  assert.equal(await reopened(), "Jeudi");
});

test("a range is typed; one to come cannot be assigned, and one without activity becomes some", async () => {
  const page = await open();
  const assign = page.getByRole("button", { name: "Attribuer", exact: true });
  const range = async (from, to) => {
    await page.getByLabel("Fin de la plage").fill(to);
    await page.getByLabel("Début de la plage").fill(from);
    await page.keyboard.press("Enter");
    await page.locator(".assign").getByText("Loisir").click();
  };
  await page.getByRole("button", { name: "Plage…" }).click();
  await range("20:00", "21:00");
  await page.getByText("aucune activité").waitFor();
  assert.equal(await assign.isDisabled(), true);
  await range("12:40", "13:10"); // lunch
  await page.getByText("30 min sans activité").waitFor();
  assert.equal(await page.locator(".assign").getByRole("button", { name: "Ajouter" }).isEnabled(), true);
  await range("9h35", "10:10");
  await assign.click();
  await page.waitForSelector(".toast");
  assert.match(plain(await page.locator(".toast").innerText()), /Attribué : 09:35 – 10:10 \(35 min\)/);
  await page.getByRole("listbox").press("End");
  for (const edge of [/^09:35/, / – 10:10/])
    await page
      .locator(".block", { hasText: edge })
      .filter({ hasText: /Loisir.*Attribué à la main/s })
      .waitFor();
});

test("the keyboard reaches the timeline's stretches and ranges, and comes back", async () => {
  const page = await open();
  const focused = () =>
    page.evaluate(() => document.activeElement?.ariaLabel ?? document.activeElement?.type);
  const plot = page.getByRole("slider");
  await plot.focus();
  await page.keyboard.press("Home");
  await page.keyboard.press("ArrowRight");
  await page.locator(".tip").waitFor();
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.activeElement?.type === "radio");
  await page.keyboard.press("Escape");
  assert.match(await focused(), /^Passages du/);
  assert.equal(await page.locator(".assign").count(), 0);

  const [first, second] = await page.locator(".tip p:first-child").allInnerTexts();
  assert.ok(first && !second);
  await page.keyboard.press("Shift+ArrowRight");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.activeElement?.ariaLabel === "Début de la plage");
  assert.ok(first.startsWith(await page.getByLabel("Début de la plage").inputValue()));
  const range = await page.getByLabel("Début de la plage").inputValue();
  const whole = page.getByRole("button", { name: /Choisir les . blocs entiers/ });
  const count = /\d+/.exec(await whole.innerText())[0];
  await whole.click();
  await page.getByText(`${count}\u00a0blocs`, { exact: true }).waitFor();
  assert.equal(await page.locator(".block[aria-selected=true]").count(), Number(count));
  await page.keyboard.press("Escape");
  await plot.focus();
  await page.keyboard.press("ArrowLeft");
  await page.keyboard.press("Shift+ArrowRight");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.activeElement?.ariaLabel === "Début de la plage");
  assert.equal(await page.getByLabel("Début de la plage").inputValue(), range);
  assert.equal(await page.getByRole("button", { name: "Attribuer", exact: true }).isDisabled(), true);
  await page.locator(".assign").getByText("Autre").click();
  await page.keyboard.press("Enter");
  await page.waitForSelector(".toast");
  assert.match(await focused(), /^Passages du/);
});
