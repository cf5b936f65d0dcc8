// The page without its window, answered by the real program over a made-up store:
//   node dev_server.mjs [--now "2026-11-19 16:42"] [--port N] [-- what make-store is to be told]
// Takes the programs of ORVANTA_BUILD, by default ../build/release.
import { execFileSync, spawn } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync } from "node:fs";
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { dirname, extname, join, resolve } from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import { build } from "./build.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const programs = resolve(process.env.ORVANTA_BUILD ?? join(here, "../build/release"));
const maker = join(programs, "tools/make-store");

// As the dashboard's window gives it, but for the stand-in's questions.
const policy =
  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; font-src 'self'; " +
  "connect-src 'self'; base-uri 'none'; form-action 'none'";
const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".svg": "image/svg+xml" };

let display;

/** A screen that nobody sees, so that the program finds a desktop; "" where that is not installed. */
async function screen() {
  display ??= new Promise((found) => {
    const server = spawn("Xvfb", ["-displayfd", "3", "-screen", "0", "64x64x24", "-nolisten", "tcp"], {
      stdio: ["ignore", "ignore", "ignore", "pipe"],
    });
    server.on("error", () => found(""));
    server.on("exit", () => found(""));
    process.on("exit", () => server.kill());
    server.unref();
    server.stdio[3].once("data", (number) => {
      server.stdio[3].unref();
      found(`:${String(number).trim()}`);
    });
  });
  return display;
}

// The library without its wrapper, which refuses to start once somebody of its process number was killed.
function startedAt(now) {
  if (!now) return {};
  return {
    LD_PRELOAD: "/usr/$LIB/faketime/libfaketimeMT.so.1",
    FAKETIME: `@${now.length === 16 ? `${now}:00` : now}`,
    DONT_FAKE_MONOTONIC: "1",
  };
}

/** The program over a store of its own in `folder`, in a session of its own. */
export class Program {
  waiting = new Map();
  lastId = 0;

  /** `now`, where given, is when it believes to be started; `blind` lets it find no desktop. */
  static async start(folder, { now, blind = false, make = [] } = {}) {
    const program = new Program();
    program.data = join(folder, ".local/share");
    program.env = { PATH: process.env.PATH, LANG: "C.UTF-8", TZ: process.env.TZ, HOME: folder, ...startedAt(now) };
    if (!blind) program.env.DISPLAY = await screen();
    for (const name of ["SESSION", "SYSTEM"]) program.env[`DBUS_${name}_BUS_ADDRESS`] = "disabled:";
    mkdirSync(program.data, { recursive: true });
    execFileSync(maker, [program.data, ...make], { env: program.env, stdio: "inherit" });
    program.launch();
    return program;
  }

  launch() {
    this.child = spawn(join(programs, "orvanta"), ["--call", "-"], {
      env: this.env,
      stdio: ["pipe", "pipe", "ignore"],
    });
    this.ended = new Promise((ended) => this.child.once("close", ended));
    this.child.stdin.on("error", () => {});
    createInterface(this.child.stdout).on("line", (line) => {
      const { id, answer } = JSON.parse(line);
      this.waiting.get(id)?.(answer);
      this.waiting.delete(id);
    });
  }

  ask(path, body = {}) {
    const id = ++this.lastId;
    this.child.stdin.write(`${JSON.stringify({ id, path, body })}\n`);
    return new Promise((answered) => this.waiting.set(id, answered));
  }

  async stop() {
    this.child.stdin.end();
    await this.ended;
  }
}

/** Serves the page built in `page`, on a free port of this machine where none is named. */
export async function serve(page, ask, port = 0) {
  const body = async (request) => {
    let text = "";
    for await (const part of request) text += part;
    return JSON.parse(text);
  };
  const content = async (name) => {
    if (name === "/stand_in.js") return readFile(join(here, "stand_in.js"));
    const file = await readFile(join(page, name.replaceAll("..", "")));
    return name === "/index.html"
      ? String(file).replace("<script", '<script src="stand_in.js"></script>\n    <script')
      : file;
  };
  const server = createServer(async (request, response) => {
    const name = new URL(request.url, "http://x").pathname.replace(/\/$/, "/index.html");
    try {
      if (name === "/ask") {
        const { id, path, body: question } = await body(request);
        response.end(JSON.stringify({ id, answer: await ask(path, question) }));
        return;
      }
      response.setHeader("Content-Type", `${types[extname(name)] ?? "text/plain"}; charset=utf-8`);
      response.setHeader("Content-Security-Policy", policy);
      response.end(await content(name));
    } catch {
      response.statusCode = 404;
      response.end();
    }
  });
  await new Promise((listening) => server.listen(port, "127.0.0.1", listening));
  return {
    address: `http://127.0.0.1:${server.address().port}/`,
    close: () => {
      server.close();
      server.closeAllConnections();
    },
  };
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const { values, positionals } = parseArgs({
    options: { now: { type: "string" }, port: { type: "string" } },
    allowPositionals: true,
  });
  const folder = mkdtempSync(join(tmpdir(), "orvanta-dev-"));
  process.on("exit", () => rmSync(folder, { recursive: true, force: true }));
  for (const signal of ["SIGINT", "SIGTERM"]) process.on(signal, () => process.exit());
  const program = await Program.start(folder, { now: values.now, make: positionals });
  const page = join(folder, "page");
  await build({ out: page, watch: true });
  const server = await serve(page, (path, body) => program.ask(path, body), Number(values.port ?? 0));
  console.log(server.address);
}
