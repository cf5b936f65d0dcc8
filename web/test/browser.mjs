// A real browser on the built page, and the policy under which the program serves it.
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import { extname, join } from "node:path";
import { chromium } from "playwright-core";

export const policy =
  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; font-src 'self'; " +
  "connect-src 'none'; base-uri 'none'; form-action 'none'";
const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".svg": "image/svg+xml" };

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
