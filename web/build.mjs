// Bundles the page: one script, one style sheet, beside index.html.
//   node build.mjs --out DIR            the product's page
//   node build.mjs --out DIR --demo     answered from made-up data instead of the program
//   node build.mjs --out DIR --demo --serve   the same, served and rebuilt at every change
import { copyFile, mkdir } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import * as esbuild from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));

export async function build({ out, demo = false, serve = false }) {
  const options = {
    absWorkingDir: here,
    entryPoints: [
      { in: demo ? "demo/main.tsx" : "src/main.tsx", out: "app" },
      { in: "src/styles/app.css", out: "app" },
    ],
    outdir: resolve(out),
    bundle: true,
    minify: !serve,
    format: "iife",
    // WebKitGTK 2.40, Debian 12's first, is Safari 16.4.
    target: ["safari16.4", "chrome111"],
    jsx: "automatic",
    jsxImportSource: "preact",
    charset: "utf8",
    legalComments: "none",
    logLevel: "warning",
  };
  await mkdir(out, { recursive: true });
  for (const file of ["index.html", "icon.svg"]) await copyFile(join(here, "src", file), join(out, file));
  if (!serve) return esbuild.build(options);
  const context = await esbuild.context(options);
  await context.watch();
  return context.serve({ servedir: resolve(out), host: "127.0.0.1" });
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const { values } = parseArgs({
    options: { out: { type: "string" }, demo: { type: "boolean" }, serve: { type: "boolean" } },
  });
  if (!values.out) throw new Error("usage: node build.mjs --out DIR [--demo] [--serve]");
  const server = await build(values);
  if (values.serve) console.log(`http://127.0.0.1:${server.port}/`);
}
