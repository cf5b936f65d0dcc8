"""The exported CSV holds what was stored, cell by cell, for Python's reader and for LibreOffice."""

import csv
import datetime
import math
import os
import sqlite3
import xml.etree.ElementTree
import zoneinfo
from pathlib import Path

import icalendar

from desktop import ORVANTA
from desktop_case import DesktopCase

HEADER = ["debut", "fin", "duree_s", "categorie", "projet", "app", "domaine", "titre", "url"]
FROM, TO = "2024-03-31", "2024-04-02"
PARIS = zoneinfo.ZoneInfo("Europe/Paris")
START = datetime.datetime(2024, 3, 31, tzinfo=PARIS).timestamp()  # the clock skips from 2 to 3
END = datetime.datetime(2024, 4, 3, tzinfo=PARIS).timestamp()

TEXTS = [
    "Réunion d'été — cœur, naïveté, ŒUVRE", "dit \"oui\"", "\"", "\"\"\"", "a;b;;c", ";", "a,b",
    "première ligne\nseconde ligne\n\nquatrième", "\n", "a\";\"b\n\";", "=1+1", "=HYPERLINK(\"x\")",
    "+33 1 23", "-5", "@somme", "'apostrophe", "007", "1,5", "3.10", "2024-03-31", "1e5", "TRUE",
    " espaces ", "tab\tulation", "日本語 العربية", "👩🏽‍💻 🇫🇷 e\u0301", "&amp; <b>", "%s\\n",
    "\ufeffmarque", "x" * 5000, "", None]
NAMES = dict(enumerate((text for text in TEXTS if text), 1))  # of projects

FILTER = "Text - txt - csv (StarCalc)"
# Separator, quote, UTF-8, first line, formats of columns, language. "Quoted field as text" keeps a
# title from becoming a number or a formula.
ALL_TEXT = "59,34,76,1," + "/".join(f"{column}/2" for column in range(1, 10)) + ",0,true"
QUOTED_TEXT = "59,34,76,1,,0,true,true"
FRENCH = "59,34,76,1,,1036,true,true"
COMMAS = f"csv:{FILTER}:44,34,76,1,,0,true,false"

OFFICE = "{urn:oasis:names:tc:opendocument:xmlns:office:1.0}"
TABLE = "{urn:oasis:names:tc:opendocument:xmlns:table:1.0}"


def clock(instant):
    return datetime.datetime.fromtimestamp(int(instant), PARIS).strftime("%Y-%m-%d %H:%M:%S")


def table(path, delimiter):
    """The header, and the rows in an order that does not depend on equal starts."""
    with open(path, encoding="utf-8-sig", newline="") as file:
        header, *rows = csv.reader(file, delimiter=delimiter, strict=True)
    return header, sorted(rows)


