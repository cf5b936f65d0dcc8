"""A Wayland session of its own for a test, without a screen, and what every such desktop must show."""

import glob
import json
import os
import shutil
import sys
import time
import unittest

from desktop import TICK, Desktop, end, pass_time, wait_for
from desktop_case import DesktopCase

NOBODY = 65534
PROBE_WATCH = os.environ["PROBE_WATCH"]
TITLES = "orvanta-titles"
EDITOR = "org.xfce.mousepad"
FIRST = "Première fenêtre — été"
SECOND = "deuxième.txt"


class WaylandDesktop(Desktop):
    """Compositors refuse to run as root, so root runs the whole session as nobody."""

    def __init__(self, *programs, **options):
        missing = [program for program in programs if not shutil.which(program)]
        if missing:
            raise unittest.SkipTest(f"{missing} not installed")
        super().__init__(screen=False, **options)
        self.env.pop("NO_AT_BRIDGE")
        self.env.update(XDG_SESSION_TYPE="wayland", LIBGL_ALWAYS_SOFTWARE="1")

    def make_folder(self, name):
        path = super().make_folder(name)
        if os.getuid() == 0 and self.prefix is Desktop.prefix:
            os.chmod(self.folder, 0o755)
            self.prefix = (*Desktop.prefix, f"--reuid={NOBODY}", f"--regid={NOBODY}",
                           "--clear-groups", "--inh-caps=-all", "--bounding-set=-all")
            # Where the tree was checked out may be closed to others.
            self.orvanta = shutil.copy(self.orvanta, self.folder)
        if os.getuid() == 0:
            os.chown(path, NOBODY, NOBODY)
        return path

    def start_wlroots(self, *command):
        """Starts a compositor of wlroots' kin and waits until it takes clients; it is returned."""
        sockets = os.path.join(self.env["XDG_RUNTIME_DIR"], "wayland-?")
        for old in glob.glob(sockets):  # of one that was killed
            os.remove(old)
        compositor = self.spawn(*command, env={
            "WLR_BACKENDS": "headless", "WLR_HEADLESS_OUTPUTS": "1",
            "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman"})
        socket = wait_for(lambda: glob.glob(sockets), 10, f"{command[0]} is up")[0]
        self.env["WAYLAND_DISPLAY"] = os.path.basename(socket)
        return compositor

    def open_windows(self):
        """Two applications, which it returns; retitle() changes the title of the first."""
        self.install(TITLES, "Name=Titres\nExec=true\n")
        self.title = self.write("title", "")
        self.retitle(FIRST)
        script = shutil.copy(os.path.join(os.path.dirname(__file__), "titles.py"), self.folder)
        return (self.spawn(sys.executable, script, self.title),
                self.spawn("mousepad", "--disable-server", self.write(SECOND, "à\n")))

    def retitle(self, title):
        with open(self.title, "a", encoding="utf-8") as file:
            file.write(title + "\n")
        return time.time()

    def watch(self, *arguments, env=None):
        return ProbeWatch(self, *arguments, env=env)


class ProbeWatch:
    """The program's probes without the program: what they tell, and when."""

    def __init__(self, desktop, *arguments, env=None):
        self.process = desktop.spawn(shutil.copy(PROBE_WATCH, desktop.folder), *arguments, env=env)

    def lines(self):
        with open(self.process.output, encoding="utf-8") as file:
            return [json.loads(line) for line in file if line.startswith("{")]

    def wait_for(self, seconds=10, **expected):
        """When the probes first told this after now; the newest answer must still be it."""
        def shown():
            lines = self.lines()
            return lines and all(lines[-1].get(key) == value for key, value in expected.items()) \
                and lines[-1]
        return wait_for(shown, seconds, lambda: f"{expected}, but {self.lines()[-3:]}")

    def end(self):
        """The chosen sources and their cost."""
        end(self.process)
        return self.lines()[-1]


