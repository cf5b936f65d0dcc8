import type { Answer, Body, Route } from "./routes";

/** The way to the program. */
export interface Bridge {
  /** Rejects with a BridgeError whose message, in French, is for the user. */
  call<R extends Route>(route: R, body: Body<R>): Promise<Answer<R>>;
}

export class BridgeError extends Error {}

// These wait for a person: the save panel, the desktop's or the browser's own question.
const waitsForUser = new Set<Route>(["export", "permissions.testBrowser"]);

/** How long the program may take to answer, in milliseconds; 0 means as long as it likes. */
export function patience(route: Route): number {
  return waitsForUser.has(route) ? 0 : 20_000;
}

/** The answer, or a throw when it is {"error": text}. */
export function unwrap(answer: unknown): unknown {
  if (typeof answer === "object" && answer !== null && !Array.isArray(answer)) {
    const { error, ok } = answer as { error?: unknown; ok?: unknown };
    // Some routes answer {"ok": false, "error": text}; that is an answer, not a failure.
    if (typeof error === "string" && ok === undefined) throw new BridgeError(error);
  }
  return answer;
}
