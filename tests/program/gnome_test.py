"""A real GNOME Shell without a screen: the extension installed, a log-out, windows and input."""

import json
import os
import time
from pathlib import Path

import dbus

from desktop import TICK, end, kill, pass_time, wait_for
from wayland_desktop import EDITOR, FIRST, TITLES, Scenario, WaylandDesktop

SHELL = ("org.gnome.Shell", "/org/gnome/Shell")
REMOTE = "org.gnome.Mutter.RemoteDesktop"
FOCUS = ("fr.quellvane.orvanta.Focus", "/fr/quellvane/orvanta/Focus")
EXTENSION = "focus@orvanta.quellvane.fr"
RESOURCES = Path(__file__).parents[2] / "src/platform/resources"
ACTIVE, OUT_OF_DATE = 1, 4
ACTIVATE = """
const window = global.get_window_actors().map(actor => actor.meta_window)
    .find(each => each.get_wm_class().includes('{name}'));
window.activate(global.display.get_current_time_roundtrip());
"""


class GnomeDesktop(WaylandDesktop):
    def start(self):
        self.env.update(WAYLAND_DISPLAY="gnome-0", XDG_CURRENT_DESKTOP="GNOME",
                        GSETTINGS_BACKEND="keyfile")
        _, self.mocks = self.mock(self.system, "org.freedesktop.login1",
                                  "--system", "--template", "logind")
        self.bus = self.session.connect()
        self.log_in()

    def log_in(self):
        self.shell = self.spawn("gnome-shell", "--headless", "--wayland", "--no-x11",
                                "--unsafe-mode", "--virtual-monitor", "1280x800",
                                "--wayland-display", "gnome-0")
        wait_for(self.leave_overview, 30, "GNOME Shell is up")
        self.input = None

    def leave_overview(self):
        try:
            # A shell that leaves it while it still starts may never come up.
            if self.evaluate("Main.layoutManager._startingUp") == "true":
                return False
            self.bus.call_blocking(*SHELL, "org.freedesktop.DBus.Properties", "Set", "ssv",
                                   ("org.gnome.Shell", "OverviewActive", False))
            return True
        except dbus.DBusException:
            return False

    def log_out(self):
        kill(self.shell)
        wait_for(lambda: not self.bus.name_has_owner(SHELL[0]), 5, "the shell has gone")

    def install_extension(self, version):
        """As the program did for that version of the shell, which has the old form."""
        made = Path(self.folder, EXTENSION)
        made.mkdir(0o755)
        (made / "metadata.json").write_text(json.dumps(
            {"uuid": EXTENSION, "name": "Orvanta", "description": "-", "shell-version": [version]}))
        (made / "extension.js").write_text("".join(
            (RESOURCES / name).read_text()
            for name in ("gnome-head-43.js", "gnome-focus.js", "gnome-tail-43.js")))
        folder = os.path.join(self.env["XDG_DATA_HOME"], "gnome-shell/extensions")
        for command in (("mkdir", "-p", folder), ("cp", "-r", str(made), folder)):  # the user's own
            assert self.run(*command).returncode == 0
        self.evaluate(f"global.settings.set_strv('enabled-extensions', ['{EXTENSION}'])")

    def extension_state(self):
        info = self.bus.call_blocking(*SHELL, "org.gnome.Shell.Extensions", "GetExtensionInfo", "s",
                                      (EXTENSION,))
        return info.get("state")

    def evaluate(self, script):
        done, result = self.bus.call_blocking(*SHELL, SHELL[0], "Eval", "s", (script,))
        assert done, result
        return result

    def move_pointer(self):
        if not self.input:
            path = self.bus.call_blocking(REMOTE, "/org/gnome/Mutter/RemoteDesktop", REMOTE,
                                          "CreateSession", "", ())
            self.input = path
            self.bus.call_blocking(REMOTE, path, REMOTE + ".Session", "Start", "", ())
        self.send("NotifyPointerMotionRelative", "dd", 1.0, 0.0)

    def press_shift(self):
        """Brings a keyboard, without which no application thinks that it is active."""
        self.move_pointer()
        for down in (True, False):
            self.send("NotifyKeyboardKeycode", "ub", 42, down)

    def send(self, event, signature, *values):
        self.bus.call_blocking(REMOTE, self.input, REMOTE + ".Session", event, signature, values)


