// For GNOME Shell 43 and 44.
const {Gio, GLib, Shell} = imports.gi;
