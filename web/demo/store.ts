// The made-up store: a history to go back and forth in, backups, and writes that fail when told to.
import type { Body, ProjectRow, Route, Routes, RuleRow, UnixTime } from "../src/bridge/routes";
import type { Backup, Change, ChangeKind, StoreContent, StoreTrouble } from "../src/bridge/store";
import type { Span } from "./person";

/** What a change can touch. */
export interface Data {
  spans: Span[];
  projects: ProjectRow[];
  rules: RuleRow[];
}

/** May be changed at any time, as a disk may fill up. */
export interface Health {
  store?: StoreTrouble;
  notice?: string;
}

interface Options {
  health: Health;
  now: () => UnixTime;
  /** A copy. */
  read: () => Data;
  write: (data: Data) => void;
}

const kinds: Partial<Record<Route, [ChangeKind, string]>> = {
  "events.assign": ["assign", "blocs assignés"],
  "events.assignRange": ["assignRange", "plage assignée"],
  "rules.save": ["rule.save", "règle enregistrée"],
  "rules.delete": ["rule.delete", "règle supprimée"],
  "rules.defaults": ["rules.defaults", "règles intégrées rétablies"],
  "projects.save": ["project.save", "projet enregistré"],
  "projects.delete": ["project.delete", "projet supprimé"],
};
// These hold in memory when they cannot be stored; of the others nothing is done.
const held = new Set<Route>(["onboarding.done", "tracker.pause", "tracker.resume", "telemetry.set"]);
const lost = new Set<Route>(["settings.set", "events.delete", "export"]);

export type StoreRoute = Extract<Route, `store.${string}` | `changes.${string}` | "events.delete">;
type Handlers = { [R in StoreRoute]: (body: Body<R>) => Routes[R][1] | { error: string } };

const day = 86_400;
const seconds = (spans: readonly Span[]) => spans.reduce((sum, { start, end }) => sum + end - start, 0);

