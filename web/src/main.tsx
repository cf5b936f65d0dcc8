import { webkitBridge } from "./bridge/webkit";
import { start } from "./start";

start(webkitBridge());
