"""What leaves the machine: nothing while telemetry is off, and what is documented once it is on."""

import datetime
import json
import os
import platform
import re
import shutil
import sys
import time
from pathlib import Path

from desktop import ORVANTA, TICK, end, output_of, pass_time, wait_for
from desktop_case import DesktopCase, children
from sealed import SealedDesktop

FOLDER = Path(__file__).parent
HELPER = os.path.join(os.path.dirname(ORVANTA), "orvanta-tab")
HOUR = os.environ["QUIET_HOUR"]
DOCUMENT = FOLDER.parents[1] / "docs" / "confidentialite.md"
PATIENCE = 60  # seconds: backups are made when nobody else wants the disk
LOCAL = {"AF_UNIX", "AF_NETLINK"}
# What libsoup sends with every request.
HEADERS = ["Accept-Encoding: gzip, deflate", "Connection: Keep-Alive"]
BROTLI = "deflate, br"  # where it was built with that
SECRET = "zq7-secret"  # in every title, address and name of the use that is simulated
TODAY = datetime.date.today().isoformat()


def documented():
    """The fields of a message, by the table of the last chapter."""
    chapter = DOCUMENT.read_text("utf-8").partition("## Ce qui peut quitter l’ordinateur")[2]
    return re.findall(r"^\| `(\w+)` \|", chapter, re.MULTILINE)


