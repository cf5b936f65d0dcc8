"""What a screen reader finds in the dashboard: every text and name, what is told, where the focus is."""

import ctypes
import datetime
import json
import os
import subprocess
import sys
import unittest

from desktop import ORVANTA, end, pass_time, wait_for
from desktop_case import DesktopCase, children
from webdriver import Page

READER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "screen_reader.py")
MAKER = os.path.join(os.path.dirname(ORVANTA), "tools", "make-store")

# Gives each text that is seen a mark that it is known by; returns where each stands. A label that
# takes the place of an element's text is checked as a name.
MARK = """
    const top = document.querySelector("dialog") ?? document.body;
    const walker = document.createTreeWalker(top, NodeFilter.SHOW_TEXT);
    const places = {};
    window.marked = [];
    while (walker.nextNode()) {
        const node = walker.currentNode, parent = node.parentElement, range = new Range();
        range.selectNodeContents(node);
        if (!node.data.trim() || range.getClientRects().length === 0 || parent.closest(
            "[aria-hidden=true], button[aria-label]")) continue;
        const mark = `§${marked.length}§`;
        places[mark] = `${node.data.trim()} in ${parent.outerHTML.slice(0, 80)}`;
        marked.push([node, node.data]);
        node.data += mark;
    }
    return places;"""
# Returns the marks that still stand: what they make longer may push rows out of a list.
UNMARK = """
    for (const [node, text] of marked) node.data = text;
    return marked.flatMap(([node], i) => node.isConnected ? [`§${i}§`] : []);"""


def gtk_version():
    library = ctypes.CDLL("libgtk-4.so.1")
    return library.gtk_get_major_version(), library.gtk_get_minor_version()


