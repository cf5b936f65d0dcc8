// Whether what the program answers is what routes.ts says: the compiler is shown the answers as values of
// the types declared there. It refuses a key that lacks, one that is not declared, and another kind of value.
import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const web = join(dirname(fileURLToPath(import.meta.url)), "..");

// The same for values that the compiler cannot tell apart, as far as that goes without knowing the types.
function shape(value) {
  if (Array.isArray(value)) return `[${[...new Set(value.map(shape))].sort().join()}]`;
  if (typeof value === "object" && value !== null)
    return `{${Object.entries(value)
      .map(([key, one]) => `${key}:${shape(one)}`)
      .join()}}`;
  // Short words may be one of a few that are declared.
  return typeof value === "string" && /^[a-z]{0,12}$/i.test(value)
    ? `'${value}'`
    : typeof value + (value === null);
}

// Of each list one entry of every shape; of texts no more than tells them apart.
function trimmed(value) {
  if (Array.isArray(value)) return [...new Map(value.map((one) => [shape(one), trimmed(one)])).values()];
  if (typeof value === "object" && value !== null)
    return Object.fromEntries(Object.entries(value).map(([key, one]) => [key, trimmed(one)]));
  return typeof value === "string" ? value.slice(0, 60) : value;
}

export class Shapes {
  answers = new Map();

  note(route, answer) {
    // An error is no answer of the route's.
    if (answer?.error !== undefined && answer.ok === undefined) return;
    const known = this.answers.get(route) ?? new Map();
    this.answers.set(route, known.set(shape(answer), answer));
  }

  get routes() {
    return [...this.answers.keys()];
  }

  /** What the compiler says against the answers noted. */
  complaints() {
    const folder = mkdtempSync(join(web, "node_modules/.shapes-"));
    const lines = [`import type { Routes } from "../../src/bridge/routes";`];
    for (const [route, answers] of this.answers)
      for (const answer of answers.values())
        lines.push(
          `export const a${lines.length}: Routes[${JSON.stringify(route)}][1] = ${JSON.stringify(trimmed(answer))};`,
        );
    writeFileSync(join(folder, "answers.ts"), `${lines.join("\n")}\n`);
    const config = {
      extends: "../../tsconfig.json",
      include: ["answers.ts"],
      compilerOptions: { noEmit: true },
    };
    writeFileSync(join(folder, "tsconfig.json"), JSON.stringify(config));
    try {
      execFileSync(process.execPath, [join(web, "node_modules/typescript/bin/tsc"), "-p", folder]);
      return "";
    } catch (error) {
      return `${error.stdout}`.replace(
        /\((\d+),\d+\)/g,
        (place, line) => `${place} ${lines[line - 1].slice(0, 90)}`,
      );
    } finally {
      rmSync(folder, { recursive: true });
    }
  }
}
