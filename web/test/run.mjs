// The page's tests: "types" (the compiler, and what it lets through), "units" (pure functions), "page", "keyboard",
// "rules", "day", "period", "effects", "settings", "goals", "store", "moments" and "layout" (in a real browser); all of
// them without arguments.
import { spawnSync } from "node:child_process";
import { mkdtemp, readdir, rm } from "node:fs/promises";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build as bundle } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));

function run(...args) {
  const { status } = spawnSync(process.execPath, args, {
    cwd: join(here, ".."),
    stdio: "inherit",
    env: { ...process.env, TZ: "Europe/Paris" },
  });
  return status === 0;
}

async function units() {
  const folder = await mkdtemp(join(tmpdir(), "orvanta-units-"));
  const files = (await readdir(here)).filter((name) => name.endsWith(".test.ts"));
  await bundle({
    entryPoints: files.map((name) => join(here, name)),
    outdir: folder,
    outExtension: { ".js": ".mjs" },
    bundle: true,
    platform: "node",
    format: "esm",
  });
  const passed = run("--test", ...files.map((name) => join(folder, name.replace(".ts", ".mjs"))));
  await rm(folder, { recursive: true });
  return passed;
}

const suites = {
  types: () => run("node_modules/typescript/bin/tsc", "--noEmit") && run("lint.mjs") && run("texts.mjs", "--check"),
  units,
  page: () => run("--test", join(here, "page.test.mjs")),
  keyboard: () => run("--test", join(here, "keyboard.test.mjs")),
  rules: () => run("--test", join(here, "rules.test.mjs")),
  day: () => run("--test", join(here, "day.test.mjs")),
  period: () => run("--test", join(here, "period.test.mjs")),
  effects: () => run("--test", join(here, "effects.test.mjs")),
  settings: () => run("--test", join(here, "settings.test.mjs")),
  goals: () => run("--test", join(here, "goals.test.mjs")),
  store: () => run("--test", join(here, "store.test.mjs")),
  moments: () => run("--test", join(here, "moments.test.mjs")),
  layout: () => run("--test", join(here, "layout.test.mjs")),
};
const wanted = process.argv.length > 2 ? process.argv.slice(2) : Object.keys(suites);
for (const name of wanted) if (!(await suites[name]())) process.exit(1);
