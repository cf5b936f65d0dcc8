"""The session's own word: locked, asleep, kept awake. The services are mocks on private buses."""

import glob
import json
import os
import shutil
import signal
import time

import dbus

from desktop import MOCK, TICK, end, kill, output_of, pass_time, wait_for
from desktop_case import DesktopCase

LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")
MANAGER = "org.freedesktop.login1.Manager"
SESSION = "org.freedesktop.login1.Session"
GNOME = "org.gnome.SessionManager"
POWER = "org.freedesktop.PowerManagement"
KDE = "org.kde.Solid.PowerManagement.PolicyAgent"


class LogindTest(DesktopCase):
    options = {"screen": False, "system_bus": True}

    def setUp(self):
        super().setUp()
        self.start_logind()

    def start_logind(self):
        self.mock, self.bus = self.desktop.mock(self.desktop.system, LOGIND[0],
                                                "--system", "--template", "logind")
        self.addCleanup(self.bus.close)
        self.logind = self.bus.get_object(*LOGIND)
        self.add_session("c0", os.getuid() + 1)
        self.add_session("c1")
        self.add_session("c2")

    def add_session(self, number, user=os.getuid()):
        self.logind.AddSession(number, "seat0", dbus.UInt32(user), "user", True,
                               dbus_interface=MOCK)

    def start(self, **env):
        program = self.desktop.start_orvanta(env)
        self.wait_for_delay(True, 5)
        return program

    def wait_for_delay(self, held, seconds=2):
        """Whether the machine waits for us before it sleeps."""
        def delays():
            return [entry[1] for entry in self.logind.ListInhibitors(dbus_interface=MANAGER)
                    if (entry[0], entry[3]) == ("sleep", "delay")] == ["Orvanta"]
        wait_for(lambda: delays() == held, seconds, f"the delay lock is held: {held}")

    def emit(self, name, signature, *values):
        self.logind.EmitSignal(MANAGER, name, signature, list(values), dbus_interface=MOCK)
        return time.time()

    def sleep(self, begins):
        return self.emit("PrepareForSleep", "b", dbus.Boolean(begins))

    def fall_asleep(self):
        slept = self.sleep(True)
        self.wait_for_delay(False)
        return slept

    def set_manager(self, **properties):
        self.logind.UpdateProperties(MANAGER, properties, dbus_interface=MOCK)

    def session(self, number):
        return self.bus.get_object(LOGIND[0], f"{LOGIND[1]}/session/{number}")

    def set_locked(self, number, locked):
        self.session(number).SetLockedHint(locked, dbus_interface=SESSION)
        return time.time()

    def set_session(self, number, **properties):
        self.session(number).UpdateProperties(SESSION, properties, dbus_interface=MOCK)

    def remove(self, number):
        path = dbus.ObjectPath(f"{LOGIND[1]}/session/{number}")
        return self.emit("SessionRemoved", "so", number, path)

    def count(self):
        return len(self.desktop.spans())

    def check_lock(self, mine, others):
        for number in others:
            self.set_locked(number, True)
        pass_time(2 * TICK)
        self.assertEqual(self.count(), 1, "another session's lock")
        self.check_span(2, TICK, self.set_locked(mine, True), app="Inactif", idle=1)
        self.check_span(3, TICK, self.set_locked(mine, False), app="Inconnu", idle=0)

    def test_lock_of_the_session_told_by_the_environment(self):
        self.start(XDG_SESSION_ID="c2")
        self.check_lock("c2", ["c0", "c1"])

    def test_lock_of_the_session_found(self):
        self.start()
        self.check_lock("c1", ["c0"])

    def test_neither_a_closing_session_nor_a_text_login_is_the_one(self):
        self.set_session("c1", State="closing", Type="x11")
        self.set_session("c2", Type="tty")
        for number in ("c3", "c4"):
            self.add_session(number)
            self.set_session(number, Type="wayland")
        display = dbus.Struct(("c4", dbus.ObjectPath(f"{LOGIND[1]}/session/c4")))
        user = f"{LOGIND[1]}/user/{os.getuid()}"
        self.logind.AddMethod(MANAGER, "GetUser", "u", "o", f"ret = '{user}'", dbus_interface=MOCK)
        self.bus.get_object(LOGIND[0], user).Set("org.freedesktop.login1.User", "Display", display,
                                                 dbus_interface=dbus.PROPERTIES_IFACE)
        program = self.start(XDG_SESSION_ID="c1")
        self.check_lock("c4", ["c1", "c2", "c3"])
        for number in ("c1", "c2", "c3"):
            self.remove(number)
        pass_time(1)
        self.assertIsNone(program.poll(), "the session goes on")
        self.remove("c4")
        self.assertEqual(program.wait(timeout=5), 0)

    def test_the_desktop_comes_after_a_text_login(self):
        self.set_session("c1", Type="tty")
        self.set_session("c2", Type="tty")
        program = self.start()
        self.add_session("c3")
        self.set_session("c3", Type="x11")
        self.emit("SessionNew", "so", "c3", dbus.ObjectPath(f"{LOGIND[1]}/session/c3"))
        pass_time(0.5)
        self.check_lock("c3", ["c1", "c2"])
        self.remove("c1")
        pass_time(1)
        self.assertIsNone(program.poll())

    def test_idle_where_only_logind_knows(self):
        self.start()
        since = time.time() - 200
        self.set_manager(IdleHint=True, IdleSinceHint=dbus.UInt64(since * 1e6))
        self.desktop.newest(2 * TICK, idle=1)
        self.set_manager(IdleHint=False)
        self.desktop.newest(2 * TICK, idle=0)

    def test_sleep_and_wake(self):
        program = self.start()
        slept = self.fall_asleep()
        released = time.time()
        closed = self.desktop.spans()[0]["end"]  # before the lock was released
        self.assertGreaterEqual(closed, slept - 0.5)
        self.assertLessEqual(closed, released)

        pass_time(2 * TICK)
        self.assertEqual([span["end"] for span in self.desktop.spans()], [closed])

        woke = self.sleep(False)
        self.wait_for_delay(True)
        self.check_span(2, TICK, woke)
        end(program)
        self.wait_for_delay(False)

    def test_logind_restarts_between_sleep_and_wake(self):
        program = self.start()
        self.fall_asleep()
        kill(self.mock)
        self.check_span(2, TICK, time.time())

        self.start_logind()
        self.wait_for_delay(True)  # taken afresh
        self.set_locked("c1", True)
        self.desktop.newest(TICK, idle=1)  # the session is found again
        self.fall_asleep()  # the lock is the new one's
        count = self.count()
        self.check_span(count + 1, TICK, self.sleep(False))
        end(program)

    def test_locked_from_the_start_and_while_logind_restarts(self):
        self.set_locked("c1", True)
        self.start()
        self.desktop.newest(TICK, idle=1)
        count = self.count()
        kill(self.mock)
        self.start_logind()
        self.set_locked("c1", True)
        pass_time(2 * TICK)
        self.assertEqual(self.count(), count, "no glance at an open screen")
        kill(self.mock)
        self.desktop.newest(10 + 2 * TICK, idle=0)  # not for ever

    def test_a_wake_that_no_signal_tells(self):
        self.start()
        self.set_manager(PreparingForSleep=True)
        self.sleep(True)
        pass_time(5 + TICK)
        self.assertEqual(self.count(), 1, "logind says that it is not over")
        self.set_manager(PreparingForSleep=False)
        wait_for(lambda: self.count() == 2, 5 + 2 * TICK, "it wakes")
        self.wait_for_delay(True)

        self.fall_asleep()
        self.mock.send_signal(signal.SIGSTOP)  # and with it whoever would tell
        wait_for(lambda: self.count() == 3, 15 + 2 * TICK, "it wakes again")

    def test_the_session_ends(self):
        program = self.start()

        self.remove("c0")
        pass_time(1)
        self.assertIsNone(program.poll())
        removed = self.remove("c1")
        self.assertEqual(program.wait(timeout=5), 0)
        self.assertAlmostEqual(self.desktop.spans()[-1]["end"], removed, delta=1)


class InhibitionTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.desktop.set_setting("idle_threshold", "4")
        self.mock, bus = self.desktop.mock(self.desktop.session, GNOME,
                                           GNOME, "/org/gnome/SessionManager", GNOME)
        self.addCleanup(bus.close)
        self.manager = bus.get_object(GNOME, "/org/gnome/SessionManager")

    def inhibit(self, flags):
        self.manager.AddMethod(GNOME, "IsInhibited", "u", "b", f"ret = bool(args[0] & {flags})",
                               dbus_interface=MOCK)
        return time.time()

    def test_a_film_counts_as_activity(self):
        self.inhibit(8)
        self.desktop.touch()
        self.desktop.start_orvanta()
        pass_time(10)
        self.assertEqual([span["idle"] for span in self.desktop.spans() if span["idle"]], [])
        film_ended = self.inhibit(4)  # only the machine is kept awake
        idle = self.desktop.newest(2 * TICK, idle=1)
        self.assertAlmostEqual(idle["start"], film_ended, delta=TICK)

    def test_a_film_where_freedesktops_power_management_is_all_there_is(self):
        """As on Xfce and MATE; with KDE's own, that one's answers are meant otherwise."""
        kill(self.mock)
        self.desktop.touch()
        self.desktop.start_orvanta()
        self.assertIn("un film comptera comme absence", self.status()["films"])
        interface, path = f"{POWER}.Inhibit", "/org/freedesktop/PowerManagement/Inhibit"
        _, bus = self.desktop.mock(self.desktop.session, POWER, POWER, path, interface)
        self.addCleanup(bus.close)
        bus.get_object(POWER, path).AddMethod(interface, "HasInhibit", "", "b", "ret = True",
                                              dbus_interface=MOCK)
        self.assertEqual(self.status()["probes"]["inhibition"], "power-management")
        self.assertNotIn("films", self.status())
        self.desktop.newest(2 * TICK, self.desktop.touch, idle=0)
        pass_time(8)
        self.assertEqual(self.desktop.spans()[-1]["idle"], 0)

        kde = self.desktop.mock(self.desktop.session, KDE, KDE,
                                "/org/kde/Solid/PowerManagement/PolicyAgent", KDE)[1]
        self.addCleanup(kde.close)
        self.desktop.newest(2 * TICK, idle=1)

    def status(self):
        return self.desktop.call("permissions.status")[1]

    def test_a_service_that_hangs(self):
        self.inhibit(0)
        self.desktop.touch()
        program = self.desktop.start_orvanta()
        self.desktop.newest(4 + 2 * TICK, idle=1)
        self.mock.send_signal(signal.SIGSTOP)
        hung = time.time()
        # The end of an open span is written every 10 s.
        wait_for(lambda: self.desktop.spans()[-1]["end"] > hung + 2 * TICK, 17, "ticks go on")
        self.desktop.newest(TICK, self.desktop.touch, idle=0)
        self.desktop.newest(4 + 2 * TICK, idle=1)
        self.assertLess(time.time() - end(program), 2)

    def test_what_a_service_that_hangs_costs(self):
        self.inhibit(0)
        watch = self.desktop.spawn(os.environ["PROBE_WATCH"])
        wait_for(lambda: "{" in output_of(watch), 5, "the probes are asked")
        self.mock.send_signal(signal.SIGSTOP)
        end(watch)
        summary = json.loads(output_of(watch).splitlines()[-1])
        self.assertEqual(summary["inhibition"], "gnome-session")
        cost = summary["inhibition_cost"]
        print(f"hung service: worst {cost['worst_us'] / 1000:.0f} ms, mean {cost['mean_us']:.0f} us")
        self.assertLess(cost["worst_us"], 60_000)  # 40 ms, and what a busy machine adds
        self.assertLess(cost["mean_us"], 5_000)  # it is waited for once


