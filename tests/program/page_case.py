"""A test of the built page in the real program: a day in the store, mouse and keyboard, SQL."""

import datetime
import time

from desktop import wait_for
from desktop_case import DesktopCase
from webdriver import Page

SITE = "carnet-maree.example"
TITLE = "<img src=x onerror=document.title=1> l'été & \"co\" '); DROP TABLE events;--"
PROJECT = "Carnet de mer"
LONG = "Sonde \u202e\u2067" + "👩‍👩‍👧" * 50 + "x" * 10_000

# The day's spans: minutes after 9 o'clock, application, domain, title.
SPANS = [(0, 20, "Navigateur", SITE, TITLE), (20, 45, "Atelier", None, "Plan"),
         (45, 60, "Navigateur", SITE, "Marées"), (60, 90, "Chaloupe", None, LONG)]

BAR = "//form[@aria-label = 'Attribuer la sélection']"
LEARNT = "//aside[contains(@class, 'learnt')]"
TOAST = "//*[@role = 'status'][.//button[@aria-label = 'Fermer le message']]"


def button(name):
    return f"//button[normalize-space() = '{name}' or @aria-label = '{name}']"


def field(label):
    """The field that the label names, in either of the ways that a form has."""
    return (f"//*[self::input or self::select][@id = //label[. = '{label}']/@for"
            f" or ancestor::label[span = '{label}'] or @aria-label = '{label}']")


def row(text):
    return f"//*[@role = 'option'][contains(., '{text}')]"


class PageCase(DesktopCase):
    def setUp(self):
        super().setUp()
        self.change, self.stored = self.desktop.change, self.desktop.stored
        # A French keyboard, and a zone in which it is now between two and three in the afternoon.
        self.desktop.run("setxkbmap", "fr")
        now = datetime.datetime.now(datetime.timezone.utc)
        self.desktop.env.update(TZ=f"Etc/GMT{now.hour - 14:+}",
                                XDG_STATE_HOME=self.desktop.make_folder("state"),
                                XDG_CACHE_HOME=self.desktop.make_folder("cache"))
        zone = datetime.timezone(datetime.timedelta(hours=14 - now.hour))
        nine = now.astimezone(zone).replace(hour=9, minute=0, second=0, microsecond=0)
        self.nine, self.today = nine, nine.date()
        self.desktop.call("day")  # makes the store
        for day in (-1440, 0):
            for start, end, app, domain, title in SPANS:
                self.span(day + start, day + end, app, domain=domain, title=title)

    def span(self, start, end, app, **columns):
        """Puts a span into the store, minutes after 9 o'clock of today."""
        columns = {"start": self.nine.timestamp() + start * 60,
                   "end": self.nine.timestamp() + end * 60, "app": app, **columns}
        return self.change(f"INSERT INTO events({','.join(columns)})"
                           f" VALUES ({','.join('?' * len(columns))})", *columns.values())

    def stored_today(self, columns):
        """Of each span since 9 o'clock: its start and end in minutes from then, and the columns."""
        nine = self.nine.timestamp()
        return self.stored(f"SELECT round((start - ?) / 60), round((end - ?) / 60), {columns}"
                           " FROM events WHERE start >= ? ORDER BY start", nine, nine, nine)

    def add_project(self, name=PROJECT):
        return self.change("INSERT INTO projects(name) VALUES (?)", name)

    def wait_for_store(self, expected, statement, *values):
        wait_for(lambda: self.stored(statement, *values) == expected, 10,
                 f"{statement} yields {expected}")

    def wait_for_setting(self, key, value):
        wait_for(lambda: self.desktop.setting(key) == value, 10, f"{key} is {value}")

    def open(self, onboarded=True):
        if onboarded:
            self.desktop.set_setting("onboarded", "1")
        self.started = time.time()
        self.page = Page(self.desktop)
        # Whatever the page may not do, or does wrong, is told at the end.
        self.page.script("""
            window.faults = [];
            addEventListener("securitypolicyviolation", e => faults.push(e.violatedDirective));
            addEventListener("error", e => faults.push(e.message));
            addEventListener("unhandledrejection", e => faults.push(String(e.reason)));""")
        self.addCleanup(lambda: self.assertEqual(self.page.script("return faults"), []))
        self.addCleanup(lambda: self.assertEqual(self.page.script("""
            const main = document.querySelector("main");
            return main.scrollWidth - main.clientWidth;"""), 0, "too wide"))
        return self.page

    def drag(self, start, end):
        """Along the hours that the timeline names, between two minutes after 9 o'clock; returns the
        minutes that the page reads there."""
        self.page.wait_for_text("//*[@role = 'slider']", "10:00")
        self.page.drag(*self.page.script("""
            const box = document.querySelector("[role=slider]").getBoundingClientRect();
            const hours = new Map([...document.querySelectorAll("[role=slider] text")].map(text => {
                const at = text.getBoundingClientRect();
                return [text.textContent, at.x + at.width / 2];
            }));
            const [nine, ten] = [hours.get("09:00"), hours.get("10:00")];
            return arguments[0].map(minute =>
                [nine + (ten - nine) * minute / 60, box.y + box.height / 2]);""", [start, end]))
        self.page.wait_for_text(BAR, "De")
        return [int(text[:2]) * 60 + int(text[3:]) - 540 for text in self.page.script("""
            return [...document.querySelectorAll("[aria-label$='de la plage']")]
                .map(field => field.value);""")]
