// Pictures of what the page can show, over the stores of a made-up month:
//   node screenshots.mjs [--out DIR] [--all] [--scenes jour,bilan…] [--sizes 640x480,…] [--themes clair,…]
//                        [--text 100,200] [--whole]
// Without a choice only those that docs/screenshots keeps; --all is every scene in every size, theme and size
// of text. A size is the window's; text of 200 % halves what the page has of it, as the desktop's own larger
// text does. --whole makes the window as high as what the view holds. Needs Chromium; ImageMagick makes the
// pictures small.
import { execFileSync } from "node:child_process";
import { mkdir, mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import { openStage } from "./test/browser.mjs";
import { listScenes, show } from "./test/scenes.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const text = { type: "string" };
const { values } = parseArgs({
  options: {
    out: text,
    all: { type: "boolean" },
    scenes: text,
    sizes: text,
    themes: text,
    text,
    whole: { type: "boolean" },
  },
});
const out = resolve(values.out ?? join(here, "../docs/screenshots"));
const free = values.all || values.scenes || values.sizes || values.themes || values.text;

const themes = {
  clair: { colorScheme: "light" },
  sombre: { colorScheme: "dark" },
  contraste: { colorScheme: "light", contrast: "more" },
  "contraste-sombre": { colorScheme: "dark", contrast: "more" },
  force: { colorScheme: "dark", forcedColors: "active" },
};
const sizes = ["640x480", "860x560", "1180x780", "1920x1080", "2560x1440"];

// What a bill is made from, in both themes.
const billed = ["periode-annee", "feuille-client", "feuille-figee", "projets-clients"];
// The README's: every view small and large, light and dark, and some of what is done in them once.
const shown = ["jour-selection", "jour-appris", "regle-apercu", "projet-archiver", "historique-plein", "raccourcis"];
const kept = ({ name, view, act }, theme, size) =>
  name === "accueil" || (view && !act && !name.includes("-"))
    ? true
    : size === "1180x780" && (billed.includes(name) || (shown.includes(name) && theme === "clair"));

const listed = (chosen, all, usual) => chosen?.split(",") ?? (values.all ? all : usual);
const wanted = {
  scenes: values.scenes?.split(","),
  themes: listed(values.themes, Object.keys(themes), ["clair", "sombre"]),
  sizes: listed(values.sizes, sizes, ["860x560", "1180x780"]),
  text: listed(values.text, ["100", "200"], ["100"]),
};
const takes = (scene, theme, size) =>
  wanted.scenes ? wanted.scenes.includes(scene.name) : free || kept(scene, theme, size);

async function take(page, scene, file) {
  await show(page, scene);
  if (values.whole) {
    const { width, height } = page.viewportSize();
    const more = await page.evaluate(() => {
      const main = document.querySelector("dialog[open], main");
      return main.scrollHeight - main.clientHeight;
    });
    await page.setViewportSize({ width, height: Math.min(height + more, 3000) });
    await page.waitForTimeout(100);
    await page.screenshot({ path: file });
    await page.setViewportSize({ width, height });
  } else {
    await page.screenshot({ path: file });
  }
  execFileSync("convert", [file, "-strip", "+dither", "-colors", "96", `PNG8:${file}`]);
  await scene.after?.(page);
  console.log(file);
}

const folder = await mkdtemp(join(tmpdir(), "orvanta-pictures-"));
await mkdir(out, { recursive: true });
// The font that GNOME gives as "system-ui", where it is installed (Debian: fonts-inter).
await writeFile(
  join(folder, "fonts.conf"),
  `<fontconfig><include>/etc/fonts/fonts.conf</include><match target="pattern">
   <edit name="family" mode="prepend" binding="strong"><string>Inter</string></edit></match></fontconfig>`,
);
process.env.FONTCONFIG_FILE = join(folder, "fonts.conf");
// The welcome shows where the store is.
const home = join(tmpdir(), "camille");
const stage = await openStage();
for (const { open, scenes } of await listScenes(stage)) {
  for (const percent of wanted.text) {
    const scale = Number(percent) / 100;
    const chosen = scenes.filter((scene) =>
      wanted.themes.some((theme) => wanted.sizes.some((size) => takes(scene, theme, size))),
    );
    if (chosen.length === 0) continue;
    await rm(home, { recursive: true, force: true });
    const page = await stage.open({ ...open, home, deviceScaleFactor: scale });
    for (const theme of wanted.themes) {
      await page.emulateMedia({ contrast: null, forcedColors: null, ...themes[theme] });
      for (const size of wanted.sizes) {
        const [width, height] = size.split("x").map((side) => Math.round(Number(side) / scale));
        await page.setViewportSize({ width, height });
        for (const scene of chosen) {
          if (!takes(scene, theme, size)) continue;
          const suffix = percent === "100" ? "" : `-${percent}`;
          await take(page, scene, join(out, `${scene.name}-${theme}-${size}${suffix}.png`)).catch((error) => {
            console.error(`${scene.name} ${theme} ${size} ${percent} %: ${error.message}`);
            process.exitCode = 1;
          });
        }
      }
    }
    await page.context().close();
  }
}
await stage.close();
await rm(home, { recursive: true, force: true });
await rm(folder, { recursive: true });
