"""A real sway without a screen: windows, input, a film, and a compositor that restarts."""

import glob
import json
import os
import shutil
import time

from desktop import ORVANTA, end, kill, output_of, wait_for
from desktop_case import DesktopCase
from tray_host import TrayHost
from wayland_desktop import FIRST, TITLES, Scenario, WaylandDesktop

CONFIG = """
xwayland disable
default_border none
"""


class SwayDesktop(WaylandDesktop):
    def start(self):
        sockets = os.path.join(self.env["XDG_RUNTIME_DIR"], "sway-ipc.*")
        for old in glob.glob(sockets):  # of a sway that was killed
            os.remove(old)
        self.sway = self.start_wlroots("sway", "-c", self.write("sway.conf", CONFIG))
        self.env["SWAYSOCK"] = wait_for(lambda: glob.glob(sockets), 10, "sway takes commands")[0]

    def message(self, *words):
        done = self.run("swaymsg", *words)
        assert done.returncode == 0, done.stdout + done.stderr
        return done.stdout.decode()

    def app_ids(self):
        def walk(node):
            if node.get("app_id"):
                yield node["app_id"]
            for child in node.get("nodes", []) + node.get("floating_nodes", []):
                yield from walk(child)
        return list(walk(json.loads(self.message("-t", "get_tree"))))

    def open_windows(self):
        super().open_windows()
        wait_for(lambda: len(self.app_ids()) == 2, 10, "two windows")


class SwayTest(Scenario):
    kind, programs = SwayDesktop, ("sway", "mousepad", "mpv")

    def setUp(self):
        super().setUp()
        self.desktop.start()

    def focus(self, name):
        ids = [app for app in self.desktop.app_ids() if name in app]
        self.desktop.message(f"[app_id={ids[0]}] focus")
        return time.time()

    def touch(self):
        self.desktop.message("seat seat0 cursor move 1 0")
        return time.time()

    def test_windows_titles_idle_and_a_film(self):
        self.desktop.open_windows()
        old = "version 1.7" in self.desktop.run("sway", "--version").stdout.decode()  # Debian 12's
        self.check_probes(self.desktop.watch(), "wlr-foreign-toplevel",
                          "kwin-idle" if old else "ext-idle-notify")
        orvanta = self.check_spans()
        self.check_mpv()
        end(orvanta)

    def test_the_panels_token_reaches_the_compositor(self):
        desktop = self.desktop
        desktop.set_setting("onboarded", "1")
        shutil.copy(os.path.join(os.path.dirname(ORVANTA), "orvanta-dashboard"), desktop.folder)
        desktop.write("index.html", "<p>Bonjour</p>")
        panel = TrayHost(self)
        orvanta = desktop.spawn(desktop.orvanta, env={
            "WAYLAND_DEBUG": "1", "ORVANTA_WEB": desktop.env["HOME"],
            "XDG_STATE_HOME": desktop.make_folder("state"),
            "XDG_CACHE_HOME": desktop.make_folder("cache")})
        panel.wait_for_item()
        for token in ("fenêtre neuve", "même fenêtre"):
            panel.give_token(token)
            panel.activate()
            panel.wait_for(lambda: f'.activate("{token}", wl_surface' in output_of(orvanta), 20, token)
        end(orvanta)

    def test_a_compositor_that_restarts(self):
        desktop = self.desktop
        desktop.open_windows()
        watch = desktop.watch()
        self.focus("titles")
        watch.wait_for(bundle=TITLES, title=FIRST)
        kill(desktop.sway)
        watch.wait_for(app=None, idle=False)
        desktop.start()
        desktop.open_windows()
        self.focus("titles")
        watch.wait_for(bundle=TITLES, title=FIRST)
        self.assertEqual(watch.end()["foreground"], "wlr-foreign-toplevel")


class BarsTest(DesktopCase):
    kind, programs = SwayDesktop, ("sway", "waybar", "i3blocks", "grim")

    def colours(self):
        """Of the screen."""
        picture = self.desktop.run("grim", "-t", "ppm", "-").stdout
        pixels = picture.split(b"\n", 3)[3]
        return {pixels[at:at + 3].hex() for at in range(0, len(pixels), 3)}

    def test_real_bars_follow_the_program(self):
        desktop = self.desktop
        desktop.start()
        command = f"{desktop.orvanta} --bar"
        colours = {"off": "123456", "active": "13ab35", "paused": "ab1337"}
        config = {"modules-right": ["custom/orvanta"], "custom/orvanta": {
            "exec": f"{command} waybar", "return-type": "json"}}
        desktop.spawn("waybar", "-c", desktop.write("waybar.json", json.dumps(config)), "-s",
                      desktop.write("waybar.css", "".join(
                          f"#custom-orvanta.{name} {{ background: #{colour}; }}\n"
                          for name, colour in colours.items())))
        blocks = desktop.spawn("i3blocks", "-c", desktop.write("i3blocks", "\n".join((
            "[orvanta]", f"command={command} i3blocks", "interval=persist", "format=json", ""))))
        program = desktop.start_orvanta()
        wait_for(lambda: colours["active"] in self.colours(), 20, "waybar shows the time")
        desktop.run(desktop.orvanta, "--pause")
        wait_for(lambda: colours["paused"] in self.colours(), 10, "waybar shows the pause")
        self.assertNotIn(colours["active"], self.colours())
        wait_for(lambda: "· pause" in output_of(blocks), 5, "i3blocks shows it")
        end(program)
        wait_for(lambda: not {*colours.values()} & self.colours(), 10, "nothing is left of it")
