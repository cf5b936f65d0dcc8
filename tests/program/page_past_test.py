"""Time of other programs and what is excluded with its past, by mouse in the real program."""

import os

from desktop import wait_for
from page_case import BAR, SITE, TITLE, TOAST, PageCase, button, row

DIALOG = "//dialog"


class PagePastTest(PageCase):
    def setUp(self):
        super().setUp()
        self.desktop.set_setting("paused", "1")

    def test_a_file_is_imported_and_taken_back(self):
        path = os.path.join(self.desktop.env["HOME"], "heures.csv")
        with open(path, "w", encoding="latin-1") as file:
            for line in (("Début", "Fin", "Tâche", "Projet"),
                         (f"{self.today} 06:00", f"{self.today} 07:30", TITLE, "Été"),
                         (f"{self.today} 09:00", f"{self.today} 09:20", "Doublon", ""),
                         ("hier", "demain", "?", "")):
                print(*line, sep="\t", file=file)
        rows = self.stored("SELECT * FROM events ORDER BY id")
        page = self.open()
        self.show_settings()
        page.wait_for_text("//main", "Importer un fichier…")
        page.choose_file("//input[@type = 'file']", path)
        page.wait_for_text(DIALOG, "1 activité (1 h 30) à importer.")
        page.wait_for_text(DIALOG + "//tbody", "1 h 30")
        page.wait_for_text(DIALOG, "1 activité : début illisible (ligne 4)")
        page.click(DIALOG + button("Importer"))
        page.wait_for_text(TOAST, "Importé : 1 activité (1 h 30).")
        added = ("SELECT e.start, e.end, e.title, p.name FROM events e JOIN projects p"
                 " ON p.id = e.project_id WHERE e.bundle LIKE '%import%'")
        six = self.nine.timestamp() - 3 * 3600
        self.assertEqual(self.stored(added), [(six, six + 5400, TITLE.rstrip(), "Été")])
        page.click(TOAST + button("Annuler"))
        page.wait_for_text(TOAST, "Annulé : ")
        self.assertEqual(self.stored("SELECT * FROM events ORDER BY id"), rows)
        self.assertEqual(self.stored("SELECT 1 FROM projects"), [])

    def test_a_site_is_excluded_with_its_time(self):
        page = self.open()
        page.click(row("Marées"))
        page.click(BAR + button("Exclure…"))
        page.wait_for_text(DIALOG, "Déjà enregistré : 4 activités (1 h 10), depuis le ")
        page.click(DIALOG + "//label[starts-with(., 'Effacer aussi tout son temps')]")
        page.click(DIALOG + button("Exclure et effacer le temps"))
        page.wait_for_text(TOAST, "Effacé pour de bon : 4 activités (1 h 10).")
        page.wait_for_nothing(row("Marées"))
        self.assertEqual(self.stored("SELECT DISTINCT app FROM events ORDER BY 1"),
                         [("Atelier",), ("Chaloupe",)])
        self.wait_for_setting("excluded_domains", f'["{SITE}"]')
        folder = os.path.dirname(self.desktop.database())
        for name in wait_for(lambda: self.files(folder), 5, "files"):
            with open(name, "rb") as file:
                self.assertNotIn("Marées".encode(), file.read(), name)

    def show_settings(self):
        """All that moves what is below is there."""
        self.page.press("g")
        self.page.wait_for_text("//main", "un film comptera comme absence")
        self.page.wait_for_text("//main", "Seuil d’inactivité")

    @staticmethod
    def files(folder):
        return [os.path.join(place, name) for place, _, names in os.walk(folder) for name in names
                if os.path.isfile(os.path.join(place, name))]
