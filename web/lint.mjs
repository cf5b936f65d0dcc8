// What the compiler lets through: functions that are too long to take in, and files that import each
// other in a circle, types included.
import { dirname, join, relative } from "node:path";
import { fileURLToPath } from "node:url";
import { isFunctionLikeDeclaration, isStringLiteral } from "typescript/unstable/ast/is";
import { API } from "typescript/unstable/sync";

const longest = 80;
const here = dirname(fileURLToPath(import.meta.url));
const api = new API({ cwd: here });
const { program, rootFiles } = api
  .updateSnapshot({ openProjects: [join(here, "tsconfig.json")] })
  .getProjects()[0];
const complaints = [];
const imports = new Map();

for (const file of rootFiles) {
  const source = program.getSourceFile(file);
  const line = (at) => source.getLineAndCharacterOfPosition(at).line + 1;
  const visit = (node) => {
    const [first, last] = [line(node.getStart(source)), line(node.end)];
    if (isFunctionLikeDeclaration(node) && last - first >= longest)
      complaints.push(`${relative(here, file)}:${first}: a function of ${last - first + 1} lines`);
    node.forEachChild(visit);
  };
  visit(source);
  const named = source.statements.map(({ moduleSpecifier }) => moduleSpecifier);
  imports.set(
    file,
    named
      .filter((name) => name && isStringLiteral(name) && name.text.startsWith("."))
      .flatMap(({ text }) => ["", ".ts", ".tsx"].map((end) => join(dirname(file), text + end)))
      .filter((path) => rootFiles.includes(path)),
  );
}
api.close();

const done = new Set();
function follow(file, way) {
  const from = way.indexOf(file);
  if (from >= 0) {
    const circle = [...way.slice(from), file].map((name) => relative(here, name));
    complaints.push(`a circle of imports: ${circle.join(" → ")}`);
  }
  if (done.has(file)) return;
  done.add(file);
  for (const next of imports.get(file)) follow(next, [...way, file]);
}
for (const file of rootFiles) follow(file, []);

for (const text of complaints) console.error(text);
process.exitCode = complaints.length > 0 ? 1 : 0;
