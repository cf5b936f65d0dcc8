"""What the page promises of the store: taken back as it was, gone for good, restored, not stored."""

import glob
import os
import sqlite3
import time
import unittest

from desktop import pass_time, wait_for
from page_case import BAR, PROJECT, SITE, TOAST, PageCase, button, field, row

SECRET = "Rendez-vous chez le notaire"
TROUBLE = "//*[@role = 'alert'][contains(@class, 'store-trouble')]"
DIALOG = "//dialog"


class PageStoreTest(PageCase):
    def setUp(self):
        super().setUp()
        self.desktop.set_setting("paused", "1")

    def folder(self):
        return os.path.dirname(self.desktop.database())

    def span(self, start, end, app, **columns):
        """Puts a span into the store, minutes after 9 o'clock of today."""
        columns = {"start": self.nine.timestamp() + start * 60,
                   "end": self.nine.timestamp() + end * 60, "app": app, **columns}
        return self.change(f"INSERT INTO events({','.join(columns)})"
                           f" VALUES ({','.join('?' * len(columns))})", *columns.values())

    def tables(self):
        """Every row of what a change may touch."""
        return [self.stored(f"SELECT * FROM {table} ORDER BY id")
                for table in ("events", "rules", "projects")]

    def files_with(self, text):
        """The files beside the store, backups and logs included, that hold the text."""
        found = []
        for path in glob.glob(os.path.join(self.folder(), "**"), recursive=True):
            if os.path.isfile(path):
                with open(path, "rb") as file:
                    if text.encode() in file.read():
                        found.append(os.path.relpath(path, self.folder()))
        return found

    def open_settings(self):
        self.page.press("g")
        # What comes later moves what is below it.
        for part in ("Garder titres et adresses", "Titre des fenêtres", "Dernière : "):
            self.page.wait_for_text("//main", part)

    def take_back_and_forth(self, before, after):
        """By the mouse, there and back, and by the keyboard."""
        page = self.page
        page.click(TOAST + button("Annuler"))
        page.wait_for_text(TOAST, "Annulé : ")
        self.assertEqual(self.tables(), before)
        page.click(TOAST + button("Rétablir"))
        page.wait_for_text(TOAST, "Rétabli : ")
        self.assertEqual(self.tables(), after)
        page.press("ctrl+z")
        page.wait_for_text(TOAST, "Annulé : ")
        self.assertEqual(self.tables(), before)

    def test_what_was_assigned_is_taken_back_as_it_was(self):
        client = self.change("INSERT INTO projects(name) VALUES ('Client')")
        project = self.change("INSERT INTO projects(name) VALUES (?)", PROJECT)
        # Too short for the list, which shows nothing under a minute.
        short = [self.span(91, 91.4, "Bref", project_id=client),
                 self.span(93, 93.5, "Rapide", category="loisir", project_id=client),
                 self.span(95, 95.2, "Furtif")]
        # One block: its first span is its rule's, its second one's category was given by hand. What
        # it is assigned to was yesterday's already, and so is learnt.
        self.change("INSERT INTO rules(field,pattern,category,priority)"
                    " VALUES ('domain','rade.example','travail',-1)")
        self.span(100 - 1440, 110 - 1440, "Navigateur", domain="rade.example", category="loisir")
        mixed = [self.span(100, 110, "Navigateur", domain="rade.example", title="Cale"),
                 self.span(110, 120, "Navigateur", domain="rade.example", title="Môle",
                           category="travail")]
        self.open()
        page = self.page
        page.wait_for_text("//h2[contains(., 'bloc')]", "5 blocs")
        before = self.tables()
        self.drag(10, 98)
        page.click(BAR + "//label[. = 'Loisir']")
        page.press("Tab")
        page.type("Carnet")
        page.click(button("Assigner"))
        page.wait_for_text(TOAST, "Assigné : ")
        after = self.tables()
        given = dict(self.stored("SELECT id, category || project_id FROM events"))
        self.assertEqual({given[span] for span in short}, {f"loisir{project}"})
        self.assertEqual(len(after[0]), len(before[0]) + 1, "cut in two at the start")
        self.take_back_and_forth(before, after)
        page.wait_for_text("//h2[contains(., 'bloc')]", "5 blocs")

        page.click(row("10:40"))
        page.press("eacute")  # 2, on this keyboard
        page.wait_for_text(TOAST, "Règle apprise : rade.example → Loisir")
        after = self.tables()
        self.assertEqual(
            self.stored("SELECT id, category FROM events WHERE title IN ('Cale', 'Môle')"),
            [(span, "loisir") for span in mixed])
        self.assertNotEqual(after[1], before[1], "it learns")
        self.take_back_and_forth(before, after)

    def test_what_is_deleted_is_gone_from_every_file(self):
        self.span(91, 99, "Atelier", title=SECRET)
        self.open()
        page = self.page
        self.open_settings()
        page.click(button("Sauvegarder maintenant"))
        page.wait_for_text(TOAST, "Sauvegardé : ")
        self.assertEqual(len(self.files_with(SECRET)), 2, "in the store and in the backup")

        page.press("j")
        page.click(row(SECRET))
        page.press("Delete")
        page.wait_for_text(DIALOG, "Supprimer Atelier, 10:31 – 10:39 ?1 activité (8 min) : applications, titres")
        page.press("Escape")
        wait_for(lambda: page.text(DIALOG) == "", 10, "the dialogue closes")
        self.assertEqual(len(self.files_with(SECRET)), 2)
        page.click(BAR + button("Supprimer…"))
        page.wait_for_text(DIALOG, "1 activité (8 min)")
        page.click(DIALOG + button("Supprimer pour de bon"))
        page.wait_for_text(TOAST, "Supprimé : 1 activité (8 min).")
        self.assertEqual(page.text(TOAST + button("Annuler")), "")
        self.assertEqual(self.files_with(SECRET), [])
        wait_for(lambda: page.text(row(SECRET)) == "", 10, "off the list")

        # A range takes with it what lies inside, and no more.
        spans = ("SELECT round((start - ?) / 60), round((end - ?) / 60) FROM events"
                 " WHERE start >= ? ORDER BY start")
        nine = self.nine.timestamp()
        self.drag(10, 50)
        start, end = (int(text[:2]) * 60 + int(text[3:]) - 540 for text in page.script("""
            return [...document.querySelectorAll("[aria-label$='de la plage']")]
                .map(field => field.value);"""))
        page.click(BAR + button("Supprimer…"))
        page.wait_for_text(DIALOG, f"Supprimer 09:{start:02} – 09:{end:02} ?3 activités (")
        page.click(DIALOG + button("Supprimer pour de bon"))
        page.wait_for_text(TOAST, "Supprimé : 3 activités")
        self.assertEqual(self.stored(spans, nine, nine, nine), [(0, start), (end, 60), (60, 90)])

    def test_a_backup_is_restored(self):
        self.change("INSERT INTO projects(name) VALUES (?)", PROJECT)
        self.open()
        page = self.page
        self.open_settings()
        page.click(button("Vérifier les données"))
        page.wait_for_text("//*[@class = 'check-result']", "Le fichier des données est intact.")
        page.click(button("Sauvegarder maintenant"))
        page.wait_for_text(TOAST, "Sauvegardé : ")
        page.wait_for_text("//main", "Dernière : aujourd’hui à ")
        before = self.tables()
        self.desktop.call("projects.delete", '{"id": 1}')
        self.desktop.call("events.assign", '{"ids": [1], "category": "loisir"}')
        today = self.tables()

        page.click(button("Restaurer…"))
        page.wait_for_text(DIALOG, "Restaurer une sauvegarde")
        page.click(DIALOG + "//label[input[@type = 'radio']]")
        page.wait_for_text(DIALOG + "//tr[th = 'Projets']", "Projets01")
        page.click(DIALOG + button("Restaurer"))
        page.wait_for_text(TOAST, "Restauré : sauvegarde faite aujourd’hui à ")
        self.assertEqual(self.tables(), before)
        aside = glob.glob(self.desktop.database() + ".avant-restauration-*")
        self.assertEqual(len(aside), 1)
        db = sqlite3.connect(f"file:{aside[0]}?mode=ro", uri=True)
        self.addCleanup(db.close)
        self.assertEqual(db.execute("SELECT * FROM events ORDER BY id").fetchall(), today[0])
        notice = "//*[contains(@class, 'store-notice')]"
        page.wait_for_text(notice, os.path.basename(aside[0]))
        page.click(notice + button("Ne plus montrer"))
        wait_for(lambda: page.text(notice) == "", 10, "put away")
        page.press("p")
        page.wait_for_text("//section[@class = 'project-list']", PROJECT)

    def test_another_program_holds_the_file(self):
        self.open()
        page = self.page
        page.wait_for_text(row("09:00"), SITE)
        other = sqlite3.connect(self.desktop.database(), isolation_level=None)
        self.addCleanup(other.close)
        other.execute("BEGIN IMMEDIATE")
        before = self.tables()
        sentence = "Un autre programme retient le fichier des données"
        page.click(row("09:00"))
        page.press("ampersand")
        tried = time.time()
        page.wait_for_text(TOAST, sentence)
        self.assertEqual(page.text(TROUBLE), "", "other programs write, too: for a moment")
        pass_time(tried + 5 - time.time())
        page.press("ampersand")
        wait_for(lambda: sentence in page.text(TROUBLE), 15, "the banner")
        self.assertIn(sentence, page.text(TOAST))
        self.assertEqual(self.tables(), before)
        other.execute("ROLLBACK")
        wait_for(lambda: page.text(TROUBLE) == "", 20, "the banner goes")
        page.press("ampersand")
        page.wait_for_text(TOAST, "Assigné : 1 bloc (20 min).")
        self.assertEqual(self.stored("SELECT category FROM events WHERE domain=? ORDER BY start",
                                     SITE), [(None,), (None,), ("travail",), (None,)])

    def test_the_first_opening_on_a_full_disk(self):
        self.desktop.on_small_disk("1m")
        self.desktop.call("day")
        filler = self.desktop.fill_disk()
        self.open(onboarded=False)
        page = self.page
        page.wait_for_text("//h1", "Bienvenue dans Orvanta")
        wait_for(lambda: "Le disque est plein" in page.text(TROUBLE), 20, "the banner")
        page.click(button("Continuer"))
        page.click(button("Continuer"))
        page.wait_for_text("//h1", "Un premier projet")
        page.click(field("Nom"))
        page.type(PROJECT)
        page.press("Return")
        page.wait_for_text("//*[@class = 'form-error']", "Le disque est plein")
        page.click(button("Plus tard"))
        page.wait_for_text("//h1", f" {self.today.day} ")
        page.wait_for_text(TOAST, "Le disque est plein")
        self.assertIn("Le disque est plein", page.text(TROUBLE))
        os.remove(filler)
        wait_for(lambda: page.text(TROUBLE) == "", 20, "the banner goes")
        wait_for(lambda: self.setting("onboarded") == "1", 10, "it is kept")


if __name__ == "__main__":
    unittest.main()