class PrivacyTest(DesktopCase):
    kind = SealedDesktop

    def start(self, **env):
        self.desktop.set_setting("onboarded", "1")
        self.desktop.set_setting("min_span_seconds", "2")
        self.program = self.desktop.spawn(*self.desktop.traced(ORVANTA), env=env)
        wait_for(self.desktop.spans, 10, "the first span")

    def ask(self, route, **body):
        done = self.desktop.run(ORVANTA, "--call", route, json.dumps(body), timeout=PATIENCE)
        self.assertEqual(done.returncode, 0, (route, done.stdout))
        return json.loads(done.stdout)

    def browse(self):
        """Pages of a browser whose extension tells them, and another window."""
        desktop = self.desktop
        page = desktop.write("page", f"https://{SECRET}.example/un Page {SECRET}\n")
        browser = shutil.copy(os.path.realpath(sys.executable),
                              os.path.join(desktop.folder, "firefox-esr"))
        _, window = desktop.open_window(browser, str(FOLDER / "pretend_browser.py"), page,
                                        *desktop.traced(HELPER), seconds=30)
        desktop.newest(6 * TICK, domain=f"{SECRET}.example")
        desktop.write("page", f"https://{SECRET}.example/deux Autre page {SECRET}\n")
        _, other = desktop.open_window("xterm", "-T", f"Lettre {SECRET}")
        desktop.focus(other)
        desktop.newest(6 * TICK, domain=None)
        desktop.focus(window)
        desktop.newest(6 * TICK, url=f"https://{SECRET}.example/deux")

    def work(self):
        """What a person does with the program in an hour, but for waiting."""
        project = self.ask("projects.save", name=SECRET, keywords=SECRET)["id"]
        spans = [span["id"] for span in self.desktop.spans()]
        self.ask("events.assign", ids=spans, project_id=project)
        self.ask("rules.save", field="domain", pattern=f"{SECRET}.example", category="travail")
        self.ask("settings.set", idle_threshold=120, excluded_domains=f'["{SECRET}.fr"]')
        self.ask("goals.save", subject="project", project_id=project, period="day", bound="least",
                 seconds=60)
        now = time.time()
        self.ask("moments.add", ranges=[{"from": now - 9000, "to": now - 8000}], title=SECRET)
        self.ask("import.run", text=f"start;end;title\n{now - 9e5};{now - 8.99e5};{SECRET}\n")
        for route in ("day", "week", "recap", "period", "sheet", "suggestions", "moments.gaps",
                      "changes.list", "permissions.status", "permissions.browsers", "store.status"):
            self.ask(route)
        self.assertTrue(self.ask("search.find", text=SECRET, wait=True)["days"])
        self.ask("changes.undo", id=self.ask("changes.list")[0]["id"])
        for route in ("store.backup", "store.check", "rules.defaults"):
            self.ask(route)
        self.ask("tracker.pauseFor", length="15m")
        self.ask("tracker.resume")

    def commands(self):
        """The same by hand, each a program of its own."""
        export = os.path.join(self.desktop.folder, "export.csv")
        copy = os.path.join(self.desktop.folder, "copy.db")
        for words in (["--export", TODAY, TODAY, export], ["--search", SECRET], ["--check"],
                      ["--report", TODAY[:7]], ["--sheet", TODAY[:7]], ["--backup", copy],
                      ["--connect-browsers"], ["--pause"], ["--resume"]):
            done = self.desktop.run(*self.desktop.traced(ORVANTA, *words), timeout=PATIENCE)
            self.assertEqual(done.returncode, 0, (words, done.stderr))

    def look_at_the_dashboard(self):
        self.desktop.run(ORVANTA)
        window = wait_for(lambda: self.desktop.windows_named("^Orvanta$"), 40, "the window")[0]
        watched = [Path(os.readlink(f"/proc/{pid}/exe")).name for pid in children(self.program.pid)
                   if Path(self.desktop.traces, f"orvanta.{pid}").exists()]
        self.assertLessEqual({"orvanta", "orvanta-dashboard", "WebKitWebProcess",
                              "WebKitNetworkProcess"}, set(watched))
        self.desktop.focus(int(window))
        for key in ("2", "3", "ctrl+r", "question", "Escape"):
            self.desktop.input("key", key)
            pass_time(0.5)

    def test_the_watch_sees_what_it_looks_for(self):
        """Else it would prove nothing."""
        tried = ("import socket; socket.socket(socket.AF_INET, socket.SOCK_DGRAM)"
                 ".connect(('127.0.0.1', 9))")
        self.assertNotEqual(self.desktop.run(*self.desktop.traced(sys.executable, "-c", tried)).returncode, 0)
        self.assertEqual(self.desktop.families(), {"AF_INET"})
        self.assertEqual(len(self.desktop.addresses()), 1)
        port, _ = self.desktop.start_service()
        self.assertEqual(self.desktop.counters(), [])
        self.desktop.run(sys.executable, "-c", f"import socket; socket.create_connection(('127.0.0.1', {port}))")
        self.assertNotEqual(self.desktop.counters(), [])

    def test_nothing_leaves_while_telemetry_is_off(self):
        self.start()
        self.browse()
        self.look_at_the_dashboard()
        self.work()
        self.commands()
        self.assertEqual(self.desktop.setting("telemetry"), "0")
        end(self.program)
        calls = self.desktop.calls()
        self.assertLessEqual({"orvanta", "orvanta-tab"}, {name for name, seen in calls.items() if seen})
        self.assertEqual(self.desktop.families() - LOCAL, set(), self.desktop.addresses())
        self.assertEqual(self.desktop.counters(), [])

    def test_an_hour_leaves_nothing(self):
        """Every tick, every refresh and every hourly errand of one, by a clock that a program moves."""
        done = self.desktop.run(*self.desktop.traced(HOUR), env={"TMPDIR": "/dev/shm"}, timeout=PATIENCE)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stdout.decode(), r"^3600 seconds, 1800 ticks, [1-9]\d* spans, [1-9]\d* answers\n$")
        self.assertEqual(self.desktop.families() - LOCAL, set(), self.desktop.addresses())
        self.assertEqual(self.desktop.counters(), [])

    def messages(self, asked):
        """What the service was asked: of each request its first line, its headers, and its body."""
        if not os.path.exists(asked):
            return []
        with open(asked, encoding="utf-8") as file:
            requests = [json.loads(line) for line in file]
        return [(first, sorted(headers), body) for (first, *headers), body in
                ((head.replace(BROTLI, "deflate").split("\r\n"), body) for head, body in requests)]

    def expected(self, port, event, **more):
        """A message as documented, and not a byte besides."""
        release = platform.freedesktop_os_release().get("VERSION_ID", "0")
        values = {"install_id": self.desktop.setting("install_id"),
                  "version": self.run_orvanta("--version").split()[1],
                  "macos": ".".join((release.split(".") + ["0"])[:2]),
                  "arch": {"x86_64": "x86_64", "aarch64": "arm64"}.get(platform.machine(), "other"),
                  "event": event, **more}
        body = json.dumps({key: values[key] for key in documented() if key in values},
                          separators=(",", ":"), ensure_ascii=False)
        return ("POST /api/telemetry HTTP/1.1", sorted([
            f"Host: 127.0.0.1:{port}", "Content-Type: application/json", *HEADERS,
            f"Content-Length: {len(body.encode())}"]), body)

    def feed(self, port):
        return ("GET /appcast.json HTTP/1.1",
                sorted([f"Host: 127.0.0.1:{port}", "Cache-Control: no-cache", *HEADERS]), "")

    def test_with_telemetry_on_what_is_documented_leaves_and_nothing_else(self):
        port, asked = self.desktop.start_service()
        self.start(ORVANTA_SERVICE_URL=f"http://127.0.0.1:{port}")
        self.browse()

        def told(count):
            wait_for(lambda: len(self.messages(asked)) >= count, 10, 
                     lambda: f"{count} requests, but {self.messages(asked)}, {output_of(self.program)}")
            return sorted(self.messages(asked))
        self.ask("update.check")
        self.assertEqual(told(1), [self.feed(port)], "the user may ask, and tells nothing")
        self.ask("telemetry.set", enabled=True)
        self.assertRegex(self.desktop.setting("install_id"), r"^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        usual = [self.feed(port), self.feed(port), self.expected(port, "first_launch"),
                 self.expected(port, "heartbeat")]
        self.assertEqual(told(4), sorted(usual))
        self.work()
        # A statement that fails is told once a day, in the words of the database.
        self.desktop.change("CREATE TRIGGER refuse BEFORE INSERT ON events BEGIN"
                            " SELECT RAISE(ABORT, 'pas de place'); END")
        for name in (f"Un {SECRET}", f"Deux {SECRET}"):
            self.desktop.focus(self.desktop.open_window("xterm", "-T", name)[1])
            pass_time(2 * TICK)
        error = self.expected(port, "error", error="sql: pas de place")
        self.assertEqual(told(5), sorted([*usual, error]))

        self.ask("telemetry.set", enabled=False)
        self.assertEqual(self.desktop.setting("install_id"), "")
        self.desktop.focus(self.desktop.open_window("xterm", "-T", f"Trois {SECRET}")[1])
        pass_time(2 * TICK)
        self.assertEqual(len(self.messages(asked)), 5, "nothing more")
        end(self.program)
        self.assertNotIn(SECRET, Path(asked).read_text("utf-8"))
        self.assertEqual({re.search(r"sin_port=htons\((\d+)\), sin_addr=inet_addr\(\"(.*?)\"\)", call).groups()
                          for call in self.desktop.addresses()}, {(str(port), "127.0.0.1")})
