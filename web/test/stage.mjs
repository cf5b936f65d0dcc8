// What the tests in a real browser share: a stage, and how they point at things.
import assert from "node:assert/strict";
import { after, afterEach } from "node:test";
import { openStage, plain } from "./browser.mjs";

/**
 * A stage for the tests of a file. Its pages are closed after each of them, and after all of them nothing may
 * have been complained about in the console, the policy's refusals included, and every answer of the program
 * must have been what the page takes it for.
 */
export async function stageOfTests() {
  const stage = await openStage();
  afterEach(async () => {
    for (const context of stage.browser.contexts()) await context.close();
  });
  after(async () => {
    await stage.close();
    assert.deepEqual(stage.errors, []);
    assert.equal(stage.shapes.complaints(), "");
  });
  return stage;
}

export const blocks = (page) => page.locator(".block:not(.idle)");
export const button = (page, name) => page.getByRole("button", { name, exact: true });
export const shown = async (locator) => plain(await locator.innerText());

/** From now on a route is answered by this, which is handed the way to the program's own answer. */
export function answer(page, route, by) {
  const ask = page.program.ask.bind(page.program);
  page.program.ask = (path, body) => (path === route ? by(() => ask(path, body)) : ask(path, body));
}
