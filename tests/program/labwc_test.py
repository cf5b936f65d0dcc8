"""A real labwc without a screen: windows, input and a film."""

import time

from desktop import end, wait_for
from wayland_desktop import Scenario, WaylandDesktop


class LabwcDesktop(WaylandDesktop):
    def control(self, *words):
        done = self.run("wlrctl", *words)
        assert done.returncode == 0, done.stdout + done.stderr
        return done.stdout.decode()

    def app_ids(self):
        return [line.partition(":")[0] for line in self.control("toplevel", "list").splitlines()]

    def open_windows(self):
        super().open_windows()
        wait_for(lambda: len(self.app_ids()) == 2, 10, "two windows")


class LabwcTest(Scenario):
    kind, programs = LabwcDesktop, ("labwc", "wlrctl", "mousepad", "mpv")

    def focus(self, name):
        ids = [app for app in self.desktop.app_ids() if name in app]
        self.desktop.control("toplevel", "focus", f"app_id:{ids[0]}")
        return time.time()

    def touch(self):
        self.desktop.control("pointer", "move", "1", "0")
        return time.time()

    def test_windows_titles_idle_and_a_film(self):
        self.desktop.start_wlroots("labwc")
        self.desktop.open_windows()
        self.check_probes(self.desktop.watch(), "wlr-foreign-toplevel", "ext-idle-notify")
        orvanta = self.check_spans()
        self.check_mpv()
        end(orvanta)
