"""The program as its user has it: the command line, the files, and how it ends."""

import datetime
import os
import shutil
import re
import signal
import stat
import time

from desktop import ORVANTA, TICK, cpu_seconds, end, output_of, pass_time, wait_for
from desktop_case import DesktopCase, children

NO_BUS = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
APP = "Éditeur de thèmes"
PACKAGING = os.path.abspath(os.path.join(os.path.dirname(__file__), "../../packaging"))
COMPLETIONS = os.path.join(PACKAGING, "completions")


class ProgramTest(DesktopCase):
    options = {"screen": False}

    def record(self):
        """Puts a span of this minute into the store."""
        self.desktop.call("day")
        self.desktop.change("INSERT INTO events(start, end, app, idle) VALUES (?, ?, ?, 0)",
                            time.time() - 1, time.time(), APP)

    def apps(self, answer):
        return [app["name"] for app in answer["totals"]["apps"]]

    def test_call_reads_the_store_when_nothing_runs(self):
        for env in ({}, NO_BUS):
            status, answer = self.desktop.call("day", env=env)
            self.assertEqual(status, 0)
            self.assertEqual(answer["date"], datetime.date.today().isoformat())
        self.record()
        self.assertEqual(self.apps(self.desktop.call("day")[1]), [APP])
        status, answer = self.desktop.call("day", '{"date": "2020-02-29"}')
        self.assertEqual((status, answer["date"], self.apps(answer)), (0, "2020-02-29", []))

    def test_call_is_answered_by_what_runs(self):
        self.record()
        self.desktop.start_orvanta()
        elsewhere = self.desktop.make_folder("elsewhere")
        status, answer = self.desktop.call("day", env={"XDG_DATA_HOME": elsewhere})
        self.assertEqual(status, 0)
        self.assertIn(APP, self.apps(answer))
        self.assertEqual(os.listdir(elsewhere), [])

    def test_call_is_told_when_what_runs_ends_before_it_answers(self):
        for how in (signal.SIGKILL, signal.SIGTERM):
            with self.subTest(how=how):
                program = self.desktop.start_orvanta()
                program.send_signal(signal.SIGSTOP)
                call = self.desktop.spawn(ORVANTA, "--call", "day")
                pass_time(1)
                program.send_signal(how)
                program.send_signal(signal.SIGCONT)
                self.assertEqual(call.wait(timeout=10), 1)
                self.assertIn('{"error":"Orvanta s’est arrêté avant de répondre"}', output_of(call))
                program.wait(timeout=10)

    def test_answers_are_utf8_in_every_locale(self):
        self.record()
        wrong = ["--call", b"caf\xe9"]  # words are bytes
        for locale in ("C", "POSIX", "fr_FR.ISO-8859-1", "C.UTF-8"):
            env = {"LANG": locale, "LC_ALL": locale}
            for running in (False, True):
                with self.subTest(locale=locale, running=running):
                    program = self.desktop.start_orvanta(env) if running else None
                    done = self.desktop.run(ORVANTA, "--call", "day", env=env)
                    self.assertIn(APP, done.stdout.decode("utf-8"))
                    done = self.desktop.run(ORVANTA, *wrong, env=env)
                    self.assertIn("caf\ufffd", done.stdout.decode("utf-8"))
                    self.assertEqual(done.returncode, 1)
                    if program:
                        end(program)

    def test_options(self):
        done = self.desktop.run(ORVANTA, "--version")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout.decode(), r"\Aorvanta \d+\.\d+\.\d+\n\Z")
        done = self.desktop.run(ORVANTA, "--help")
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        options = re.findall(r"^ .*--(?!help-)([a-z-]+)[ =]", done.stdout.decode(), re.MULTILINE)
        self.assertGreater(len(options), 8)
        for words, status in ((["--oops"], 1), (["oops"], 2), (["--check", "oops"], 2)):
            done = self.desktop.run(ORVANTA, *words)
            self.assertEqual((words, done.returncode, done.stdout), (words, status, b""))
            self.assertIn("oops", done.stderr.decode())
        self.assertFalse(os.path.exists(self.desktop.database()))
        for told in ("completions/orvanta", "completions/_orvanta", "man/orvanta.1"):
            with open(os.path.join(PACKAGING, told), encoding="utf-8") as file:
                known = re.findall(r"--([a-z-]+)", file.read().replace("\\-", "-"))
            self.assertEqual([name for name in options if name not in known], [], told)
        script = (f"source {COMPLETIONS}/orvanta; PATH={os.path.dirname(ORVANTA)}:$PATH; "
                  "COMP_WORDS=(orvanta %s); COMP_CWORD=%d; _orvanta; echo ${COMPREPLY[@]}")
        for words, index, found in (("--re", 1, "--resume --report --restore"),
                                    ("--call stat", 2, "status"), ("--call rules.pr", 2, "rules.preview"),
                                    ("--sheet 2026-10 --fo", 3, "--format")):
            done = self.desktop.run("bash", "-c", script % (words, index))
            self.assertEqual(done.stdout.decode().strip(), found)

    def test_a_second_session_waits_for_its_turn(self):
        first = self.desktop.start_orvanta(NO_BUS)
        waiting = []
        for env in ({}, NO_BUS):
            second = self.desktop.spawn(ORVANTA, env=env)
            waiting.append(second)
            wait_for(lambda: "attend la suite" in output_of(second), 5, "it waits")
        for words in ([], ["--show"], ["--pause"]):
            done = self.desktop.run(ORVANTA, *words)
            self.assertEqual((words, done.returncode), (words, 1))
            self.assertIn("déjà", done.stderr.decode())
        self.assertEqual(self.desktop.run(ORVANTA, "--show", env=NO_BUS).returncode, 1)
        self.assertEqual(self.desktop.call("day")[0], 0)
        self.assertEqual(self.desktop.call("nuit")[0], 1)
        before = [cpu_seconds(second.pid) for second in waiting]
        pass_time(2 * TICK)
        for second, spent in zip(waiting, before):
            self.assertLess(cpu_seconds(second.pid) - spent, 0.05)
            self.assertIsNone(second.poll())
        self.assertEqual(len(self.desktop.spans()), 1)

        asked = end(waiting.pop())
        self.assertLess(time.time() - asked, 1)
        self.assertIsNone(first.poll())
        first.kill()  # the lock does not outlive its owner
        killed = time.time()
        wait_for(lambda: len(self.desktop.spans()) == 2, 2 * TICK, "the second takes over")
        self.assertAlmostEqual(self.desktop.spans()[1]["start"], killed, delta=2 + TICK)
        self.assertEqual(self.desktop.run(ORVANTA, "--pause").returncode, 0)
        wait_for(lambda: self.desktop.call("status")[1]["paused"], 2, "it is the one that is asked")
        end(waiting.pop())

    def test_a_new_bus_while_another_waits_elsewhere(self):
        first = self.desktop.start_orvanta()
        self.desktop.session.stop()
        second = self.desktop.spawn(ORVANTA, env=NO_BUS)
        wait_for(lambda: "attend la suite" in output_of(second), 5, "it waits")
        self.desktop.session.start()
        # Each of these has the name for a moment.
        wait_for(lambda: self.desktop.run(ORVANTA, "--resume").returncode == 0, 10, "the name")
        pass_time(TICK)
        self.assertIsNone(first.poll(), "the lock is held all the while")
        self.assertNotIn("capture démarrée", output_of(second))
        end(first)
        wait_for(lambda: "capture démarrée" in output_of(second), 2 * TICK, "it takes over")
        end(second)

    def test_a_new_bus_on_which_another_waits(self):
        """Whoever has the name goes on with the recording."""
        first = self.desktop.start_orvanta()
        self.desktop.session.stop()
        pass_time(4)  # it looks less and less often
        self.desktop.session.start()
        second = self.desktop.spawn(ORVANTA)
        wait_for(lambda: "attend la suite" in output_of(second), 3, "it waits")
        first.wait(timeout=12)
        wait_for(lambda: len(self.desktop.spans()) == 2, 2 * TICK, "the second takes over")
        before, after = self.desktop.spans()
        self.assertLess(after["start"] - before["end"], 8)
        end(second)

    def test_a_new_bus_while_nothing_can_be_stored(self):
        program = self.desktop.start_orvanta()
        other = self.desktop.hold()
        wait_for(lambda: "store" in self.desktop.call("status")[1], 30, "it notices")
        self.desktop.session.stop()
        self.desktop.session.start()
        pass_time(5)
        self.assertEqual(self.desktop.run(ORVANTA, "--show").returncode, 1, "it keeps what waits")
        other.execute("ROLLBACK")
        wait_for(lambda: self.desktop.run(ORVANTA, "--resume").returncode == 0, 20, "the name")
        wait_for(lambda: len(self.desktop.spans()) == 2, TICK, "it goes on")
        first, second = self.desktop.spans()
        self.assertLess(second["start"] - first["end"], 2)
        end(program)

    def test_a_program_that_was_there_before_its_bus(self):
        self.desktop.session.stop()
        program = self.desktop.start_orvanta()
        self.desktop.session.start()
        wait_for(lambda: self.desktop.run(ORVANTA, "--pause").returncode == 0, 10, "the name")
        self.assertTrue(wait_for(lambda: self.desktop.call("status")[1]["paused"], 2, "paused"))
        end(program)

    def test_signals_close_the_span(self):
        for how in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=how.name):
                program = self.desktop.start_orvanta()
                opened = self.desktop.spans()[-1]
                pass_time(TICK)
                asked = end(program, how)
                self.assertFalse(os.path.exists(self.desktop.database() + "-wal"))
                closed = self.desktop.spans()[-1]
                self.assertEqual(closed["id"], opened["id"])
                self.assertAlmostEqual(closed["end"], asked, delta=1)

    def test_the_end_does_not_wait_for_a_browser(self):
        program = self.desktop.start_orvanta()
        # It passes for a browser that runs, which says nothing of its tab.
        browser = shutil.copy("/bin/sleep", os.path.join(self.desktop.folder, "firefox-esr"))
        self.desktop.spawn(browser, "60")
        test = self.desktop.spawn(ORVANTA, "--call", "permissions.testBrowser",
                                  '{"bundle": "org.mozilla.firefox"}')
        wait_for(lambda: children(program.pid)[1:], 5, "the browser is looked for")
        asked = end(program)
        self.assertLess(time.time() - asked, 4)
        self.assertAlmostEqual(self.desktop.spans()[-1]["end"], asked, delta=0.5)
        self.assertNotEqual(test.wait(timeout=5), 0)
        self.assertEqual(self.desktop.call("permissions.status")[1]["browsers"], {})

    def test_only_the_owner_can_read(self):
        previous = os.umask(0)
        self.addCleanup(os.umask, previous)
        home = self.desktop.env["HOME"]
        self.desktop.env.update(XDG_DATA_HOME=os.path.join(home, ".local", "share"),
                                XDG_CONFIG_HOME=os.path.join(home, ".config"))
        for browser in (".config", ".config/chromium", ".mozilla"):
            os.mkdir(os.path.join(home, browser), 0o700)
        self.desktop.start_orvanta()
        self.assertTrue(self.desktop.call("launchAtLogin", '{"enabled": true}')[1]["enabled"])
        self.assertEqual(self.desktop.run(ORVANTA, "--connect-browsers").returncode, 0)
        today = datetime.date.today().isoformat()
        export = os.path.join(home, "export.csv")
        self.assertEqual(self.desktop.run(ORVANTA, "--export", today, today, export).returncode, 0)

        modes = {}
        for folder, folders, files in os.walk(home):
            for name in folders + files:
                path = os.path.join(folder, name)
                modes[os.path.relpath(path, home)] = stat.S_IMODE(os.stat(path).st_mode)
        self.assertLessEqual(
            {"export.csv", ".config/autostart/fr.quellvane.orvanta.desktop",
             ".config/chromium/NativeMessagingHosts/fr.quellvane.orvanta.tab.json",
             ".mozilla/native-messaging-hosts/fr.quellvane.orvanta.tab.json"} |
            {".local/share/Orvanta/orvanta." + kind for kind in ("db", "db-wal", "db-shm", "lock")},
            set(modes))
        self.assertEqual({path: oct(mode) for path, mode in modes.items() if mode & 0o077}, {})
