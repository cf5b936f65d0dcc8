"""Drives the page in the real program's window: looks at it by the web engine's own WebDriver,
which knows no mouse and no keyboard there, and acts on it by those of the X server."""

import json
import shutil
import socket
import time
import urllib.error
import urllib.request

from desktop import ORVANTA, pass_time, wait_for

# The first element of an XPath that heeds a click and that one in its middle would reach, and where
# that is.
FIND = """
    const found = document.evaluate(arguments[0], document, null,
                                    XPathResult.ORDERED_NODE_SNAPSHOT_TYPE, null);
    for (let i = 0; i < found.snapshotLength; i++) {
        const element = found.snapshotItem(i);
        if (element.matches(":disabled")) continue;
        // As a user does who finds a message before it.
        for (const block of ["nearest", "center"]) {
            element.scrollIntoView({block});
            const box = element.getBoundingClientRect();
            const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
            if (!element.contains(document.elementFromPoint(x, y))) continue;
            window.clicked = false;
            addEventListener("click", () => { clicked = true; }, {capture: true, once: true});
            return [x, y].map(Math.round);
        }
    }"""
# What is written in the field that has the focus; nothing when none has.
FOCUSED = """
    const field = document.activeElement;
    if (field.selectedOptions) return field.selectedOptions[0].text;
    if (field.matches("input:not([type=radio])")) return field.value;"""
# Spaces that do not break, and the marks that keep a foreign text's direction to itself.
PLAIN = str.maketrans("\u00a0\u202f", "  ", "\u2068\u2069")
TEXT = """
    const found = document.evaluate(arguments[0], document, null,
                                    XPathResult.FIRST_ORDERED_NODE_TYPE, null).singleNodeValue;
    return found && found.textContent;"""


class Page:
    """Starts the program with its dashboard on `desktop`; the page of `web` when given."""

    def __init__(self, desktop, web=None, env=None):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        env = {"ORVANTA_AUTOMATION": "1", **(env or {})}
        if web:
            env["ORVANTA_WEB"] = web
        self.desktop = desktop
        self.driver = desktop.spawn("WebKitWebDriver", f"--port={self.port}", env=env)
        wait_for(self.listening, 10, "the WebDriver listens")
        # Whatever becomes of the driver, the program does not outlive it.
        options = {"binary": shutil.which("setpriv"),
                   "args": ["--pdeathsig", "KILL", ORVANTA, "--show"]}
        session = self.request("POST", "/session", {"capabilities": {
            "alwaysMatch": {"webkitgtk:browserOptions": options}}})
        self.session = "/session/" + session["sessionId"]
        self.script("return new Promise(done => setTimeout(done, 0))")
        wait_for(lambda: self.script("return document.readyState") == "complete", 10,
                 "the page is loaded")

    def listening(self):
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.port)) == 0

    def request(self, method, path, body=None):
        request = urllib.request.Request(
            f"http://127.0.0.1:{self.port}{path}", method=method,
            data=None if body is None else json.dumps(body).encode("utf-8"))
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{path}: {error.read().decode()}") from error

    def script(self, text, *arguments):
        """The value, or the value of the promise, that the script returns."""
        wrapped = ("const done = arguments[arguments.length - 1];"
                   "Promise.resolve((function () {" + text + "}).apply(null, arguments))"
                   ".then(value => done([true, value === undefined ? null : value]),"
                   "      error => done([false, String(error)]));")
        good, value = self.request("POST", self.session + "/execute/async",
                                   {"script": wrapped, "args": list(arguments)})
        if not good:
            raise AssertionError(value)
        return value

    def ask(self, path, body=None):
        """The answer of a route, asked through the page."""
        return self.script("return window.ask(arguments[0], arguments[1])", path, body or {})

    def text(self, xpath):
        """The text of the first element, with plain spaces for those that do not break; "" for none."""
        text = self.script(TEXT, xpath) or ""
        return " ".join(text.translate(PLAIN).split())

    def wait_for_text(self, xpath, part, seconds=10):
        wait_for(lambda: part in self.text(xpath), seconds, f"{part} in {xpath}")

    def wait_for_nothing(self, xpath, seconds=10):
        wait_for(lambda: self.text(xpath) == "", seconds, f"nothing in {xpath}")

    def window(self):
        return self.desktop.windows_named("^Orvanta$")[0]

    def click(self, xpath):
        x, y = wait_for(lambda: self.script(FIND, xpath), 10, f"{xpath} to click on")
        self.desktop.input("mousemove", "--window", self.window(), str(x), str(y), "click", "1")
        wait_for(lambda: self.script("return clicked"), 10, f"{xpath} is clicked")

    def drag(self, start, end):
        """From one place of the page to another, with the button held."""
        window = self.window()
        for place, action in ((start, "mousedown"), (end, "mouseup")):
            x, y = (str(round(number)) for number in place)
            self.desktop.input("mousemove", "--window", window, x, y)
            self.desktop.input(action, "1")

    def press(self, *keys):
        self.desktop.input("key", *keys)

    def type(self, text):
        """Into the field that has the focus. Returns when it is there, as a click does: the engine
        hands on keys and clicks in two queues, and one may overtake the other."""
        wait_for(lambda: self.script(FOCUSED) is not None, 10, "a field has the focus")
        self.desktop.input("type", "--delay", "20", text)
        wait_for(lambda: self.script(FOCUSED).startswith(text), 10, f"{text} in the field")

    def choose(self, text):
        """In the list that has the focus, where letters that come slowly begin another search."""
        def chosen():
            self.desktop.input("type", "--delay", "20", text)
            pass_time(1.2)  # what comes now begins another
            return self.script(FOCUSED).startswith(text)
        wait_for(chosen, 20, f"{text} in the list")

    def choose_file(self, xpath, path):
        """Gives the file to the input: the engine shows no panel while it is driven."""
        found = self.request("POST", self.session + "/element", {"using": "xpath", "value": xpath})
        self.request("POST", f"{self.session}/element/{next(iter(found.values()))}/value",
                     {"text": path})

    def answer_panel(self, name, key, path=None):
        """Presses the key in the program's dialogue window of that name, where the path is typed before;
        returns the window."""
        panel = wait_for(lambda: self.desktop.windows_named(name), 15, name)
        pass_time(1)  # GTK takes no key before its first frame
        self.desktop.focus(int(panel[-1]))
        if path:
            self.type_path(path)
        self.press(key)
        if path:
            # It may only have closed the list of what GTK has guessed, which came meanwhile.
            def gone():
                return panel[-1] not in self.desktop.windows_named(name)
            pressed = time.time()
            wait_for(lambda: gone() or time.time() > pressed + 5, 10, f"{name} answers")
            if not gone():
                self.press(key)
                wait_for(gone, 10, f"{name} closes")
        return panel[-1]

    def type_path(self, path):
        """Into the field for it in the panel that has the focus."""
        self.press("ctrl+l")  # the field, in place of the folder's name

        def typed():
            self.press("ctrl+a")
            self.desktop.input("type", "--delay", "20", path)
            self.press("shift+End", "Delete", "ctrl+a")  # what GTK has guessed comes behind
            selected = self.desktop.run("xclip", "-selection", "primary", "-out").stdout
            return selected.decode() == path
        wait_for(typed, 20, f"{path} in the field")
