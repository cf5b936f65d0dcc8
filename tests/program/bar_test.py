"""Status bars that follow the program, goals that are told, time of other programs."""

import json
import os
import subprocess
import time

from desktop import ORVANTA, cpu_seconds, end, output_of, pass_time, wait_for
from desktop_case import DesktopCase
from tray_host import Notifications, TrayHost


class BarTest(DesktopCase):
    options = {"screen": False}

    def lines(self, follower):
        return [json.loads(line) for line in output_of(follower).splitlines()]

    def last_class(self, follower, name, seconds=10):
        wait_for(lambda: self.lines(follower) and self.lines(follower)[-1]["class"] == name,
                 seconds, lambda: f"{name}, but {self.lines(follower)[-2:]}")

    def test_bars_follow_through_pause_restart_and_end(self):
        waybar = self.desktop.spawn(ORVANTA, "--bar", "waybar")
        watch = self.desktop.spawn(ORVANTA, "--watch")
        self.last_class(waybar, "off")
        self.assertEqual(self.run_orvanta("--bar", "text", "--once"), "\n")
        program = self.desktop.start_orvanta()
        self.last_class(waybar, "active")
        self.desktop.run(ORVANTA, "--pause")
        self.last_class(waybar, "paused")
        self.assertIn("pause", self.run_orvanta("--bar", "text", "--once"))
        end(program)
        self.last_class(waybar, "off")
        self.desktop.spawn(ORVANTA)
        self.last_class(waybar, "paused")
        self.last_class(watch, "paused")
        self.assertTrue(self.lines(watch)[-1]["paused"])
        # Who only looks on costs nothing while nothing changes, and sets nothing.
        before, cpu = len(self.lines(waybar)), cpu_seconds(waybar.pid)
        bus = self.desktop.session.connect()
        bus.call_blocking("fr.quellvane.orvanta", "/fr/quellvane/orvanta", "org.gtk.Actions",
                          "SetState", "sva{sv}", ("bar", "{}", {}))
        pass_time(7)
        self.assertEqual(len(self.lines(waybar)), before)
        self.assertLess(cpu_seconds(waybar.pid) - cpu, 0.05)

    def test_a_closed_output_ends_the_follower(self):
        for words in (("--bar", "i3blocks"), ("--watch",)):
            follower = subprocess.Popen([ORVANTA, *words], env=self.desktop.env,
                                        stdout=subprocess.PIPE)
            follower.stdout.readline()
            follower.stdout.close()
            follower.wait(timeout=5)
        self.assertIn("usage", self.run_orvanta("--bar", "polybar", status=2))

    def test_help_lists_every_route_and_numbers_are_plain(self):
        shown = self.run_orvanta("--help")
        for route in self.desktop.call("routes.list")[1]:
            self.assertRegex(shown, rf"(?m)^  {route['name']}( +{route['arguments']})?$")
        self.desktop.change("INSERT INTO events(start, end, app) VALUES (?,?,'A')",
                            time.time() - 700, time.time() - 64)
        line = self.run_orvanta("--call", "day")
        self.assertNotRegex(line, r"[0-9]E[0-9]")
        self.assertTrue(635 < json.loads(line)["totals"]["active"] < 637)

    def test_a_goal_is_told_at_80_and_at_100_percent_also_across_a_restart(self):
        now = time.time()
        self.desktop.call("day")
        insert = "INSERT INTO events(start, end, app, category) VALUES (?,?,'A','loisir')"
        self.desktop.change(insert, now - 100, now - 48)
        goal = {"subject": "category", "value": "loisir", "period": "day", "bound": "most",
                "seconds": 60}
        host = TrayHost(self)
        notes = Notifications(host)
        program = self.desktop.start_orvanta()
        host.wait_for_item()
        goal["id"] = self.desktop.call("goals.save", json.dumps(goal))[1]["id"]
        host.wait_for(lambda: notes.told, 10, "near")
        host.wait_for(lambda: "Loisir" in str(host["ToolTip"]), 5, "the tool tip")
        end(program)
        self.desktop.start_orvanta()
        self.desktop.change(insert, now - 40, now - 20)
        self.desktop.call("goals.save", json.dumps(goal | {"seconds": 61}))
        host.wait_for(lambda: len(notes.told) == 2, 10, lambda: notes.told)
        self.desktop.call("goals.save", json.dumps(goal))
        host.wait_for(lambda: True, 1, "")
        pass_time(7, host.pump)
        self.assertEqual(notes.told, ["Loisir\u00a0: 52 s sur 1 min aujourd’hui.",
                                      "Loisir\u00a0: 1 min sur 1 min aujourd’hui."])

    def test_a_file_is_imported_from_the_command_line(self):
        file = self.desktop.write("heures.csv", "Début;Durée (min);Titre\n"
                                  "2025-10-05 09:00;90;Réunion\nhier;5;x\n")
        for running in (False, True):
            if running:
                self.desktop.change("DELETE FROM events")
                self.desktop.start_orvanta()
            shown = self.run_orvanta("--import", file)
            self.assertIn("title       Titre\n", shown)
            self.assertIn("début illisible (1 fois, la première ligne 3)", shown)
            self.assertIn("Activités ajoutées\u00a0: 1, 1 h 30.", shown)
            self.assertIn("déjà couvert", self.run_orvanta("--import", file, status=1))
        self.assertIn("ne peut pas être lu",
                      self.run_orvanta("--import", os.path.join(file, "none"), status=1))
