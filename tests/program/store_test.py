"""What the program says and does when its file cannot be written, is damaged or is taken away."""

import glob
import json
import os
import shutil
import sqlite3
import time
import unittest

import dbus.service

from desktop import ORVANTA, Desktop, end, wait_for
from tray_host import TrayHost


class Notifications(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/org/freedesktop/Notifications")
        bus.request_name("org.freedesktop.Notifications")
        self.told = []

    @dbus.service.method("org.freedesktop.Notifications", in_signature="susssasa{sv}i",
                         out_signature="u")
    def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
        self.told.append(str(body))
        return len(self.told)


class StoreTest(unittest.TestCase):
    def setUp(self):
        self.desktop = Desktop(screen=False)
        self.addCleanup(self.desktop.stop)

    def folder(self):
        return os.path.dirname(self.desktop.database())

    def store(self):
        return self.desktop.call("status")[1].get("store", {}).get("state")

    def check_spans(self, since):
        """No hole and no overlap from then on."""
        spans = [span for span in self.desktop.spans() if span["end"] >= since]
        for one, other in zip(spans, spans[1:]):
            self.assertAlmostEqual(one["end"], other["start"], delta=0.001)
        return spans

    def test_a_full_disk_is_told_and_nothing_is_lost(self):
        self.desktop.on_small_disk("1m")
        host = TrayHost(self.desktop.session)
        self.addCleanup(host.close)
        notes = Notifications(host.bus)
        begin = time.time()
        program = self.desktop.start_orvanta()
        host.wait_for_item()
        filler = self.desktop.fill_disk()
        # What is in the log's room already can still be overwritten: fill that as well.
        for size in (60000, 5000, 1):
            rule = {"field": "title", "pattern": "x" * size, "category": "travail"}
            for _ in range(200):
                status, answer = self.desktop.call("rules.save", json.dumps(rule))
                if status:
                    break
        self.assertEqual((status, answer["ok"], answer["stored"]), (1, True, False))
        self.assertIn("Le disque est plein", answer["message"])
        self.assertEqual(self.desktop.call("projects.save", '{"name": "Été"}'),
                         (1, {"error": answer["message"]}))
        self.assertEqual(self.store(), "full")
        host.wait_for(lambda: host.labels()[0] == "⚠ Rien n'est enregistré : disque plein", 8,
                      "the menu tells")
        self.assertEqual(host["IconName"], "fr.quellvane.orvanta-alert-symbolic")
        host.wait_for(lambda: notes.told, 8, "a notification")
        self.assertIn("gardé en mémoire", notes.told[0])
        # A choice holds all the same, and what is recorded meanwhile waits.
        self.assertEqual(self.desktop.call("settings.set", '{"privacy_mode": "domain"}')[0], 1)
        self.assertEqual(self.desktop.call("settings.get")[1]["privacy_mode"], "domain")
        self.desktop.run(ORVANTA, "--pause")
        wait_for(lambda: self.desktop.call("status")[1]["paused"], 5, "paused")
        self.desktop.run(ORVANTA, "--resume")
        wait_for(lambda: self.desktop.call("store.status")[1]["waiting"] > 0, 10, "spans wait")

        os.remove(filler)
        host.wait_for(lambda: len(notes.told) == 2, 20, "it is over")
        self.assertEqual(notes.told[1], "Les données sont de nouveau enregistrées.")
        self.assertIsNone(self.store())
        self.assertEqual(end(program)[0], 0)
        with sqlite3.connect(self.desktop.database()) as db:
            self.assertEqual(db.execute("SELECT value FROM settings WHERE key='privacy_mode'")
                             .fetchone(), ("domain",))
            self.assertEqual(db.execute("PRAGMA integrity_check").fetchone(), ("ok",))
        db.close()
        spans = [span for span in self.desktop.spans() if span["end"] >= begin]
        recorded = sum(span["end"] - span["start"] for span in spans)
        self.assertGreater(recorded, time.time() - begin - 8, "all but the pause and the start")

    def test_started_on_a_full_disk(self):
        self.desktop.on_small_disk("1m")
        self.desktop.call("day")
        self.desktop.fill_disk()
        program = self.desktop.spawn(ORVANTA)
        wait_for(lambda: self.store() == "full", 30, "it is told")
        self.assertEqual(self.desktop.call("onboarding.done")[0], 1)
        self.assertTrue(self.desktop.call("status")[1]["onboarded"], "the welcome can be left")
        self.assertEqual(len(self.desktop.call("rules.list")[1]), 0)
        self.assertEqual(end(program)[0], 0)

    def test_another_program_holds_the_file(self):
        self.desktop.start_orvanta()
        other = sqlite3.connect(self.desktop.database(), isolation_level=None)
        self.addCleanup(other.close)
        other.execute("BEGIN IMMEDIATE")
        held = time.time()
        before = time.time()
        self.assertEqual(self.desktop.call("rules.delete", '{"id": 1}')[1].get("stored"), False)
        self.assertLess(time.time() - before, 4)
        before = time.time()
        self.assertEqual(self.desktop.call("status")[0], 0)
        self.assertLess(time.time() - before, 1)
        wait_for(lambda: self.store() == "locked", 30, "it is told")
        # A second start while it is held, too.
        again = Desktop(screen=False)
        self.addCleanup(again.stop)
        shutil.copytree(self.folder(), os.path.join(again.env["XDG_DATA_HOME"], "Orvanta"),
                        ignore=shutil.ignore_patterns("*.lock", "*-shm"))
        holder = sqlite3.connect(again.database(), isolation_level=None)
        self.addCleanup(holder.close)
        holder.execute("BEGIN IMMEDIATE")
        begin = time.time()
        program = again.spawn(ORVANTA)
        wait_for(lambda: again.call("store.status")[1]["waiting"] > 0, 10, "it records, and answers")
        self.assertLess(time.time() - begin, 8)
        self.assertEqual(end(program)[0], 0)
        other.execute("ROLLBACK")
        wait_for(lambda: self.store() is None, 20, "it is over")
        self.assertEqual([span["app"] for span in self.check_spans(held) if span["idle"]], [])

    def test_a_damaged_file_is_mended(self):
        self.desktop.call("day")
        with sqlite3.connect(self.desktop.database()) as db:
            db.executemany("INSERT INTO events(start, end, app, title) VALUES (?, ?, 'A', ?)",
                           [(i * 100, i * 100 + 90, f"titre {i}") for i in range(5000)])
            db.execute("UPDATE settings SET value='domain' WHERE key='privacy_mode'")
        db.execute("PRAGMA wal_checkpoint(TRUNCATE)")
        db.close()
        with open(self.desktop.database(), "r+b") as file:
            file.seek(300 * 1024)
            file.write(os.urandom(10 * 1024))
        status, answer = self.desktop.call("week", '{"date": "1970-01-02"}')
        if status == 0:  # another page of the file
            self.assertNotIn("incomplete", answer)
        # Without its first page it is no database at all.
        with open(self.desktop.database(), "r+b") as file:
            file.write(b"\0" * 1024)
        done = self.desktop.run(ORVANTA, "--call", "day")
        self.assertEqual(done.returncode, 1)
        self.assertIn("ne peut pas être ouvert", done.stderr.decode())
        self.assertEqual(self.desktop.run(ORVANTA, "--export", "2020-01-01", "2020-01-02").returncode,
                         1)
        self.assertEqual(self.desktop.run(ORVANTA, "--check").returncode, 1)
        program = self.desktop.spawn(ORVANTA)
        wait_for(lambda: self.desktop.call("store.status")[1].get("notice"), 20, "it is mended")
        _, status = self.desktop.call("store.status")
        self.assertEqual(status["state"], "ok")
        self.assertTrue(glob.glob(os.path.join(self.folder(), "orvanta.db.endommagé-*")))
        self.assertGreater(len(self.desktop.spans()), 4500)
        self.assertEqual(self.desktop.call("settings.get")[1]["privacy_mode"], "domain")
        self.assertGreaterEqual(len(self.desktop.call("rules.list")[1]), 287)
        self.assertEqual(end(program)[0], 0)
        self.assertEqual(self.desktop.run(ORVANTA, "--check").returncode, 0)

    def test_the_file_is_taken_away_and_replaced(self):
        program = self.desktop.start_orvanta()
        self.desktop.call("settings.set", '{"idle_threshold": 240}')
        away = os.path.join(self.folder(), "ailleurs.db")
        os.rename(self.desktop.database(), away)
        wait_for(lambda: os.path.exists(self.desktop.database()), 20, "a new file")
        wait_for(lambda: len(self.desktop.spans()) > 0, 10, "recorded in it")
        self.assertEqual(self.desktop.call("settings.get")[1]["idle_threshold"], "240")
        self.assertGreaterEqual(len(self.desktop.call("rules.list")[1]), 287)
        with sqlite3.connect(away) as db:
            self.assertGreater(db.execute("SELECT count(*) FROM events").fetchone()[0], 0)
        db.close()
        with sqlite3.connect(away) as db:
            db.execute("INSERT INTO events(start, end, app) VALUES (10, 20, 'Revenu')")
        db.execute("PRAGMA wal_checkpoint(TRUNCATE)")
        db.close()
        os.rename(away, self.desktop.database())
        wait_for(lambda: any(span["app"] == "Revenu" for span in self.desktop.spans()), 15, "back")
        back = time.time()
        wait_for(lambda: max(span["end"] for span in self.desktop.spans()) > back, 20,
                 "recorded in the one that is back")
        self.assertEqual(end(program)[0], 0)
        with sqlite3.connect(self.desktop.database()) as db:
            self.assertEqual(db.execute("PRAGMA integrity_check").fetchone(), ("ok",))
        db.close()

    def test_backups_from_the_command_line(self):
        self.desktop.call("projects.save", '{"name": "Projet gardé"}')
        copy = os.path.join(self.desktop.env["HOME"], "copie.db")
        self.assertEqual(self.desktop.run(ORVANTA, "--backup", copy).returncode, 0)
        self.assertEqual(os.stat(copy).st_mode & 0o777, 0o600)
        self.desktop.call("projects.delete", '{"id": 1}')
        self.assertEqual(self.desktop.call("projects.list")[1], [])
        self.assertEqual(self.desktop.run(ORVANTA, "--restore", copy).returncode, 0)
        self.assertEqual(self.desktop.call("projects.list")[1][0]["name"], "Projet gardé")
        kept = glob.glob(os.path.join(self.folder(), "orvanta.db.avant-restauration-*"))
        self.assertEqual(len(kept), 1)


if __name__ == "__main__":
    unittest.main()
