import { typeset } from "../model/time";
import type { Answer, Body, Route } from "./routes";

/** The way to the program. */
export interface Bridge {
  /** Rejects with a BridgeError whose message, in French, is for the user. */
  call<R extends Route>(route: R, body: Body<R>): Promise<Answer<R>>;
  /** The answer that came with the page, if there is one: what is true while the page is first drawn. */
  first?<R extends Route>(route: R, body: Body<R>): Answer<R> | undefined;
}

export class BridgeError extends Error {}
/** The program did what it could, but it is not on the disk. */
export class UnstoredError extends BridgeError {}

/** How long an answer may take that waits for nobody, in milliseconds. */
const patience = 20_000;

/** The answer, or a throw when it takes too long. */
export function inTime<T>(answer: Promise<T>): Promise<T> {
  return new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new BridgeError("Orvanta ne répond pas.")), patience);
    void answer.then(resolve, reject).finally(() => clearTimeout(timer));
  });
}

/** The answer, or a throw when it is {"error": text}. */
export function unwrap(answer: unknown): unknown {
  if (typeof answer === "object" && answer !== null && !Array.isArray(answer)) {
    const { error, ok } = answer as { error?: unknown; ok?: unknown };
    // Some routes answer {"ok": false, "error": text}; that is an answer, not a failure.
    if (typeof error === "string" && ok === undefined) throw new BridgeError(typeset(error));
  }
  return answer;
}

/** The answer, or a throw of its sentence when what it was to write or to show is nowhere. */
export function written<T>(answer: T): T {
  if (typeof answer === "object" && answer !== null) {
    const {
      stored,
      written: done,
      shown,
      message,
    } = answer as { stored?: unknown; written?: unknown; shown?: unknown; message?: unknown };
    if (stored === false || done === false || shown === false)
      throw new UnstoredError(
        typeof message === "string" && message ? typeset(message) : "Rien n’a pu être enregistré.",
      );
  }
  return answer;
}