class XfceTest(DesktopCase):
    """Xfce's own power manager, on a computer of mocks."""

    options = {"system_bus": True}

    def setUp(self):
        super().setUp()
        settings = glob.glob("/usr/lib/*/xfce4/xfconf/xfconfd")
        if not settings or not shutil.which("xfce4-power-manager"):
            self.skipTest("xfce4-power-manager not installed")
        for name, template in ((LOGIND[0], "logind"), ("org.freedesktop.UPower", "upower")):
            self.addCleanup(self.desktop.mock(self.desktop.system, name, "--system",
                                              "--template", template)[1].close)
        self.bus = self.desktop.session.connect()
        self.addCleanup(self.bus.close)
        self.start("org.xfce.Xfconf", settings[0])
        self.start(POWER, "xfce4-power-manager", "--no-daemon")

    def start(self, name, *command):
        self.desktop.spawn(*command)
        wait_for(lambda: self.bus.name_has_owner(name), 10, f"{name} is up")

    def ask(self, method, signature="", *values):
        return self.bus.call_blocking(POWER, "/org/freedesktop/PowerManagement/Inhibit",
                                      f"{POWER}.Inhibit", method, signature, values)

    def test_a_film_counts_as_activity(self):
        self.desktop.set_setting("idle_threshold", "4")
        film = self.ask("Inhibit", "ss", "mpv", "un film")
        self.desktop.touch()
        self.desktop.start_orvanta()
        pass_time(10)
        self.assertEqual([span["idle"] for span in self.desktop.spans()], [0])
        self.ask("UnInhibit", "u", film)
        self.desktop.newest(2 * TICK, idle=1)


class LockScreenTest(DesktopCase):
    """Lockers that do not tell logind."""

    options = {"screen": False}

    def open_saver(self, name, path, *arguments):
        self.mock, bus = self.desktop.mock(self.desktop.session, name, *arguments)
        self.addCleanup(bus.close)
        return bus.get_object(name, path)

    def test_lock_unlock_and_a_locker_that_dies(self):
        name = "org.gnome.ScreenSaver"
        self.desktop.start_orvanta()
        saver = self.open_saver(name, "/org/gnome/ScreenSaver", "--session",
                                "--template", "gnome_screensaver")
        for locked in (True, False):
            since = time.time()
            saver.SetActive(locked, dbus_interface=name)
            span = self.desktop.newest(2 * TICK, idle=locked)
            self.assertAlmostEqual(span["start"], since, delta=TICK)
        saver.SetActive(True, dbus_interface=name)
        self.desktop.newest(2 * TICK, idle=1)
        self.mock.kill()
        self.desktop.newest(2 * TICK, idle=0)

    def test_locked_from_the_start_on_kde(self):
        name = "org.freedesktop.ScreenSaver"
        saver = self.open_saver(name, "/org/freedesktop/ScreenSaver", name,
                                "/org/freedesktop/ScreenSaver", name)
        saver.AddMethod(name, "GetActive", "", "b", "ret = True", dbus_interface=MOCK)
        self.desktop.start_orvanta()
        self.desktop.newest(2 * TICK, idle=1)
        saver.EmitSignal(name, "ActiveChanged", "b", [dbus.Boolean(False)], dbus_interface=MOCK)
        self.desktop.newest(2 * TICK, idle=0)
