import { render } from "preact";
import { App } from "./app";
import type { Bridge } from "./bridge/bridge";
import { Client, ClientProvider } from "./client";
import { followContrast } from "./ui/media";

/** Draws the page, answered by `bridge`. */
export function start(bridge: Bridge): void {
  followContrast();
  const root = document.getElementById("page");
  if (!root) throw new Error("no root element");
  const client = new Client(bridge);
  render(
    <ClientProvider value={client}>
      <App />
    </ClientProvider>,
    root,
  );
  client.grow();
}
