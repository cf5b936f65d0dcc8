"""Real browsers: what the file says of their tabs, and what it does not say of private windows."""

import glob
import json
import os
import shutil
import signal
import time
from pathlib import Path

from browsers import HELPER, Chromium, Firefox, Pages
from desktop import ORVANTA, TICK, end, output_of, pass_time, wait_for
from desktop_case import DesktopCase

SECRET = "jardin"


class BrowserTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.pages = Pages(self)
        self.desktop.set_setting("min_span_seconds", "2")
        self.desktop.set_setting("idle_threshold", "100000")

    def sockets(self):
        return glob.glob(os.path.join(self.desktop.env["XDG_RUNTIME_DIR"], "orvanta", "tab-*"))

    def expect_page(self, name, since, title=None):
        """The newest span becomes one of this page, and begins within a tick of `since`."""
        span = self.desktop.newest(6 * TICK, domain=f"{name}.localhost", url=self.pages.url(name))
        self.assertLess(abs(span["start"] - since), 2 * TICK)
        self.assertIn(span["title"], (f"Page {name}", title, None))

    def expect_nothing(self, since):
        """The newest span becomes one of the browser without a page."""
        span = self.desktop.newest(6 * TICK, domain=None, url=None, title=None)
        self.assertLess(abs(span["start"] - since), 2 * TICK)

    def assert_nowhere(self, word):
        """Not in the database, not in its journal."""
        files = list(Path(self.desktop.database()).parent.iterdir())
        self.assertGreater(len(files), 1)
        for path in files:
            self.assertNotIn(word.encode(), path.read_bytes(), path)

    def connect(self, browser):
        """As the dashboard does it; the browser is not open yet."""
        steps = self.state_of(browser)["steps"]
        self.assertGreater(len(steps), 2)
        self.assertFalse(steps[-1]["done"])
        self.assertEqual(self.desktop.call("permissions.connectBrowser",
                                           json.dumps({"bundle": browser.bundle})),
                         (0, {"ok": True, "error": None}))

    def test_a_browser_that_is_not_open(self):
        asked = time.time()
        status, answer = self.desktop.call("permissions.testBrowser",
                                           '{"bundle": "com.vivaldi.Vivaldi"}')
        self.assertEqual((status, answer["ok"]), (1, False))
        self.assertIn("Ouvrez Vivaldi, puis recommencez.", answer["error"])
        self.assertLess(time.time() - asked, 5, "nothing is waited for")

    def state_of(self, browser):
        states = self.desktop.call("permissions.browsers")[1]
        mine = [state for state in states if state["bundle"] == browser.bundle]
        self.assertEqual(len(mine), 1, states)
        return mine[0]

    def follow(self, browser):
        desktop, pages = self.desktop, self.pages
        self.connect(browser)
        first = browser.start(pages.url("un"), pages.url("deux"))
        wait_for(lambda: browser.tab() == (0, f"{pages.url('un')}\nPage un", ""), 20,
                 "the extension tells the first page")
        # Every step is ticked; another process of the browser is no other browser.
        other = shutil.copy("/bin/sleep", os.path.join(desktop.folder, browser.command()[0]))
        desktop.spawn(other, "1000")
        state = self.state_of(browser)
        self.assertEqual((state["running"], state["connected"]), (True, True))
        self.assertEqual({step["done"] for step in state["steps"]}, {True})
        self.assertEqual([oct(os.stat(path).st_mode & 0o777) for path in self.sockets()], ["0o600"])
        started = time.time()
        orvanta = desktop.start_orvanta()
        self.expect_page("un", started)

        # What the dashboard is told, and its own test.
        self.assertEqual(desktop.call("permissions.testBrowser", json.dumps({"bundle": browser.bundle})),
                         (0, {"ok": True, "error": None}))
        permissions = desktop.call("permissions.status")[1]
        self.assertEqual(permissions["browsers"], {browser.bundle: "ok"})
        self.assertIn({"bundle": browser.bundle, "name": browser.name},
                      permissions["browsers_running"])

        # Another tab, whose title changes.
        switched = time.time()
        browser.keys("ctrl+Tab")
        wait_for(lambda: browser.tab()[1].endswith("\nPage deux"), 2, "the other tab")
        browser.keys("t")
        wait_for(lambda: browser.tab()[1].endswith("\nTitre deux"), 2, "the other title")
        self.expect_page("deux", switched, "Titre deux")
        pass_time(TICK)

        # A private window; the span before it has the title that was seen longest.
        private = browser.open_window(browser.private_option, pages.url(SECRET))
        self.expect_nothing(time.time())
        self.assertEqual(desktop.spans()[-2]["title"], "Titre deux")
        self.assertEqual(browser.tab(), (0, "", ""))

        # Another window, another program, and back to the private window.
        browser.open_window("--new-window", pages.url("trois"))
        self.expect_page("trois", time.time())
        _, terminal = desktop.open_window("xterm", "-e", "sleep", "1000")
        desktop.focus(terminal)
        pass_time(TICK)
        self.expect_nothing(desktop.focus(private))

        # The host dies: the extension starts another.
        desktop.focus(first)
        before = self.sockets()
        os.kill(int(before[0].rpartition("-")[2]), signal.SIGKILL)
        wait_for(lambda: self.sockets() and self.sockets() != before, 5, "another host")
        self.assertEqual(len(self.sockets()), 1)
        killed = time.time()
        self.expect_page("deux", killed, "Titre deux")

        # The browser ends, its host with it; then it comes back.
        browser.stop()
        wait_for(lambda: not self.sockets(), 5, "the host ends with its browser")
        browser.start(pages.url("quatre"))
        desktop.newest(20, url=pages.url("quatre"))
        self.assert_nowhere(SECRET)
        end(orvanta)
        self.assert_nowhere(SECRET)

    def test_firefox_that_keeps_no_history(self):
        """All its windows are private, and no title says so."""
        browser = Firefox(self.desktop, extension=False)
        with open(os.path.join(browser.profile, "user.js"), "a", encoding="utf-8") as file:
            file.write('user_pref("browser.privatebrowsing.autostart", true);\n')
        window = browser.start(self.pages.url(SECRET))
        wait_for(lambda: self.desktop.title_of(window) == f"Page {SECRET} — Mozilla Firefox", 20,
                 lambda: self.desktop.title_of(window))
        orvanta = self.desktop.start_orvanta()
        self.desktop.newest(6 * TICK, bundle="firefox-esr", title=None)
        pass_time(3 * TICK)
        end(orvanta)
        self.assert_nowhere(SECRET)

    # Without the extension: what screen readers are told.

    def start_accessibility(self):
        self.assertEqual(self.desktop.run(ORVANTA, "--accessibility").returncode, 1)
        # In a memory of its own: the user's settings are not the test's to change.
        self.desktop.env.pop("NO_AT_BRIDGE")
        self.desktop.env.pop("GTK_A11Y")
        service = self.desktop.spawn("/usr/libexec/at-spi-bus-launcher",
                                     env={"GSETTINGS_BACKEND": "memory"})
        self.addCleanup(service.wait, 10)
        self.addCleanup(service.terminate)  # in order: it has a message bus of its own to end
        bus = self.desktop.session.connect()
        wait_for(lambda: bus.name_has_owner("org.a11y.Bus"), 5, "the accessibility service")

    def test_an_accessibility_service_that_is_slow(self):
        """It says nothing of accessibility being off: the program asks again after a minute."""
        mock, bus = self.desktop.mock(self.desktop.session, "org.a11y.Bus", "org.a11y.Bus",
                                      "/org/a11y/bus", "org.a11y.Bus")
        self.addCleanup(bus.close)
        mock.send_signal(signal.SIGSTOP)
        asked = self.desktop.run(HELPER, "--tab", "firefox", str(os.getpid()))
        self.assertEqual(asked.returncode, 124)
        self.assertEqual(asked.stderr.decode(), "l’accessibilité ne répond pas\n")

    def switch_on(self):
        done = self.desktop.run(ORVANTA, "--accessibility")
        self.assertEqual(done.returncode, 0, done.stderr)

    def follow_accessible(self, browser):
        desktop, pages = self.desktop, self.pages
        started = time.time()
        orvanta = desktop.start_orvanta()
        self.expect_page("un", started)
        switched = time.time()
        browser.keys("ctrl+Tab")
        self.expect_page("deux", switched)
        browser.open_window(browser.private_option, pages.url(SECRET))
        self.expect_nothing(time.time())
        end(orvanta)
        self.assert_nowhere(SECRET)

    def test_chromium_accessible_from_the_start(self):
        self.start_accessibility()
        browser = Chromium(self.desktop, extension=False)
        self.switch_on()
        browser.start(self.pages.url("un"), self.pages.url("deux"))
        self.follow_accessible(browser)

    def test_firefox_made_accessible_while_it_runs(self):
        self.start_accessibility()
        browser = Firefox(self.desktop, extension=False)
        browser.start(self.pages.url("un"), self.pages.url("deux"))
        status, tab, error = browser.tab()
        self.assertEqual((status, tab), (3, ""))
        self.assertIn("l’accessibilité est désactivée", error)
        test = self.desktop.spawn(HELPER, "--test", browser.bundle)
        self.switch_on()
        self.assertEqual(test.wait(timeout=15), 0, output_of(test))
        wait_for(lambda: browser.tab()[1] == f"{self.pages.url('un')}\nPage un", 5, "the first page")
        self.follow_accessible(browser)

    def test_firefox_is_led_to_the_extension(self):
        """What the steps' buttons open, and the ticks that come by themselves."""
        browser = Firefox(self.desktop, extension=False)
        browser.start(self.pages.url("un"))
        self.desktop.call("permissions.connectBrowser", json.dumps({"bundle": browser.bundle}))

        def ticks():
            return [step["done"] for step in self.state_of(browser)["steps"]]

        def titles():
            return [self.desktop.title_of(window) for window in browser.windows()]
        self.assertEqual(ticks()[0], True)
        wait_for(lambda: ticks() == [True, True, False], 10, "the setting is seen in the profile")
        for step, title in ((1, "Advanced Preferences"), (2, "orvanta.xpi")):
            self.assertEqual(self.desktop.call("permissions.openBrowserPage", json.dumps(
                {"bundle": browser.bundle, "step": step})), (0, {"ok": True, "error": None}))
            if step == 1:
                wait_for(lambda: any(title in one for one in titles()), 15, titles)
        pass_time(2)  # Firefox takes no key while it asks for less than a moment
        browser.keys("alt+a")  # "Add"
        wait_for(lambda: self.state_of(browser)["connected"], 15, "the extension connects")
        self.assertEqual(ticks(), [True, True, True])

    # With it.

    def test_chromium(self):
        self.follow(Chromium(self.desktop))

    def test_firefox(self):
        self.follow(Firefox(self.desktop))
