"""Real windows on a real X server: what the file says of them."""

import configparser
import os
import time
import unittest

from desktop import TICK, Desktop, cpu_seconds, end, pass_time, wait_for
from wayland_desktop import ProbeWatch, show

XTERM_TITLE = "Été — à la plage"
FILE_NAME = "Déjà vu, naïveté.txt"
SWITCH = 10 + 2 * TICK  # min_span_seconds and the ticks around it
OPEN_TEXT = ["xterm", "-T", XTERM_TITLE, "-e", "sleep", "1000"]


def desktop_name(bundle):
    """The application's name in French, as its desktop file has it."""
    entries = configparser.ConfigParser(interpolation=None, strict=False)
    entries.optionxform = str
    entries.read(f"/usr/share/applications/{bundle}.desktop", encoding="utf-8")
    entry = entries["Desktop Entry"]
    return entry.get("Name[fr]", entry["Name"])


class X11Test(unittest.TestCase):
    def setUp(self):
        self.desktop = Desktop()
        self.addCleanup(self.desktop.stop)

    def wait_for_spans(self, count, seconds, meanwhile=None):
        """The newest span, when there are so many."""
        wait_for(lambda: len(self.desktop.spans()) >= count, seconds, f"span {count}", meanwhile)
        spans = self.desktop.spans()
        self.assertEqual(len(spans), count, [tuple(span) for span in spans])
        return spans[-1]

    def assert_shows(self, span, bundle, title):
        self.assertEqual((span["app"], span["bundle"], span["title"], span["idle"]),
                         (desktop_name(bundle), bundle, title, 0))

    def test_two_windows_a_glance_a_break_and_the_end(self):
        desktop = self.desktop
        desktop.set_setting("idle_threshold", "6")
        path = os.path.join(desktop.env["HOME"], FILE_NAME)
        with open(path, "w", encoding="utf-8") as file:
            file.write("à\n")
        editor, mousepad = desktop.open_window("mousepad", path)
        terminal, xterm = desktop.open_window(*OPEN_TEXT)
        wait_for(lambda: FILE_NAME in desktop.run("xdotool", "getwindowname", str(mousepad))
                 .stdout.decode(), 10, "the file is loaded")
        title = desktop.run("xdotool", "getwindowname", str(mousepad)).stdout.decode().strip()

        desktop.focus(xterm)
        desktop.touch()
        started = time.time()
        orvanta = desktop.start_orvanta()
        self.assert_shows(self.wait_for_spans(1, 0), "debian-xterm", XTERM_TITLE)
        self.assertAlmostEqual(desktop.spans()[0]["start"], started, delta=TICK)

        switched = desktop.focus(mousepad)
        span = self.wait_for_spans(2, SWITCH, desktop.touch)
        self.assert_shows(span, "org.xfce.mousepad", title)
        self.assertAlmostEqual(span["start"], switched, delta=TICK)

        desktop.focus(xterm)
        pass_time(4, desktop.touch)
        desktop.focus(mousepad)
        pass_time(SWITCH, desktop.touch)
        self.assertEqual(len(desktop.spans()), 2, "a glance is no span")

        last_input = desktop.touch()
        span = self.wait_for_spans(3, 6 + 2 * TICK)
        self.assertEqual((span["app"], span["idle"], span["title"]), ("Inactif", 1, None))
        self.assertAlmostEqual(span["start"], last_input, delta=TICK)

        pass_time(last_input + 10 - time.time())
        back = desktop.touch()
        span = self.wait_for_spans(4, 2 * TICK, desktop.touch)
        self.assert_shows(span, "org.xfce.mousepad", title)
        self.assertAlmostEqual(span["start"], back, delta=TICK)

        for program in (editor, terminal):
            program.terminate()
        wait_for(lambda: not desktop.root_windows("_NET_CLIENT_LIST"), 5, "windows close")
        closed = time.time()
        span = self.wait_for_spans(5, SWITCH, desktop.touch)
        self.assertEqual((span["app"], span["bundle"], span["title"], span["idle"]),
                         ("Inconnu", None, None, 0))
        self.assertAlmostEqual(span["start"], closed, delta=TICK)

        status, ended = end(orvanta)
        self.assertEqual(status, 0)
        spans = desktop.spans()
        self.assertEqual(len(spans), 5)
        self.assertAlmostEqual(spans[-1]["end"], ended, delta=TICK)
        for span, following in zip(spans, spans[1:]):
            self.assertLessEqual(span["start"], span["end"])
            self.assertEqual(span["end"], following["start"])

    def test_names_of_every_encoding(self):
        desktop = self.desktop
        applications = os.path.join(desktop.env["XDG_DATA_HOME"], "applications")
        os.mkdir(applications)
        with open(os.path.join(applications, "notes.desktop"), "w", encoding="utf-8") as file:
            file.write("[Desktop Entry]\nType=Application\nExec=xterm\nStartupWMClass=Notebook\n"
                       "Name=Notebook\nName[fr]=Carnet à spirale\n")
        _, window = desktop.open_window("xterm", "-class", "Notebook", *OPEN_TEXT[1:])

        def set_name(name, form, text):
            xprop = ["xprop", "-id", str(window)]
            done = desktop.run(*xprop, "-f", name, form, "-set", name, text)
            self.assertEqual(done.returncode, 0, done.stderr)
            return desktop.run(*xprop, name).stdout

        # A title that replaces another counts once it was seen longer.
        self.assertIn(b"WM_NAME(STRING)", set_name("WM_NAME", "8s", "Façade".encode("latin-1")))
        orvanta = desktop.start_orvanta()
        span = desktop.spans()[0]
        self.assertEqual((span["app"], span["bundle"], span["title"]),
                         ("Carnet à spirale", "notes", "Façade"))
        self.assertIn(b"(COMPOUND_TEXT)", set_name("WM_NAME", "8t", "Ελλάδα, été"))
        pass_time(3 * TICK, desktop.touch)
        self.assertEqual(end(orvanta)[0], 0)
        self.assertEqual([span["title"] for span in desktop.spans()], ["Ελλάδα, été"])

        hostile = b"<b>\xff&amp;%s\xe9 \xc3\xa9</b>" * 160
        self.assertGreater(len(hostile), 3000)
        set_name("_NET_WM_NAME", "8u", hostile)
        orvanta = desktop.start_orvanta()
        self.assertEqual(end(orvanta)[0], 0)
        self.assertEqual(desktop.spans()[-1]["title"], hostile.decode("utf-8", "replace"))

    def test_the_server_goes_away(self):
        desktop = self.desktop
        desktop.open_window(*OPEN_TEXT)
        orvanta = desktop.start_orvanta()
        self.assert_shows(desktop.spans()[0], "debian-xterm", XTERM_TITLE)
        desktop.x_server.kill()
        desktop.x_server.wait()
        lost = time.time()

        pass_time(0.5)  # it notices
        before = cpu_seconds(orvanta.pid)
        pass_time(3)
        self.assertLess(cpu_seconds(orvanta.pid) - before, 0.2)
        self.assertIsNone(orvanta.poll())
        span = self.wait_for_spans(2, SWITCH)
        self.assertEqual((span["app"], span["title"]), ("Inconnu", None))
        self.assertAlmostEqual(span["start"], lost, delta=TICK)

        status, ended = end(orvanta)
        self.assertEqual(status, 0)
        self.assertAlmostEqual(desktop.spans()[-1]["end"], ended, delta=TICK)

    def test_what_the_probes_cost(self):
        desktop = self.desktop
        _, xterm = desktop.open_window(*OPEN_TEXT)
        _, calculator = desktop.open_window("galculator")
        watch = ProbeWatch(desktop)
        desktop.focus(xterm)
        watch.wait_for(title=XTERM_TITLE)
        switched = desktop.focus(calculator)
        seen = watch.wait_for(title="galculator")
        summary = watch.end()
        show("X11", {"switch": max(0, seen["at"] - switched)}, summary)
        self.assertEqual((summary["foreground"], summary["idle"]), ("x11", "xscreensaver"))
        self.assertLess(summary["foreground_cost"]["mean_us"], 1000)
        self.assertLess(summary["idle_cost"]["mean_us"], 5000)


if __name__ == "__main__":
    unittest.main()
