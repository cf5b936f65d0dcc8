// A real browser on the product's page, answered by the real program over made-up stores.
import { execFileSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { readFile } from "node:fs/promises";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { chromium } from "playwright-core";
import { build } from "../build.mjs";
import { Program, serve } from "../dev_server.mjs";
import { Shapes } from "./shapes.mjs";

const axe = await readFile(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** Text as it would be typed: without no-break spaces and marks of direction. */
export const plain = (text) => text.replace(/[\u00a0\u202f]/g, " ").replace(/[\u2068\u2069]/g, "");

/** The keys of all views, in their order. */
export async function viewKeys(page) {
  await page.waitForSelector("[data-view]");
  return page
    .locator("[data-view]")
    .evaluateAll((all) => all.map((one) => one.ariaKeyShortcuts.toLowerCase()));
}

/** Until the page has all that it asked for, what it asks a moment after a key included, and has drawn it. */
export async function settled(page) {
  for (let calm = 0, waited = 0; calm < 3 && waited < 200; waited++) {
    await page.waitForTimeout(50);
    const unanswered = await page.evaluate(() => window.__unanswered);
    calm = unanswered ? 0 : calm + 1;
  }
}

/** Presses keys before the page is painted again; the text or name of what has the focus after each. */
export const atOnce = (page, ...keys) =>
  page.evaluate(async (all) => {
    const found = [];
    for (const key of all) {
      document.activeElement.dispatchEvent(new KeyboardEvent("keydown", { key, bubbles: true, cancelable: true }));
      for (let turn = 0; turn < 20; turn++) await null;
      const { ariaLabel, labels, textContent } = document.activeElement;
      found.push(ariaLabel ?? labels?.[0]?.textContent ?? textContent);
    }
    return found;
  }, keys);

/** What axe finds wrong with the page as it is now. */
export async function violations(page) {
  // Put there from outside the page: its own policy lets no such script in.
  await page.evaluate(axe);
  const { violations: found } = await page.evaluate(() =>
    window.axe.run(document, { resultTypes: ["violations"] }),
  );
  return found.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html.slice(0, 120)).join(" | ")}`);
}

/**
 * The same, breaking spaces where French sets others (in quotes, before tall punctuation), and what WebKit
 * hides from screen readers: that a list without markers is one, and what is told in a place not drawn.
 */
export async function complaints(page) {
  const breaks = await page.evaluate(() => {
    const copy = document.body.cloneNode(true);
    for (const foreign of copy.querySelectorAll("bdi, option")) foreign.remove();
    return copy.textContent.match(/.{0,20}(?: [:;!?»]|« ).{0,10}/g) ?? [];
  });
  const hidden = await page.evaluate(() => {
    const lists = [...document.querySelectorAll(":is(ul, ol):not([role], [aria-hidden])")];
    const places = [...document.querySelectorAll("[role=status], [role=alert]")];
    const undrawn = places.filter((place) => getComputedStyle(place).display === "none");
    return [...lists, ...undrawn].map((one) => `hidden: ${one.outerHTML.slice(0, 80)}`);
  });
  return [...(await violations(page)), ...hidden, ...breaks.map((text) => `a breaking space in ${text}`)];
}

/** A disk of its own for a store, that can be filled; undefined where mounting is not allowed. */
function smallDisk(folder, size) {
  mkdirSync(folder, { recursive: true });
  try {
    execFileSync("mount", ["-t", "tmpfs", "-o", `size=${size},mode=700`, "tmpfs", folder], {
      stdio: "ignore",
    });
  } catch {
    return undefined;
  }
  const filler = join(folder, "filler");
  return {
    fill: () => {
      for (let page = 0; ; page++)
        try {
          writeFileSync(filler, Buffer.alloc(4096), { flag: "a" });
        } catch {
          return;
        }
    },
    free: () => rmSync(filler),
    unmount: () => execFileSync("umount", [folder]),
  };
}

/**
 * A place to open pages in, each over a store and a program of its own; `errors` collects all that the
 * pages complain about, `shapes` what they were answered.
 */
export async function openStage() {
  const folder = mkdtempSync(join(tmpdir(), "orvanta-page-"));
  const product = join(folder, "page");
  await build({ out: product });
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    args: ["--no-sandbox"],
  });
  const errors = [];
  const shapes = new Shapes();
  const closers = [];

  /**
   * `make`: what make-store is told; `disk`: the size of the store's own disk; `home`: the user's folder,
   * an empty one; what is not named here is Playwright's.
   */
  const open = async ({
    make = [],
    blind = false,
    disk: size,
    home = mkdtempSync(join(folder, "home-")),
    now = "2026-11-19 16:42:00",
    ...options
  } = {}) => {
    const disk = size && smallDisk(join(home, ".local/share"), size);
    const program = await Program.start(home, { now, blind, make });
    const asked = [];
    const server = await serve(product, async (path, body) => {
      asked.push([path, body]);
      const answer = await program.ask(path, body);
      shapes.note(path, answer);
      return answer;
    });
    const context = await browser.newContext({
      locale: "fr-FR",
      timezoneId: "Europe/Paris",
      viewport: { width: 1180, height: 780 },
      ...options,
    });
    const close = async () => {
      server.close();
      await program.stop();
      disk?.unmount();
      closers.splice(closers.indexOf(close), 1);
    };
    closers.push(close);
    context.on("close", close);
    const page = await context.newPage();
    Object.assign(page, { program, asked, disk });
    page.setDefaultTimeout(10_000);
    page.on("pageerror", (error) => errors.push(String(error)));
    page.on("console", (message) => message.type() === "error" && errors.push(message.text()));
    await page.goto(server.address);
    // Until the program has told its day, the page shows the browser's.
    await page.waitForFunction(
      () =>
        document.querySelector("h1") && (document.querySelector(".version") || !document.querySelector(".side")),
    );
    return page;
  };
  const close = async () => {
    await browser.close();
    for (const one of [...closers]) await one();
    rmSync(folder, { recursive: true, force: true });
  };
  return { browser, product, open, errors, shapes, close };
}
