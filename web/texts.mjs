// Every text that the user may read, of the page and of the programs, a line each: for an editor to read
// through (node texts.mjs), and held against what French typesetting asks of each of them (--check).
import { readdirSync, readFileSync } from "node:fs";
import { dirname, join, relative } from "node:path";
import { fileURLToPath } from "node:url";
import {
  isJsxAttribute,
  isJsxText,
  isNoSubstitutionTemplateLiteral,
  isStringLiteral,
  isTemplateExpression,
} from "typescript/unstable/ast/is";
import { API } from "typescript/unstable/sync";

const here = dirname(fileURLToPath(import.meta.url));
const root = join(here, "..");
// What stands in every French sentence, and hardly in names, addresses and queries.
const french =
  /[àâçèéêëîïôùûœ«»…’]|(?<![\w.-])(?:le|la|les|un|une|des?|du|et|est|pas|que|qui|pour|sur|dans|ce|cette|vous|votre|sans|au|ne|par|ou|en)(?![\w.-])/i;
const names = /^(class|id|d|viewBox|href|key|type|role|name|data-.*)$/;

function isText(text) {
  return french.test(text) || /^[A-ZÉÀ][a-zéèê]+$/.test(text);
}

// A program's strings are names more often than texts; what joins two texts is one.
function isSentence(text) {
  return (isText(text) && text.includes(" ")) || /^(?:\{\})? [:;»]|« ?$/.test(text);
}

/** Of the page: what stands between tags, and every string that is no name of something. */
function* ofPage() {
  const api = new API({ cwd: here });
  const { program, rootFiles } = api
    .updateSnapshot({ openProjects: [join(here, "tsconfig.json")] })
    .getProjects()[0];
  for (const file of rootFiles.filter((name) => name.startsWith(join(here, "src/")))) {
    const source = program.getSourceFile(file);
    const found = [];
    const visit = (node) => {
      if (isJsxAttribute(node) && names.test(node.name.text)) return;
      if (isJsxText(node) || isStringLiteral(node) || isNoSubstitutionTemplateLiteral(node)) {
        found.push([node, node.text]);
      } else if (isTemplateExpression(node)) {
        found.push([node, node.head.text + node.templateSpans.map(({ literal }) => `{}${literal.text}`).join("")]);
      }
      node.forEachChild(visit);
    };
    visit(source);
    for (const [node, written] of found) {
      const text = written.replace(/[ \n]+/g, " ").trim();
      if (isText(text)) yield { file, line: lineOf(source.text, node.getStart(source)), text };
    }
  }
  api.close();
}

/** Of the programs: string literals, those that follow each other as one. */
function* ofPrograms() {
  const literal = /R"(?<tag>\w*)\((?<raw>.*?)\)\k<tag>"|"(?<text>(?:[^"\\\n]|\\.)*)"/gs;
  for (const file of readdirSync(join(root, "src"), { recursive: true })) {
    if (!/\.(cpp|h)$/.test(file)) continue;
    const code = readFileSync(join(root, "src", file), "utf8").replace(/^[ \t]*(\/\/|#include).*$/gm, "");
    let last = null;
    for (const found of code.matchAll(literal)) {
      const { raw, text = raw } = found.groups;
      const between = last ? code.slice(last.end, found.index) : "x";
      if (last && /^\s*$/.test(between)) {
        last.text += text;
        last.end = found.index + found[0].length;
        continue;
      }
      if (last && isSentence(last.text)) yield last;
      last = { file: join(root, "src", file), line: lineOf(code, found.index), text, end: found.index + found[0].length };
    }
    if (last && isSentence(last.text)) yield last;
  }
}

/** Of what is installed beside the programs: its lines. */
function* ofPackages() {
  for (const folder of ["packaging", "extension"]) {
    for (const name of readdirSync(join(root, folder), { recursive: true })) {
      if (!/\.in$|_orvanta$/.test(name)) continue;
      const file = join(root, folder, name);
      const lines = readFileSync(file, "utf8").split("\n");
      for (const [at, text] of lines.entries()) {
        // Tags, keys, lists of options and quotes are the format's, and so is what zsh has between colons.
        const read = text.replace(/<[^>]*>|^\s*"\w+": |^#.*|'\([^)]*\)'|'\[|\]'?:.*/g, " ").trim();
        if (isText(read)) yield { file, line: at + 1, text: read };
      }
    }
  }
}

function lineOf(text, at) {
  return text.slice(0, at).split("\n").length;
}

const rules = [
  ["an apostrophe that is none", /\p{L}'(?:\p{L}|\{|$)/u],
  ["a space that may break before a tall mark", / [:;!?»]|« /],
  ["three dots for an ellipsis", /\.\.\./],
  ["“assigner”, which is “attribuer” here", /\bassign(?:e|é|at)/i],
];
// Given byte for byte: what other programs look for in the menu, in answers and in the log, and two names of
// applications.
const given = new RegExp(
  [
    "Aujourd'hui : ",
    "   Projet principal : ",
    "Je travaille sur : ",
    "Mise à jour disponible : ",
    "route inconnue : ",
    "^Orvanta: impossible d'ouvrir la base ",
    "^Orvanta AppleScript \\{\\} : ",
    "^Moniteur d'activité$",
    "^Capture d'écran$",
  ].join("|"),
);

const complaints = [];
for (const { file, line, text } of [...ofPage(), ...ofPrograms(), ...ofPackages()]) {
  const where = `${relative(root, file)}:${line}`;
  if (!process.argv.includes("--check")) console.log(`${where}: ${text}`);
  const own = text.replace(given, "");
  for (const [what, wrong] of rules) if (wrong.test(own)) complaints.push(`${where}: ${what}: ${text}`);
}
if (process.argv.includes("--check")) {
  for (const complaint of complaints) console.error(complaint);
  process.exitCode = complaints.length > 0 ? 1 : 0;
}
