"""Real windows on a real X server: what the file says of them."""

import configparser
import os
import signal
import socket
import time

from desktop import TICK, end, kill, pass_time, wait_for
from desktop_case import DesktopCase
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


def shown(bundle, title):
    return {"app": desktop_name(bundle), "bundle": bundle, "title": title, "idle": 0}


class X11Test(DesktopCase):
    def test_two_windows_a_glance_a_break_and_the_end(self):
        desktop = self.desktop
        desktop.set_setting("idle_threshold", "6")
        editor, mousepad = desktop.open_window("mousepad", desktop.write(FILE_NAME, "à\n"))
        terminal, xterm = desktop.open_window(*OPEN_TEXT)
        wait_for(lambda: FILE_NAME in desktop.title_of(mousepad), 10, "the file is loaded")
        in_editor = shown("org.xfce.mousepad", desktop.title_of(mousepad))
        self.assertEqual([desktop.call(route)[1]["accessibility"]  # while it does not run
                          for route in ("status", "permissions.status")], [True, True])

        desktop.focus(xterm)
        desktop.touch()
        started = time.time()
        orvanta = desktop.start_orvanta()
        self.check_span(1, 0, started, **shown("debian-xterm", XTERM_TITLE))
        self.check_span(2, SWITCH, desktop.focus(mousepad), desktop.touch, **in_editor)

        desktop.focus(xterm)
        pass_time(4, desktop.touch)
        desktop.focus(mousepad)
        pass_time(SWITCH, desktop.touch)
        self.assertEqual(len(desktop.spans()), 2, "a glance is no span")

        last_input = desktop.touch()
        self.check_span(3, 6 + 2 * TICK, last_input, app="Inactif", idle=1, title=None)
        pass_time(last_input + 10 - time.time())
        self.check_span(4, 2 * TICK, desktop.touch(), desktop.touch, **in_editor)

        for program in (editor, terminal):
            program.terminate()
        wait_for(lambda: not desktop.root_windows("_NET_CLIENT_LIST"), 5, "windows close")
        self.check_span(5, SWITCH, time.time(), desktop.touch,
                        app="Inconnu", bundle=None, title=None, idle=0)

        ended = end(orvanta)
        spans = desktop.spans()
        self.assertEqual(len(spans), 5)
        self.assertAlmostEqual(spans[-1]["end"], ended, delta=TICK)
        for span, following in zip(spans, spans[1:]):
            self.assertLessEqual(span["start"], span["end"])
            self.assertEqual(span["end"], following["start"])

    def test_names_of_every_encoding(self):
        desktop = self.desktop
        desktop.install("notes", "Exec=xterm\nStartupWMClass=Notebook\n"
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
        end(orvanta)
        self.assertEqual([span["title"] for span in desktop.spans()], ["Ελλάδα, été"])

        hostile = b"<b>\xff&amp;%s\xe9 \xc3\xa9</b>" * 160
        self.assertGreater(len(hostile), 3000)
        set_name("_NET_WM_NAME", "8u", hostile)
        orvanta = desktop.start_orvanta()
        end(orvanta)
        whole = hostile.decode("utf-8", "replace").encode()
        self.assertEqual(desktop.spans()[-1]["title"], whole[:2048].decode("utf-8", "ignore"))

    def test_of_a_browser_that_nobody_knows_only_the_time_counts(self):
        self.desktop.install("org.kde.falkon", "Exec=xterm\nName=Falkon\n"
                                               "Categories=Qt;KDE;Network;WebBrowser;\n")
        self.desktop.open_window("xterm", "-class", "falkon", *OPEN_TEXT[1:])
        end(self.desktop.start_orvanta())
        span = self.desktop.spans()[0]
        self.assertEqual([span[key] for key in ("app", "bundle", "title", "url")],
                         ["Falkon", "org.kde.falkon", None, None])

    def test_the_server_goes_away(self):
        desktop = self.desktop
        desktop.open_window(*OPEN_TEXT)
        started = time.time()
        orvanta = desktop.start_orvanta()
        self.check_span(1, 0, started, **shown("debian-xterm", XTERM_TITLE))
        desktop.x_server.send_signal(signal.SIGSTOP)
        self.check_rest(orvanta, 3, 0.2)
        self.assertGreater(desktop.spans()[-1]["end"], time.time() - SWITCH, "time goes on")
        kill(desktop.x_server)
        lost = time.time()

        pass_time(0.5)  # it notices
        self.check_rest(orvanta, 3, 0.2)
        self.assertIsNone(orvanta.poll())
        self.check_span(2, SWITCH, lost, app="Inconnu", title=None)

        ended = end(orvanta)
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


class HungServerTest(DesktopCase):
    options = {"screen": False}

    def test_a_server_that_never_answers(self):
        server = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(server.close)
        display = server.getsockname()[1] - 6000  # the port of display 0
        orvanta = self.desktop.start_orvanta({"DISPLAY": f"127.0.0.1:{display}"})
        server.settimeout(5)
        self.addCleanup(server.accept()[0].close)
        started = time.time()
        # The end of an open span is written every 10 s.
        wait_for(lambda: self.desktop.spans()[-1]["end"] > started + 5, 16, "ticks go on")
        self.assertEqual([span["app"] for span in self.desktop.spans()], ["Inconnu"])
        threads = len(os.listdir(f"/proc/{orvanta.pid}/task"))
        pass_time(6)
        self.assertLessEqual(len(os.listdir(f"/proc/{orvanta.pid}/task")), threads,
                             "none more for each try")
        ending = time.time()
        end(orvanta)
        self.assertLess(time.time() - ending, 1.5)
