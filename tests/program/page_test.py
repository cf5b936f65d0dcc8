"""The built page in the real program, by mouse and keyboard: what is done there is in the store."""

import csv
import datetime
import os
import time
import unittest

from desktop import TICK, pass_time, wait_for
from page_case import BAR, PROJECT, SITE, SPANS, TITLE, TOAST, PageCase, button, field, row
from weeks import WEEKDAYS, Period, changed, spelt

CATEGORIES = {"travail": "Travail", "loisir": "Loisir", "autre": "Autre", None: "Non classé"}


class PageTest(PageCase):
    def assigned(self, domain=SITE):
        """Category and project of each of the site's spans, the oldest first."""
        return self.stored("SELECT category, project_id FROM events WHERE domain=? ORDER BY start",
                           domain)

    def test_the_first_opening(self):
        self.open(onboarded=False)
        page = self.page
        page.wait_for_text("//h1", "Bienvenue dans Orvanta")
        self.assertIn(self.desktop.database(), page.text("//main"))
        page.click(button("Continuer"))
        page.wait_for_text("//h1", "Ce que ce bureau permet")
        page.wait_for_text("//main", "Application et fenêtreX11")
        page.click(button("Continuer"))
        page.wait_for_text("//h1", "Un premier projet")
        page.click(button("Créer et commencer"))
        page.wait_for_text("//*[@role = 'alert'][. != '']", "Donnez un nom au projet")
        self.assertEqual(self.setting("onboarded"), "0")

        page.click(field("Nom"))
        page.type("L'été à Brest")
        page.click("//input[@aria-label = 'Ocre']/..")
        page.click(field("Mots-clés"))
        page.type("sonde, quai")
        page.press("Return")
        self.wait_for_store([("L'été à Brest", "#d08c10", "travail", "sonde, quai")],
                            "SELECT name, color, category, keywords FROM projects")
        wait_for(lambda: self.setting("onboarded") == "1", 10, "onboarded")
        # Its time is there at once, by its keyword.
        page.wait_for_text("//section[@aria-label = 'Projets']", "L'été à Brest30 min")

    def test_a_day_is_assigned_and_teaches(self):
        project = self.change("INSERT INTO projects(name) VALUES (?)", PROJECT)
        started = self.open()
        page = self.page
        painted = page.script("""
            return new Promise(done => {
                const look = () => document.querySelector("[role=option]")
                    ? requestAnimationFrame(() => done(Date.now() / 1000))
                    : requestAnimationFrame(look);
                look();
            });""")
        print(f"\nfrom the start of the program to the first painted day: "
              f"{painted - started:.2f} s at most, the driver's own start included")

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
        page.wait_for_text(TOAST, "Assigné : 2 blocs (35 min).")
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
        page.click(button("Assigner"))
        page.wait_for_text(TOAST, f"Règle apprise : {SITE} → Travail, {PROJECT}")
        self.assertEqual(self.assigned(), [given, given, given, free])
        learnt = ("SELECT field, pattern, category, project_id, priority FROM rules"
                  " WHERE priority>=0")
        self.assertEqual(self.stored(learnt), [("domain", SITE, "travail", project, 0)])
        page.wait_for_text(row("09:45"), PROJECT)  # by the rule

        page.click(TOAST + button("Annuler"))
        self.wait_for_store([], learnt)
        wait_for(lambda: self.assigned() == [given, given, free, free], 10, "taken back")
        wait_for(lambda: PROJECT not in page.text(row("09:45")), 10, "no project any more")

        # One key assigns: on this keyboard the digit is Shift's. Another takes it back.
        page.click(row("09:45"))
        page.press("ampersand")
        page.wait_for_text(TOAST, "Assigné : 1 bloc (15 min).")
        self.assertEqual(self.assigned(), [given, given, free, ("travail", None)])
        page.press("ctrl+z")
        wait_for(lambda: self.assigned() == [given, given, free, free], 10, "taken back")
        self.assertEqual(page.script("return document.title"), "Orvanta")

    def test_rules_settings_export_and_pause(self):
        project = self.change("INSERT INTO projects(name) VALUES (?)", PROJECT)
        self.open()
        page = self.page
        page.press("r")
        page.wait_for_text("//h1", "Règles")
        page.press("n")
        page.wait_for_text("//dialog//h2", "Nouvelle règle")
        page.press("Escape")
        wait_for(lambda: page.text("//dialog") == "", 10, "the dialogue closes")
        page.press("n")
        page.wait_for_text("//dialog//h2", "Nouvelle règle")
        page.type("ATELIER")  # into the field that has the focus
        page.click("//dialog//label/span[. = 'Quand']")
        page.type("App")
        page.click("//dialog//label/span[. = 'Catégorie']")
        page.type("Loi")
        page.wait_for_text("//dialog", "2 activités, 50 min ces 30 derniers jours.")
        page.wait_for_text("//dialog", "Ce qui changerait : 50 min.")
        page.click(button("Enregistrer"))
        self.wait_for_store([("app", "ATELIER", "loisir", None)],
                            "SELECT field, pattern, category, project_id FROM rules"
                            " WHERE priority>=0")
        page.press("j")
        page.wait_for_text(row("Atelier"), "Loisir")

        page.press("g")
        page.wait_for_text("//h1", "Réglages")
        for text, error in (("abc", "Un nombre entier est attendu."), ("10", "30 au moins."),
                            ("9999", "7200 au plus."), ("240", "")):
            page.click(field("Seuil d’inactivité"))
            page.press("ctrl+a")
            page.type(text)
            page.press("Return")
            what = field("Seuil d’inactivité") + "/ancestor::div[2]//*[@role = 'alert']"
            wait_for(lambda: page.text(what) == error, 10, f"{text}: {error}")
            expected = "180" if error else text
            wait_for(lambda: self.setting("idle_threshold") == expected, 10, text)
        page.click(field("Sites exclus"))
        page.type("https://banque.example/compte")
        page.press("Return")
        wait_for(lambda: self.setting("excluded_domains") == '["banque.example"]', 10, "excluded")

        page.click(button("Aujourd’hui"))
        page.click(button("Exporter…"))
        page.answer_panel("Exporter", "Return")
        page.wait_for_text(TOAST, "Exporté : du ")
        path = os.path.join(self.desktop.env["HOME"], f"lumaplan_{self.today}_{self.today}.csv")
        with open(path, encoding="utf-8-sig", newline="") as file:
            rows = {line["debut"]: line for line in csv.DictReader(file, delimiter=";")}
        first = rows[f"{self.today} 09:00:00"]
        self.assertEqual((first["domaine"], first["titre"]), (SITE, TITLE))
        self.assertEqual(rows[f"{self.today} 09:20:00"]["categorie"], "loisir")

        page.click(button("Pause"))
        page.wait_for_text("//header", "Suivi en pause")
        self.assertEqual(self.setting("paused"), "1")
        since = time.time()
        pass_time(3 * TICK)  # what goes on is in the store every five seconds
        self.assertEqual(self.stored("SELECT 1 FROM events WHERE end > ?", since), [])
        page.click("//header//label/span[. = 'Je travaille sur']")
        page.type("Carnet")
        page.click(button("Reprendre"))
        wait_for(lambda: self.setting("paused") == "0", 10, "it tracks again")
        wait_for(lambda: self.stored("SELECT 1 FROM events WHERE project_id=?", project), 20,
                 "a span of the project")

    def weeks(self):
        """Last week and this one, as the store has them."""
        zone = self.nine.tzinfo
        at = datetime.datetime.fromtimestamp
        spans = [(at(start, zone), at(end, zone), *rest) for start, end, *rest in self.stored(
            "SELECT start, end, category, project_id, idle FROM events ORDER BY start")]
        monday = self.nine.replace(hour=0) - datetime.timedelta(days=self.nine.weekday())
        return Period(spans, monday - datetime.timedelta(days=7)), Period(spans, monday)

    def check_week(self, week):
        page = self.page
        page.wait_for_text("//h1", f"Semaine du {week.name()}")
        page.wait_for_text("//section[@aria-label = 'Résumé de la semaine']", spelt(week.active))
        for start in week.days:
            day, date = week.day(start), start.date()
            name = WEEKDAYS[date.weekday()].capitalize()
            shown = page.text("//section[@aria-label = 'Jours de la semaine']"
                              f"//button[starts-with(@title, '{name} ')]")
            at = [span for span in day.spans if not span[4]]
            expected = f"{name[:3]}. {date.day}" + (
                f"{spelt(day.active)}{at[0][0]:%H:%M} – {max(span[1] for span in at):%H:%M}"
                if at else "–")
            self.assertEqual(shown.strip(), expected)
            cells = "".join(spelt(day.by(2).get(category, 0)) for category in CATEGORIES)
            row = f"//table//tr[starts-with(th, '{name} {date.day} ')]"
            self.assertTrue(page.text(row).endswith(cells), (page.text(row), cells))

    def check_recap(self, week, before):
        page = self.page
        page.wait_for_text("//h1", f"Bilan du {week.name()}")
        active = [(week.day(day).active, day) for day in week.days if week.day(day).active > 0]
        count, count_before = len(active), sum(before.day(day).active > 0 for day in before.days)
        for tile, now, then in (
                ("Temps actif", week.active, before.active),
                ("Moyenne par jour actif", week.active / count, before.active / count_before),
                ("Plus longue session", week.longest_session(), before.longest_session())):
            page.wait_for_text(f"//dl/div[dt = '{tile}']/dd",
                               f"{spelt(now)}{changed(now - then)}avant : {spelt(then)}")
        best, day = max(active)
        page.wait_for_text("//dl/div[dt = 'Meilleur jour']/dd",
                           f"{spelt(best)}{WEEKDAYS[day.weekday()].capitalize()} {day.day}")
        now, then = week.by(2), before.by(2)
        order = sorted(CATEGORIES, key=lambda one: -abs(now.get(one, 0) - then.get(one, 0)))
        expected = "".join(
            f"{CATEGORIES[one]}{changed(now.get(one, 0) - then.get(one, 0))}"
            f", {spelt(now.get(one, 0))} contre {spelt(then.get(one, 0))}"
            for one in order if abs(now.get(one, 0) - then.get(one, 0)) >= 60)
        page.wait_for_text("//section[@aria-label = 'Catégories']/ul", expected)

    def test_weeks_agree_with_the_store(self):
        project = self.change("INSERT INTO projects(name) VALUES (?)", PROJECT)
        # Days from this week's Monday on and minutes; the last but one passes midnight and Sunday.
        monday = self.weeks()[1].days[0].timestamp()
        for day, start, end, category, owner, idle in (
                (-7, 540, 700, "travail", project, 0), (-5, 600, 640, "loisir", None, 0),
                (-5, 640, 670, None, None, 1), (-5, 670, 700, "autre", project, 0),
                (-1, 1410, 1475, "loisir", None, 0),
                (self.nine.weekday(), 641, 671, "travail", project, 0)):
            self.change("INSERT INTO events(start,end,app,idle,category,project_id)"
                        " VALUES (?,?,?,?,?,?)",
                        monday + day * 86400 + start * 60, monday + day * 86400 + end * 60,
                        "Inactif" if idle else "Atelier", idle, category, owner)
        self.desktop.set_setting("paused", "1")
        before, week = self.weeks()
        self.open()
        page = self.page
        page.press("s")
        self.check_week(week)
        page.click(button("Semaine précédente"))
        self.check_week(before)
        page.wait_for_text("//section[@aria-label = 'Projets']",
                           f"{PROJECT}{spelt(before.by(3)[project])}")
        page.click("//section[@aria-label = 'Jours de la semaine']"
                   "//button[starts-with(@title, 'Mercredi ')]")
        page.wait_for_text("//h1", f"Mercredi {before.days[2].day} ")
        page.wait_for_text(row("10:40 – 11:10"), "Inactif")
        page.press("s")
        page.click(button("Semaine suivante"))
        self.check_week(week)
        self.assertEqual(page.script("return document.querySelector("
                                     "'[aria-label=\"Semaine suivante\"]').disabled"), True)
        page.press("b")
        self.check_recap(week, before)
        change = changed(week.by(3)[project] - before.by(3)[project])
        page.wait_for_text("//section[@aria-label = 'Projets']", f"{PROJECT}{change}")

    def test_a_range_by_mouse_and_blocks_by_keyboard(self):
        project = self.change("INSERT INTO projects(name) VALUES (?)", PROJECT)
        self.desktop.set_setting("paused", "1")
        self.open()
        page = self.page
        nine = self.nine.timestamp()

        def stored():
            return self.stored("SELECT round((start - ?) / 60), round((end - ?) / 60), app,"
                               " category, project_id FROM events WHERE start >= ? ORDER BY start",
                               nine, nine, nine)
        untouched = [(start, end, app, None, None) for start, end, app, _, _ in SPANS]

        self.drag(10, 40)
        start, end = (int(text[:2]) * 60 + int(text[3:]) - 540 for text in page.script("""
            return [...document.querySelectorAll("[aria-label$='de la plage']")]
                .map(field => field.value);"""))
        self.assertLessEqual(max(abs(start - 10), abs(end - 40)), 1)
        page.click(BAR + "//label[. = 'Loisir']")
        page.press("Tab")
        page.type("Carnet")
        page.click(button("Assigner"))
        page.wait_for_text(TOAST, f"({spelt((end - start) * 60)}).")
        given = ("loisir", project)
        self.assertEqual(stored(), [
            (0, start, "Navigateur", None, None), (start, 20, "Navigateur", *given),
            (20, end, "Atelier", *given), (end, 45, "Atelier", None, None), *untouched[2:]])
        page.wait_for_text(row(f"09:{start:02} – "), PROJECT)
        page.click(TOAST + button("Annuler"))
        wait_for(lambda: {span[3:] for span in stored()} == {(None, None)}, 10, "taken back")

        # The second and third of the blocks, and the last.
        page.wait_for_text("//h2[contains(., 'bloc')]", "4 blocs")
        page.press("slash", "Tab", "Down", "Down", "shift+Down", "ctrl+Down", "space")
        page.wait_for_text(BAR, "3 blocs1 h 10")
        page.press("eacute")  # 2, on this keyboard
        page.wait_for_text(TOAST, "Assigné : 3 blocs (1 h 10).")
        self.assertEqual({(span[0] >= 20, span[3]) for span in stored()},
                         {(False, None), (True, "loisir")})


if __name__ == "__main__":
    unittest.main()