@unittest.skipIf(gtk_version() < (4, 14), "before 4.14 GTK leads no screen reader into a web page")
class AccessibilityTest(DesktopCase):
    def setUp(self):
        super().setUp()
        desktop = self.desktop
        for name in ("NO_AT_BRIDGE", "GTK_A11Y"):
            desktop.env.pop(name)
        # A zone in which it is now between two and three in the afternoon.
        hour = datetime.datetime.now(datetime.timezone.utc).hour
        desktop.env.update(TZ=f"Etc/GMT{hour - 14:+}",
                           XDG_STATE_HOME=desktop.make_folder("state"),
                           XDG_CACHE_HOME=desktop.make_folder("cache"))
        # In a memory of its own: the user's settings are not the test's to change.
        service = desktop.spawn("/usr/libexec/at-spi-bus-launcher", "--launch-immediately",
                                env={"GSETTINGS_BACKEND": "memory"})
        self.addCleanup(service.wait, 10)
        self.addCleanup(service.terminate)  # in order: it has a message bus of its own to end
        bus = desktop.session.connect()
        self.addCleanup(bus.close)
        wait_for(lambda: bus.name_has_owner("org.a11y.Bus"), 5, "the accessibility service")
        made = desktop.run(MAKER, desktop.env["XDG_DATA_HOME"], "--blocks", "30", timeout=60)
        self.assertEqual(made.returncode, 0, made.stderr)
        for key, value in (("onboarded", "1"), ("paused", "1")):
            desktop.set_setting(key, value)

    def start_reader(self):
        self.reader = subprocess.Popen(
            [*self.desktop.prefix, sys.executable, READER], env=self.desktop.env,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.reader.stdout.close)
        self.addCleanup(self.reader.wait, 10)
        self.addCleanup(self.reader.stdin.close)
        self.assertEqual(json.loads(self.reader.stdout.readline()), "ready")

    def start_page(self):
        self.page = Page(self.desktop)
        self.focus_window()

    def focus_window(self):
        windows = wait_for(lambda: self.desktop.windows_named("^Orvanta$"), 20, "the window is there")
        self.desktop.focus(int(windows[0]))

    def ask(self, question):
        self.reader.stdin.write(question + "\n")
        self.reader.stdin.flush()
        return json.loads(self.reader.stdout.readline())

    def document(self):
        """What is in the page, all of it; the window's own parts left out."""
        objects = self.ask("tree Orvanta")
        start = next(i for i, one in enumerate(objects) if one["role"] == "document web")
        return [one for one in objects[start + 1:] if one["depth"] > objects[start]["depth"]]

    def wait_for_focus(self, **values):
        def focused():
            focus = self.ask("focus")
            return focus and all(focus[key] == value for key, value in values.items()) and focus
        return wait_for(focused, 20, lambda: f"{values}, but {self.ask('focus')}")

    def check_whole(self, what):
        """Every text that is seen is told, and whatever can have the focus has a name."""
        lacking = []

        def whole():
            places = self.page.script(MARK)
            objects = self.document()
            left = self.page.script(UNMARK)
            told = "\n".join(one["text"] + "\n" + one["name"] for one in objects)
            lacking[:] = [places[mark] for mark in left if mark not in told]
            lacking.extend(one for one in objects if one["focusable"] and not one["name"])
            return len(left) > 5 and not lacking
        wait_for(whole, 30, lambda: f"{what} lacks {lacking}")

    def test_every_view_is_told_in_full(self):
        self.start_reader()
        self.start_page()
        page = self.page
        program = self.ask("tree Orvanta")[0]
        self.assertEqual((program["name"], program["description"]), ("Orvanta", "Orvanta"))
        for key, name in page.script("""
                return [...document.querySelectorAll("[data-view]")]
                    .map(one => [one.ariaKeyShortcuts.toLowerCase(), one.dataset.view])"""):
            page.press(key)
            shown = "return document.querySelector('[aria-current]').dataset.view"
            wait_for(lambda: page.script(shown) == name, 10, name)
            heading = page.script("return document.querySelector('h1').textContent")
            focus = self.wait_for_focus(role="landmark", name=heading)
            self.assertIn("document web", focus["path"])
            self.check_whole(name)
        for key, title in (("p", "Nouveau projet"), ("r", "Nouvelle règle")):
            page.press(key, "n")
            page.wait_for_text("//dialog//h2", title)
            page.type("mail")
            self.check_whole(title)
            page.press("Escape")
        for time in ("once", "again"):
            page.press("question")
            page.wait_for_text("//dialog//h2", "Raccourcis clavier")
            self.check_whole(f"shortcuts {time}")
            page.press("Escape")

    def test_the_first_opening_is_told_in_full(self):
        self.desktop.set_setting("onboarded", "0")
        self.start_reader()
        self.start_page()
        for step in range(3):
            if step > 0:
                self.page.click("//button[. = 'Continuer']")
            # Where there is something to fill in, the field; else the heading.
            name = "Nom" if step == 2 else self.page.script(
                "return document.querySelector('h1').textContent")
            focus = self.wait_for_focus(name=name)
            self.assertIn("document web", focus["path"])
            self.check_whole(f"step {step + 1}")

    def to_list(self):
        """Returns how many times Tab is pressed on the way."""
        for count in range(1, 9):
            before = self.ask("focus")
            self.page.press("Tab")
            wait_for(lambda: self.ask("focus") != before, 15, "the focus moves")
            if self.ask("focus")["role"] == "list box":
                return count
        raise AssertionError("the blocks are not within 8 Tabs")

    def test_the_blocks_and_what_is_told_of_them(self):
        self.start_reader()
        self.start_page()
        self.to_list()
        self.page.press("Home")
        rows = self.page.script("return document.querySelector('[role=option]').ariaSetSize")

        def active():
            return [one["attributes"] for one in self.document()
                    if one["role"] == "list item" and one["focused"]]
        row, = wait_for(active, 20, "the active row has the focus")
        self.assertEqual((row["posinset"], row["setsize"]), ("1", rows))
        self.page.press("Return")
        self.wait_for_focus(role="radio button")
        self.check_whole("a block")
        self.page.press("Escape")
        self.wait_for_focus(role="list box")
        self.ask("events")
        for key in "12":
            self.page.press("Home", key)
            self.wait_to_hear("status bar", "1\u00a0bloc")
        self.page.press("slash")
        self.wait_for_focus(role="entry")
        self.page.type("zz")
        self.wait_to_hear("status bar", "0\u00a0bloc")
        self.page.press("Escape", "Tab", "p", "n")
        self.wait_for_focus(role="entry", name="Nom")
        wait_for(lambda: any(one["role"] == "notification" for one in self.document()), 10,
                 "the form has a place for what is wrong")
        self.page.press("Return")
        self.wait_to_hear("notification", "Donnez un nom au projet.")
        self.page.press("Escape", "g")
        self.wait_for_focus(name="Réglages")
        self.page.press("Tab")
        self.wait_for_focus(role="entry")
        self.page.type("4")
        self.page.press("Return")
        self.wait_to_hear("status bar", "Enregistré")

    def test_a_screen_reader_that_comes_later_hears_as_much(self):
        """The engine's process tells only those that were there before it: it is started afresh, once
        nothing is open in it."""
        desktop = self.desktop
        program = desktop.spawn(ORVANTA, "--show")
        self.focus_window()
        engine = wait_for(lambda: children(program.pid, "WebKitWebProcess"), 10, "an engine")
        pass_time(3)  # it is up
        desktop.input("key", "p", "n")
        pass_time(2)
        self.start_reader()
        pass_time(4)
        self.assertEqual(children(program.pid, "WebKitWebProcess"), engine, "a form is open")
        desktop.input("key", "Escape")
        wait_for(lambda: children(program.pid, "WebKitWebProcess") not in ([], engine), 10, "another")
        pass_time(3)
        desktop.input("key", "r")
        self.wait_for_focus(role="landmark", name="Règles")
        end(program)

    def wait_to_hear(self, role, part):
        heard = []

        def told():
            heard.extend(self.ask("events"))
            return [text for under, text in heard if under == role and part in text]
        wait_for(told, 20, lambda: f"{part} under {role}, but {heard}")


if __name__ == "__main__":
    unittest.main()
