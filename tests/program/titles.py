"""An application with one window, titled as the last line of a file says."""

import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gio, GLib, Gtk  # pylint: disable=wrong-import-position

GLib.set_prgname("orvanta-titles")


def retitle(*_):
    with open(sys.argv[1], encoding="utf-8") as file:
        window.set_title(file.read().splitlines()[-1])


window = Gtk.Window(default_width=300, default_height=200)
watch = Gio.File.new_for_path(sys.argv[1]).monitor_file(Gio.FileMonitorFlags.NONE)
watch.set_rate_limit(10)
watch.connect("changed", retitle)
retitle()
window.show_all()
Gtk.main()
