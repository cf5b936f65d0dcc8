// The page on made-up data. The address may say when it is (?now=2026-11-19T16:42) and what is
// missing (&new for a first start, &blind for unreadable titles, &empty for no data).
import { start } from "../src/start";
import { cannedBridge, cannedMonth } from "./canned";

const query = new URLSearchParams(location.search);
const now = query.get("now");
const canned = cannedMonth((now ? new Date(now).getTime() : Date.now()) / 1000);
if (query.has("new")) canned.onboarded = false;
if (query.has("blind")) canned.accessibility = false;
if (query.has("empty")) Object.assign(canned, { spans: [], projects: [] });
start(cannedBridge(canned));
