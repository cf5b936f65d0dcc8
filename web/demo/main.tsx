// The page on made-up data. The address may say when it is (?now=2026-11-19T16:42) and what is
// unusual (&new for a first start, &blind for unreadable titles, &empty for no data, &hostile for text
// that attacks, &blocks=2000 for a restless day, &store=full and the like for a store in trouble,
// &notice for one that was repaired).
import type { Route } from "../src/bridge/routes";
import { start } from "../src/start";
import { cannedBridge, cannedMonth } from "./canned";
import { attack, repaired, restless, troubles } from "./unusual";

const query = new URLSearchParams(location.search);
const now = query.get("now");
const canned = cannedMonth((now ? new Date(now).getTime() : Date.now()) / 1000);
if (query.has("new")) canned.onboarded = false;
if (query.has("blind")) canned.accessibility = false;
if (query.has("empty")) Object.assign(canned, { spans: [], projects: [] });
if (query.has("hostile")) attack(canned);
const blocks = Number(query.get("blocks"));
if (blocks > 0)
  Object.assign(canned, { spans: restless(canned.now, blocks, canned.spans), minBlockSeconds: 5 });
const trouble = troubles.find(({ state }) => state === query.get("store"));
if (trouble) canned.store = { ...trouble, since: canned.now - 5460 };
if (query.has("notice")) canned.notice = repaired;
const bridge = cannedBridge(canned);
const asked: [Route, unknown][] = [];
// For tests: what is wrong may begin and end while the page is open, and what it asks for is known.
Object.assign(window, { canned, asked });
start({
  call: (route, body) => {
    asked.push([route, body]);
    return bridge.call(route, body);
  },
});
