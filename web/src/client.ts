import { createContext } from "preact";
import { useContext, useLayoutEffect, useRef, useState } from "preact/hooks";
import { type Bridge, inTime, written } from "./bridge/bridge";
import type { Answer, Body, Route, RouteKind } from "./bridge/routes";

/** The bridge, and word to whoever shows data when a call may have changed it. */
export class Client implements Bridge {
  private readonly listeners = new Set<() => void>();
  private announced = false;
  private kinds: Promise<ReadonlyMap<string, RouteKind>> | undefined;

  private young = true;

  constructor(private readonly bridge: Bridge) {
    const routes = this.first("routes.list", {});
    if (routes) this.kinds = Promise.resolve(kindsOf(routes));
  }

  /** What came with the page, while it is drawn for the first time. */
  first<R extends Route>(route: R, body: Body<R>): Answer<R> | undefined {
    return this.young ? this.bridge.first?.(route, body) : undefined;
  }

  /** The page is drawn: from now on time passes. */
  grow(): void {
    this.young = false;
  }

  /** What is to be shown, of a route that is told to change nothing. Rejects as the bridge does. */
  async read<R extends Route>(route: R, body: Body<R>): Promise<Answer<R>> {
    const answer = this.bridge.call(route, body);
    return (await this.kindOf(route)) === "ask" ? answer : inTime(answer);
  }

  /** Rejects as the bridge does, and when the program could not write what it was told. */
  async call<R extends Route>(route: R, body: Body<R>): Promise<Answer<R>> {
    const kind = await this.kindOf(route);
    try {
      return written(await this.read(route, body));
    } finally {
      if (kind !== "read") this.announce();
    }
  }

  // The program knows which of its routes write, and which take as long as the user.
  private async kindOf(route: Route): Promise<RouteKind> {
    this.kinds ??= inTime(this.bridge.call("routes.list", {})).then(kindsOf);
    try {
      return (await this.kinds).get(route) ?? "read";
    } catch (error) {
      this.kinds = undefined;
      throw error;
    }
  }

  onChange(listener: () => void): () => void {
    this.listeners.add(listener);
    return () => this.listeners.delete(listener);
  }

  // Several writes in a row, as when a rule replaces another, are read back once.
  private announce(): void {
    if (this.announced) return;
    this.announced = true;
    setTimeout(() => {
      this.announced = false;
      for (const listener of [...this.listeners]) listener();
    });
  }
}

function kindsOf(routes: Answer<"routes.list">): ReadonlyMap<string, RouteKind> {
  return new Map(routes.map(({ name, kind }) => [name, kind]));
}

const ClientContext = createContext<Client | null>(null);
export const ClientProvider = ClientContext.Provider;

export function useClient(): Client {
  const client = useContext(ClientContext);
  if (!client) throw new Error("no client");
  return client;
}

export interface Loaded<T> {
  /** The last answer; while the one to other arguments is awaited, still the one before. */
  answer: T | undefined;
  error: string | undefined;
  reload: () => void;
}

/**
 * The answer of a route, read again when its arguments change, after every write, and every
 * `seconds` while the page is visible. Without arguments nothing is asked.
 */
export function useAnswer<R extends Route>(route: R, body: Body<R> | null, seconds = 0): Loaded<Answer<R>> {
  const client = useClient();
  const [state, setState] = useState<{ answer?: Answer<R> | undefined; error?: string }>(() => ({
    answer: body === null ? undefined : client.first(route, body),
  }));
  const reload = useRef(() => {});
  const key = JSON.stringify(body);

  // Asked for before the browser paints, which takes longer than most answers.
  useLayoutEffect(() => {
    if (body === null) return;
    let latest = 0;
    let pending = 0;
    const load = async () => {
      const turn = ++latest;
      pending += 1;
      try {
        const answer = await client.read(route, body);
        if (turn === latest) setState({ answer });
      } catch (error) {
        const text = errorText(error);
        if (turn === latest) setState((old) => ({ ...old, error: text }));
      }
      pending -= 1;
    };
    const whenVisible = () => {
      // A program that is slow to answer is not asked twice.
      if (document.visibilityState === "visible" && pending === 0) void load();
    };
    reload.current = () => void load();
    if (!client.first(route, body)) void load();
    const stop = client.onChange(() => void load());
    const timer = seconds > 0 ? setInterval(whenVisible, seconds * 1000) : undefined;
    document.addEventListener("visibilitychange", whenVisible);
    return () => {
      latest = -1;
      stop();
      clearInterval(timer);
      document.removeEventListener("visibilitychange", whenVisible);
    };
  }, [client, route, key, seconds]);

  return { answer: state.answer, error: state.error, reload: () => reload.current() };
}

export function errorText(error: unknown): string {
  return error instanceof Error ? error.message : String(error);
}
