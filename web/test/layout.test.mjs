// Every scene of the page in every size of the window and of the text: nothing runs out of the window, no
// text is cut to nothing, no control lies on another.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { openStage } from "./browser.mjs";
import { listScenes, show } from "./scenes.mjs";

// Of the window; text of 200 % leaves the page half of it.
const windows = [
  [640, 480],
  [860, 560],
  [1180, 780],
  [1920, 1080],
  [2560, 1440],
];
const sizes = windows.flatMap(([width, height]) => [
  { width, height },
  { width: width / 2, height: height / 2 },
]);

/** Run in the page: what is wrong with it as it is now. */
function faults() {
  const found = [];
  const name = (element) =>
    `${element.tagName.toLowerCase()}.${element.className?.baseVal ?? element.className} “${(
      element.ariaLabel ?? element.textContent
    ).slice(0, 40)}”`;
  const once = (compute) => {
    const known = new Map();
    return (element) => {
      if (!known.has(element)) known.set(element, compute(element));
      return known.get(element);
    };
  };
  const hidden = once((element) => {
    const { clipPath, opacity } = getComputedStyle(element);
    if (clipPath === "inset(50%)" || opacity === "0") return true;
    if (!element.checkVisibility({ checkVisibilityCSS: true })) return true;
    return element.parentElement !== null && hidden(element.parentElement);
  });
  // How far to the left and right, up and down something may be seen: up to what cuts it off for good.
  const limits = once((element) => {
    const [left, right, top, bottom] = element.parentElement
      ? limits(element.parentElement)
      : [-Infinity, Infinity, -Infinity, Infinity];
    const { overflowX, overflowY } = getComputedStyle(element);
    const [across, down] = [overflowX, overflowY].map((overflow) => /hidden|clip/.test(overflow));
    const box = element.getBoundingClientRect();
    return [
      across ? Math.max(left, box.left) : left,
      across ? Math.min(right, box.right) : right,
      down ? Math.max(top, box.top) : top,
      down ? Math.min(bottom, box.bottom) : bottom,
    ];
  });

  for (const part of document.querySelectorAll("html, body, .body, .main, .welcome, dialog[open], .popover"))
    if (part.scrollWidth > part.clientWidth && getComputedStyle(part).overflowX !== "visible")
      found.push(`scrolls sideways: ${name(part).slice(0, 40)}, ${part.scrollWidth} in ${part.clientWidth}`);

  // A table that is wider than its place scrolls in it, sideways: that place is what must fit.
  const scrolled = once((element) => element.closest(".sheet-scroll"));
  for (const place of document.querySelectorAll(".sheet-scroll")) {
    const box = place.getBoundingClientRect();
    if (box.left < 0 || box.right > innerWidth + 1) found.push(`is cut off: ${name(place)}`);
  }

  // Of one layer nothing may lie on anything else.
  const layers =
    "dialog, .popover, .toasts, .assign, .tip, .range-label, .timeline, .dialog-foot, .search, .side, .top, " +
    ".main, .learnt-list, .welcome, .sheet th:first-child, .sheet :is(.sheet-total, .sheet-amount)";
  const layer = once((element) => element.closest(layers));
  const collide = (a, b) =>
    Math.min(a.right, b.right) - Math.max(a.left, b.left) > 2 &&
    Math.min(a.bottom, b.bottom) - Math.max(a.top, b.top) > 2;
  const collisions = (all) => {
    for (const [index, one] of all.entries())
      for (const other of all.slice(index + 1))
        if (
          collide(one.box, other.box) &&
          one.layer === other.layer &&
          !one.element.contains(other.element) &&
          !other.element.contains(one.element)
        )
          found.push(`lies on another: ${name(one.element)} and ${name(other.element)}`);
  };

  const texts = [];
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  for (let node = walker.nextNode(); node; node = walker.nextNode()) {
    const text = node.data.trim();
    const element = node.parentElement;
    if (text === "" || element.closest("option, script, svg, noscript") || hidden(element)) continue;
    const range = document.createRange();
    range.selectNodeContents(node);
    const [left, right, above, below] = limits(element);
    let [whole, seen] = [0, 0];
    for (const box of range.getClientRects()) {
      const cut = { left: Math.max(box.left, left, 0), right: Math.min(box.right, right, innerWidth) };
      whole += box.width;
      seen += Math.max(0, cut.right - cut.left);
      const [top, bottom] = [Math.max(box.top + 2, above), Math.min(box.bottom - 2, below)];
      if (top < bottom) texts.push({ element, layer: layer(element), box: { ...cut, top, bottom } });
    }
    if (whole === 0) continue;
    const letters = [...text].length;
    const visible = (seen / whole) * letters;
    if (visible < Math.min(letters, 4) - 0.5 && !scrolled(element))
      found.push(`shows ${visible.toFixed(1)} letters: ${name(element)}`);
  }

  const top = document.querySelector("dialog[open]");
  const controls = [...document.querySelectorAll("button, input, select, [tabindex='0'], a, summary")]
    .map((element) => {
      // A choice is as large as what is drawn of it.
      const drawn =
        hidden(element) && element.matches("input") ? (element.nextElementSibling ?? element) : element;
      return { element: drawn, box: drawn.getBoundingClientRect(), layer: layer(drawn) };
    })
    .filter(({ element, box, layer }) => box.width > 0 && !hidden(element) && (!top || layer === top));
  for (const { element, box } of controls) {
    const [left, right] = limits(element);
    if (scrolled(element)) continue;
    if (box.left < Math.max(left, 0) - 1 || box.right > Math.min(right, innerWidth) + 1)
      found.push(`is cut off: ${name(element)}, ${box.left.toFixed()} to ${box.right.toFixed()}`);
  }
  collisions(controls);
  collisions(texts);
  return found;
}

