"""The dashboard's window and the bridge between its page and the program, for real."""

import json
import os
import select
import signal
import socket

import dbus

from desktop import MOCK, ORVANTA, end, kill, pass_time, wait_for
from desktop_case import DesktopCase, children
from tray_host import TrayHost
from webdriver import Page

WEB = os.path.join(os.path.dirname(os.path.abspath(__file__)), "page")


def memory_kib(pid):
    """Its proportional share, which depends on what else runs, and what it alone has written."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        fields = dict(line.split()[:2] for line in file.readlines()[1:])
    return int(fields["Pss:"]), int(fields["Private_Dirty:"])


class WindowTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.desktop.env.update(ORVANTA_WEB=WEB, XDG_STATE_HOME=self.desktop.make_folder("state"),
                                XDG_CACHE_HOME=self.desktop.make_folder("cache"))
        self.desktop.set_setting("onboarded", "1")

    def windows(self):
        return self.desktop.windows_named("^Orvanta$")

    def dashboards(self):
        return children(self.program.pid, "orvanta-dashboard")

    def show(self):
        """By a second start; returns the dashboard and its window."""
        self.assertEqual(self.desktop.run(ORVANTA).returncode, 0)
        window = wait_for(self.windows, 20, "the window is there")[0]
        dashboard, = self.dashboards()
        return dashboard, window

    def wait_for_no_window(self):
        wait_for(lambda: not self.windows(), 10, "no window")

    def close_window(self):
        self.desktop.focus(int(self.windows()[0]))
        self.desktop.input("key", "ctrl+w")
        self.wait_for_no_window()

    def test_envelopes_and_answers(self):
        page = Page(self.desktop)
        self.assertEqual(page.script("return getComputedStyle(document.body).padding"), "32px")
        page.script("""
            post({id: "7", path: "status"}); post({id: 1.5, path: "status"});
            post({path: "status"}); post({id: 2}); post({id: 3, path: 4});
            post("{}"); post(JSON.stringify({id: 4, path: "status"})); post(null); post([5]);
            post({id: 10, path: "projects.list", body: null});
            post({id: 11, path: "projects.list", body: [1]});
            post({id: 12.0, path: "nulle.part"});
            post({id: -13, path: "projects.save", body: {name: "Thèse “1” 🦊 </script>"}});
            post({id: 14, path: "projects.save", body: {name: "B", archived: 1e300, id: 1}});
            post({id: 15, path: "\\ud800", body: {"\\udc00": "\\u2028\\0"}});
            post({id: 9007199254740991, path: "projects.list"});""")
        wait_for(lambda: page.script("return answers.length > 6"), 10, "answers")
        *answers, (number, projects) = page.script("return answers")
        self.assertEqual(answers, [
            [10, []], [11, []], [12, {"error": "route inconnue : nulle.part"}],
            [-13, {"ok": True, "id": 1}], [14, {"error": "nombre hors limites : archived"}],
            [15, {"error": "route inconnue : \ufffd"}]])
        self.assertEqual((number, projects[0]["name"]),
                         (9007199254740991, "Thèse “1” 🦊 </script>"))

        # A long day, and many questions at once.
        numbers = page.script("""
            const asked = [...Array(200).keys()];
            return Promise.all(asked.map(i => ask("day", {date: "2026-01-0" + (i % 9 + 1)})))
                .then(days => days.map(day => day.date.slice(-1)));""")
        self.assertEqual(numbers, [str(i % 9 + 1) for i in range(200)])
        self.assertEqual(page.script("""
            const rule = {field: "app", pattern: "x".repeat(10_000_000)};
            return ask("rules.save", rule).then(() => ask("rules.list"))
                .then(rules => rules[0].pattern.length)"""), 10_000_000)

    def test_the_page_reaches_nothing_else(self):
        page = Page(self.desktop)
        self.assertIsNone(page.script("return window.inlineRan"))
        for attempt in ("fetch('https://example.com/')", "fetch('page.css')",
                        "new Promise((done, fail) => { const image = new Image();"
                        "image.onload = done; image.onerror = fail; image.src = "
                        "'http://127.0.0.1:%d/x.png'; })" % page.port,
                        "new Promise((done, fail) => { const frame = document.createElement("
                        "'script'); frame.onload = done; frame.onerror = fail; frame.src = "
                        "'orvanta://app/../webdriver.py'; document.head.append(frame); })",
                        "import('data:text/javascript,export default 1')",
                        "new Promise(done => done(new Function('return 1')()))"):
            with self.subTest(attempt), self.assertRaises(AssertionError):
                page.script("return " + attempt)
        self.assertIsNone(page.script("return window.open('https://example.com/')"))
        page.script("document.getElementById('away').click(); location = 'https://example.com/';"
                    "location = 'file:///etc/passwd'; location = 'orvanta://other/index.html'")
        pass_time(1)
        self.assertEqual(page.script("return location.href"), "orvanta://app/index.html")
        self.assertEqual(len(page.request("GET", page.session + "/window/handles")), 1)

    def test_a_page_that_is_missing(self):
        page = Page(self.desktop, web=self.desktop.make_folder("nothing"))
        self.assertIn("La page d’Orvanta est introuvable",
                      page.script("return document.body.textContent"))

    def test_routes_that_act_on_the_desktop(self):
        # A folder from the days before UTF-8.
        documents = os.path.join(os.fsencode(self.desktop.env["HOME"]), b"caf\xe9")
        os.mkdir(documents)
        with open(os.path.join(self.desktop.env["XDG_CONFIG_HOME"], "user-dirs.dirs"), "wb") as file:
            file.write(b'XDG_DOCUMENTS_DIR="' + documents + b'"\n')
        page = Page(self.desktop)
        self.assertEqual(page.ask("status")["accessibility"], True)
        self.assertEqual(page.ask("revealData")["ok"], True)
        for route in ("tracker.pause", "tracker.resume", "openURL",
                      "permissions.openAutomation", "permissions.requestAccessibility"):
            self.assertEqual(page.ask(route), {"ok": True}, route)

        # The save panel: cancelled, confirmed with the suggested name, with one without an ending.
        suggested = "lumaplan_2026-01-01_2026-01-01.csv"
        for name, key, files in ((None, "Escape", []), (None, "Return", [suggested]),
                                 ("toto", "Return", [suggested, "toto.csv"])):
            page.script("window.exported = undefined; ask('export', {from: '2026-01-01'})"
                        ".then(answer => { window.exported = answer; })")
            page.answer_panel("Exporter", key, name)
            answer = wait_for(lambda: page.script("return window.exported"), 15, "an answer")
            self.assertEqual(answer, {"ok": key == "Return"})
            self.assertEqual(sorted(map(os.fsdecode, os.listdir(documents))), files)
        # A name that the panel has not asked about is not written over.
        page.script("ask('export')")
        first = page.answer_panel("Exporter", "Return", "toto")
        wait_for(lambda: first not in self.desktop.windows_named("Exporter"), 10, "it has gone")
        page.answer_panel("Exporter", "Escape")
        page.script("setTimeout(() => ask('quit'), 300)")
        self.wait_for_no_window()

    def test_a_dashboard_that_is_gone_is_started_afresh(self):
        self.desktop.env["ORVANTA_LINGER_SECONDS"] = "2"
        self.program = self.desktop.start_orvanta()
        before, own_before = memory_kib(self.program.pid)
        self.assertEqual(self.dashboards(), [])
        first, window = self.show()
        # By the second half old desktops find its desktop file.
        self.assertIn('"fr.quellvane.orvanta"\n',
                      self.desktop.run("xprop", "-id", window, "WM_CLASS").stdout.decode())

        os.kill(first, signal.SIGKILL)
        self.wait_for_no_window()
        second, _ = self.show()
        self.assertNotEqual(first, second)

        os.kill(second, signal.SIGSTOP)  # it is slow, perhaps with a form half filled in
        self.desktop.run(ORVANTA)
        pass_time(5)
        os.kill(second, signal.SIGCONT)
        pass_time(1)
        self.assertEqual(self.dashboards(), [second])

        os.kill(second, signal.SIGSTOP)  # it hangs
        self.desktop.run(ORVANTA)
        wait_for(lambda: self.dashboards() not in ([], [second]), 40, "another takes its place")
        wait_for(self.windows, 20, "the window is there")

        engine = wait_for(lambda: children(self.program.pid, "WebKitWebProcess"), 10, "an engine")
        pass_time(2)  # it is up, not on its way
        os.kill(engine[0], signal.SIGKILL)
        wait_for(lambda: children(self.program.pid, "WebKitWebProcess") not in ([], engine), 10,
                 "the page is loaded again")

        # Hidden, it keeps the page for a while, then gives its memory back.
        third, = self.dashboards()
        self.close_window()
        self.assertEqual(self.show()[0], third)
        self.close_window()
        wait_for(lambda: not self.dashboards(), 15, "the dashboard has ended")
        after, own_after = memory_kib(self.program.pid)
        print(f"\nproportional memory: {before} KiB before the dashboard, {after} KiB after it; "
              f"its own: {own_before} and {own_after} KiB")
        if "asan" not in ORVANTA:  # its bookkeeping grows
            self.assertLess(own_after, own_before * 1.5)
        end(self.program)

    def test_the_first_answers_come_with_the_page_once(self):
        self.desktop.call("projects.save", json.dumps({"name": "</script>\u2028'\"\\"}))
        page = Page(self.desktop)
        first = {given["path"]: given for given in page.script("return window.__first")}
        self.assertEqual(list(first), ["routes.list", "page.marks", "status", "store.status",
                                       "projects.list", "day", "goals.history"])
        for path in ("routes.list", "projects.list"):
            self.assertEqual(first[path]["answer"], page.ask(path), path)
        day = first["day"]
        self.assertEqual(day["answer"]["date"], page.ask("day", day["body"])["date"])
        page.script("location.reload()")
        wait_for(lambda: page.script("return window.__first === undefined && !!window.ask"), 10,
                 "the page is loaded again, and asks for what is true by now")

    def test_it_is_made_ready_when_the_menu_opens(self):
        self.desktop.env["ORVANTA_LINGER_SECONDS"] = "3"
        host = TrayHost(self)
        self.program = self.desktop.start_orvanta()
        host.wait_for_item()
        host.open_menu()
        engine = host.wait_for(lambda: children(self.program.pid, "WebKitWebProcess"), 10,
                               "an engine")
        self.assertEqual(self.windows(), [])
        wait_for(lambda: not self.dashboards(), 15, "nobody wanted it")
        host.open_menu()
        second = host.wait_for(lambda: children(self.program.pid, "WebKitWebProcess"), 10,
                               "another engine")
        self.assertNotEqual(engine, second)
        self.show()
        self.assertEqual(children(self.program.pid, "WebKitWebProcess"), second)
        pass_time(4)
        self.assertTrue(self.windows(), "it is wanted now")
        end(self.program)

    def geometry(self):
        text = self.desktop.run("xdotool", "getwindowgeometry", "--shell", self.windows()[0])
        values = dict(line.split("=") for line in text.stdout.decode().split())
        return int(values["WIDTH"]), int(values["HEIGHT"])

    def resize(self, window, width, height):
        self.desktop.input("windowsize", window, str(width), str(height))
        wait_for(lambda: self.geometry() == (width, height), 10, "the new size")

    def start_dashboard(self):
        """With the real page, but without the program; returns the program's end of the socket."""
        del self.desktop.env["ORVANTA_WEB"]
        ours, theirs = socket.socketpair()
        self.addCleanup(ours.close)
        with theirs:
            self.desktop.spawn(ORVANTA + "-dashboard", f"--socket={theirs.fileno()}",
                               fds=(theirs.fileno(),))
        return ours

    def test_the_day_of_a_note_is_shown(self):
        ours = self.start_dashboard()
        asked = bytearray()

        def is_asked(day):
            while select.select([ours], [], [], 0)[0]:
                asked.extend(ours.recv(1 << 16))
            return b'"date":"%b"' % day.encode() in asked
        ours.sendall(b'show ""\nday "2026-01-15"\n')
        wait_for(lambda: is_asked("2026-01-15"), 20, "as soon as the page is there")
        ours.sendall(b'day "2026-02-28"\n')
        wait_for(lambda: is_asked("2026-02-28"), 10, "and in the page that is there")

    def test_answers_that_came_late_are_not_shown_later(self):
        ours = self.start_dashboard()

        def is_status_asked():
            ready, _, _ = select.select([ours], [], [], 0)
            return ready and b'"status"' in ours.recv(1 << 16)
        wait_for(is_status_asked, 20, "the page asks")
        pass_time(2, is_status_asked)  # it is loaded, and hidden it asks nothing more
        late = [{"path": path, "body": {}, "answer": []} for path in ("routes.list", "status")]
        ours.sendall(f"first {json.dumps(late)}\nreload\n".encode())
        wait_for(is_status_asked, 10, "the page that is loaded next asks, too")

    def test_the_size_is_remembered(self):
        previous = os.umask(0)
        self.addCleanup(os.umask, previous)
        self.program = self.desktop.start_orvanta()
        dashboard, window = self.show()
        self.resize(window, 900, 600)
        self.close_window()
        os.kill(dashboard, signal.SIGKILL)
        wait_for(lambda: not self.dashboards(), 10, "the dashboard has ended")
        _, window = self.show()
        self.assertEqual(self.geometry(), (900, 600))
        self.desktop.input("windowsize", window, "300", "200")
        pass_time(1)
        self.assertEqual(self.geometry(), (860, 560))

        # The program may end with the window open.
        self.resize(window, 920, 610)
        end(self.program)
        self.wait_for_no_window()
        self.program = self.desktop.start_orvanta()
        self.show()
        self.assertEqual(self.geometry(), (920, 610))

        state = os.path.join(self.desktop.env["XDG_STATE_HOME"], "orvanta")
        self.assertLessEqual({"window.ini", "page"}, set(os.listdir(state)))
        for own in (state, os.path.join(self.desktop.env["XDG_CACHE_HOME"], "orvanta")):
            for folder, folders, files in os.walk(own):
                for path in [folder] + [os.path.join(folder, name) for name in folders + files]:
                    self.assertEqual(os.stat(path).st_mode & 0o077, 0, path)

    def test_the_window_fits_the_monitor(self):
        """A pixel of its size is two of the screen's, of which there are 1024 by 768."""
        self.program = self.desktop.start_orvanta(env={"GDK_SCALE": "2"})
        _, window = self.show()
        self.desktop.input("windowsize", window, "300", "200")
        pass_time(1)
        width, height = self.geometry()
        self.assertLessEqual(width, 1024)
        self.assertLessEqual(height, 700)

    def test_the_page_is_zoomed_by_keys_and_stays_so(self):
        page = Page(self.desktop)
        self.desktop.focus(int(self.windows()[0]))
        size = lambda: page.script("return [innerWidth, matchMedia('(max-width: 700px)').matches]")
        width, small = size()
        self.assertFalse(small)
        for _ in range(5):
            self.desktop.input("key", "ctrl+plus")
        wait_for(lambda: size() == [round(width / 2), True], 5, size)
        self.desktop.input("key", "ctrl+minus")
        wait_for(lambda: size()[0] == round(width / 1.75), 5, size)
        pass_time(1)
        kill(page.driver)
        self.wait_for_no_window()
        page = Page(self.desktop)
        wait_for(lambda: size()[0] == round(width / 1.75), 5, size)
        self.desktop.focus(int(self.windows()[0]))
        self.desktop.run("setxkbmap", "fr")
        self.desktop.input("key", "ctrl+agrave")
        wait_for(lambda: size() == [width, False], 5, size)

    def test_high_contrast_of_the_desktop_is_marked_in_the_page(self):
        settings = "org.freedesktop.portal.Settings"
        _, bus = self.desktop.mock(self.desktop.session, "org.freedesktop.portal.Desktop",
                                   "org.freedesktop.portal.Desktop",
                                   "/org/freedesktop/portal/desktop", settings)
        self.addCleanup(bus.close)
        portal = bus.get_object("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop")
        portal.AddMethod(settings, "Read", "ss", "v",
                         "ret = dbus.UInt32(args[1] == 'contrast', variant_level=1)",
                         dbus_interface=MOCK)
        page = Page(self.desktop)
        # What no portal says.
        portal.EmitSignal(settings, "SettingChanged", "uuu", [1, 2, 3], dbus_interface=MOCK)
        mark = lambda: page.script("return document.documentElement.dataset.contrast ?? ''")
        wait_for(lambda: mark() == "more", 5, mark)
        page.script("location.reload()")
        wait_for(lambda: mark() == "more", 5, mark)
        for value, wanted in ((0, ""), (1, "more")):
            portal.EmitSignal(settings, "SettingChanged", "ssv",
                              ["org.freedesktop.appearance", "contrast", dbus.UInt32(value)],
                              dbus_interface=MOCK)
            wait_for(lambda: mark() == wanted, 5, mark)
