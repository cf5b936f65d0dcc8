// The reports over made-up spans: enough of what the program does for the page to be lived in.
import type {
  AppTime,
  Block,
  ByCategory,
  Cat,
  Project,
  RuleRow,
  Segment,
  Totals,
} from "../src/bridge/routes";
import type { Span } from "./person";

export interface Classified extends Span {
  cat: Cat;
  pid: number | null;
}

export function ordered(rules: readonly RuleRow[]): RuleRow[] {
  return [...rules].sort(
    (a, b) => b.priority - a.priority || b.pattern.length - a.pattern.length || a.id - b.id,
  );
}

export function classify(span: Span, rules: readonly RuleRow[], projects: readonly Project[]): Classified {
  if (span.idle) return { ...span, cat: "inactif", pid: null };
  let cat = span.category;
  let pid = span.projectId;
  const low = (text: string | null) => text?.toLowerCase() ?? "";
  const values = { app: low(span.app), domain: low(span.domain), title: low(span.title), url: "" };
  for (const rule of rules) {
    if (!values[rule.field].includes(rule.pattern.toLowerCase())) continue;
    pid ??= rule.project_id;
    cat ??= rule.category;
  }
  if (pid === null) {
    const haystack = `${values.title} ${values.domain} ${values.app}`;
    const keywords = (project: Project) =>
      project.keywords.split(",").map((word) => word.trim().toLowerCase());
    const found = projects.find(
      (project) =>
        !project.archived && keywords(project).some((word) => word.length >= 3 && haystack.includes(word)),
    );
    pid = found?.id ?? null;
  }
  cat ??= projects.find(({ id }) => id === pid)?.category ?? "nonclasse";
  return { ...span, cat: cat as Cat, pid };
}

function add<K>(map: Map<K, number>, key: K, seconds: number): void {
  map.set(key, (map.get(key) ?? 0) + seconds);
}

function longest<K>(map: Map<K, number>): [K, number][] {
  return [...map].sort((a, b) => b[1] - a[1]);
}

export function totals(spans: readonly Classified[], projects: readonly Project[]): Totals {
  const byCategory: ByCategory = {};
  const byProject = new Map<number, number>();
  const apps = new Map<string, Map<Cat, number>>();
  const domains = new Map<string, { app: string; cats: Map<Cat, number> }>();
  let active = 0;
  for (const span of spans) {
    const seconds = span.end - span.start;
    byCategory[span.cat] = (byCategory[span.cat] ?? 0) + seconds;
    if (span.pid !== null) add(byProject, span.pid, seconds);
    if (span.idle) continue;
    active += seconds;
    if (!apps.has(span.app)) apps.set(span.app, new Map());
    add(apps.get(span.app)!, span.cat, seconds);
    if (span.domain === null) continue;
    if (!domains.has(span.domain)) domains.set(span.domain, { app: span.app, cats: new Map() });
    add(domains.get(span.domain)!.cats, span.cat, seconds);
  }
  const time = (name: string, cats: Map<Cat, number>): AppTime => ({
    name,
    duration: [...cats.values()].reduce((sum, seconds) => sum + seconds, 0),
    cats: longest(cats).slice(0, 5),
  });
  return {
    active,
    by_category: byCategory,
    by_project: longest(byProject).flatMap(([id, duration]) => {
      const project = projects.find((candidate) => candidate.id === id);
      return project ? [{ id, name: project.name, color: project.color, duration }] : [];
    }),
    apps: [...apps].map(([name, cats]) => time(name, cats)).sort((a, b) => b.duration - a.duration),
    domains: [...domains]
      .map(([name, { app, cats }]) => ({ ...time(name, cats), app }))
      .sort((a, b) => b.duration - a.duration),
  };
}

export function segments(spans: readonly Classified[]): Segment[] {
  const result: Segment[] = [];
  for (const span of spans) {
    if (span.idle || span.end - span.start < 1) continue;
    const last = result[result.length - 1];
    const label = span.domain ?? span.app;
    if (last && last.cat === span.cat && last.pid === span.pid && span.start - last.end < 3) {
      last.end = span.end;
      if (!last.top.includes(label) && last.top.length < 3) last.top.push(label);
    } else {
      result.push({ start: span.start, end: span.end, cat: span.cat, pid: span.pid, top: [label] });
    }
  }
  return result;
}

export function blocks(spans: readonly Classified[], minSeconds: number): Block[] {
  const result: Block[] = [];
  for (const span of spans) {
    const { start, end, app, domain, cat, pid, idle } = span;
    const last = result[result.length - 1];
    const same = last && last.app === app && last.domain === domain && last.cat === cat && last.pid === pid;
    if (same && last.idle === idle && start - last.end < 5) {
      last.end = end;
      last.duration = end - last.start;
      last.ids.push(span.id);
    } else {
      const manual = !idle && (span.category !== null || span.projectId !== null);
      result.push({
        start,
        end,
        duration: end - start,
        app,
        domain,
        cat,
        pid,
        idle,
        ids: [span.id],
        manual,
        title: span.title,
      });
    }
  }
  return result.filter((block) => block.idle || block.duration >= minSeconds);
}