export function cannedStore({ health, now, read, write }: Options) {
  const history: { change: Change; before: Data; after: Data }[] = [];
  let lastId = 0;
  const backups: Backup[] = [1, 2, 3, 9, 16, 23, 30].map((ago) => {
    const time = Math.floor(now() / day - ago) * day + 8.2 * 3600;
    return {
      file: `/home/camille/.local/share/Orvanta/sauvegardes/${time}.db`,
      time,
      size: 8_412_160 - ago * 9000,
    };
  });

  const content = ({ spans, projects, rules }: Data): StoreContent => ({
    spans: spans.length,
    first: spans[0]?.start ?? null,
    last: spans.at(-1)?.end ?? null,
    projects: projects.length,
    rules: rules.length,
  });
  const at = (time: UnixTime): Data => {
    const data = read();
    return { ...data, spans: data.spans.filter(({ end }) => end <= time) };
  };
  const travel = (id: number, undone: boolean) => {
    const index = history.findIndex(({ change }) => change.id === id);
    const entry = history[index];
    const neighbour = undone ? history[index + 1] : history[index - 1];
    if (!entry || entry.change.undone === undone) return { error: "Ce changement n’est plus là." };
    if (neighbour && neighbour.change.undone !== undone)
      return { error: "Un changement plus récent en dépend." };
    entry.change.undone = undone;
    write(structuredClone(undone ? entry.before : entry.after));
    return { ok: true } as const;
  };

  /** What the program answers to a route, `run` being what it does when all goes well. */
  const answer = (route: Route, run: () => unknown): unknown => {
    const { store } = health;
    if (store && held.has(route)) return { ...(run() as object), stored: false, message: store.message };
    if (store && (kinds[route] || lost.has(route))) {
      if (route === "projects.save") return { error: store.message };
      const failed = { stored: false, message: store.message };
      return route === "export"
        ? { ok: true, ...failed, written: false }
        : { ok: true, id: -1, added: 0, ...failed };
    }
    const kind = kinds[route];
    if (!kind) return run();
    const before = read();
    const result = run() as { error?: string; learned?: Change["learned"] };
    const after = read();
    if (result.error || JSON.stringify(before) === JSON.stringify(after)) return result;
    const known = new Set(before.rules.map(({ id }) => id));
    const learned = result.learned ?? [];
    const rules = learned.length > 0 ? after.rules.filter(({ id }) => !known.has(id)) : [];
    const [name, label] = kind;
    const change: Change = {
      id: ++lastId,
      kind: name,
      label,
      at: now(),
      spans: 0,
      seconds: 0,
      learned,
      learned_ids: rules.map(({ id }) => id),
      undone: false,
    };
    history.push({ change, before, after });
    return result;
  };

  const routes: Handlers = {
    "events.delete": (body) => {
      const data = read();
      const gone: Span[] = [];
      const kept: Span[] = [];
      for (const span of data.spans) {
        const from = "ids" in body ? (body.ids.includes(span.id) ? span.start : span.end) : body.start;
        const to = "ids" in body ? span.end : body.end;
        const [start, end] = [Math.max(span.start, from), Math.min(span.end, to)];
        if (end <= start) kept.push(span);
        else {
          gone.push({ ...span, start, end });
          if (span.start < start) kept.push({ ...span, end: start });
          if (span.end > end) kept.push({ ...span, id: 50_000 + span.id, start: end });
        }
      }
      if (!body.preview) write({ ...data, spans: kept });
      return { ok: true, deleted: gone.length, seconds: seconds(gone) };
    },
    "changes.list": ({ limit = 50 }) =>
      history
        .map(({ change }) => change)
        .reverse()
        .slice(0, limit),
    "changes.undo": ({ id }) => travel(id, true),
    "changes.redo": ({ id }) => travel(id, false),
    "store.status": () => {
      const { spans, first, last } = content(read());
      return {
        state: health.store?.state ?? "ok",
        message: health.store?.message ?? null,
        since: health.store?.since ?? null,
        waiting: health.store ? 12 : 0,
        size: 1_200_000 + spans * 512,
        first,
        last,
        notice: health.notice ?? null,
        last_backup: backups[0]?.time ?? null,
        backups,
      };
    },
    "store.backup": () => {
      if (health.store) return { error: health.store.message };
      const made = {
        file: `/home/camille/.local/share/Orvanta/sauvegardes/${now()}.db`,
        time: now(),
        size: 8_421_000,
      };
      backups.unshift(made);
      return { ok: true, ...made };
    },
    "store.check": () =>
      health.store?.state === "damaged"
        ? {
            ok: false,
            message: "Le fichier est abîmé\u00a0: 3 pages ne se lisent pas.",
            problems: [
              "Tree 4 page 812: btreeInitPage() returns error code 11",
              "row 40 missing from index ev_start",
            ],
          }
        : { ok: true, message: "Le fichier est entier.", problems: [] },
    "store.restorePreview": ({ file }) => {
      const backup = backups.find((one) => one.file === file);
      if (!backup) return { error: "Cette sauvegarde n’est plus là." };
      const missing = read().spans.filter(({ end }) => end > backup.time);
      const known = health.store?.state !== "damaged";
      return {
        file,
        time: backup.time,
        ...content(at(backup.time)),
        lost_spans: known ? missing.length : null,
        lost_seconds: known ? seconds(missing) : null,
        current: content(read()),
      };
    },
    "store.restore": ({ file }) => {
      const backup = backups.find((one) => one.file === file);
      if (!backup) return { error: "Cette sauvegarde n’est plus là." };
      write(at(backup.time));
      const kept = "orvanta.db.avant-restauration";
      health.notice = `Une sauvegarde a été restaurée. L’ancien fichier est gardé : ${kept}.`;
      return { ok: true, kept: `/home/camille/.local/share/Orvanta/${kept}` };
    },
  };
  return { answer, routes };
}
