"""Finding again what was done: Ctrl+K in the page by mouse and keyboard, --search in a terminal."""

import datetime

from desktop import wait_for
from page_case import SITE, TITLE, TOAST, PageCase, button, row
from webdriver import FOCUSED, PLAIN

SEARCH = "//dialog[.//h2 = 'Retrouver']"
SELECTED = "//*[@role = 'option'][@aria-selected = 'true']"


class SearchTest(PageCase):
    def search(self, words, told):
        self.page.press("ctrl+k")
        wait_for(lambda: self.page.script(FOCUSED) == "", 10, "the field has the focus")
        self.page.type(words)
        self.page.wait_for_text(SEARCH, told)

    def test_a_terminal_tells_when_it_was(self):
        text = self.run_orvanta("--search", "ETE", "navigateur").translate(PLAIN)
        self.assertIn("Temps en tout : 40 min\n", text)
        self.assertRegex(text, r"Dernière fois : \w+ \d+(er)? \S+ \d{4}, 09:20\n")
        self.assertIn(f"  09:00-09:20  {SITE} : {TITLE} (20 min)\n", text)
        self.assertIn("Rien de tel", self.desktop.run(self.desktop.orvanta, "--search", "\"ete ete\"")
                      .stdout.decode())
        self.assertIn("usage", self.run_orvanta("--search", "« »", status=2))

    def test_the_keyboard_finds_it_again(self):
        page = self.open()
        page.wait_for_text("//h1", "")
        for view in "s", "e", "r", "g":  # in every view
            page.press(view)
            self.search("ete co", "40 min en tout")
            page.press("Escape")
            page.wait_for_nothing(SEARCH)
        self.search("Marees", "30 min en tout")
        page.press("Down", "Down")
        page.wait_for_text(SELECTED, "Marées")
        page.press("Return")
        page.wait_for_nothing(SEARCH)
        yesterday = self.today - datetime.timedelta(days=1)
        page.wait_for_text("//h1", f" {yesterday.day}")
        page.wait_for_text(row("Marées"), "09:45")

    def test_what_is_found_is_given_ruled_and_erased(self):
        project = self.add_project()
        page = self.open()
        self.search("marees", "30 min en tout")
        page.press("Down")
        page.click(button("Attribuer…"))
        page.click("//dialog//label[contains(., 'Tout ce qui est trouvé')]")
        page.click("//dialog//label/span[. = 'Projet']")
        page.type("Carnet")
        page.click("//dialog[.//h2 = 'Attribuer']//footer" + button("Attribuer"))
        page.wait_for_text(TOAST, "Attribué")
        self.wait_for_store([(project,)], "SELECT DISTINCT project_id FROM events WHERE title='Marées'")

        page.click(button("Créer une règle…"))
        wait_for(lambda: page.script(FOCUSED).lower() in ("marées", SITE), 10, "the rule is filled in")
        page.press("Escape")
        page.click(button("Supprimer…"))
        page.wait_for_text("//dialog[.//h2[contains(., 'Supprimer')]]", "1 activité (15 min)")
        page.click(button("Supprimer pour de bon"))
        page.wait_for_text(SEARCH, "15 min en tout")
        self.wait_for_store([(1,)], "SELECT count(*) FROM events WHERE title='Marées'")
