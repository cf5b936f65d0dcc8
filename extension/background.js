// Tells Orvanta's native-messaging host which tab is in front: the active tab of the window that
// has the focus, every time that changes. A private window is never told; while one is in front, so
// is nothing.

const api = globalThis.browser ?? globalThis.chrome;

const HOST = "fr.quellvane.orvanta.tab";
const NO_WINDOW = api.windows.WINDOW_ID_NONE;
const LONGEST_URL = 8192;
const LONGEST_TITLE = 2048;

// The window that has the focus. What the browser calls the last focused window is no answer: it
// names a normal window while a private one is in front.
let focused = NO_WINDOW;

// --- The host ---

const FIRST_RETRY = 500; // milliseconds
const LONGEST_RETRY = 8000;
let port = null;
let retry = FIRST_RETRY;
let retryTimer = 0;
let sent = ""; // the last report, to send nothing twice

function connect() {
  clearTimeout(retryTimer);
  sent = "";
  port = api.runtime.connectNative(HOST);
  port.onMessage.addListener(() => { retry = FIRST_RETRY; });
  port.onDisconnect.addListener(() => {
    void api.runtime.lastError; // reading it keeps it out of the log: the host may not be installed
    port = null;
    retryTimer = setTimeout(connect, retry);
    retry = Math.min(retry * 2, LONGEST_RETRY);
  });
  report();
}

function send(message) {
  const text = JSON.stringify(message);
  if (!port || text === sent) return;
  sent = text;
  port.postMessage(message);
}

// --- The tab ---

// Half a surrogate pair is no text.
function cut(text, length) {
  return (text ?? "").slice(0, length).replace(/\p{Surrogate}/gu, "\uFFFD");
}

let question = 0;

async function report() {
  const asked = ++question;
  const window = focused;
  let tab;
  if (window !== NO_WINDOW) {
    try {
      [tab] = await api.tabs.query({ active: true, windowId: window });
    } catch {
      // The window is being closed.
    }
  }
  if (asked !== question) return; // there is a newer question
  if (!tab || tab.incognito) return send({});
  send({ window, url: cut(tab.url, LONGEST_URL), title: cut(tab.title, LONGEST_TITLE) });
}

// --- The focus ---

// "No window" may mean a private window or another program. But Firefox also says it on the way from
// one window to another, and Chromium after it named a new window; so the windows are asked then.
// What no event told is asked again and again: no event might tell its end either.
const UNFOCUS_DELAY = 100; // milliseconds
const ASK_EVERY = 1000;
let askTimer = 0;
let turn = 0; // what is asked before an event and answered after it, is old
let unsure = true;

async function focusedWindow() {
  const windows = await api.windows.getAll();
  return windows.find((one) => one.focused && !one.incognito)?.id ?? NO_WINDOW;
}

function setFocus(window) {
  if (window === focused) return;
  focused = window;
  report();
}

async function askFocus() {
  const asked = turn;
  const window = await focusedWindow();
  if (asked !== turn) return;
  setFocus(window);
  unsure ||= window !== NO_WINDOW;
  if (unsure) askTimer = setTimeout(askFocus, ASK_EVERY);
}

api.windows.onFocusChanged.addListener((window) => {
  clearTimeout(askTimer);
  ++turn;
  unsure = false;
  if (window !== NO_WINDOW) setFocus(window);
  else askTimer = setTimeout(askFocus, UNFOCUS_DELAY);
});

// --- What can change the answer ---

api.tabs.onActivated.addListener(({ windowId }) => {
  if (windowId === focused) report();
});
api.tabs.onUpdated.addListener((id, change, tab) => {
  if (tab.active && tab.windowId === focused && ("url" in change || "title" in change)) report();
});
api.tabs.onAttached.addListener((id, { newWindowId }) => {
  if (newWindowId === focused) report();
});
api.tabs.onReplaced?.addListener(report);

// Listening to these is what starts the script with the browser.
api.runtime.onStartup.addListener(() => {});
api.runtime.onInstalled.addListener(() => {});

connect();
askFocus();
