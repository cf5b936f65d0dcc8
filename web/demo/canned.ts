// Answers the page from made-up data, and remembers what it is told until the page is closed.
import { type Bridge, unwrap } from "../src/bridge/bridge";
import type {
  Body,
  DayReport,
  LearnedRule,
  Project,
  ProjectRow,
  RecapReport,
  Route,
  Routes,
  Settings,
  WeekReport,
  WeekSummary,
} from "../src/bridge/routes";
import { addDays, dayOf, instant, isDay, mondayOf } from "../src/model/time";
import { month, type Span } from "./person";
import { blocks, classify, type Classified, ordered, segments, totals } from "./reports";
import { people, seededRules } from "./seeds";
import { cannedStore, type Health, type StoreRoute } from "./store";

export interface Canned extends Health {
  /** Unix seconds when the page is opened; the clock goes on from there. */
  now: number;
  spans: Span[];
  minBlockSeconds?: number;
  onboarded?: boolean;
  accessibility?: boolean;
  projects?: ProjectRow[];
  update?: { version: string; url: string };
}

type Handlers = { [R in Exclude<Route, StoreRoute>]: (body: Body<R>) => Routes[R][1] | { error: string } };

export function cannedBridge(canned: Canned): Bridge {
  const opened = Date.now();
  const now = () => canned.now + (Date.now() - opened) / 1000;
  const spans = [...canned.spans];
  let projects = (canned.projects ?? people).map((project) => ({ ...project }));
  let rules = seededRules();
  rules.push({
    id: 200,
    field: "domain",
    pattern: "intranet.atelier-cmd.fr",
    category: "travail",
    project_id: 3,
    priority: 0,
    created: 0,
  });
  let lastId = 1000;
  const settings: Settings = {
    idle_threshold: "180",
    min_span_seconds: "10",
    min_block_seconds: String(canned.minBlockSeconds ?? 60),
    privacy_mode: "full",
    excluded_domains: '["banque.example"]',
    retention_days: "0",
  };
  const state = {
    paused: false,
    onboarded: canned.onboarded ?? true,
    telemetry: false,
    login: true,
    project: null as number | null,
    since: null as number | null,
  };
  const browsers: Record<string, "ok" | "denied"> = { "org.mozilla.firefox": "ok" };

  const store = cannedStore({
    health: canned,
    now,
    read: () => structuredClone({ spans, projects, rules }),
    write: (data) => {
      spans.splice(0, spans.length, ...data.spans);
      ({ projects, rules } = data);
    },
  });
  const incomplete = () =>
    canned.store?.state === "damaged"
      ? { incomplete: "Une partie de cette période n’a pas pu être lue." }
      : {};

  const asProjects = (): Project[] =>
    projects.map((p) => ({
      id: p.id,
      name: p.name,
      color: p.color ?? "#3b82f6",
      category: p.category ?? "travail",
      archived: p.archived === 1,
      keywords: p.keywords ?? "",
    }));
  const between = (from: number, to: number): Classified[] => {
    const [inOrder, all] = [ordered(rules), asProjects()];
    return spans
      .filter((span) => span.end > from && span.start < to)
      .map((span) =>
        classify({ ...span, start: Math.max(span.start, from), end: Math.min(span.end, to) }, inOrder, all),
      );
  };
  const bounds = (date: string) => ({ start: instant(date, 0, 0), end: instant(addDays(date, 1), 0, 0) });
  const dateOf = (body: { date?: string }) => (isDay(body.date) ? body.date : dayOf(now()));
  const firstAndLast = (list: Classified[]) => {
    const active = list.filter((span) => !span.idle);
    return {
      first: active[0]?.start ?? null,
      last: active.length > 0 ? Math.max(...active.map((span) => span.end)) : null,
    };
  };

  const day = (date: string): DayReport => {
    const { start, end } = bounds(date);
    const list = between(start, end);
    return {
      date,
      start,
      end,
      ...firstAndLast(list),
      segments: segments(list),
      blocks: blocks(list, Number(settings.min_block_seconds)),
      totals: totals(list, asProjects()),
      projects: asProjects().sort((a, b) => (a.name < b.name ? -1 : 1)),
    };
  };
  const week = (date: string): WeekReport => {
    const monday = mondayOf(date);
    const all = between(bounds(monday).start, bounds(addDays(monday, 6)).end);
    const { by_category, by_project } = totals(all, asProjects());
    const days = [0, 1, 2, 3, 4, 5, 6].map((i) => {
      const { start, end } = bounds(addDays(monday, i));
      const list = between(start, end);
      const sums = totals(list, []);
      return {
        date: addDays(monday, i),
        active: sums.active,
        by_category: sums.by_category,
        ...firstAndLast(list),
      };
    });
    return { monday, days, by_category, by_project };
  };
  const summary = (monday: string): WeekSummary => {
    const list = between(bounds(monday).start, bounds(addDays(monday, 6)).end);
    const sums = totals(list, asProjects());
    const days = week(monday).days.filter((one) => one.active > 0);
    let longest = 0;
    let from: number | null = null;
    for (const span of list) {
      if (span.idle) from = null;
      else longest = Math.max(longest, span.end - (from ??= span.start));
    }
    const best = [...days].sort((a, b) => b.active - a.active)[0];
    return {
      ...sums,
      days_active: days.length,
      avg_per_day: days.length > 0 ? sums.active / days.length : 0,
      longest_session: longest,
      best_day: best ? { date: best.date, active: best.active } : null,
    };
  };
  const recap = (date: string): RecapReport => {
    const monday = mondayOf(date);
    return { monday, current: summary(monday), previous: summary(addDays(monday, -7)) };
  };

  // A habit is the same assignment on two days.
  const learn = (ids: Set<number>, category: string | null, project: number | null): LearnedRule[] => {
    const learned: LearnedRule[] = [];
    const keys = new Map(
      spans.filter(({ id }) => ids.has(id)).map((span) => [span.domain ?? span.app, span] as const),
    );
    for (const [pattern, { domain }] of keys) {
      const field = domain === null ? "app" : "domain";
      const known = rules.some(
        (rule) =>
          rule.priority >= 0 && rule.field === field && rule.pattern.toLowerCase() === pattern.toLowerCase(),
      );
      const alike = spans.filter(
        (span) =>
          (span.domain ?? span.app) === pattern && span.category === category && span.projectId === project,
      );
      if (known || new Set(alike.map(({ start }) => dayOf(start))).size < 2) continue;
      rules.push({
        id: ++lastId,
        field,
        pattern,
        category,
        project_id: project,
        priority: 0,
        created: now(),
      });
      learned.push({
        field,
        pattern,
        category,
        project: projects.find(({ id }) => id === project)?.name ?? null,
      });
    }
    return learned;
  };

  const ok = { ok: true } as const;
  const routes: Handlers & typeof store.routes = {
    status: () => {
      const last = spans.filter((span) => span.start <= now()).at(-1);
      return {
        paused: state.paused,
        current:
          last && !state.paused
            ? {
                app: last.app,
                domain: last.domain,
                title: last.title,
                idle: last.idle,
                duration: now() - last.start,
              }
            : null,
        now: now(),
        accessibility: canned.accessibility ?? true,
        current_project: state.project,
        current_project_name: projects.find(({ id }) => id === state.project)?.name ?? null,
        current_project_since: state.since,
        db: "/home/camille/.local/share/Orvanta/orvanta.db",
        onboarded: state.onboarded,
        telemetry: state.telemetry,
        install_id: state.telemetry ? "6f1c7a52-0d1e-4b58-9a53-2f4f1f0f8a11" : "",
        version: "0.1.0",
        update: canned.update ?? null,
        ...(canned.store ? { store: canned.store } : {}),
      };
    },
    ...store.routes,
    day: (body) => ({ ...day(dateOf(body)), ...incomplete() }),
    week: (body) => ({ ...week(dateOf(body)), ...incomplete() }),
    recap: (body) => ({ ...recap(dateOf(body)), ...incomplete() }),
    suggestions: () => {
      const taken = new Set(
        rules.filter(({ project_id }) => project_id !== null).map(({ pattern }) => pattern),
      );
      const wanted = [
        ["gallica.bnf.fr", "domain", 4],
        ["LibreOffice Writer", "app", 2],
      ] as const;
      const found = wanted.flatMap(([name, field, id]) => {
        const project = projects.find((candidate) => candidate.id === id);
        if (!project || taken.has(name)) return [];
        return [
          {
            name,
            field,
            duration: 7260 / id + 3600,
            project_id: id,
            project: project.name,
            color: project.color ?? "",
          },
        ];
      });
      return found.sort((a, b) => b.duration - a.duration);
    },
    "projects.list": () =>
      [...projects].sort((a, b) => (a.archived ?? 0) - (b.archived ?? 0) || (a.name < b.name ? -1 : 1)),
    "projects.save": ({ id, archived, ...fields }) => {
      const name = fields.name.trim();
      if (name === "") return { error: "nom manquant" };
      const same = projects.some((project) => project.name === name && project.id !== id);
      if (id !== undefined) {
        if (!same)
          projects = projects.map((project) =>
            project.id === id ? { ...project, ...fields, name, archived: archived ?? 0 } : project,
          );
        return { ok: true, id };
      }
      if (same) return { error: "un projet porte déjà ce nom" };
      projects.push({ id: ++lastId, ...fields, name, archived: 0 });
      return { ok: true, id: lastId };
    },
    "projects.delete": ({ id }) => {
      projects = projects.filter((project) => project.id !== id);
      rules = rules.map((rule) => (rule.project_id === id ? { ...rule, project_id: null } : rule));
      for (const span of spans) if (span.projectId === id) span.projectId = null;
      return ok;
    },
    "rules.list": () => ordered(rules),
    "rules.save": (rule) => {
      if (rule.pattern.trim() === "") return { error: "règle invalide" };
      rules = rules.filter(
        (old) => old.field !== rule.field || old.pattern.toLowerCase() !== rule.pattern.toLowerCase(),
      );
      rules.push({ ...rule, id: ++lastId, priority: 0, created: now() });
      return { ok: true, id: lastId };
    },
    "rules.delete": ({ id }) => {
      rules = rules.filter((rule) => rule.id !== id);
      return ok;
    },
    "rules.defaults": () => {
      const missing = seededRules().filter(
        (seed) => !rules.some((rule) => rule.field === seed.field && rule.pattern === seed.pattern),
      );
      rules.push(...missing.map((rule) => ({ ...rule, id: ++lastId })));
      return { ok: true, added: missing.length };
    },
    "events.assign": ({ ids, clear, category, project_id }) => {
      if (ids.length === 0) return { error: "aucun bloc" };
      const chosen = new Set(ids);
      const [cat, project] = clear ? [null, null] : [category ?? null, project_id ?? null];
      for (const span of spans)
        if (chosen.has(span.id)) Object.assign(span, { category: cat, projectId: project });
      return clear ? ok : { ok: true, learned: learn(chosen, cat, project) };
    },
    "events.assignRange": ({ start, end, category, project_id }) => {
      const touched = spans.filter((span) => !span.idle && span.end > start && span.start < end);
      for (const span of touched) {
        if (span.start < start) spans.push({ ...span, id: ++lastId, end: start });
        if (span.end > end) spans.push({ ...span, id: ++lastId, start: end });
        Object.assign(span, {
          start: Math.max(span.start, start),
          end: Math.min(span.end, end),
          category,
          projectId: project_id,
        });
      }
      spans.sort((a, b) => a.start - b.start);
      return ok;
    },
    "settings.get": () => ({ ...settings }),
    "settings.set": (values) => {
      for (const [key, value] of Object.entries(values)) {
        settings[key as keyof Settings] = Array.isArray(value) ? JSON.stringify(value) : String(value);
      }
      return ok;
    },
    "tracker.pause": () => ((state.paused = true), ok),
    "tracker.resume": () => ((state.paused = false), ok),
    "tracker.project": ({ project_id }) => {
      Object.assign(state, { project: project_id, since: project_id === null ? null : now() });
      return ok;
    },
    "permissions.status": () => ({
      accessibility: canned.accessibility ?? true,
      browsers_running: [
        { bundle: "org.mozilla.firefox", name: "Firefox" },
        { bundle: "org.chromium.Chromium", name: "Chromium" },
      ],
      browsers: { ...browsers },
      launch_at_login: state.login,
      probes: {
        foreground: "wlr-foreign-toplevel",
        idle: "ext-idle-notify",
        inhibition: "logind",
        session: "logind",
      },
    }),
    "permissions.requestAccessibility": () => ok,
    "permissions.testBrowser": ({ bundle }) => {
      const works = bundle === "org.mozilla.firefox";
      browsers[bundle] = works ? "ok" : "denied";
      return { ok: works, error: works ? null : "L’extension n’est pas installée dans Chromium." };
    },
    "permissions.openAutomation": () => ok,
    launchAtLogin: ({ enabled }) => ({ ok: true, error: null, enabled: (state.login = enabled) }),
    "telemetry.set": ({ enabled }) => ({ ok: true, enabled: (state.telemetry = enabled) }),
    "update.check": () => ok,
    "onboarding.done": () => ((state.onboarded = true), ok),
    export: () => ok,
    openURL: () => ok,
    revealData: () => ok,
    quit: () => ok,
  };

  return {
    async call(route, body) {
      await new Promise((resolve) => setTimeout(resolve));
      // A copy, as what crosses the real bridge is one.
      const run = () => (routes[route] as (body: unknown) => unknown)(JSON.parse(JSON.stringify(body)));
      const answer = store.answer(route, run);
      return unwrap(JSON.parse(JSON.stringify(answer))) as never;
    },
  };
}

/** The month of an invented person that ends at `now`. */
export function cannedMonth(now: number): Canned {
  return { now, spans: month(now) };
}
