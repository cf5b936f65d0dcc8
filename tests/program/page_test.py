"""The built page in the real program, by mouse and keyboard: what is done there is in the store."""

import datetime
import json
import os
import shutil
import time

from desktop import TICK, pass_time, wait_for
from page_case import BAR, LEARNT, PROJECT, SITE, TITLE, TOAST, PageCase, button, field, row
from webdriver import FOCUSED

CATEGORIES = {"travail": "Travail", "loisir": "Loisir", "autre": "Autre", "nonclasse": "Non classé"}
WEEKDAYS = "Lundi Mardi Mercredi Jeudi Vendredi Samedi Dimanche".split()


def spelt(seconds):
    """A duration as the page writes it."""
    whole = round(seconds)
    if whole < 60:
        return f"{whole} s"
    hours, minutes = divmod(whole // 60, 60)
    return f"{hours} h {minutes:02}" if hours else f"{minutes} min"


def changed(now, then):
    if abs(now - then) < 60:
        return "="
    return f"{'+' if now > then else '−'} {spelt(abs(now - then))}"


def named(date):
    """The day of the week and of the month."""
    day = datetime.date.fromisoformat(date)
    return WEEKDAYS[day.weekday()], "1er" if day.day == 1 else day.day


class PageTest(PageCase):
    def assigned(self, domain=SITE):
        """Category and project of each of the site's spans, the oldest first."""
        return self.stored("SELECT category, project_id FROM events WHERE domain=? ORDER BY start",
                           domain)

    def test_the_first_opening(self):
        # It passes for a browser that runs.
        self.desktop.spawn(shutil.copy("/bin/sleep", os.path.join(self.desktop.folder, "chromium")),
                           "1000")
        page = self.open(onboarded=False)
        page.wait_for_text("//h1", "Bienvenue dans Orvanta")
        self.assertIn(f"{os.path.dirname(self.desktop.database())}/", page.text("//main"))
        page.click(button("Continuer"))
        page.wait_for_text("//h1", "Ce que ce bureau permet")
        page.wait_for_text("//main", "Application et fenêtreX11")
        page.click(button("Continuer"))
        page.wait_for_text("//h1", "Un premier projet")
        page.click(button("Créer et commencer"))
        page.wait_for_text("//*[@role = 'alert'][. != '']", "Donnez un nom au projet")
        self.assertEqual(self.desktop.setting("onboarded"), "0")

        # The keyboard is the form's alone: no view is chosen, nothing is paused.
        page.click(button("Retour"))
        page.wait_for_text("//h1", "Ce que ce bureau permet")
        page.press("b", "o", "Shift+p", "r")
        # The steps that connect a browser; what they take is on the clipboard.
        page.click(button("Connecter Chromium"))
        page.wait_for_text("//ol[@class = 'connect-steps']/li[1]", "FaitOuvrez Chromium.")
        page.click(button("Copier chrome://extensions"))
        page.wait_for_text("//ol[@class = 'connect-steps']/li[2]", "Copié")
        page.click(button("Continuer"))
        wait_for(lambda: page.script(FOCUSED) == "", 10, "the name has the focus")
        page.press("ctrl+v")
        wait_for(lambda: page.script(FOCUSED) == "chrome://extensions", 10, "the address is pasted")
        page.press("ctrl+a")
        page.type("Projet Boutique")
        page.press("ctrl+a")
        page.type("L'été à Brest")
        self.assertEqual(self.desktop.setting("paused"), "0")
        self.assertFalse(self.desktop.call("permissions.status")[1]["launch_at_login"])
        page.click("//input[@aria-label = 'Ocre']/..")
        page.click(field("Mots-clés"))
        page.type("sonde, quai")
        page.press("Return")
        self.wait_for_store([("L'été à Brest", "#d08c10", "travail", "sonde, quai")],
                            "SELECT name, color, category, keywords FROM projects")
        self.wait_for_setting("onboarded", "1")
        self.assertTrue(self.desktop.call("permissions.status")[1]["launch_at_login"])
        # Its time is there at once, by its keyword.
        page.wait_for_text("//section[@aria-label = 'Projets']", "L'été à Brest30 min")

    def test_a_day_is_assigned_and_teaches(self):
        project = self.add_project()
        page = self.open()
        painted = page.script("""
            return new Promise(done => {
                const look = () => document.querySelector("[role=option]")
                    ? requestAnimationFrame(() => done(Date.now() / 1000))
                    : requestAnimationFrame(look);
                look();
            });""")
        print(f"\nfrom the start of the program to the first painted day: "
              f"{painted - self.started:.2f} s at most, the driver's own start included")

        # Yesterday, by keyboard: all of the site's blocks.
        page.press("Left")
        yesterday = self.today - datetime.timedelta(days=1)
        page.wait_for_text("//h1", f" {yesterday.day} ")
        page.press("slash")
        page.type("carnet")
        page.wait_for_text("//h2[contains(., 'bloc')]", "2 blocs")
        page.press("Tab", "ctrl+a", "Return")  # the list, all of it, on to the bar
        page.wait_for_text(BAR, "2 blocs35 min")
        page.press("Tab")
        page.type("Carnet")
        page.press("Tab", "space")
        page.wait_for_text(TOAST, "Attribué : 2 blocs (35 min).")
        self.assertNotIn("Règle apprise", page.text(TOAST))
        given, free = ("travail", project), (None, None)
        self.assertEqual(self.assigned(), [given, given, free, free])

        # Today, by mouse: one block, whose title is text and nothing else.
        page.click(button("Aujourd’hui"))
        page.wait_for_text("//h1", f" {self.today.day} ")
        page.wait_for_text(row("09:00"), " ".join(TITLE.split()))
        page.click(row("09:00"))
        page.press("Return", "Tab")
        page.type("Carnet")
        page.click(button("Attribuer"))
        page.wait_for_text(LEARNT, f"Site{SITE}→compte commeTravail{PROJECT}")
        self.assertEqual(self.assigned(), [given, given, given, free])
        learnt = ("SELECT field, pattern, category, project_id, priority FROM rules"
                  " WHERE priority>=0")
        self.assertEqual(self.stored(learnt), [("domain", SITE, "travail", project, 0)])
        page.wait_for_text(row("09:45"), PROJECT)  # by the rule
        self.assertEqual(page.script("return document.title"), "Orvanta")

    def test_settings_and_a_pause(self):
        project = self.add_project()
        page = self.open()
        page.press("g")
        page.wait_for_text("//h1", "Réglages")
        page.wait_for_text("//main", "un film comptera comme absence")  # a bare window manager
        for text, error in (("0,1", "0,5 au moins."), ("4", "")):
            page.click(field("Seuil d’inactivité"))
            page.press("ctrl+a")
            page.type(text)
            page.press("Return")
            what = field("Seuil d’inactivité") + "/ancestor::div[2]//*[@role = 'alert']"
            wait_for(lambda: page.text(what) == error, 10, f"{text}: {error}")
            expected = "180" if error else "240"
            self.wait_for_setting("idle_threshold", expected)
        page.click(field("Sites exclus"))
        page.type("https://banque.example/compte")
        page.press("Return")
        self.wait_for_setting("excluded_domains", '["banque.example"]')

        page.click(button("Pause"))
        page.wait_for_text("//header", "Suivi en pause")
        self.assertEqual(self.desktop.setting("paused"), "1")
        since = time.time()
        pass_time(3 * TICK)  # what goes on is in the store every five seconds
        self.assertEqual(self.stored("SELECT 1 FROM events WHERE end > ?", since), [])
        page.click("//header//label/span[. = 'Je travaille sur']")
        page.type("Carnet")
        page.click(button("Reprendre"))
        self.wait_for_setting("paused", "0")
        wait_for(lambda: self.stored("SELECT 1 FROM events WHERE project_id=?", project), 20,
                 "a span of the project")

    def check_week(self, week):
        """The page shows the program's report."""
        page = self.page
        page.wait_for_text("//h1", f"Semaine du {named(week['monday'])[1]} ")
        page.wait_for_text("//section[@aria-label = 'Résumé de la semaine']",
                           spelt(sum(day["active"] for day in week["days"])))
        for day in week["days"]:
            name, number = named(day["date"])
            first, last = (edge and datetime.datetime.fromtimestamp(edge, self.nine.tzinfo)
                           for edge in (day["first"], day["last"]))
            self.assertEqual(
                page.text("//section[@aria-label = 'Jours de la semaine']"
                          f"//button[starts-with(@title, '{name} ')]").strip(),
                f"{name[:3]}. {number}"
                + (f"{spelt(day['active'])}{first:%H:%M} – {last:%H:%M}" if first else "–"))
            cells = "".join(spelt(day["by_category"].get(category, 0)) for category in CATEGORIES)
            shown = page.text(f"//table//tr[starts-with(th, '{name} {number} ')]")
            self.assertTrue(shown.endswith(cells), (shown, cells))

    def check_recap(self, recap):
        page = self.page
        now, then = recap["current"], recap["previous"]
        page.wait_for_text("//h1", f"Bilan du {named(recap['monday'])[1]}")
        for tile, key in (("Temps actif", "active"), ("Moyenne par jour actif", "avg_per_day"),
                          ("Plus longue session", "longest_session")):
            page.wait_for_text(f"//dl/div[dt = '{tile}']/dd", f"{spelt(now[key])}"
                               f"{changed(now[key], then[key])}avant : {spelt(then[key])}")
        name, number = named(now["best_day"]["date"])
        page.wait_for_text("//dl/div[dt = 'Jour le plus actif']/dd",
                           f"{spelt(now['best_day']['active'])}{name} {number}")
        both = [(title, now["by_category"].get(key, 0), then["by_category"].get(key, 0))
                for key, title in CATEGORIES.items()]
        both.sort(key=lambda one: -abs(one[1] - one[2]))
        page.wait_for_text("//section[@aria-label = 'Catégories']/ul", "".join(
            f"{title}{changed(mine, before)}, {spelt(mine)} contre {spelt(before)}"
            for title, mine, before in both if abs(mine - before) >= 60))

    def test_weeks_and_the_recap(self):
        project = self.add_project()
        weekday = self.nine.weekday()
        # Days from this week's Monday on, minutes after 9; the last but one passes midnight and Sunday.
        for day, start, end, category, owner, idle in (
                (-12, 30, 90, "travail", project, 0), (-7, 0, 160, "travail", project, 0),
                (-5, 60, 100, "loisir", None, 0),
                (-5, 100, 130, None, None, 1), (-5, 130, 160, "autre", project, 0),
                (-1, 870, 935, "loisir", None, 0), (weekday, 101, 131, "travail", project, 0)):
            day = (day - weekday) * 1440
            self.span(day + start, day + end, "Inactif" if idle else "Atelier",
                      idle=idle, category=category, project_id=owner)
        self.desktop.set_setting("paused", "1")
        monday = self.today - datetime.timedelta(days=weekday + 7)
        before, week = (self.desktop.call("week", json.dumps({"date": str(date)}))[1]
                        for date in (monday, self.today))
        page = self.open()
        page.press("s")
        self.check_week(week)
        page.click(button("Semaine précédente"))
        self.check_week(before)
        page.wait_for_text("//section[@aria-label = 'Projets']", f"{PROJECT}3 h 10")
        page.click("//section[@aria-label = 'Jours de la semaine']"
                   "//button[starts-with(@title, 'Mercredi ')]")
        page.wait_for_text("//h1", f"Mercredi {(monday + datetime.timedelta(days=2)).day} ")
        page.wait_for_text(row("10:40 – 11:10"), "Inactif")
        page.press("s")
        page.click(button("Semaine suivante"))
        self.check_week(week)
        self.assertEqual(page.script("return document.querySelector("
                                     "'[aria-label=\"Semaine suivante\"]').disabled"), True)
        page.press("b")
        sunday = monday + datetime.timedelta(days=13)
        running = {"from": week["days"][0]["date"], "to": str(sunday), "compare": True}
        so_far = self.desktop.call("period", json.dumps(running))[1]
        now, then = so_far["active"], so_far["before"]["active"]
        page.wait_for_text("//dl/div[dt = 'Temps actif']/dd",
                           f"{spelt(now)}{changed(now, then)}avant, au même moment : {spelt(then)}")
        page.click(button("Semaine précédente"))
        self.check_recap(self.desktop.call("recap", json.dumps({"date": str(monday)}))[1])
        page.wait_for_text("//section[@aria-label = 'Projets']", f"{PROJECT}+ 2 h 10")
