import { render } from "preact";
import { App } from "./app";
import type { Bridge } from "./bridge/bridge";
import type { Day } from "./bridge/routes";
import { Client, ClientProvider } from "./client";
import { recall, remember } from "./model/stored";
import { followContrast } from "./ui/media";

declare global {
  interface Window {
    /** Asked by the program: whether the page can be loaded anew without losing anything. */
    __atRest?: () => boolean;
  }
}

const milliseconds = 1000;
const unrest = "dialog, [role=dialog], .assign, .learnt:focus-within, .welcome, .toast, :is(input, select):focus";

/** Draws the page, answered by `bridge`. */
export function start(bridge: Bridge): void {
  followContrast();
  const root = document.getElementById("page");
  if (!root) throw new Error("no root element");
  const client = new Client(bridge);
  // Until the page is drawn; then it shows days itself.
  let asked: Day | undefined;
  window.__showDay = (day) => {
    asked = day;
  };
  const draw = () => {
    render(
      <ClientProvider value={client}>
        <App />
      </ClientProvider>,
      root,
    );
    client.grow();
    if (asked !== undefined) window.__showDay?.(asked);
  };
  window.__atRest = () => !document.querySelector(unrest);
  const marks = bridge.first?.("page.marks", {});
  if (marks) remember(bridge, marks);
  if (marks) return draw();
  // A program that is slow to answer, or cannot, keeps nobody from the page.
  const patience = new Promise((done) => setTimeout(done, milliseconds));
  void Promise.race([recall(bridge), patience]).catch(() => {}).then(draw);
}
