"""Real browsers for a test, and pages for them to show."""

import json
import os
import shutil

from desktop import ORVANTA, wait_for

BUILD = os.path.dirname(ORVANTA)
HELPER = os.path.join(BUILD, "orvanta-tab")
SHARED = os.path.join(BUILD, "share", "orvanta")

# The page "/a b" is titled "Page a b", until a key is pressed.
PAGE = """<!doctype html><meta charset="utf-8"><title>Page {name}</title>
<script>onkeydown = (event) => {{ if (event.key === "t") document.title = "Titre {name}"; }}</script>
<p>{name}"""


class Pages:
    """Every name is a site of its own: http://NAME.localhost:PORT/NAME."""

    def __init__(self, test):
        self.port = test.serve(lambda path: PAGE.format(name=path.strip("/")))

    def url(self, name):
        return f"http://{name}.localhost:{self.port}/{name}"


class Browser:
    """One that is not started yet. `extension`: with ours."""

    def __init__(self, desktop, extension=True):
        self.desktop = desktop
        self.extension = extension
        self.process = None
        self.prepare()

    def start(self, *urls):
        self.process, window = self.desktop.open_window(*self.command(), *urls, seconds=60)
        return window

    def stop(self):
        mine = self.windows()
        self.process.terminate()
        self.process.wait(timeout=20)
        # The next to start may be given the same window identifiers.
        wait_for(lambda: not mine & set(self.desktop.root_windows("_NET_CLIENT_LIST")), 10,
                 "its windows are gone")

    def windows(self):
        pid = str(self.process.pid).encode()
        return {window for window in self.desktop.root_windows("_NET_CLIENT_LIST")
                if self.desktop.run("xdotool", "getwindowpid", str(window)).stdout.strip() == pid}

    def keys(self, *keys):
        self.desktop.input("key", *keys)

    def open_window(self, option, url):
        """Another window of the running browser; returns it when it is in front with the page."""
        known = self.desktop.root_windows("_NET_CLIENT_LIST")
        self.desktop.spawn(*self.command(), option, url)
        page = "Page " + url.rpartition("/")[2]

        def opened():
            active = self.desktop.root_windows("_NET_ACTIVE_WINDOW")
            return [window for window in active if window not in known
                    and self.desktop.title_of(window).startswith(page)]
        return wait_for(opened, 15, f"a window with {page}")[0]

    def tab(self):
        """What the helper says of it, called by hand: status, URL and title, error text."""
        done = self.desktop.run(HELPER, "--tab", self.bundle, str(self.process.pid))
        return done.returncode, done.stdout.decode(), done.stderr.decode().strip()


class Chromium(Browser):
    name = "Chromium"
    bundle = "org.chromium.Chromium"
    private_option = "--incognito"

    def prepare(self):
        os.makedirs(os.path.join(self.desktop.env["XDG_CONFIG_HOME"], "chromium"), exist_ok=True)

    def command(self):
        options = ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                   "--disable-background-networking", "--disable-component-update",
                   "--disable-sync", "--password-store=basic"]
        if self.extension:
            options.append(f"--load-extension={SHARED}/extension")
        return ["chromium", *options]


class Firefox(Browser):
    name = "Firefox"
    bundle = "org.mozilla.firefox"
    private_option = "--private-window"

    def prepare(self):
        os.makedirs(os.path.join(self.desktop.env["HOME"], ".mozilla"), exist_ok=True)
        self.profile = os.path.join(self.desktop.folder, "firefox")
        os.makedirs(os.path.join(self.profile, "extensions"), exist_ok=True)
        settings = {
            "xpinstall.signatures.required": False,
            "extensions.autoDisableScopes": 0,
            "browser.ctrlTab.sortByRecentlyUsed": False,
            "browser.shell.checkDefaultBrowser": False,
            "browser.aboutwelcome.enabled": False,
            "browser.sessionstore.resume_from_crash": False,
            "browser.startup.homepage_override.mstone": "ignore",
            "browser.startup.page": 0,
            "browser.tabs.warnOnClose": False,
            "datareporting.policy.dataSubmissionEnabled": False,
            "termsofuse.bypassNotification": True,
        }
        self.desktop.write(os.path.join(self.profile, "user.js"), "".join(
            f"user_pref({json.dumps(key)}, {json.dumps(value)});\n"
            for key, value in settings.items()))
        if self.extension:
            shutil.copy(os.path.join(SHARED, "orvanta.xpi"), os.path.join(
                self.profile, "extensions", "tab@orvanta.quellvane.fr.xpi"))

    def command(self):
        return ["firefox-esr", "--profile", self.profile]
