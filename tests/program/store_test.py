"""What the program says and does when its file cannot be written, is damaged or is taken away."""

import glob
import json
import os
import shutil
import sqlite3
import subprocess
import time
from contextlib import closing

from desktop import ORVANTA, Desktop, end, wait_for
from desktop_case import DesktopCase
from tray_host import Notifications, TrayHost


class StoreTest(DesktopCase):
    options = {"screen": False}

    def folder(self):
        return os.path.dirname(self.desktop.database())

    def store(self):
        return self.desktop.call("status")[1].get("store", {}).get("state")

    def status(self):
        return self.desktop.call("store.status")[1]

    def check_integrity(self):
        self.assertEqual(self.desktop.stored("PRAGMA integrity_check"), [("ok",)])

    def test_a_full_disk_is_told_and_nothing_is_lost(self):
        self.desktop.on_small_disk("1m")
        host = TrayHost(self)
        notes = Notifications(host)
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
        host.wait_for(lambda: host.labels()[0] == "⚠ Rien n’est enregistré : disque plein", 8,
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
        wait_for(lambda: self.status()["waiting"] > 0, 10, "spans wait")

        os.remove(filler)
        host.wait_for(lambda: len(notes.told) == 2, 20, "it is over")
        self.assertEqual(notes.told[1], "Les données sont de nouveau enregistrées.")
        self.assertIsNone(self.store())
        end(program)
        self.assertEqual(self.desktop.setting("privacy_mode"), "domain")
        self.check_integrity()
        spans = [span for span in self.desktop.spans() if span["end"] >= begin]
        recorded = sum(span["end"] - span["start"] for span in spans)
        self.assertGreater(recorded, time.time() - begin - 8, "all but the pause and the start")

    def test_a_store_restored_between_two_questions(self):
        """What asks one question after the other in one process reads and writes the new file."""
        asking = subprocess.Popen(
            [ORVANTA, "--call", "-"], env=self.desktop.env, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(asking.communicate)

        def ask(path, body):
            asking.stdin.write(json.dumps({"id": 1, "path": path, "body": body}) + "\n")
            asking.stdin.flush()
            return json.loads(asking.stdout.readline())["answer"]
        ask("projects.save", {"name": "Avant"})
        copy = os.path.join(self.desktop.folder, "copy.db")
        self.run_orvanta("--backup", copy)
        ask("projects.save", {"name": "Après"})
        self.run_orvanta("--restore", copy)
        self.assertEqual([one["name"] for one in ask("projects.list", {})], ["Avant"])
        ask("projects.save", {"name": "Ensuite"})
        self.assertEqual(self.desktop.stored("SELECT name FROM projects ORDER BY id"),
                         [("Avant",), ("Ensuite",)])

    def test_started_on_a_full_disk(self):
        self.desktop.on_small_disk("1m")
        self.desktop.call("day")
        self.desktop.fill_disk()
        program = self.desktop.spawn(ORVANTA)
        # Only the program that runs has spans that wait: before it, a call answers for itself.
        wait_for(lambda: self.status()["waiting"] > 0, 30, "it records")
        self.assertEqual(self.store(), "full")
        self.assertEqual(self.desktop.call("onboarding.done")[0], 1)
        self.assertTrue(self.desktop.call("status")[1]["onboarded"], "the welcome can be left")
        self.assertEqual(len(self.desktop.call("rules.list")[1]), 0)
        end(program)

    def test_another_program_holds_the_file(self):
        self.desktop.start_orvanta()
        other = self.desktop.hold()
        held = time.time()
        self.assertEqual(self.desktop.call("rules.delete", '{"id": 1}')[1].get("stored"), False)
        self.assertLess(time.time() - held, 4)
        before = time.time()
        self.assertEqual(self.desktop.call("status")[0], 0)
        self.assertLess(time.time() - before, 1)
        wait_for(lambda: self.store() == "locked", 30, "it is told")
        # A second start while it is held, too.
        again = Desktop(screen=False)
        self.addCleanup(again.stop)
        shutil.copytree(self.folder(), os.path.join(again.env["XDG_DATA_HOME"], "Orvanta"),
                        ignore=shutil.ignore_patterns("*.lock", "*-shm"))
        holder = again.hold()
        begin = time.time()
        program = again.spawn(ORVANTA)
        wait_for(lambda: again.call("store.status")[1]["waiting"] > 0, 10, "it records, and answers")
        self.assertLess(time.time() - begin, 8)
        end(program)
        holder.close()
        other.execute("ROLLBACK")
        wait_for(lambda: self.store() is None, 20, "it is over")
        spans = [span for span in self.desktop.spans() if span["end"] >= held]
        self.assertEqual([span["app"] for span in spans if span["idle"]], [])
        for one, following in zip(spans, spans[1:]):
            self.assertAlmostEqual(one["end"], following["start"], delta=0.001)

    def test_a_damaged_file_is_mended(self):
        self.desktop.call("day")
        with closing(sqlite3.connect(self.desktop.database())) as db, db:
            db.executemany("INSERT INTO events(start, end, app, title) VALUES (?, ?, 'A', ?)",
                           [(i * 100, i * 100 + 90, f"titre {i}") for i in range(5000)])
            db.execute("UPDATE settings SET value='domain' WHERE key='privacy_mode'")
        self.desktop.change("PRAGMA wal_checkpoint(TRUNCATE)")
        with open(self.desktop.database(), "r+b") as file:
            file.seek(300 * 1024)
            file.write(os.urandom(10 * 1024))
        status, answer = self.desktop.call("week", '{"date": "1970-01-02"}')
        if status == 0:  # another page of the file
            self.assertNotIn("incomplete", answer)
        # Without its first page it is no database at all.
        with open(self.desktop.database(), "r+b") as file:
            file.write(b"\0" * 1024)
        self.assertIn("ne peut pas être ouvert",
                      self.run_orvanta("--call", "day", status=1))
        self.run_orvanta("--export", "2020-01-01", "2020-01-02", status=1)
        self.run_orvanta("--check", status=1)
        program = self.desktop.spawn(ORVANTA)
        wait_for(lambda: self.status().get("notice"), 20, "it is mended")
        self.assertEqual(self.status()["state"], "ok")
        self.assertTrue(glob.glob(os.path.join(self.folder(), "orvanta.db.endommagé-*")))
        self.assertGreater(len(self.desktop.spans()), 4500)
        self.assertEqual(self.desktop.call("settings.get")[1]["privacy_mode"], "domain")
        self.assertGreaterEqual(len(self.desktop.call("rules.list")[1]), 287)
        end(program)
        self.run_orvanta("--check")

    def test_the_file_is_taken_away(self):
        program = self.desktop.start_orvanta()
        self.desktop.call("settings.set", '{"idle_threshold": 240}')
        away = os.path.join(self.folder(), "ailleurs.db")
        os.rename(self.desktop.database(), away)
        wait_for(lambda: os.path.exists(self.desktop.database()), 20, "a new file")
        wait_for(lambda: len(self.desktop.spans()) > 0, 10, "recorded in it")
        self.assertEqual(self.desktop.call("settings.get")[1]["idle_threshold"], "240")
        self.assertGreaterEqual(len(self.desktop.call("rules.list")[1]), 287)
        with closing(sqlite3.connect(away)) as db:
            self.assertGreater(db.execute("SELECT count(*) FROM events").fetchone()[0], 0)
        end(program)
        self.check_integrity()
