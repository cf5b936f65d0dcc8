"""The timesheet of the real program on its way to a client: paper, clipboard, spreadsheet, calendar."""

import datetime
import json
import os
import re

from desktop import ORVANTA, kill, pass_time, wait_for
from desktop_case import DesktopCase
from page_case import TOAST, button
from webdriver import FIND, PLAIN, Page

MAKER = os.path.join(os.path.dirname(ORVANTA), "tools", "make-store")
VIEW, BEFORE, ACROSS = "//*[@data-view = 'sheet']", button("Mois précédent"), "//label[. = 'Paysage']"
PRINT = button("Imprimer, PDF…")
TIME = re.compile(r"\d+:\d\d")


class SheetTest(DesktopCase):
    def setUp(self):
        super().setUp()
        desktop = self.desktop
        desktop.env.update(TZ="Europe/Paris", XDG_CACHE_HOME=desktop.make_folder("cache"),
                           XDG_STATE_HOME=desktop.make_folder("state"))
        made = desktop.run(MAKER, desktop.env["XDG_DATA_HOME"], "--days", "730", timeout=60)
        self.assertEqual(made.returncode, 0, made.stderr)
        for key in "onboarded", "paused":
            desktop.set_setting(key, "1")
        desktop.change("UPDATE projects SET client = iif(id % 2, '=Été; \"Fils\"', 'Rex') WHERE id < 4")
        desktop.change("INSERT INTO project_terms(project_id, currency, rate, billable, rounding)"
                       " SELECT id, 'EUR', 6500 + id * 10, 1, 15 FROM projects")
        today = datetime.date.today()
        self.month = (today.replace(day=1) - datetime.timedelta(days=1)).isoformat()[:7]
        self.sheet = json.loads(self.run_orvanta("--sheet", self.month, "--format", "json"))
        self.assertGreater(len(self.sheet["rows"]), 3)

    def figures(self, row):
        return [cell["text"] for cell in row["cells"] if cell]

    def saved(self, page, name, kind):
        """What is written where the panel suggests."""
        page.click(button(name))
        page.answer_panel("^Exporter$", "Return")
        page.wait_for_text(TOAST, "La feuille est exportée")
        page.click(TOAST + button("Fermer le message"))
        folder = self.desktop.env["HOME"]
        path, = (os.path.join(folder, file) for file in os.listdir(folder) if file.endswith(kind))
        with open(path, encoding="utf-8-sig", newline="") as file:
            text = file.read()
        os.remove(path)
        return text

    def test_from_the_start_to_paper_in_few_clicks(self):
        # The engine prints nothing for a driver: that finds out where to click.
        page, places = Page(self.desktop), []
        for xpath in (VIEW, BEFORE, PRINT, ACROSS):
            places.append(wait_for(lambda xpath=xpath: page.script(FIND, xpath), 10, xpath))
            page.click(xpath)
            month = self.sheet["name"] if xpath != VIEW else ""
            page.wait_for_text("//h1", f"Feuille de temps, {month}")
            page.wait_for_text("//table", "Total")
            page.wait_for_nothing("//*[@class = 'stale']")
        self.check_clipboard(page)
        csv = self.saved(page, "CSV…", ".csv")
        for row in self.sheet["rows"]:
            self.assertIn(f'"{row["name"]}";', csv)
        self.assertIn("UID:", self.saved(page, "Agenda (ICS)…", ".ics"))
        self.desktop.call("quit")  # which not every driver's end brings
        self.program = page.driver
        self.end_program()
        self.desktop.call("page.mark", json.dumps({"key": "sheet"}))  # upright again

        # Without a driver nobody tells when the page is ready: as slow as this machine needs.
        for seconds in 2, 5, 12:
            pdf = self.printed(places, seconds)
            if pdf and self.sheet["name"] in self.text_of(pdf):
                break
            self.end_program()
        self.check_paper(pdf, "595 x 842")
        asked = self.run_orvanta("--sheet", self.month, "--format", "json")  # beside the one that runs
        self.assertEqual(json.loads(asked), self.sheet)
        os.remove(pdf)
        self.click(places[3])
        self.check_paper(self.print_page(places[2]), "842 x 595")
        self.click(places[2])
        self.wait_for_dialogue()
        self.end_program()  # which does not wait for an answer

    def click(self, place):
        window = self.desktop.windows_named("^Orvanta$")[0]
        self.desktop.input("mousemove", "--window", window, *map(str, place), "click", "1")
        self.clicks += 1

    def printed(self, places, seconds):
        """The file that comes of the start of the program and these clicks, if one does."""
        self.desktop.env["XDG_STATE_HOME"] = self.desktop.make_folder(f"state{seconds}")
        self.program = self.desktop.spawn(ORVANTA, "--show")
        window = wait_for(lambda: self.desktop.windows_named("^Orvanta$"), 20, "the window")
        self.desktop.focus(int(window[0]))
        self.clicks = 0
        for place in places[:2]:
            pass_time(seconds)
            self.click(place)
        pass_time(seconds)
        pdf = self.print_page(places[2])
        self.assertLessEqual(self.clicks, 6)
        return pdf

    def end_program(self):
        kill(self.program)
        wait_for(lambda: self.desktop.root_windows("_NET_CLIENT_LIST") == [], 20, "no window")
        for file in os.listdir(self.desktop.env["HOME"]):
            if file.endswith(".pdf"):
                os.remove(os.path.join(self.desktop.env["HOME"], file))

    def wait_for_dialogue(self):
        # From glibc 2.41 on the tests' locale has no language.
        return wait_for(lambda: self.desktop.windows_named("^(Imprimer|Print)$"), 15, "the dialogue")

    def print_page(self, place):
        self.click(place)
        try:
            dialog = self.wait_for_dialogue()
        except AssertionError:
            return None
        pass_time(1)
        self.desktop.focus(int(dialog[0]))
        self.desktop.input("key", "Return")  # its button
        self.clicks += 1
        folder = self.desktop.env["HOME"]

        def written():
            return [os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".pdf")]
        path, = wait_for(written, 15, "the PDF")
        wait_for(lambda: self.desktop.run("pdfinfo", path).returncode == 0, 15, "all of it")
        return path

    def text_of(self, pdf):
        text = self.desktop.run("pdftotext", "-layout", pdf, "-").stdout.decode("utf-8")
        return text.translate(PLAIN)

    def check_paper(self, pdf, size):
        """One page of the size, nothing in its margins, and every figure of the sheet."""
        self.assertEqual(os.path.basename(pdf), self.sheet["title"] + ".pdf")
        facts = self.desktop.run("pdfinfo", pdf).stdout.decode("utf-8")
        self.assertRegex(facts, rf"Pages: +1\nEncrypted: +no\nPage size: +{size} pts \(A4\)")
        text = self.text_of(pdf)
        rows = [*self.sheet["rows"], self.sheet["totals"]]
        self.assertEqual(sorted(TIME.findall(text)), sorted(
            text for row in rows for text in (row["text"], row["raw_text"], *self.figures(row))))
        for client in self.sheet["clients"]:
            self.assertIn(client["client"] or "Sans client", text)
        self.assertIn(self.sheet["totals"]["amounts"][0]["text"].translate(PLAIN), text)
        self.assertIn("Date et signature du client", text)
        # White but for what is within the margins, and there is some.
        gray = self.desktop.run("pdftoppm", "-r", "40", "-gray", pdf).stdout
        _, width, height = gray.split(maxsplit=3)[:3]
        pixels = gray[-int(width) * int(height):]
        rows = [pixels[at:at + int(width)] for at in range(0, len(pixels), int(width))]
        edge = 18  # of 40 to the inch: 11 mm
        for line in [*rows[:edge], *rows[-edge:], *(row[:edge] + row[-edge:] for row in rows)]:
            self.assertEqual(set(line), {255})
        self.assertGreater(sum(pixel < 128 for pixel in pixels), 1000)

    def check_clipboard(self, page):
        page.click(button("Copier"))
        page.wait_for_text(TOAST, "Tableau copié.")

        def pasted(kind):
            return self.desktop.run("xclip", "-selection", "clipboard", "-out", "-target",
                                    kind).stdout.decode("utf-8")
        table, lines = pasted("text/html"), pasted("UTF8_STRING").splitlines()
        for row in self.sheet["rows"]:
            line, = (line for line in lines if row["name"] in line)
            self.assertEqual(TIME.findall(line), [*self.figures(row), row["text"]])
        self.assertIn("<td>=Été; \"Fils\"</td>", re.sub(" style=\"[^\"]*\"", "", table))
        self.assertEqual(table.count("<tr"), len(lines))
