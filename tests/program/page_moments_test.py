"""Time away from the screen in the page of the real program, by mouse and keyboard: what becomes of it is
in the store."""

import os

import dbus

from desktop import MOCK, pass_time, wait_for
from page_case import BAR, TOAST, PROJECT, PageCase, button, row

MANUAL = "fr.quellvane.orvanta.manual"
LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")


class PageMomentsTest(PageCase):
    def setUp(self):
        super().setUp()
        # The screen was locked for lunch, and nothing at all recorded for the half-hour after it.
        self.span(90, 150, "Inactif", bundle="idle", idle=1)
        self.span(180, 200, "Atelier")
        self.desktop.set_setting("paused", "1")

    def moments(self):
        return [row[:2] + row[3:] for row in self.stored_today("bundle, title, category, project_id")
                if row[2] == MANUAL]

    def wait_for_moments(self, *expected):
        wait_for(lambda: self.moments() == list(expected), 10, f"{self.moments()} is {expected}")

    def test_a_locked_lunch_becomes_a_meeting(self):
        page = self.open()
        before = self.stored_today("app, idle, category, project_id")
        # By keyboard alone: what was recorded and what was not, as one.
        page.click(row("10:30 – 11:30"))
        page.press("shift+Up")  # today is read from now on back
        page.wait_for_text(BAR, "2 absences1 h 30")
        page.press("Return")
        page.type("Déjeuner d'affaires")
        page.press("Return")
        page.wait_for_text(TOAST, "Ajouté : 2 absences (1 h 30).")
        self.wait_for_moments((90, 150, "Déjeuner d'affaires", None, None),
                              (150, 180, "Déjeuner d'affaires", None, None))
        page.wait_for_text(row("Hors écran"), "Déjeuner d'affaires")
        page.click(button("Annuler"))
        self.wait_for_moments()
        self.assertEqual(self.stored_today("app, idle, category, project_id"), before)

        # Over the timeline: its edges are those of the time away.
        self.assertEqual(self.drag(91, 149), [90, 150])
        page.wait_for_text(BAR, "1 h 00 sans activité")
        page.click(BAR + "//label[normalize-space() = 'Loisir']")
        page.click(BAR + button("Ajouter"))
        self.wait_for_moments((90, 150, None, "loisir", None))


class LockedTest(PageCase):
    """From the lock that logind tells of to the meeting: a short one, for nobody waits for lunch."""

    options = {"system_bus": True}

    def setUp(self):
        super().setUp()
        _, bus = self.desktop.mock(self.desktop.system, LOGIND[0], "--system", "--template", "logind")
        self.addCleanup(bus.close)
        bus.get_object(*LOGIND).AddSession("c1", "seat0", dbus.UInt32(os.getuid()), "user", True,
                                           dbus_interface=MOCK)
        self.session = bus.get_object(LOGIND[0], f"{LOGIND[1]}/session/c1")

    def set_locked(self, locked):
        self.session.SetLockedHint(locked, dbus_interface="org.freedesktop.login1.Session")
        self.desktop.newest(15, idle=locked)

    def test_a_lock_becomes_a_meeting_in_three_clicks(self):
        project = self.add_project()
        page = self.open()
        self.set_locked(True)
        pass_time(6)
        self.set_locked(False)
        (start, end), = self.stored("SELECT min(start), max(end) FROM events WHERE idle=1")
        self.assertGreaterEqual(end - start, 5)
        clicks = []
        click = page.click
        page.click = lambda xpath: (clicks.append(xpath), click(xpath))
        hours = " – ".join(self.clock_of(instant) for instant in (start, end))
        page.wait_for_text(row(hours), "Inactif", 40)
        page.click(row(hours))
        page.wait_for_text(BAR, "Inactif, " + hours)
        page.click(BAR + f"//button[. = '{PROJECT}']")
        page.wait_for_text(TOAST, f"Ajouté : {hours}")
        self.assertLessEqual(len(clicks), 3)
        moments = "FROM events WHERE bundle=? AND idle=0 AND project_id=?"
        self.assertEqual(self.stored(f"SELECT min(start), max(end) {moments}", MANUAL, project), [(start, end)])
        self.assertAlmostEqual(self.stored(f"SELECT sum(end - start) {moments}", MANUAL, project)[0][0],
                               end - start, delta=0.01)
        self.assertEqual(self.stored("SELECT 1 FROM events WHERE idle=1 AND end > start"), [])

    def clock_of(self, instant):
        return self.nine.fromtimestamp(instant, self.nine.tzinfo).strftime("%H:%M")
