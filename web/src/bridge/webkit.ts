import { type Bridge, BridgeError, unwrap } from "./bridge";

interface Handler {
  postMessage(message: unknown): void;
}

declare global {
  interface Window {
    webkit?: { messageHandlers?: { api?: Handler } };
    /** Called by the program with the request's id and its parsed answer. */
    __resolve?: (id: number, answer: unknown) => void;
    /** The program's answers to what the page will ask first. */
    __first?: { path: string; body: object; answer: unknown }[];
  }
}

/** Speaks to the program through the web view's message handler "api". */
export function webkitBridge(): Bridge {
  const waiting = new Map<number, (answer: unknown) => void>();
  // Not from 0: after a reload an answer to the page before is still on its way.
  let lastId = Date.now();

  window.__resolve = (id, answer) => {
    const settle = waiting.get(id);
    waiting.delete(id);
    settle?.(answer);
  };

  const known = new Map(
    window.__first?.map(({ path, body, answer }) => [path + JSON.stringify(body), answer]),
  );

  return {
    first: (route, body) => known.get(route + JSON.stringify(body)) as never,
    call(route, body) {
      const handler = window.webkit?.messageHandlers?.api;
      if (!handler) {
        return Promise.reject(new BridgeError("Cette page ne s’utilise que dans la fenêtre d’Orvanta."));
      }
      return new Promise((resolve, reject) => {
        const id = ++lastId;
        waiting.set(id, (answer) => {
          try {
            resolve(unwrap(answer) as never);
          } catch (error) {
            reject(error);
          }
        });
        handler.postMessage({ id, path: route, body });
      });
    },
  };
}
