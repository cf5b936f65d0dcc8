// Pictures of every view over the store of a made-up month, in both themes and the two usual window sizes:
//   node screenshots.mjs [--out DIR] [--all]
// Without --all only those that docs/screenshots keeps. Needs Chromium; ImageMagick makes them small.
import { execFileSync } from "node:child_process";
import { mkdir, mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import { openStage } from "./test/browser.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const { values } = parseArgs({ options: { out: { type: "string" }, all: { type: "boolean" } } });
const out = resolve(values.out ?? join(here, "../docs/screenshots"));

const pick = (page, row) => page.locator(".block:not(.idle)").nth(row);
const views = {
  jour: { key: "j" },
  "jour-selection": {
    key: "j",
    act: async (page) => {
      await pick(page, 1).click();
      await pick(page, 3).click({ modifiers: ["Shift"] });
    },
  },
  semaine: { key: "s" },
  bilan: { key: "b" },
  projets: { key: "p" },
  regles: { key: "r" },
  "regle-apercu": {
    key: "r",
    act: async (page) => {
      await page.keyboard.press("n");
      await page.locator("dialog input").first().fill("lemonde");
      await page.locator("dialog select").nth(1).selectOption("autre");
      await page.locator(".preview summary").click();
    },
  },
  reglages: { key: "g" },
  raccourcis: { key: "j", act: (page) => page.keyboard.press("?") },
  // It shows where the store is.
  accueil: { make: ["--kind", "new"], home: join(tmpdir(), "camille") },
};
const sizes = { petit: { width: 860, height: 560 }, grand: { width: 1180, height: 780 } };
// Of what is done in a view one picture is enough.
const kept = (view, theme, size) => !views[view].act || (size === "grand" && theme === "clair");

const folder = await mkdtemp(join(tmpdir(), "orvanta-pictures-"));
await mkdir(out, { recursive: true });
// The font that GNOME gives as "system-ui", where it is installed (Debian: fonts-inter).
await writeFile(
  join(folder, "fonts.conf"),
  `<fontconfig><include>/etc/fonts/fonts.conf</include><match target="pattern">
   <edit name="family" mode="prepend" binding="strong"><string>Inter</string></edit></match></fontconfig>`,
);
process.env.FONTCONFIG_FILE = join(folder, "fonts.conf");
const stage = await openStage();
for (const [theme, colorScheme] of [
  ["clair", "light"],
  ["sombre", "dark"],
]) {
  for (const [size, viewport] of Object.entries(sizes)) {
    for (const [name, { key, make, home, act }] of Object.entries(views)) {
      if (!values.all && !kept(name, theme, size)) continue;
      if (home) await rm(home, { recursive: true, force: true });
      const page = await stage.open({ colorScheme, viewport, make, home });
      if (key) await page.keyboard.press(key);
      await page.waitForTimeout(250);
      await act?.(page);
      await page.waitForTimeout(250);
      const file = join(out, `${name}-${theme}-${viewport.width}x${viewport.height}.png`);
      await page.screenshot({ path: file });
      execFileSync("convert", [file, "-strip", "+dither", "-colors", "96", `PNG8:${file}`]);
      await page.context().close();
      console.log(file);
    }
  }
}
await stage.close();
await rm(folder, { recursive: true });