class GnomeTest(Scenario):
    kind, programs, options = GnomeDesktop, ("gnome-shell", "mousepad"), {"system_bus": True}

    def setUp(self):
        super().setUp()
        self.desktop.start()
        self.addCleanup(self.desktop.bus.close)
        self.addCleanup(self.desktop.mocks.close)

    def focus(self, name):
        self.desktop.evaluate(ACTIVATE.format(name=name))
        return time.time()

    def touch(self):
        self.desktop.move_pointer()
        return time.time()

    def show_windows(self):
        programs = self.desktop.open_windows()
        wait_for(lambda: self.desktop.evaluate("global.get_window_actors().length") == "2", 15,
                 "two windows")
        pass_time(1)  # the last one takes the focus once more when it has loaded its file
        return programs

    def test_without_the_extension(self):
        """What applications tell assistive technologies: enough for most of them."""
        launcher = self.desktop.spawn("/usr/libexec/at-spi-bus-launcher", "--launch-immediately")
        self.addCleanup(launcher.wait, 10)
        self.addCleanup(launcher.terminate)  # in order, so that it ends the bus that it started
        wait_for(lambda: self.desktop.bus.name_has_owner("org.a11y.Bus"), 5, "AT-SPI is up")
        titles, editor = self.show_windows()
        self.desktop.press_shift()
        self.focus("titles")
        watch = self.desktop.watch()
        watch.wait_for(bundle=TITLES, title=FIRST)
        self.focus("mousepad")
        watch.wait_for(bundle=EDITOR)
        self.focus("titles")
        watch.wait_for(bundle=TITLES, title=FIRST)
        self.desktop.retitle("Nouveau titre")
        watch.wait_for(title="Nouveau titre")
        kill(editor)  # no other window comes to the front afterwards
        kill(titles)
        watch.wait_for(5, app=None)
        self.assertEqual(watch.end()["foreground"], "at-spi")

    def test_install_log_out_and_use(self):
        desktop = self.desktop
        watch = desktop.watch("--request")
        told = wait_for(lambda: [line for line in watch.lines() if "why" in line], 15, "the answer")
        self.assertIn("sans celle d’Orvanta", told[0]["why"])
        self.assertIn("fermez votre session", told[0]["then"])

        desktop.log_out()
        desktop.log_in()
        self.show_windows()
        self.focus("titles")
        watch.wait_for(bundle=TITLES, title=FIRST)
        with self.assertRaisesRegex(dbus.DBusException, "Only Orvanta"):
            desktop.bus.call_blocking(*FOCUS, FOCUS[0], "Current", "", ())
        self.check_probes(watch, "gnome-extension", "mutter-idle-monitor")

        orvanta = self.check_spans()
        end(orvanta)

    def test_an_extension_of_the_gnome_before_an_upgrade(self):
        """Nobody has to ask for it again: one log-out, and windows are seen."""
        desktop = self.desktop
        version = desktop.bus.call_blocking(*SHELL, "org.freedesktop.DBus.Properties", "Get", "ss",
                                            (SHELL[0], "ShellVersion")).split(".")[0]
        desktop.install_extension("42" if version == "43" else "43")
        desktop.log_out()
        desktop.log_in()
        wait_for(lambda: desktop.extension_state() == OUT_OF_DATE, 10, "the shell refuses it")
        orvanta = desktop.start_orvanta()

        def advice():
            return desktop.call("permissions.status")[1]["advice"]
        wait_for(lambda: "fermez votre session" in advice(), 10, advice)

        desktop.log_out()
        desktop.log_in()
        self.show_windows()
        span = desktop.newest(5 * TICK, lambda: self.focus("titles"), bundle=TITLES)
        self.assertEqual(span["title"], FIRST)
        self.assertEqual((desktop.extension_state(), advice()), (ACTIVE, ""))
        end(orvanta)
