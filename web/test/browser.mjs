// A real browser on the built page, and the policy under which the program serves it.
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { extname, join } from "node:path";
import { chromium } from "playwright-core";

export const policy =
  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; font-src 'self'; " +
  "connect-src 'none'; base-uri 'none'; form-action 'none'";
const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".svg": "image/svg+xml" };

const axe = await readFile(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** Text as it would be typed: without no-break spaces and marks of direction. */
export const plain = (text) => text.replace(/[\u00a0\u202f]/g, " ").replace(/[\u2068\u2069]/g, "");

/** What axe finds wrong with the page as it is now. */
export async function violations(page) {
  // Put there from outside the page: its own policy lets no such script in.
  await page.evaluate(axe);
  const { violations: found } = await page.evaluate(() =>
    window.axe.run(document, { resultTypes: ["violations"] }),
  );
  return found.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html.slice(0, 120)).join(" | ")}`);
}

/** The same, and breaking spaces where French sets others: in quotes, before tall punctuation. */
export async function complaints(page) {
  const breaks = await page.evaluate(() => {
    const copy = document.body.cloneNode(true);
    for (const foreign of copy.querySelectorAll("bdi, option")) foreign.remove();
    return copy.textContent.match(/.{0,20}(?: [:;!?»]|« ).{0,10}/g) ?? [];
  });
  return [...(await violations(page)), ...breaks.map((text) => `a breaking space in ${text}`)];
}

/** Serves a folder on a free port of this machine. */
export async function serve(folder) {
  const server = createServer(async (request, response) => {
    const name = new URL(request.url, "http://x").pathname.replace(/\/$/, "/index.html");
    try {
      const body = await readFile(join(folder, name.replaceAll("..", "")));
      response.setHeader("Content-Type", `${types[extname(name)] ?? "text/plain"}; charset=utf-8`);
      response.setHeader("Content-Security-Policy", policy);
      response.end(body);
    } catch {
      response.statusCode = 404;
      response.end();
    }
  });
  await new Promise((listening) => server.listen(0, "127.0.0.1", listening));
  return { address: `http://127.0.0.1:${server.address().port}/`, close: () => server.close() };
}

/** Chromium, and a way to open the page in it; `errors` collects all that the page complains about. */
export async function openDemo(address) {
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    args: ["--no-sandbox"],
  });
  const errors = [];
  const open = async ({ query = "", ...options } = {}) => {
    const context = await browser.newContext({ locale: "fr-FR", timezoneId: "Europe/Paris", ...options });
    const page = await context.newPage();
    page.setDefaultTimeout(10_000);
    page.on("pageerror", (error) => errors.push(String(error)));
    page.on("console", (message) => message.type() === "error" && errors.push(message.text()));
    await page.goto(`${address}${query}`);
    await page.waitForSelector("h1");
    return page;
  };
  return { browser, open, errors };
}
