"""Passes for a browser with Orvanta's extension: a window, and the host that it starts. Arguments:
a file whose last line is "ADDRESS TITLE", and the host's command."""

import json
import struct
import subprocess
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gio, GLib, Gtk  # pylint: disable=wrong-import-position

GLib.set_prgname("firefox-esr")
host = subprocess.Popen([*sys.argv[2:], "host.json", "extension@orvanta"],
                        stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)


def show(*_):
    with open(sys.argv[1], encoding="utf-8") as file:
        address, title = file.read().splitlines()[-1].split(" ", 1)
    window.set_title(f"{title} — Mozilla Firefox")
    message = json.dumps({"window": 1, "url": address, "title": title}).encode()
    host.stdin.write(struct.pack("=I", len(message)) + message)
    host.stdin.flush()


window = Gtk.Window(default_width=300, default_height=200)
watch = Gio.File.new_for_path(sys.argv[1]).monitor_file(Gio.FileMonitorFlags.NONE)
watch.connect("changed", show)
show()
window.show_all()
Gtk.main()
