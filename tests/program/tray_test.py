"""The status menu and the icon, as a panel on a real session bus reads and clicks them."""

import http.server
import json
import os
import shutil
import sqlite3
import threading
import time
import unittest

import dbus
import dbus.service

from desktop import ORVANTA, TICK, Desktop, cpu_seconds, end, output_of, pass_time, wait_for
from tray_host import TrayHost

REFRESH = 5 + 1.5  # seconds between two looks at the store, on a busy machine
DASHBOARD = "pas d'écran pour le tableau de bord"  # it was started, on a machine without


class TrayTest(unittest.TestCase):
    def setUp(self):
        self.desktop = Desktop(screen=False)
        self.addCleanup(self.desktop.stop)
        self.desktop.set_setting("onboarded", "1")

    def sql(self, statement, *values):
        db = sqlite3.connect(self.desktop.database())
        with db:
            db.execute(statement, values)
        db.close()

    def setting(self, key):
        db = sqlite3.connect(self.desktop.database())
        row = db.execute("SELECT value FROM settings WHERE key=?", (key,)).fetchone()
        db.close()
        return row and row[0]

    def add_project(self, name, archived=0):
        self.sql("INSERT INTO projects(name, archived) VALUES (?, ?)", name, archived)

    def start(self, hosted=True):
        self.host = TrayHost(self.desktop.session, hosted)
        self.addCleanup(self.host.close)
        self.program = self.desktop.start_orvanta()
        self.host.wait_for_item()

    def wait_for_label(self, start, seconds=REFRESH):
        self.host.wait_for(lambda: any(label.lstrip("*").startswith(start)
                                       for label in self.host.labels()), seconds, start)

    def dashboards(self):
        return output_of(self.program).count(DASHBOARD)

    def projects(self):
        return self.host.labels(self.host.item("Je travaille sur"))

    def test_what_it_shows(self):
        self.add_project("Refonte_2 <b>&amp;</b>")
        # Two hours at midday's side of now, so that they are today's unless it is 2 o'clock.
        now = time.time()
        start = max(now - 7200, time.mktime(time.localtime()[:3] + (0,) * 5 + (-1,)))
        self.sql("INSERT INTO events(start, end, app, category, project_id, idle)"
                 " VALUES (?, ?, 'Éditeur', 'travail', 1, 0)", start, now)
        self.start()
        self.wait_for_label("● Inconnu · ")
        minutes = int(now - start) // 60
        worked = f"{minutes // 60} h {minutes % 60:02}" if minutes >= 60 else f"{minutes} min"
        labels = self.host.labels()
        self.assertRegex(labels[0], r"^● Inconnu · \d+ s$")
        self.assertEqual(labels[1], f"Aujourd'hui : {worked} actif")
        self.assertRegex(labels[2], rf"^   Travail {worked} · Loisir 0 s · Autre 0 s"
                                    r" · Non classé \d+ s$")
        self.assertEqual(labels[3:], [
            f"   Projet principal : Refonte_2 <b>&amp;</b> · {worked}", "---", "Je travaille sur…",
            "Ouvrir Orvanta", "Mettre le suivi en pause", "---", "Quitter Orvanta"])
        items = [item for _, item, _ in self.host.items()]
        self.assertEqual([item.get("enabled", True) for item in items[:4]], [False] * 4)
        self.assertTrue(all(item.get("enabled", True) for item in items[4:]))
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
        for name, archived in (("Zèbre", 0), ("Atelier", 0), ("Ancien", 1)):
            self.add_project(name, archived)
        self.start()
        host = self.host

        host.click(host.item("Ouvrir Orvanta"))
        host.wait_for(lambda: self.dashboards() == 1, 10, "the dashboard opens")
        pass_time(1)  # without a screen the first has ended by then
        host.activate()
        host.wait_for(lambda: self.dashboards() == 2, 10, "a plain click opens it too")

        self.assertEqual(self.projects(), ["*Attribution automatique", "---", "Atelier", "Zèbre"])
        host.click(host.item("Zèbre", host.item("Je travaille sur")))
        self.wait_for_label("Je travaille sur : Zèbre (depuis 0 s)", 2)
        self.assertEqual(self.projects(), ["Attribution automatique", "---", "Atelier", "*Zèbre"])

        host.click(host.item("Mettre le suivi en pause"))
        self.wait_for_label("○ Suivi en pause", 2)
        self.assertEqual(self.setting("paused"), "1")
        self.assertEqual(host["IconName"], "fr.quellvane.orvanta-paused-symbolic")
        host.wait_for(lambda: ("NewIcon", ()) in host.signals, 2, "the icon is told")
        spans = len(self.desktop.spans())
        pass_time(TICK)
        self.assertEqual(len(self.desktop.spans()), spans)
        host.click(host.item("Reprendre le suivi"))
        self.wait_for_label("Mettre le suivi en pause", 2)
        self.assertEqual(self.setting("paused"), "0")
        self.assertEqual(host["IconName"], "fr.quellvane.orvanta-symbolic")
        span = wait_for(lambda: self.desktop.spans()[spans:], TICK, "it records again")[0]
        self.assertEqual(span["project_id"], 1)  # Zèbre

        # The project goes: nothing is chosen, and nothing is invented.
        self.sql("UPDATE projects SET archived = 1 WHERE id = 1")
        self.wait_for_label("Je travaille sur…")
        self.assertEqual(self.projects(), ["Attribution automatique", "---", "Atelier"])
        host.click(host.item("Attribution", host.item("Je travaille sur")))
        host.wait_for(lambda: self.projects()[0] == "*Attribution automatique", 2, "it is chosen")

        # What cannot be clicked does nothing, whatever a panel sends.
        for number, item, _ in host.items():
            if not item.get("enabled", True) or not item.get("visible", True):
                host.click((number,))
        pass_time(0.5)
        self.assertEqual(self.dashboards(), 2)
        self.assertIsNone(self.program.poll())

        host.click(host.item("Quitter Orvanta"))
        asked = time.time()
        self.assertEqual(self.program.wait(timeout=5), 0)
        self.assertAlmostEqual(self.desktop.spans()[-1]["end"], asked, delta=1)

    def test_an_update_is_offered_and_its_page_opened(self):
        feed = {"version": "99.0", "url": "https://exemple.fr/télécharger?v=99.0&os=linux"}

        class Service(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                body = json.dumps(feed if self.path == "/appcast.json" else {}).encode()
                self.send_response(200)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        service = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Service)
        threading.Thread(target=service.serve_forever, daemon=True).start()
        self.addCleanup(service.server_close)
        self.addCleanup(service.shutdown)
        self.desktop.env["ORVANTA_SERVICE_URL"] = f"http://127.0.0.1:{service.server_port}"

        # The user's browser.
        opened = os.path.join(self.desktop.folder, "opened")
        browser = os.path.join(self.desktop.folder, "browser")
        applications = os.path.join(self.desktop.env["XDG_DATA_HOME"], "applications")
        os.mkdir(applications)
        for path, text in (
                (browser, f'#!/bin/sh\nprintf %s "$1" >{opened}.new\nmv {opened}.new {opened}\n'),
                (os.path.join(applications, "essai.desktop"),
                 f"[Desktop Entry]\nType=Application\nName=Essai\nExec={browser} %u\n"),
                (os.path.join(self.desktop.env["XDG_CONFIG_HOME"], "mimeapps.list"),
                 "[Default Applications]\nx-scheme-handler/https=essai.desktop\n")):
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
        os.chmod(browser, 0o700)

        self.start()
        offer = "⬇︎ Mise à jour disponible : Orvanta 99.0"
        self.assertFalse([label for label in self.host.labels() if label.startswith(offer)])
        self.desktop.call("update.check")
        self.wait_for_label(offer)
        item = self.host.item(offer)
        self.host.click(item)
        self.host.wait_for(lambda: os.path.exists(opened), 5, "the browser opens")
        with open(opened, encoding="utf-8") as file:
            self.assertEqual(file.read(), feed["url"])

        feed["version"] = "0.0.1"  # withdrawn
        self.desktop.call("update.check")
        self.host.wait_for(lambda: not any(label.startswith(offer) for label in self.host.labels()),
                           REFRESH, "nothing is offered")
        os.remove(opened)
        self.host.click(item)
        pass_time(0.5)
        self.assertFalse(os.path.exists(opened))

    def test_activation_tokens_reach_the_dashboard(self):
        # In the place of the real one, which needs a screen.
        told = os.path.join(self.desktop.folder, "told")
        with open(os.path.join(self.desktop.folder, "orvanta-dashboard"), "w",
                  encoding="utf-8") as file:
            file.write(f"#!/bin/sh\necho shown >&3\nexec cat <&3 >{told}\n")
        os.chmod(file.name, 0o700)
        self.desktop.orvanta = shutil.copy(ORVANTA, self.desktop.folder)
        self.start()
        tokens = []

        def expect(token):
            def lines():
                with open(told, encoding="utf-8") as file:
                    return [line.partition(" ") for line in file.read().splitlines()]
            tokens.append(token)
            self.host.wait_for(lambda: os.path.exists(told) and len(lines()) == len(tokens), 5,
                               f"the dashboard is told to show itself by {token!r}")
            self.assertEqual([(verb, json.loads(rest)) for verb, _, rest in lines()],
                             [("show", token) for token in tokens])

        self.host.give_token("premier")
        self.host.activate()
        expect("premier")
        self.host.give_token("\"2\"\nquit é")
        self.host.click(self.host.item("Ouvrir Orvanta"))
        expect("\"2\"\nquit é")
        self.host.activate()
        expect("")  # a token is good for one click
        self.desktop.run(self.desktop.orvanta, env={"XDG_ACTIVATION_TOKEN": "lanceur"})
        expect("lanceur")

    def test_only_what_changes_is_told(self):
        self.sql("UPDATE settings SET value = '1' WHERE key = 'paused'")
        self.host = TrayHost(self.desktop.session)
        self.addCleanup(self.host.close)
        self.program = self.desktop.spawn(ORVANTA)
        self.host.wait_for_item()
        self.wait_for_label("○ Suivi en pause")
        pass_time(1)
        self.host.pump()
        del self.host.signals[:]
        pass_time(2 * REFRESH)
        self.host.pump()
        self.assertEqual(self.host.signals, [])

        self.add_project("Nouveau")
        self.host.wait_for(lambda: "Nouveau" in self.projects(), REFRESH, "the new project")
        self.host.wait_for(lambda: "LayoutUpdated" in {member for member, _ in self.host.signals},
                           5, "the panel is told")
        now = time.time()
        self.sql("INSERT INTO events(start, end, app) VALUES (?, ?, 'A')", now - 100, now)
        del self.host.signals[:]
        self.wait_for_label("Aujourd'hui : 1 min actif")
        pass_time(1)
        self.host.pump()
        self.assertEqual(sorted(member for member, _ in self.host.signals),
                         ["ItemsPropertiesUpdated", "XAyatanaNewLabel"])

    def test_a_panel_that_restarts_and_one_that_comes_late(self):
        self.start()
        for hosted in (True, False):
            self.host.close()
            pass_time(0.5)
            self.host = TrayHost(self.desktop.session, hosted)
            self.addCleanup(self.host.close)
            self.host.wait_for_item()
            self.wait_for_label("Ouvrir Orvanta")
        self.assertEqual(end(self.program)[0], 0)

    def test_started_again(self):
        self.start()
        for words, shown, printed in (([], 1, "Orvanta est déjà en marche.\n"),
                                      (["--show"], 2, "")):
            second = self.desktop.run(ORVANTA, *words)
            self.assertEqual((second.returncode, second.stdout.decode()), (0, printed))
            self.host.wait_for(lambda: self.dashboards() == shown, 10, "the dashboard")
            pass_time(1)  # without a screen it has ended by then
        self.assertEqual(self.desktop.run(ORVANTA, "--pause").returncode, 0)
        self.wait_for_label("○ Suivi en pause", 2)
        self.assertEqual(self.desktop.run(ORVANTA, "--resume").returncode, 0)
        self.wait_for_label("●", 2 + TICK)
        self.assertEqual(self.dashboards(), 2)

    def test_when_the_dashboard_opens_at_launch(self):
        for onboarded, words, shown in (("1", [], 0), ("1", ["--show"], 1), ("0", [], 1)):
            with self.subTest(onboarded=onboarded, words=words):
                self.desktop.set_setting("onboarded", onboarded)
                self.program = self.desktop.spawn(ORVANTA, *words)
                wait_for(lambda: "capture démarrée" in output_of(self.program), 10, "launch")
                wait_for(lambda: self.dashboards() >= shown, 10, "the dashboard")
                pass_time(1)
                self.assertEqual(self.dashboards(), shown)
                self.assertEqual(end(self.program)[0], 0)

    def test_the_session_bus_goes_away(self):
        self.start()
        self.desktop.session.stop()
        lost = time.time()
        pass_time(0.5)
        before = cpu_seconds(self.program.pid)
        pass_time(REFRESH)
        self.assertLess(cpu_seconds(self.program.pid) - before, 0.3)
        wait_for(lambda: self.desktop.spans()[-1]["end"] > lost + TICK, 13, "it goes on")
        status, asked = end(self.program)
        self.assertEqual(status, 0)
        self.assertAlmostEqual(self.desktop.spans()[-1]["end"], asked, delta=1)

    def test_the_session_bus_restarts(self):
        self.add_project("Atelier")
        self.start()
        self.host.click(self.host.item("Atelier", self.host.item("Je travaille sur")))
        self.wait_for_label("Je travaille sur : Atelier", 2)
        for round_trip in range(2):
            self.desktop.session.stop()
            wait_for(lambda: self.desktop.run(ORVANTA, "--show").returncode == 1, 5, "no name")
            self.desktop.session.start()
            self.host = TrayHost(self.desktop.session)
            self.addCleanup(self.host.close)
            self.host.wait_for_item()
            self.assertIsNone(self.program.poll())
            self.wait_for_label("Je travaille sur : Atelier")
            wait_for(lambda: len(self.desktop.spans()) == round_trip + 2, TICK, "it records on")
            self.assertEqual(self.desktop.run(ORVANTA, "--show").returncode, 0)
            self.host.wait_for(lambda: self.dashboards() == round_trip + 1, 10, "the dashboard")
        self.assertEqual(self.desktop.run(ORVANTA, "--pause").returncode, 0)
        self.wait_for_label("○ Suivi en pause", 2)
        self.host.click(self.host.item("Reprendre le suivi"))
        self.wait_for_label("●", 2 + TICK)
        first, second, third = self.desktop.spans()[:3]
        for before, after in ((first, second), (second, third)):
            self.assertGreaterEqual(after["start"], before["end"])
            self.assertLess(after["start"], before["end"] + 2)
        self.assertEqual(third["project_id"], 1)
        self.host.click(self.host.item("Quitter Orvanta"))
        self.assertEqual(self.program.wait(timeout=5), 0)

    def test_former_agents_are_removed(self):
        config = self.desktop.env["XDG_CONFIG_HOME"]
        left = os.path.join(config, "autostart", "fr.quellvane.other.desktop")
        entry = os.path.join(config, "autostart", "fr.quellvane.lumaplan.menubar.desktop")
        unit = os.path.join(config, "systemd", "user", "fr.quellvane.lumaplan.tracker.service")
        # In the place of the real systemctl, which would speak to the machine's.
        tools = self.desktop.make_folder("tools")
        with open(os.path.join(tools, "systemctl"), "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\ntest -e "{unit}" && echo "$@" >>{tools}/calls\n')
        os.chmod(file.name, 0o700)
        for path in (left, entry, unit):
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8"):
                pass
        env = {"PATH": f"{tools}:{os.environ['PATH']}"}
        self.program = self.desktop.start_orvanta(env)
        self.assertEqual([os.path.exists(path) for path in (left, entry, unit)],
                         [True, False, False])
        with open(os.path.join(tools, "calls"), encoding="utf-8") as file:
            self.assertEqual(file.read(),
                             "--user disable --now fr.quellvane.lumaplan.tracker.service\n")
        output = output_of(self.program)
        lines = [line for line in output.splitlines() if "ancien agent" in line]
        self.assertEqual([line.partition("Orvanta: ")[2] for line in lines],
                         ["ancien agent fr.quellvane.lumaplan.tracker retiré",
                          "ancien agent fr.quellvane.lumaplan.menubar retiré"])
        self.assertLess(output.index("ancien agent"), output.index("capture démarrée"))


class NoTrayTest(unittest.TestCase):
    """A desktop without a tray, nor a screen for a dashboard: the user is told of each, once."""

    def test_the_notes(self):
        desktop = Desktop(screen=False)
        self.addCleanup(desktop.stop)
        desktop.set_setting("onboarded", "1")
        host = TrayHost(desktop.session, hosted=False)
        self.addCleanup(host.close)
        notes = []

        class Notifications(dbus.service.Object):
            @dbus.service.method("org.freedesktop.Notifications", in_signature="susssasa{sv}i",
                                 out_signature="u")
            def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
                notes.append((str(summary), str(body), [str(action) for action in actions]))
                return 1

            @dbus.service.signal("org.freedesktop.Notifications", signature="us")
            def ActionInvoked(self, number, action):
                pass

        notifications = Notifications(host.bus, "/org/freedesktop/Notifications")
        host.bus.request_name("org.freedesktop.Notifications")
        program = desktop.start_orvanta()
        host.wait_for(lambda: notes, 25, "a note")
        self.assertIn("zone d'icônes", notes[0][1])
        notifications.ActionInvoked(1, "default")
        host.wait_for(lambda: DASHBOARD in output_of(program), 10, "a click opens the dashboard")
        host.wait_for(lambda: len(notes) == 2, 10, "a note that the dashboard cannot open")
        self.assertIn("Le tableau de bord n'a pas pu s'ouvrir", notes[1][1])
        host.watcher.StatusNotifierHostRegistered()  # an icon after all
        self.assertEqual(end(program)[0], 0)
        self.assertEqual(len(notes), 2)


class SessionClient(dbus.service.Object):
    """How a session manager knows us."""

    interface = "org.gnome.SessionManager.ClientPrivate"
    answers = []

    @dbus.service.method(interface, in_signature="bs")
    def EndSessionResponse(self, ok, reason):
        self.answers.append((bool(ok), time.time()))

    @dbus.service.signal(interface, signature="u")
    def QueryEndSession(self, flags):
        pass

    @dbus.service.signal(interface, signature="u")
    def EndSession(self, flags):
        pass


class SessionManager(dbus.service.Object):
    registered = []

    @dbus.service.method("org.gnome.SessionManager", in_signature="ss", out_signature="o")
    def RegisterClient(self, application, startup):
        self.registered.append((str(application), str(startup)))
        return dbus.ObjectPath("/client")


class SessionEndTest(unittest.TestCase):
    def test_the_session_manager_is_answered(self):
        desktop = Desktop(screen=False)
        self.addCleanup(desktop.stop)
        host = TrayHost(desktop.session)
        self.addCleanup(host.close)
        manager = SessionManager(host.bus, "/org/gnome/SessionManager")
        client = SessionClient(host.bus, "/client")
        host.bus.request_name("org.gnome.SessionManager")
        program = desktop.start_orvanta({"DESKTOP_AUTOSTART_ID": "10ab"})
        host.wait_for(lambda: manager.registered, 5, "it registers")
        self.assertEqual(manager.registered, [("fr.quellvane.orvanta", "10ab")])

        client.QueryEndSession(0)
        host.wait_for(lambda: client.answers, 2, "an answer")
        pass_time(TICK)
        self.assertIsNone(program.poll())  # the user may have said no elsewhere
        client.EndSession(0)
        host.wait_for(lambda: len(client.answers) == 2, 2, "another answer")
        self.assertEqual([ok for ok, _ in client.answers], [True, True])
        self.assertEqual(program.wait(timeout=5), 0)
        self.assertAlmostEqual(desktop.spans()[-1]["end"], client.answers[1][1], delta=0.3)


if __name__ == "__main__":
    unittest.main()
