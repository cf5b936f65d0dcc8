"""Killed at any moment, the store stays whole and loses at most ten seconds."""

import os
import random
import sqlite3
import subprocess
import tempfile
import time
import unittest

KILLS = 200
MOST_LOST = 10.0  # seconds


class CrashTest(unittest.TestCase):
    def test_kill_at_random_moments(self):
        chance = random.Random()
        worst = 0.0
        ticks = 0
        with tempfile.TemporaryDirectory() as folder:
            now = 1_700_000_000.0
            for _ in range(KILLS):
                output = os.path.join(folder, "ticks")
                with open(output, "wb") as file:
                    writer = subprocess.Popen(
                        [os.environ["TICK_WRITER"], folder, str(now)], stdout=file)
                while os.path.getsize(output) == 0:  # it has begun
                    self.assertIsNone(writer.poll())
                    time.sleep(0.001)
                time.sleep(chance.uniform(0, 0.05))
                writer.kill()
                writer.wait()
                with open(output, encoding="ascii") as file:
                    done = [float(line) for line in file if line.endswith("\n")]
                last = done[-1]
                ticks += len(done)
                with sqlite3.connect(os.path.join(folder, "Orvanta", "orvanta.db")) as db:
                    self.assertEqual(db.execute("PRAGMA integrity_check").fetchone(), ("ok",))
                    end, backwards = db.execute(
                        "SELECT max(end), sum(end < start) FROM events").fetchone()
                self.assertEqual(backwards, 0)
                worst = max(worst, last - end)
                now = last + 600
        print(f"{KILLS} kills in {ticks} ticks, at most {worst:.1f} s lost")
        self.assertLessEqual(worst, MOST_LOST)


if __name__ == "__main__":
    unittest.main()
