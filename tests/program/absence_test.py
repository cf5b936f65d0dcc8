"""Away from the screen: what is asked on return, and pauses that end."""

import json
import os
import shutil
import time

import dbus

from desktop import MOCK, ORVANTA, TICK, end, pass_time, wait_for
from desktop_case import DesktopCase
from tray_host import Notifications, TrayHost

LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")
SESSION = "org.freedesktop.login1.Session"
HOUR = 3600


class AbsenceTest(DesktopCase):
    options = {"screen": False, "system_bus": True}

    def setUp(self):
        super().setUp()
        _, self.bus = self.desktop.mock(self.desktop.system, LOGIND[0],
                                        "--system", "--template", "logind")
        self.addCleanup(self.bus.close)
        self.bus.get_object(*LOGIND).AddSession("c1", "seat0", dbus.UInt32(os.getuid()), "user", True,
                                                dbus_interface=MOCK)
        self.host = TrayHost(self)
        self.notes = Notifications(self.host)

    def lock(self, locked):
        self.bus.get_object(LOGIND[0], f"{LOGIND[1]}/session/c1").SetLockedHint(
            locked, dbus_interface=SESSION)
        self.desktop.newest(2 * TICK, idle=locked)

    def prepare(self, minutes="0.05"):
        """Three projects, of which one was worked on until now."""
        self.desktop.call("day")
        for name in ("Thèse", "<b>Vente</b> & cie", "Jardin"):
            self.desktop.call("projects.save", json.dumps({"name": name}))
        now = time.time()
        for project, seconds in ((1, 900), (2, 600), (3, 300)):
            self.desktop.change("INSERT INTO events(start,end,app,project_id) VALUES (?,?,'A',?)",
                                now - 1000 - seconds, now - 1000, project)
        self.desktop.change("INSERT INTO settings VALUES ('ask_absence', ?)", minutes)

    def be_away(self):
        self.lock(True)
        pass_time(4)
        self.lock(False)

    def told(self):
        """The notes but for the one about the tray, whose host is not always there to answer."""
        self.host.pump()
        return [note for note in self.notes.notes if "zone d’icônes" not in note.body]

    def wait_for_note(self, count=1):
        wait_for(lambda: len(self.told()) == count, 15, f"note {count}")
        return self.told()[-1]

    def moments(self):
        return self.desktop.stored(
            "SELECT start, end, project_id FROM events WHERE app='Hors écran' ORDER BY start")

    def test_an_answer_fills_the_absence(self):
        self.prepare()
        program = self.desktop.start_orvanta()
        pass_time(TICK)
        self.be_away()
        note = self.wait_for_note()
        self.assertEqual([label for _, label in note.actions],
                         ["Ouvrir Orvanta", "Thèse", "<b>Vente</b> & cie", "Jardin", "Pause", "Ignorer"])
        self.assertTrue(note.hints["suppress-sound"])
        self.assertRegex(note.summary, "De retour après \\d+ s")
        away = [span for span in self.desktop.spans() if span["idle"]][0]
        self.notes.ActionInvoked(note.number, note.actions[2][0])
        wait_for(self.moments, 5, "the absence is filled")
        self.assertEqual(self.moments(), [(away["start"], away["end"], 2)])
        self.notes.ActionInvoked(note.number, note.actions[1][0])
        # No news of that one while the screen is locked again, and none twice.
        self.be_away()
        self.assertEqual(self.wait_for_note(2).replaces, 0)
        pass_time(1)  # until the program knows its number
        self.notes.ActionInvoked(self.told()[-1].number, "pause")
        wait_for(lambda: self.desktop.call("settings.get")[1].get("skipped_gaps"), 5, "it is skipped")
        pass_time(3 * TICK)
        self.assertEqual((len(self.told()), len(self.moments())), (2, 1))
        change = next(change for change in self.desktop.call("changes.list")[1]
                      if change["kind"] == "moments.add")
        self.assertEqual(self.desktop.call("changes.undo", json.dumps({"id": change["id"]}))[0], 0)
        self.assertEqual(self.moments(), [])
        end(program)
        spans = sorted((span["start"], span["end"]) for span in self.desktop.spans()
                       if span["app"] != "A")
        for (_, ends), (starts, _) in zip(spans, spans[1:]):
            self.assertLessEqual(ends, starts)

    def test_a_click_on_the_note_opens_its_day(self):
        heard = os.path.join(self.desktop.folder, "heard")
        self.desktop.orvanta = shutil.copy(ORVANTA, self.desktop.folder)
        self.desktop.write(os.path.join(self.desktop.folder, "orvanta-dashboard"),
                           f"#!/bin/sh\nexec cat <&3 >>{heard}\n", 0o755)
        self.prepare()
        self.desktop.start_orvanta()
        pass_time(TICK)
        self.be_away()
        note = self.wait_for_note()
        pass_time(1)  # until the program knows its number
        self.notes.ActivationToken(note.number, "jeton")
        self.notes.ActionInvoked(note.number, "default")
        day = time.strftime("%Y-%m-%d")

        def told():
            with open(heard, encoding="utf-8") as file:
                return f'show "jeton"\nday "{day}"\n' in file.read()
        wait_for(lambda: os.path.exists(heard) and told(), 5, "the window at that day")
        self.assertEqual(self.moments(), [])

    def test_nobody_is_asked_who_does_not_want_it(self):
        self.prepare("0")
        self.desktop.start_orvanta()
        pass_time(TICK)
        self.be_away()
        pass_time(3 * TICK)
        self.assertEqual(self.told(), [])

    def test_where_notes_cannot_be_answered_it_is_a_sentence(self):
        self.notes.abilities = ["body"]
        self.prepare()
        self.desktop.start_orvanta()
        pass_time(TICK)
        self.be_away()
        self.assertIn("À quoi attribuer le temps", self.wait_for_note().body)
        self.assertNotIn("Thèse", str(self.told()[-1].actions))

    def paused(self):
        return self.desktop.call("status")[1]

    def test_a_pause_ends_by_itself_also_after_a_restart(self):
        program = self.desktop.start_orvanta()
        self.assertIn("« 3j »", self.run_orvanta("--pause", "3j", status=2))
        self.assertFalse(self.paused()["paused"])
        self.run_orvanta("--pause", "1h")
        wait_for(lambda: self.paused()["paused"], 5, "paused")
        self.assertAlmostEqual(self.paused()["paused_until"], time.time() + HOUR, delta=5)
        end(program)
        until = time.time() + 12
        self.desktop.change("UPDATE settings SET value=? WHERE key='pause'",
                            json.dumps({"since": until - HOUR, "until": until}))
        known = len(self.desktop.spans())
        self.desktop.spawn(ORVANTA)
        wait_for(lambda: self.paused()["paused"], 5, "still paused")
        wait_for(lambda: len(self.desktop.spans()) > known, 12 + 2 * TICK, "it goes on")
        self.assertAlmostEqual(self.desktop.spans()[-1]["start"], until, delta=0.001)
        self.assertEqual([self.paused()["paused"], "paused_until" in self.paused()], [False, False])
        wait_for(lambda: self.desktop.setting("paused") == "0", 12, "it is stored")

    def test_a_forgotten_pause_is_told_once(self):
        self.desktop.set_setting("onboarded", "1")
        self.desktop.set_setting("paused", "1")
        self.desktop.change("INSERT INTO settings VALUES ('pause', ?)",
                            json.dumps({"since": time.time() - 2 * HOUR + 3}))
        program = self.desktop.spawn(ORVANTA)
        note = self.wait_for_note()
        self.assertEqual(note.summary, "Suivi en pause depuis 2 h 00")
        wait_for(lambda: "reminded" in self.desktop.setting("pause"), 5, "it is remembered")
        end(program)
        self.desktop.spawn(ORVANTA)
        pass_time(12)
        self.assertEqual(len(self.told()), 1)
        self.desktop.call("tracker.resume")
        self.desktop.newest(2 * TICK, idle=0)
