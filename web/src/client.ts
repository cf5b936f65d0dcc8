import { createContext } from "preact";
import { useContext, useEffect, useRef, useState } from "preact/hooks";
import { type Bridge, written } from "./bridge/bridge";
import type { Answer, Body, Route } from "./bridge/routes";

// After these, what is on the screen may be out of date.
const writes = new Set<Route>([
  "projects.save",
  "projects.delete",
  "rules.save",
  "rules.delete",
  "rules.defaults",
  "events.assign",
  "events.assignRange",
  "events.delete",
  "changes.undo",
  "changes.redo",
  "store.backup",
  "store.restore",
  "settings.set",
  "tracker.pause",
  "tracker.resume",
  "tracker.project",
  "permissions.testBrowser",
  "launchAtLogin",
  "telemetry.set",
  "onboarding.done",
]);

/** The bridge, and word to whoever shows data when a call has changed it. */
export class Client implements Bridge {
  private readonly listeners = new Set<() => void>();
  private announced = false;

  constructor(private readonly bridge: Bridge) {}

  /** Rejects as the bridge does, and when the program could not write what it was told. */
  async call<R extends Route>(route: R, body: Body<R>): Promise<Answer<R>> {
    try {
      return written(await this.bridge.call(route, body));
    } finally {
      if (writes.has(route) && !("preview" in body)) this.announce();
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
 * `seconds` while the page is visible.
 */
export function useAnswer<R extends Route>(route: R, body: Body<R>, seconds = 0): Loaded<Answer<R>> {
  const client = useClient();
  const [state, setState] = useState<{ answer?: Answer<R>; error?: string }>({});
  const reload = useRef(() => {});
  const key = JSON.stringify(body);

  useEffect(() => {
    let latest = 0;
    let pending = 0;
    const load = async () => {
      const turn = ++latest;
      pending += 1;
      try {
        const answer = await client.call(route, body);
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
    void load();
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