class CsvTest(DesktopCase):
    options = {"screen": False, "session_bus": False}

    def setUp(self):
        super().setUp()
        self.desktop.env["TZ"] = "Europe/Paris"
        self.folder = self.desktop.env["HOME"]
        self.file = Path(self.folder, "export.csv")
        self.export()  # makes the store
        self.expected = []
        self.db = sqlite3.connect(self.desktop.database())
        self.addCleanup(self.db.close)
        with self.db:
            self.fill()
        self.export()

    def export(self):
        self.run_orvanta("--export", FROM, TO, str(self.file))

    def fill(self):
        self.db.executemany("INSERT INTO projects(id,name) VALUES (?,?)", NAMES.items())
        for number in range(len(TEXTS)):  # every text in every column, never the same beside it
            fields = [TEXTS[(number + shift) % len(TEXTS)] for shift in (0, 5, 11, 17)]
            self.add(START + number * 7000.25, 59.9 + 13 * number, number + 1, *fields)
        self.add(START - 86400, 86400 + 12, 1, "la veille", None, None, None)
        self.add(END - 12, 86400, 1, "le lendemain", None, None, None)
        self.add(START - 20, 20, 1, "avant", None, None, None)

    def add(self, start, seconds, project, *fields):
        end = start + seconds
        self.db.execute(
            "INSERT INTO events(start,end,category,project_id,app,domain,title,url) "
            "VALUES (?,?,'étrange',?,?,?,?,?)", (start, end, project, *fields))
        start, end = max(start, START), min(end, END)
        if start < end:
            app, *others = fields
            self.expected.append(
                [clock(start), clock(end), str(int(end - start)), "étrange",
                 NAMES.get(project, ""), "Inconnu" if app is None else app,
                 *(field or "" for field in others)])

    def converted(self, output_filter, input_filter):
        """What LibreOffice makes of the export."""
        folder = os.path.join(self.folder, "converted")
        run = self.desktop.run(
            "timeout", "--kill-after=5", "60", "soffice",
            f"-env:UserInstallation=file://{self.folder}/profile", "--headless", "--norestore",
            f"--infilter={FILTER}:{input_filter}", "--convert-to", output_filter,
            "--outdir", folder, str(self.file), timeout=70)
        path = os.path.join(folder, "export." + output_filter.partition(":")[0])
        self.assertTrue(os.path.exists(path), run.stdout + run.stderr)
        return path

    def compare(self, path, delimiter, blank=None):
        header, rows = table(path, delimiter)
        self.assertEqual(header, HEADER)
        self.assertEqual(len(rows), len(TEXTS) + 2)
        def alike(rows):
            return sorted(["" if cell == blank else cell for cell in row] for row in rows)
        for row, expected in zip(alike(rows), alike(self.expected)):
            self.assertEqual(row, expected)

    def test_python_reads_what_was_stored(self):
        self.compare(self.file, ";")

    def test_killed_it_leaves_what_was_there(self):
        before = self.file.read_bytes()
        with self.db:
            self.db.executemany(
                "INSERT INTO events(start,end,app,title) VALUES (?,?,'A',?)",
                ((START + second / 10, START + second / 10 + 1, "t" * 1000)
                 for second in range(50000)))
        names = sorted(os.listdir(self.folder))
        killed = 0
        for _ in range(10):
            export = self.desktop.spawn(ORVANTA, "--export", FROM, TO, str(self.file))
            while export.poll() is None and not self.writes(export.pid):
                pass
            export.kill()
            killed += export.wait() != 0
        self.assertGreater(killed, 0)
        self.assertEqual(sorted(os.listdir(self.folder)), names)
        self.assertEqual(self.file.read_bytes() == before, killed == 10)

    def writes(self, pid):
        """Whether the export has begun a file in our folder."""
        try:
            files = [os.readlink(f"/proc/{pid}/fd/{number}")
                     for number in os.listdir(f"/proc/{pid}/fd")]
        except OSError:
            return False  # it closes one, or ends
        return any(file.startswith(self.folder + "/#") for file in files)

    def test_libreoffice_reads_what_was_stored(self):
        # From 26.8 on it takes a cell that is only a line break for an empty one.
        self.compare(self.converted(COMMAS, ALL_TEXT), ",", "\n")

    def test_libreoffice_sees_times_numbers_and_text(self):
        """What the program quotes stays text, whatever it looks like; the rest can be summed."""
        rows = self.kinds(QUOTED_TEXT)
        spans = len(self.expected)
        self.assertEqual(rows[:spans + 1], [["string"] * 9] +
                         [["date", "date", "float"] + ["string"] * 6] * spans)

    def test_libreoffice_sums_the_timesheet(self):
        """No project's name is a formula, and French decimals are numbers."""
        text = self.run_orvanta("--sheet", f"{FROM}..{TO}", "--format", "csv")
        self.file.write_text(text, encoding="utf-8", newline="")
        rows = [row for row in self.kinds(FRENCH)[1:] if len(row) > 6][:len(NAMES) + 1]
        self.assertEqual([row[1:2] + row[5:7] for row in rows],
                         [["string", "float", "float"]] * (len(NAMES) + 1))

    def test_calendars_take_the_timesheet(self):
        """Each stretch of work is an event of its own, in universal time, whatever its project's name."""
        asked = ("--sheet", f"{FROM}..{TO}", "--format", "ics")
        run = self.desktop.run(self.desktop.orvanta, *asked).stdout
        self.assertEqual(run.count(b"\n"), run.count(b"\r\n"))
        for line in run.split(b"\r\n"):
            self.assertLessEqual(len(line), 75)
            line.decode("utf-8")  # no character is cut
        events = icalendar.Calendar.from_ical(run).walk("VEVENT")
        names = {}
        for event in events:
            start, end = (event[key].dt for key in ("DTSTART", "DTEND"))
            self.assertEqual(start.tzinfo.utcoffset(start), datetime.timedelta())
            self.assertEqual(event["TRANSP"], "TRANSPARENT")
            names[str(event["SUMMARY"]).strip()] = (start.timestamp(), end.timestamp())
        for number, name in NAMES.items():
            # All but the first last a minute. icalendar misreads a backslash before an n.
            start = START + (number - 1) * 7000.25
            if number > 1 and name.isprintable() and len(name) < 200 and "\\n" not in name:
                self.assertEqual(names[name.strip()], (
                    int(start), math.ceil(start + 59.9 + 13 * (number - 1))), name)
        keys = [event["UID"] for event in events]
        self.assertEqual(len(set(keys)), len(keys))
        again = self.desktop.run(self.desktop.orvanta, *asked).stdout
        self.assertEqual([event["UID"] for event in icalendar.Calendar.from_ical(again).walk("VEVENT")],
                         keys)

    def kinds(self, input_filter):
        """Of every row's cells what LibreOffice takes them for; none is a formula."""
        sheet = xml.etree.ElementTree.parse(self.converted("fods", input_filter))
        rows = []
        for row in sheet.iter(TABLE + "table-row"):
            kinds = []
            for cell in row:
                self.assertNotIn(TABLE + "formula", cell.attrib)
                kinds += [cell.get(OFFICE + "value-type", "string")] * int(
                    cell.get(TABLE + "number-columns-repeated", 1))
            rows.append(kinds)
        return rows
