"""What the page promises of the store: taken back as it was, not stored."""

import os
import time

from desktop import pass_time
from page_case import BAR, LEARNT, PROJECT, SITE, TOAST, PageCase, button, field, row

TROUBLE = "//*[@role = 'alert'][contains(@class, 'store-trouble')]"


class PageStoreTest(PageCase):
    def setUp(self):
        super().setUp()
        self.desktop.set_setting("paused", "1")

    def tables(self):
        """Every row of what a change may touch."""
        return [self.stored(f"SELECT * FROM {table} ORDER BY id")
                for table in ("events", "rules", "projects")]

    def take_back_and_forth(self, before, after):
        """And back again."""
        for name, said, tables in (("Annuler", "Annulé", before), ("Rétablir", "Rétabli", after),
                                   ("Annuler", "Annulé", before)):
            self.page.click(TOAST + button(name))
            self.page.wait_for_text(TOAST, f"{said} : ")
            self.assertEqual(self.tables(), tables)

    def test_what_was_assigned_is_taken_back_as_it_was(self):
        client = self.add_project("Client")
        project = self.add_project()
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
        page = self.open()
        page.wait_for_text("//h2[contains(., 'bloc')]", "5 blocs")
        before = self.tables()
        start, _ = self.drag(10, 98)
        self.assertLessEqual(abs(start - 10), 1)
        page.click(BAR + "//label[. = 'Loisir']")
        page.press("Tab")
        page.choose("Carnet")
        page.click(button("Attribuer"))
        page.wait_for_text(TOAST, "Attribué : ")
        after = self.tables()
        given = dict(self.stored("SELECT id, category || project_id FROM events"))
        self.assertEqual({given[span] for span in short}, {f"loisir{project}"})
        self.assertEqual(len(after[0]), len(before[0]) + 1, "cut in two at the start")
        self.assertEqual(self.stored_today("category, project_id")[:3],
                         [(0, start, None, None), (start, 20, "loisir", project),
                          (20, 45, "loisir", project)])
        self.take_back_and_forth(before, after)
        page.wait_for_text("//h2[contains(., 'bloc')]", "5 blocs")

        # The second, third and fourth block.
        page.press("slash", "Tab", "Down", "Down", "shift+Down", "ctrl+Down", "space")
        page.wait_for_text(BAR, "3 blocs1 h 10")
        page.press("eacute")  # 2, on this keyboard
        page.wait_for_text(TOAST, "Attribué : 3 blocs (1 h 10).")
        self.assertEqual([category for *_, category in self.stored_today("category")[:5]],
                         [None, "loisir", "loisir", "loisir", None])
        page.press("ctrl+z")
        page.wait_for_text(TOAST, "Annulé : ")
        self.assertEqual(self.tables(), before)

        page.click(row("10:40"))
        page.press("eacute")
        page.wait_for_text(LEARNT, "Siterade.example→compte commeLoisir")
        after = self.tables()
        self.assertEqual(
            self.stored("SELECT id, category FROM events WHERE title IN ('Cale', 'Môle')"),
            [(span, "loisir") for span in mixed])
        self.assertNotEqual(after[1], before[1], "it learns")
        self.take_back_and_forth(before, after)

    def test_another_program_holds_the_file(self):
        page = self.open()
        page.wait_for_text(row("09:00"), SITE)
        other = self.desktop.hold()
        before = self.tables()
        sentence = "Un autre programme retient le fichier des données"
        page.click(row("09:00"))
        page.press("ampersand")
        tried = time.time()
        page.wait_for_text(TOAST, sentence)
        self.assertEqual(page.text(TROUBLE), "", "other programs write, too: for a moment")
        pass_time(tried + 5 - time.time())
        page.press("ampersand")
        page.wait_for_text(TROUBLE, sentence, 15)
        self.assertIn(sentence, page.text(TOAST))
        self.assertEqual(self.tables(), before)
        other.execute("ROLLBACK")
        page.wait_for_nothing(TROUBLE, 20)
        page.press("ampersand")
        page.wait_for_text(TOAST, "Attribué : 1 bloc (20 min).")
        self.assertEqual(self.stored("SELECT category FROM events WHERE domain=? ORDER BY start",
                                     SITE), [(None,), (None,), ("travail",), (None,)])

    def test_the_first_opening_on_a_full_disk(self):
        self.desktop.on_small_disk("1m")
        self.desktop.call("day")
        filler = self.desktop.fill_disk()
        page = self.open(onboarded=False)
        page.wait_for_text("//h1", "Bienvenue dans Orvanta")
        page.wait_for_text(TROUBLE, "Le disque est plein", 20)
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
        page.wait_for_nothing(TROUBLE, 20)
        self.wait_for_setting("onboarded", "1")

    def test_everything_goes_into_a_file_that_is_taken_back(self):
        project = self.add_project("Emporté")
        self.span(100, 110, "Navigateur", title="Cale")
        page = self.open()
        page.press("g")
        for arrives in ("Dernière : ", "Aide sur les navigateurs", "Version installée : "):
            page.wait_for_text("//main", arrives)  # which moves what is below
        pass_time(1)
        page.click(button("Tout emporter…"))
        page.answer_panel("Exporter", "Return")
        page.wait_for_text(TOAST, "Tout est dans ce fichier : ")
        path = os.path.join(self.desktop.env["HOME"], f"orvanta_{self.today}.db")
        before = self.tables()
        self.change("DELETE FROM projects WHERE id = ?", project)
        page.click(button("Reprendre un fichier…"))
        page.answer_panel("Reprendre un fichier", "Return", path)
        page.wait_for_text("//dialog", "Le fichier actuel n’est pas effacé")
        page.click("//dialog" + button("Reprendre"))
        page.wait_for_text(TOAST, "Repris : ")
        self.assertEqual(self.tables(), before)