/** Run in the page: what covers what it belongs to, and edges that are none. */
function misplaced() {
  const found = [];
  const boxOf = (selector) => document.querySelector(selector)?.getBoundingClientRect();
  const touch = (a, b) => a.left < b.right && a.right > b.left && a.top < b.bottom && a.bottom > b.top;

  const popover = boxOf(".popover");
  const opener = boxOf(".popover-root:has(.popover) > button");
  if (popover && touch(popover, opener) && innerWidth > 560 && innerHeight > 400)
    found.push("what was opened lies on its button");

  const label = boxOf(".range-label");
  for (const hour of label ? document.querySelectorAll(".ticks text") : [])
    if (touch(hour.getBoundingClientRect(), label)) found.push(`a range’s label lies on ${hour.textContent}`);

  const top = boxOf(".top");
  if (top && top.height > 0.25 * innerHeight && top.height > 60)
    found.push(`the upper bar takes ${top.height.toFixed()} of ${innerHeight}`);

  // The view's width has a limit of its own.
  const view = boxOf(".view");
  const last = boxOf(".top > :last-child");
  if (view && last && innerWidth < 1700 && Math.abs(view.right - last.right) > 1)
    found.push(`two right edges: ${last.right.toFixed()} above ${view.right.toFixed()}`);

  if (innerWidth > 700)
    for (const name of document.querySelectorAll(".rule-row .project bdi, .project-row .project-name bdi"))
      if (name.scrollWidth > name.clientWidth && name.textContent.length < 25)
        found.push(`a short name is cut: ${name.textContent}`);
  return found;
}

let stage;
before(async () => (stage = await openStage()));
after(() => stage?.close());

test("everything is there in a small window, in a large one and at 200 %", { timeout: 880_000 }, async () => {
  const found = [];
  const only = process.env.SCENES?.split(",");
  for (const { open, scenes } of await listScenes(stage)) {
    const wanted = scenes.filter(({ name }) => !only || only.includes(name));
    if (wanted.length === 0) continue;
    const page = await stage.open(open);
    for (const scene of wanted) {
      await page.setViewportSize({ width: 860, height: 560 });
      await show(page, scene);
      for (const size of sizes) {
        await page.setViewportSize(size);
        await page.waitForTimeout(40);
        const all = [...(await page.evaluate(faults)), ...(await page.evaluate(misplaced))];
        for (const fault of new Set(all))
          found.push(`${scene.name} ${size.width}×${size.height} ${fault}`);
      }
      await scene.after?.(page);
    }
    await page.context().close();
  }
  assert.equal(found.join("\n"), "");
});
