import { render } from "preact";
import { App } from "./app";
import type { Bridge } from "./bridge/bridge";
import { Client, ClientProvider } from "./client";
import { followContrast } from "./ui/media";

declare global {
  interface Window {
    /** Asked by the program: whether the page can be loaded anew without losing anything. */
    __atRest?: () => boolean;
  }
}

const unrest = "dialog, [role=dialog], .assign, .learnt:focus-within, .welcome, .toast, :is(input, select):focus";

/** Draws the page, answered by `bridge`. */
export function start(bridge: Bridge): void {
  followContrast();
  const root = document.getElementById("page");
  if (!root) throw new Error("no root element");
  const client = new Client(bridge);
  window.__atRest = () => !document.querySelector(unrest);
  render(
    <ClientProvider value={client}>
      <App />
    </ClientProvider>,
    root,
  );
  client.grow();
}
