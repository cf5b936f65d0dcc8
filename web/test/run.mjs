// The page's tests: "types" (the compiler, and what it lets through), "units" (pure functions), and by their names those
// in a real browser; all of them without arguments.
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

const inBrowser =
  "page keyboard rules day period effects settings goals store moments layout".split(" ");
const suites = {
  types: () => run("node_modules/typescript/bin/tsc", "--noEmit") && run("lint.mjs") && run("texts.mjs", "--check"),
  units,
};
for (const name of inBrowser) suites[name] = () => run("--test", join(here, `${name}.test.mjs`));
const wanted = process.argv.length > 2 ? process.argv.slice(2) : Object.keys(suites);
for (const name of wanted) if (!(await suites[name]())) process.exit(1);
