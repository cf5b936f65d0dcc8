// Bundles the page: one script, one style sheet, beside index.html; and the guide, for whoever asks for it.
//   node build.mjs --out DIR
import { copyFile, mkdir, readFile, writeFile } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import * as esbuild from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));

export async function build({ out, watch = false }) {
  const options = {
    absWorkingDir: here,
    entryPoints: [
      { in: "src/main.tsx", out: "app" },
      { in: "src/styles/app.css", out: "app" },
    ],
    outdir: resolve(out),
    bundle: true,
    minify: !watch,
    format: "iife",
    // WebKitGTK 2.40, Debian 12's first, is Safari 16.4.
    target: ["safari16.4", "chrome111"],
    // The compiler, which checks types, takes markup for calls to another runtime, which is never bundled.
    tsconfigRaw: { compilerOptions: { jsx: "react", jsxFactory: "h", jsxFragmentFactory: "Fragment" } },
    inject: ["src/elements.ts"],
    charset: "utf8",
    legalComments: "none",
    logLevel: "warning",
  };
  await mkdir(out, { recursive: true });
  for (const file of ["index.html", "icon.svg"]) await copyFile(join(here, "src", file), join(out, file));
  const guide = await readFile(join(here, "../docs/guide.md"), "utf8");
  await writeFile(join(out, "guide.js"), `window.__guide = ${JSON.stringify(guide)};\n`);
  if (!watch) return esbuild.build(options);
  const context = await esbuild.context(options);
  await context.rebuild();
  return context.watch();
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const { values } = parseArgs({ options: { out: { type: "string" } } });
  if (!values.out) throw new Error("usage: node build.mjs --out DIR");
  await build(values);
}
