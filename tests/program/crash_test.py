"""Killed at any moment, whatever it does, the store stays whole and loses at most ten seconds."""

import concurrent.futures
import glob
import os
import random
import sqlite3
import subprocess
import tempfile
import time
import unittest

KILLS = 1000
WORKERS = 4
KILLS_A_STORE = 25
MOST_LOST = 10.0  # seconds

# What brings a store back to where a start has something to do.
EARLIER = {
    "seeding": "DELETE FROM rules WHERE priority < 0;"
               "DELETE FROM settings WHERE key='rules_seeded';",
    "migration": "ALTER TABLE projects DROP COLUMN keywords; ALTER TABLE projects DROP COLUMN client;"
                 "DROP INDEX idx_events_manual; DELETE FROM settings WHERE key='paused';"
                 "CREATE TABLE calendar_links (id); PRAGMA user_version=0;",
    "nothing": "",
}
DEFAULT_RULES = 287

# What there is never any of: overlaps, spans that end before they start, a rule twice, orphans.
NONE = (
    "(SELECT start, lag(end) OVER (ORDER BY start, end) AS before FROM events)"
    " WHERE start < before - 1e-6",
    "events WHERE end < start",
    "(SELECT 1 FROM rules WHERE pattern='sauf.fr' LIMIT 1, 1)",
    "events WHERE project_id NOT NULL AND project_id NOT IN (SELECT id FROM projects)",
    "rules WHERE project_id NOT NULL AND project_id NOT IN (SELECT id FROM projects)",
)


def one(db, sql):
    return db.execute(sql).fetchone()[0]


class Store:
    """One store that is killed again and again."""

    def __init__(self, folder):
        self.folder = folder
        self.file = os.path.join(folder, "Orvanta", "orvanta.db")
        self.now = 1_700_000_000.0
        self.recorded = 0.0  # seconds
        self.worst = 0.0
        self.ticks = 0

    def prepare(self):
        what = random.choice(list(EARLIER))
        if os.path.exists(self.file):
            db = sqlite3.connect(self.file)
            # Else it was killed before it had made the tables of today.
            if one(db, "SELECT count(*) FROM sqlite_master WHERE name='idx_events_manual'"):
                db.executescript(EARLIER[what])
            db.close()
        return what

    def kill(self):
        what = self.prepare()
        output = os.path.join(self.folder, "ticks")
        with open(output, "wb") as file:
            writer = subprocess.Popen([os.environ["STORE_WRITER"], self.folder, str(self.now)],
                                      stdout=file)
        if what == "nothing":
            while os.path.getsize(output) == 0:  # it has begun
                if writer.poll() is not None:
                    raise AssertionError(f"exit {writer.returncode}")
                time.sleep(0.001)
        time.sleep(random.uniform(0, 0.03))
        writer.kill()
        writer.wait()
        with open(output, encoding="ascii") as file:
            done = [float(line) for line in file if line.endswith("\n")]
        self.ticks += len(done)
        if glob.glob(self.file + ".nouveau-*"):  # as the next start does first
            subprocess.run([os.environ["STORE_WRITER"], self.folder, "finish"], check=True)
        if os.path.exists(self.file):
            self.check(done)
        self.now = (done[-1] if done else self.now) + 600

    def check(self, done):
        db = sqlite3.connect(self.file)
        found = one(db, "PRAGMA integrity_check")
        assert found == "ok", found
        if not one(db, "SELECT count(*) FROM sqlite_master WHERE name='events'"):
            assert not one(db, "SELECT count(*) FROM sqlite_master"), "half made"
            return
        later = {column for (column,) in db.execute("SELECT name FROM pragma_table_info('projects')")
                 } & {"client", "keywords"}
        assert len(later) != 1, later
        for rows in NONE:
            assert one(db, f"SELECT count(*) FROM {rows}") == 0, rows
        # Whatever was assigned, as much time as there was on the clock.
        start, end = db.execute("SELECT min(start), max(end) FROM events WHERE start > ?",
                                (self.now,)).fetchone()
        self.recorded += (end or 0) - (start or 0)
        total = one(db, "SELECT total(end - start) FROM events")
        assert abs(total - self.recorded) < 1e-3, f"{total} s of {self.recorded} s"
        if done:
            self.worst = max(self.worst, done[-1] - (end or self.now))
        seeded = one(db, "SELECT count(*) FROM rules WHERE priority < 0")
        known = one(db, "SELECT count(*) FROM settings WHERE key='rules_seeded'")
        assert seeded == known * DEFAULT_RULES, f"{seeded} default rules"
        db.close()


def kill_often(times):
    worst, ticks = 0.0, 0
    while times > 0:
        with tempfile.TemporaryDirectory() as folder:
            store = Store(folder)
            for _ in range(min(times, KILLS_A_STORE)):
                store.kill()
            times -= KILLS_A_STORE
            worst, ticks = max(worst, store.worst), ticks + store.ticks
    return worst, ticks


class CrashTest(unittest.TestCase):
    def test_kill_at_random_moments(self):
        with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
            results = list(pool.map(kill_often, [KILLS // WORKERS] * WORKERS))
        worst = max(worst for worst, _ in results)
        ticks = sum(ticks for _, ticks in results)
        print(f"{KILLS} kills in {ticks} ticks, at most {worst:.1f} s lost")
        self.assertLessEqual(worst, MOST_LOST)
