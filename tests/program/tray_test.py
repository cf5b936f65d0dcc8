"""The status menu and the icon, as a panel on a real session bus reads and clicks them."""

import json
import os
import shutil
import time
from pathlib import Path

import dbus
import dbus.service

from desktop import ORVANTA, TICK, end, output_of, pass_time, wait_for
from desktop_case import DesktopCase
from tray_host import Notifications, TrayHost

REFRESH = 5 + 1.5  # seconds between two looks at the store, on a busy machine
DASHBOARD = "pas d’écran pour le tableau de bord"  # it was started, on a machine without


class SessionManager(dbus.service.Object):
    """It, and how it knows us."""

    SUPPORTS_MULTIPLE_OBJECT_PATHS = True
    client = "org.gnome.SessionManager.ClientPrivate"

    def __init__(self, host):
        super().__init__(host.bus, "/org/gnome/SessionManager")
        self.add_to_connection(host.bus, "/client")
        host.bus.request_name("org.gnome.SessionManager")
        self.registered, self.answers = [], []

    @dbus.service.method("org.gnome.SessionManager", in_signature="ss", out_signature="o")
    def RegisterClient(self, application, startup):
        self.registered.append((str(application), str(startup)))
        return dbus.ObjectPath("/client")

    @dbus.service.method(client, in_signature="bs")
    def EndSessionResponse(self, ok, reason):
        self.answers.append((bool(ok), time.time()))

    @dbus.service.signal(client, signature="u")
    def QueryEndSession(self, flags):
        pass

    @dbus.service.signal(client, signature="u")
    def EndSession(self, flags):
        pass