def show(desktop, latencies, summary):
    """For the record of the run."""
    costs = ", ".join(f"{name} {summary[name + '_cost']['mean_us']:.0f} us"
                      f" (worst {summary[name + '_cost']['worst_us']:.0f})"
                      for name in ("foreground", "idle", "inhibition"))
    seen = ", ".join(f"{name} {seconds * 1000:.0f} ms" for name, seconds in latencies.items())
    print(f"{desktop}: {summary['foreground']}, {summary['idle']}, {summary['inhibition']}; "
          f"seen after: {seen}; cost a tick: {costs}")


class Scenario(DesktopCase):
    """With focus(part of an application id) and touch()."""

    def check_probes(self, watch, foreground, idle):
        """A focus switch, a title, idle and input, each told by the probes."""
        desktop = self.desktop
        self.sources = [foreground, idle]
        latencies = {}
        self.focus("titles")
        watch.wait_for(bundle=TITLES, title=FIRST)
        switched = self.focus("mousepad")
        seen = watch.wait_for(bundle=EDITOR)
        self.assertIn(SECOND, seen["title"])
        latencies["switch"] = max(0, seen["at"] - switched)
        self.focus("titles")
        watch.wait_for(bundle=TITLES, title=FIRST)
        changed = desktop.retitle("Nouveau titre")
        latencies["title"] = watch.wait_for(title="Nouveau titre")["at"] - changed

        touched = self.touch()
        watch.wait_for(idle=False)
        seen = watch.wait_for(idle=True)
        self.assertAlmostEqual(seen["at"] - seen["seconds_idle"], touched, delta=1.5)
        touched = self.touch()
        latencies["input"] = max(0, watch.wait_for(idle=False)["at"] - touched)
        summary = watch.end()
        show(self.id().split(".")[0], latencies, summary)
        self.assertEqual((summary["foreground"], summary["idle"]), (foreground, idle))
        for latency in latencies.values():
            self.assertLess(latency, 1)
        for name in ("foreground_cost", "idle_cost"):
            self.assertLess(summary[name]["mean_us"], 1000)
        self.assertLess(summary["inhibition_cost"]["mean_us"], 10_000)
        return summary

    def check_spans(self):
        """The same as spans in the store."""
        desktop = self.desktop
        desktop.set_setting("idle_threshold", "5")
        desktop.set_setting("min_span_seconds", "2")
        desktop.retitle(FIRST)
        self.focus("titles")
        self.touch()
        started = time.time()
        orvanta = desktop.start_orvanta()
        first = desktop.newest(3 * TICK, self.touch, bundle=TITLES)
        self.assertEqual((first["title"], first["idle"]), (FIRST, 0))
        self.assertAlmostEqual(first["start"], started, delta=2 * TICK)
        permissions = desktop.call("permissions.status")[1]
        self.assertIs(permissions["accessibility"], True)
        self.assertEqual([permissions["probes"][probe] for probe in ("foreground", "idle")],
                         self.sources)

        switched = self.focus("mousepad")
        span = desktop.newest(4 * TICK, self.touch, bundle=EDITOR)
        self.assertIn(SECOND, span["title"])
        self.assertAlmostEqual(span["start"], switched, delta=TICK)

        last_input = self.touch()
        span = desktop.newest(5 + 3 * TICK, idle=1)
        self.assertAlmostEqual(span["start"], last_input, delta=TICK)
        back = self.touch()
        span = desktop.newest(2 * TICK, self.touch, idle=0)
        self.assertEqual(span["bundle"], EDITOR)
        self.assertAlmostEqual(span["start"], back, delta=TICK)
        return orvanta

    def check_mpv(self):
        """A film for longer than the idle threshold of check_spans(), then the end of it."""
        begun = len(self.desktop.spans())
        film = self.desktop.spawn("mpv", "--vo=wlshm", "--no-config", "av://lavfi:testsrc=size=64x64")
        self.touch()
        pass_time(5 + 2 * TICK)
        self.assertFalse(any(span["idle"] for span in self.desktop.spans()[begun:]))
        film.terminate()
        self.desktop.newest(5 + 2 * TICK, idle=1)
