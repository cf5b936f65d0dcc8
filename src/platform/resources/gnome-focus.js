
const NAME = 'fr.quellvane.orvanta.Focus';
const PATH = '/fr/quellvane/orvanta/Focus';
const READER = 'fr.quellvane.orvanta';
const INTERFACE = `<node><interface name="${NAME}">
  <method name="Current">
    <arg name="application" type="s" direction="out"/>
    <arg name="windowClass" type="s" direction="out"/>
    <arg name="title" type="s" direction="out"/>
    <arg name="process" type="u" direction="out"/>
  </method>
</interface></node>`;
const SETTLE_MILLISECONDS = 200;

// Tells the program Orvanta which window has the focus. Titles are private: whoever else asks is
// refused, and the signal FocusChanged (with what Current answers) is sent to that program alone.
class FocusReporter {
    enable() {
        this._reader = null;
        this._window = null;
        this._settling = 0;
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, PATH);
        this._name = Gio.DBus.session.own_name(NAME, Gio.BusNameOwnerFlags.NONE, null, null);
        this._watch = Gio.DBus.session.watch_name(READER, Gio.BusNameWatcherFlags.NONE,
            (_connection, _name, owner) => {
                this._reader = owner;
                this._tell();
            },
            () => {
                this._reader = null;
            });
        this._focusChanged = global.display.connect('notify::focus-window', () => this._follow());
        this._follow();
    }

    disable() {
        global.display.disconnect(this._focusChanged);
        this._leave();
        if (this._settling)
            GLib.source_remove(this._settling);
        Gio.DBus.session.unwatch_name(this._watch);
        Gio.DBus.session.unown_name(this._name);
        this._object.unexport();
        this._object = null;
        this._reader = null;
    }

    CurrentAsync(_parameters, invocation) {
        if (invocation.get_sender() === this._reader) {
            invocation.return_value(this._current());
        } else {
            invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied',
                'Only Orvanta is answered');
        }
    }

    _follow() {
        this._leave();
        this._window = global.display.focus_window;
        if (this._window)
            this._titleChanged = this._window.connect('notify::title', () => this._settle());
        this._tell();
    }

    _leave() {
        if (this._window)
            this._window.disconnect(this._titleChanged);
        this._window = null;
    }

    // A terminal may change its title at every line; five times a second are plenty.
    _settle() {
        if (this._settling)
            return;
        this._settling = GLib.timeout_add(GLib.PRIORITY_DEFAULT, SETTLE_MILLISECONDS, () => {
            this._settling = 0;
            this._tell();
            return GLib.SOURCE_REMOVE;
        });
    }

    _tell() {
        if (this._reader) {
            Gio.DBus.session.emit_signal(this._reader, PATH, NAME, 'FocusChanged',
                this._current());
        }
    }

    _current() {
        const window = this._window;
        if (!window)
            return new GLib.Variant('(sssu)', ['', '', '', 0]);
        const app = Shell.WindowTracker.get_default().get_window_app(window);
        // An application without a desktop file is called "window:" and a number.
        const id = app && !app.is_window_backed() ? app.get_id() : '';
        return new GLib.Variant('(sssu)', [id, window.get_wm_class() ?? '',
            window.get_title() ?? '', Math.max(window.get_pid(), 0)]);
    }
}
