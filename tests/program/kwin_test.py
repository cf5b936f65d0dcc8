"""A real KWin without a screen: its window list where it is allowed, its scripts where not."""

import os
import shutil
import sys
import time

import dbus

from desktop import end, kill, output_of, pass_time, wait_for
from wayland_desktop import EDITOR, TITLES, Scenario, WaylandDesktop

KWIN = "org.kde.KWin"
SCRIPTING = "org.kde.kwin.Scripting"
WINDOWS = "org_kde_plasma_window_management"
OUR_SCRIPT = "fr.quellvane.orvanta.focus"


class KwinDesktop(WaylandDesktop):
    def start(self):
        # A copy has no file capability, which KWin cannot have here.
        kwin = shutil.copy(shutil.which("kwin_wayland"), self.make_folder("kwin"))
        # Without a menu Plasma 6 knows no desktop files; a session has one from plasma-workspace.
        menus = os.path.join(self.env["XDG_CONFIG_HOME"], "menus")
        os.mkdir(menus, 0o755)
        self.write(os.path.join(menus, "applications.menu"),
                   "<Menu><Name>All</Name><DefaultAppDirs/><Include><All/></Include></Menu>")
        self.input = shutil.copy(os.environ["KWIN_INPUT"], self.folder)
        self.allow(self.input, "org_kde_kwin_fake_input")
        self.kwin_command = (kwin, "--virtual", "--width", "1280", "--height", "800",
                             "--no-lockscreen", "--socket", "kwin-0")
        self.env["WAYLAND_DISPLAY"] = "kwin-0"
        self.env["XDG_CURRENT_DESKTOP"] = "KDE"
        self.bus = self.session.connect()
        self.start_kwin()

    def start_kwin(self):
        self.kwin = self.spawn(*self.kwin_command)
        wait_for(self.is_up, 15, "KWin is up")

    def is_up(self):
        try:
            self.scripting("isScriptLoaded", "s", "any")
            return True
        except dbus.DBusException:
            return False

    def scripting(self, method, signature, *arguments):
        return self.bus.call_blocking(KWIN, "/Scripting", SCRIPTING, method, signature, arguments)

    def run_script(self, text):
        """Runs a script inside KWin."""
        path = self.write("test.js", text)
        self.scripting("unloadScript", "s", path)
        self.scripting("loadScript", "ss", path, path)
        self.scripting("start", "")

    def has_our_script(self):
        return self.scripting("isScriptLoaded", "s", OUR_SCRIPT)

    def allow(self, program, interface=WINDOWS):
        """The desktop file of a program that may use the interface."""
        self.install(os.path.basename(program), f"Name=Test\nExec={program}\n"
                     f"X-KDE-Wayland-Interfaces={interface}\n")


class KwinTest(Scenario):
    kind, programs = KwinDesktop, ("kwin_wayland", "mousepad", "mpv")

    def open_windows(self):
        self.desktop.start()
        self.addCleanup(self.desktop.bus.close)
        self.desktop.open_windows()

    def focus(self, name):
        self.desktop.run_script(
            "const five = workspace.windowList === undefined;"
            "for (const w of five ? workspace.clientList() : workspace.windowList())"
            f" if (w.resourceClass.toString().includes('{name}'))"
            " workspace[five ? 'activeClient' : 'activeWindow'] = w;")
        return time.time()

    def touch(self):
        self.assertEqual(self.desktop.run(self.desktop.input).returncode, 0)
        return time.time()

    def show_windows(self, watch):
        """Until both are there, whichever comes first."""
        for name, bundle in (("mousepad", EDITOR), ("titles", TITLES)):
            def shown():
                self.focus(name)
                return watch.lines() and watch.lines()[-1]["bundle"] == bundle
            wait_for(shown, 15, f"{name} in front")

    def test_allowed_to_see_windows(self):
        self.desktop.allow(self.desktop.orvanta)
        self.desktop.allow(os.path.join(self.desktop.folder, "probe-watch"))
        self.open_windows()
        watch = self.desktop.watch()
        self.show_windows(watch)
        self.check_probes(watch, "plasma-window-management", "ext-idle-notify")
        orvanta = self.check_spans()
        self.check_mpv()
        end(orvanta)

    def test_by_a_script_also_after_a_restart(self):
        self.open_windows()
        watch = self.desktop.watch()
        self.show_windows(watch)
        kill(self.desktop.kwin)
        watch.wait_for(app=None)
        self.desktop.start_kwin()
        self.desktop.open_windows()
        self.show_windows(watch)
        self.check_probes(watch, "kwin-script", "ext-idle-notify")
        wait_for(lambda: not self.desktop.has_our_script(), 10, "nothing is left in KWin")

    def test_by_a_script_when_the_list_that_was_allowed_tells_of_no_window(self):
        desktop = self.desktop
        desktop.allow(os.path.realpath(sys.executable))  # which stands between
        self.open_windows()
        script = shutil.copy(os.path.join(os.path.dirname(__file__), "mute.py"), desktop.folder)
        between = desktop.spawn(sys.executable, script, "mute-0", WINDOWS)
        wait_for(lambda: "listening" in output_of(between), 10, "it listens")
        watch = desktop.watch(env={"WAYLAND_DISPLAY": "mute-0"})
        wait_for(lambda: "held back" in output_of(between), 10, "KWin has told of windows")
        pass_time(5)
        self.assertFalse(desktop.has_our_script(), "windows may yet be told of")
        wait_for(desktop.has_our_script, 30, "the script is in KWin")
        self.show_windows(watch)
        self.check_probes(watch, "kwin-script", "ext-idle-notify")