class TrayTest(DesktopCase):
    options = {"screen": False}

    def setUp(self):
        super().setUp()
        self.desktop.set_setting("onboarded", "1")

    def add_projects(self, *names, archived=0):
        for name in names:
            self.desktop.change("INSERT INTO projects(name, archived) VALUES (?, ?)", name, archived)

    def start(self):
        self.host = TrayHost(self)
        self.program = self.desktop.start_orvanta()
        self.host.wait_for_item()

    def dashboards(self):
        return output_of(self.program).count(DASHBOARD)

    def wait_for_dashboards(self, count):
        self.host.wait_for(lambda: self.dashboards() == count, 10, f"dashboard {count}")

    def click(self, label, parent=None):
        parent = parent and self.host.item(parent)
        self.host.click(self.host.item(label, parent))

    def has_label(self, start):
        return any(label.lstrip("*").startswith(start) for label in self.host.labels())

    def wait_for_label(self, start, seconds=REFRESH):
        self.host.wait_for(lambda: self.has_label(start), seconds, start)

    def projects(self):
        return self.host.labels(self.host.item("Je travaille sur"))

    def said(self, seconds):
        """What the panel is told meanwhile and has been told before."""
        pass_time(seconds)
        self.host.pump()
        return sorted(member for member, _ in self.host.signals)

    def test_what_it_shows(self):
        self.add_projects("Refonte_2 <b>&amp;</b>")
        # Two hours at midday's side of now, so that they are today's unless it is 2 o'clock.
        now = time.time()
        start = max(now - 7200, time.mktime(time.localtime()[:3] + (0,) * 5 + (-1,)))
        self.desktop.change("INSERT INTO events(start, end, app, category, project_id, idle)"
                            " VALUES (?, ?, 'Éditeur', 'travail', 1, 0)", start, now)
        self.start()
        self.wait_for_label("● Inconnu · ")
        minutes = int(now - start) // 60
        worked = f"{minutes // 60} h {minutes % 60:02}" if minutes >= 60 else f"{minutes} min"
        labels = self.host.labels()
        self.assertRegex(labels[0], r"^● Inconnu · \d+ s$")
        self.assertRegex(labels[2], rf"^   Travail {worked} · Loisir 0 s · Autre 0 s"
                                    r" · Non classé \d+ s$")
        self.assertEqual([labels[1], *labels[3:]], [
            f"Aujourd'hui : {worked} actif",
            f"   Projet principal : Refonte_2 <b>&amp;</b> · {worked}", "---", "Je travaille sur…",
            "Ouvrir Orvanta", "Mettre le suivi en pause", "---", "Quitter Orvanta"])
        items = [item for _, item, _ in self.host.items()]
        self.assertEqual([bool(item.get("enabled", True)) for item in items],
                         [False] * 4 + [True] * (len(items) - 4))
        self.assertEqual([(item["label"], [list(keys) for keys in item["shortcut"]])
                          for item in items if "shortcut" in item],
                         [("Ouvrir Orvanta", [["Control", "o"]]),
                          ("Quitter Orvanta", [["Control", "q"]])])
        self.assertEqual(self.projects(),
                         ["*Attribution automatique", "---", "Refonte_2 <b>&amp;</b>"])
        self.assertEqual(self.host["XAyatanaLabel"], f" {worked}")
        self.assertEqual(self.host["ToolTip"][2:], ("Orvanta", f"Aujourd'hui : {worked} actif"))
        icons = os.path.join(self.host["IconThemePath"], "hicolor", "symbolic", "apps")
        for icon in (self.host["IconName"], "fr.quellvane.orvanta-paused-symbolic"):
            self.assertTrue(os.path.exists(os.path.join(icons, icon + ".svg")), icon)

    def test_every_click(self):
        self.add_projects("Zèbre", "Atelier")
        self.add_projects("Ancien", archived=1)
        self.start()
        host = self.host

        self.click("Ouvrir Orvanta")
        self.wait_for_dashboards(1)
        pass_time(1)  # without a screen the first has ended by then
        host.activate()
        self.wait_for_dashboards(2)

        self.assertEqual(self.projects(), ["*Attribution automatique", "---", "Atelier", "Zèbre"])
        self.click("Zèbre", "Je travaille sur")
        self.wait_for_label("Je travaille sur : Zèbre (depuis 0 s)", 2)
        self.assertEqual(self.projects(), ["Attribution automatique", "---", "Atelier", "*Zèbre"])

        self.click("Mettre le suivi en pause")
        self.wait_for_label("○ Suivi en pause", 2)
        self.assertEqual(self.desktop.setting("paused"), "1")
        self.assertEqual(host["IconName"], "fr.quellvane.orvanta-paused-symbolic")
        host.wait_for(lambda: ("NewIcon", ()) in host.signals, 2, "the icon is told")
        spans = len(self.desktop.spans())
        pass_time(TICK)
        self.assertEqual(len(self.desktop.spans()), spans)
        self.click("Reprendre le suivi")
        self.wait_for_label("Mettre le suivi en pause", 2)
        self.assertEqual(self.desktop.setting("paused"), "0")
        self.assertEqual(host["IconName"], "fr.quellvane.orvanta-symbolic")
        span = wait_for(lambda: self.desktop.spans()[spans:], TICK, "it records again")[0]
        self.assertEqual(span["project_id"], 1)  # Zèbre

        # The project goes: nothing is chosen, and nothing is invented.
        self.desktop.change("UPDATE projects SET archived = 1 WHERE id = 1")
        self.wait_for_label("Je travaille sur…")
        self.assertEqual(self.projects(), ["Attribution automatique", "---", "Atelier"])
        self.click("Attribution", "Je travaille sur")
        host.wait_for(lambda: self.projects()[0] == "*Attribution automatique", 2, "it is chosen")

        # What cannot be clicked does nothing, whatever a panel sends.
        for number, item, _ in host.items():
            if not item.get("enabled", True) or not item.get("visible", True):
                host.click((number,))
        pass_time(0.5)
        self.assertEqual(self.dashboards(), 2)
        self.assertIsNone(self.program.poll())

        self.click("Quitter Orvanta")
        asked = time.time()
        self.assertEqual(self.program.wait(timeout=5), 0)
        self.assertAlmostEqual(self.desktop.spans()[-1]["end"], asked, delta=1)

    def test_an_update_is_offered_and_its_page_opened(self):
        feed = {"version": "99.0", "url": "https://exemple.fr/télécharger?v=99.0&os=linux"}
        port = self.serve(lambda path: json.dumps(feed if path == "/appcast.json" else {}))
        self.desktop.env["ORVANTA_SERVICE_URL"] = f"http://127.0.0.1:{port}"
        opened = Path(self.desktop.folder, "opened")
        browser = self.desktop.write(
            "browser", f'#!/bin/sh\nprintf %s "$1" >{opened}.new\nmv {opened}.new {opened}\n', 0o700)
        self.desktop.install("essai", f"Name=Essai\nExec={browser} %u\n")
        self.desktop.write(os.path.join(self.desktop.env["XDG_CONFIG_HOME"], "mimeapps.list"),
                           "[Default Applications]\nx-scheme-handler/https=essai.desktop\n")

        self.start()
        offer = "⬇︎ Mise à jour disponible : Orvanta 99.0"
        self.assertFalse(self.has_label(offer))
        self.desktop.call("update.check")
        self.wait_for_label(offer)
        item = self.host.item(offer)
        self.host.click(item)
        self.host.wait_for(opened.exists, 5, "the browser opens")
        self.assertEqual(opened.read_text("utf-8"), feed["url"])

        feed["version"] = "0.0.1"  # withdrawn
        self.desktop.call("update.check")
        self.host.wait_for(lambda: not self.has_label(offer), REFRESH, "nothing is offered")
        opened.unlink()
        self.host.click(item)
        pass_time(0.5)
        self.assertFalse(opened.exists())

    def test_activation_tokens_reach_the_dashboard(self):
        # In the place of the real one, which needs a screen.
        told = Path(self.desktop.folder, "told")
        self.desktop.write(os.path.join(self.desktop.folder, "orvanta-dashboard"),
                           f"#!/bin/sh\necho shown >&3\nexec cat <&3 >{told}\n", 0o700)
        self.desktop.orvanta = shutil.copy(ORVANTA, self.desktop.folder)
        self.start()
        tokens = []

        def expect(token):
            def lines():
                return told.exists() and [line.partition(" ")
                                          for line in told.read_text("utf-8").splitlines()
                                          if line.startswith("show ")]
            tokens.append(token)
            self.host.wait_for(lambda: lines() and len(lines()) == len(tokens), 5,
                               f"the dashboard is told to show itself by {token!r}")
            self.assertEqual([(verb, json.loads(rest)) for verb, _, rest in lines()],
                             [("show", token) for token in tokens])

        self.host.give_token("premier")
        self.host.activate()
        expect("premier")
        self.host.give_token("\"2\"\nquit é")
        self.click("Ouvrir Orvanta")
        expect("\"2\"\nquit é")
        self.host.activate()
        expect("")  # a token is good for one click
        self.desktop.run(self.desktop.orvanta, env={"XDG_ACTIVATION_TOKEN": "lanceur"})
        expect("lanceur")

    def test_only_what_changes_is_told(self):
        self.desktop.set_setting("paused", "1")
        self.host = TrayHost(self)
        self.desktop.spawn(ORVANTA)
        self.host.wait_for_item()
        self.wait_for_label("○ Suivi en pause")
        self.said(1)
        del self.host.signals[:]
        self.assertEqual(self.said(2 * REFRESH), [])

        self.add_projects("Nouveau")
        self.host.wait_for(lambda: "Nouveau" in self.projects(), REFRESH, "the new project")
        self.host.wait_for(lambda: "LayoutUpdated" in self.said(0), 5, "the panel is told")
        now = time.time()
        self.desktop.change("INSERT INTO events(start, end, app) VALUES (?, ?, 'A')", now - 100, now)
        del self.host.signals[:]
        self.wait_for_label("Aujourd'hui : 1 min actif")
        self.assertEqual(self.said(1), ["ItemsPropertiesUpdated", "XAyatanaNewLabel"])

    def test_a_panel_that_restarts_and_one_that_comes_late(self):
        self.start()
        for hosted in (True, False):
            self.host.close()
            pass_time(0.5)
            self.host = TrayHost(self, hosted)
            self.host.wait_for_item()
            self.wait_for_label("Ouvrir Orvanta")
        end(self.program)

    def test_started_again(self):
        self.start()
        for words, shown, printed in (([], 1, "Orvanta est déjà en marche.\n"), (["--show"], 2, "")):
            self.assertEqual(self.run_orvanta(*words), printed)
            self.wait_for_dashboards(shown)
            pass_time(1)  # without a screen it has ended by then
        self.run_orvanta("--pause")
        self.wait_for_label("○ Suivi en pause", 2)
        self.run_orvanta("--resume")
        self.wait_for_label("●", 2 + TICK)
        self.assertIsNone(self.program.poll())

    def test_when_the_dashboard_opens_at_launch(self):
        for onboarded, words, shown in (("1", [], 0), ("1", ["--show"], 1), ("0", [], 1)):
            with self.subTest(onboarded=onboarded, words=words):
                self.desktop.set_setting("onboarded", onboarded)
                self.program = self.desktop.spawn(ORVANTA, *words)
                wait_for(lambda: "capture démarrée" in output_of(self.program), 10, "launch")
                wait_for(lambda: self.dashboards() >= shown, 10, "the dashboard")
                pass_time(1)
                self.assertEqual(self.dashboards(), shown)
                end(self.program)

    def test_the_session_bus_goes_away(self):
        self.start()
        self.desktop.session.stop()
        lost = time.time()
        pass_time(0.5)
        self.check_rest(self.program, REFRESH, 0.3)
        wait_for(lambda: self.desktop.spans()[-1]["end"] > lost + TICK, 13, "it goes on")
        asked = end(self.program)
        span, = self.desktop.spans()
        self.assertAlmostEqual(span["end"], asked, delta=1)

    def test_the_session_bus_restarts(self):
        self.add_projects("Atelier")
        self.start()
        self.click("Atelier", "Je travaille sur")
        self.wait_for_label("Je travaille sur : Atelier", 2)
        for round_trip in range(2):
            self.desktop.session.stop()
            wait_for(lambda: self.desktop.run(ORVANTA, "--show").returncode == 1, 5, "no name")
            self.desktop.session.start()
            self.host = TrayHost(self)
            self.host.wait_for_item()
            self.assertIsNone(self.program.poll())
            self.wait_for_label("Je travaille sur : Atelier")
            wait_for(lambda: len(self.desktop.spans()) == round_trip + 2, TICK, "it records on")
            self.run_orvanta("--show")
            self.wait_for_dashboards(round_trip + 1)
        self.run_orvanta("--pause")
        self.wait_for_label("○ Suivi en pause", 2)
        self.click("Reprendre le suivi")
        self.wait_for_label("●", 2 + TICK)
        first, second, third = self.desktop.spans()[:3]
        for before, after in ((first, second), (second, third)):
            self.assertGreaterEqual(after["start"], before["end"])
            self.assertLess(after["start"], before["end"] + 2)
        self.assertEqual(third["project_id"], 1)
        self.click("Quitter Orvanta")
        self.assertEqual(self.program.wait(timeout=5), 0)

    def test_former_agents_are_removed(self):
        config = self.desktop.env["XDG_CONFIG_HOME"]
        unit = self.desktop.write(f"{config}/systemd/user/fr.quellvane.lumaplan.tracker.service", "")
        # In the place of the real systemctl, which would speak to the machine's.
        tools = self.desktop.make_folder("tools")
        self.desktop.write(f"{tools}/systemctl",
                           f'#!/bin/sh\ntest -e "{unit}" && echo "$@" >>{tools}/calls\n', 0o700)
        program = self.desktop.start_orvanta({"PATH": f"{tools}:{os.environ['PATH']}"})
        self.assertFalse(os.path.exists(unit))
        self.assertEqual(Path(tools, "calls").read_text("utf-8"),
                         "--user disable --now fr.quellvane.lumaplan.tracker.service\n")
        self.assertRegex(output_of(program), "(?s)ancien agent .*capture démarrée")

    def test_without_a_tray_or_a_screen_the_user_is_told_of_each_once(self):
        self.host = TrayHost(self, hosted=False)
        notes = Notifications(self.host)
        self.program = self.desktop.start_orvanta()
        self.host.wait_for(lambda: notes.told, 25, "a note")
        self.assertIn("zone d’icônes", notes.told[0])
        notes.ActionInvoked(1, "default")
        self.wait_for_dashboards(1)
        self.host.wait_for(lambda: len(notes.told) == 2, 10, "a note that it cannot open")
        self.assertIn("Le tableau de bord n’a pas pu s’ouvrir", notes.told[1])
        self.host.watcher.StatusNotifierHostRegistered()  # an icon after all
        end(self.program)
        self.assertEqual(len(notes.told), 2)

    def test_the_session_manager_is_answered(self):
        self.host = TrayHost(self)
        manager = SessionManager(self.host)
        program = self.desktop.start_orvanta({"DESKTOP_AUTOSTART_ID": "10ab"})
        self.host.wait_for(lambda: manager.registered, 5, "it registers")
        self.assertEqual(manager.registered, [("fr.quellvane.orvanta", "10ab")])

        manager.QueryEndSession(0)
        self.host.wait_for(lambda: manager.answers, 2, "an answer")
        pass_time(TICK)
        self.assertIsNone(program.poll())  # the user may have said no elsewhere
        manager.EndSession(0)
        self.host.wait_for(lambda: len(manager.answers) == 2, 2, "another answer")
        self.assertEqual([ok for ok, _ in manager.answers], [True, True])
        self.assertEqual(program.wait(timeout=5), 0)
        self.assertAlmostEqual(self.desktop.spans()[-1]["end"], manager.answers[1][1], delta=0.3)
