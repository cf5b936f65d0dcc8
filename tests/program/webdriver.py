"""Drives the page in the real program's window, by the web engine's own WebDriver."""

import json
import shutil
import socket
import urllib.error
import urllib.request

from desktop import ORVANTA, wait_for


class Page:
    """Starts the program with its dashboard on `desktop`; the page of `web` when given."""

    def __init__(self, desktop, web=None, env=None):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        env = {"ORVANTA_AUTOMATION": "1", **(env or {})}
        if web:
            env["ORVANTA_WEB"] = web
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
