"""The other side of a tray: the watcher and the panel, as a test plays them."""

import types

import dbus
import dbus.bus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

from desktop import wait_for

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"


class Watcher(dbus.service.Object):
    def __init__(self, bus, hosted):
        super().__init__(bus, "/StatusNotifierWatcher")
        self.hosted = hosted
        self.items = []  # sender and path

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender):
        self.items.append((sender, service) if service.startswith("/")
                          else (service, "/StatusNotifierItem"))

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return {"IsStatusNotifierHostRegistered": dbus.Boolean(self.hosted),
                "ProtocolVersion": dbus.Int32(0)}[name]

    @dbus.service.signal(WATCHER)
    def StatusNotifierHostRegistered(self):
        self.hosted = True


class Notifications(dbus.service.Object):
    """The desktop's notes: `notes` are all of them, and `told` what is in each."""

    def __init__(self, host):
        super().__init__(host.bus, "/org/freedesktop/Notifications")
        host.bus.request_name("org.freedesktop.Notifications")
        self.told = []
        self.notes = []
        self.abilities = ["actions", "body"]

    @dbus.service.method("org.freedesktop.Notifications", out_signature="as")
    def GetCapabilities(self):
        return self.abilities

    @dbus.service.method("org.freedesktop.Notifications", in_signature="susssasa{sv}i",
                         out_signature="u")
    def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
        self.told.append(str(body))
        words = [str(word) for word in actions]
        self.notes.append(types.SimpleNamespace(
            number=len(self.told), replaces=int(replaces), summary=str(summary), body=str(body),
            actions=[*zip(words[::2], words[1::2])], hints=hints))
        return len(self.told)

    @dbus.service.signal("org.freedesktop.Notifications", signature="us")
    def ActivationToken(self, number, token):
        """Lets a window of the program come to the front."""

    @dbus.service.signal("org.freedesktop.Notifications", signature="us")
    def ActionInvoked(self, number, action):
        pass


class TrayHost:
    """Is there until close(), or the end of the test. `signals` is all that the item has said, as
    (member, arguments)."""

    def __init__(self, test, hosted=True):
        self.bus = dbus.bus.BusConnection(
            test.desktop.session.address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        test.addCleanup(self.close)
        self.signals = []
        for interface in (ITEM, MENU):
            self.bus.add_signal_receiver(
                lambda *arguments, member: self.signals.append((str(member), arguments)),
                dbus_interface=interface, member_keyword="member")
        self.watcher = Watcher(self.bus, hosted)
        self.bus.request_name(WATCHER)

    def close(self):
        self.bus.close()

    def pump(self):
        context = GLib.MainContext.default()
        while context.iteration(False):
            pass

    def wait_for(self, check, seconds, what):
        def look():
            self.pump()
            return check()
        return wait_for(look, seconds, what)

    def wait_for_item(self, seconds=10):
        self.wait_for(lambda: self.watcher.items, seconds, "an item registers")
        self.wait_for(self.menu_is_served, 5, "the menu is served")

    def menu_is_served(self):
        try:
            return self.layout()
        except dbus.DBusException:
            return None

    def object(self, path=None):
        sender, item = self.watcher.items[-1]
        return self.bus.get_object(sender, path or item, introspect=False)

    def __getitem__(self, name):
        """A property of the item."""
        return self.object().Get(ITEM, name, dbus_interface=PROPERTIES)

    def activate(self):
        self.object().Activate(0, 0, dbus_interface=ITEM)

    def give_token(self, token):
        self.object().ProvideXdgActivationToken(token, dbus_interface=ITEM)

    def layout(self):
        return self.object(self["Menu"]).GetLayout(
            0, -1, dbus.Array([], "s"), dbus_interface=MENU)[1]

    def items(self, parent=None):
        """The items as (id, properties), in order; of the submenu of an item where given."""
        node = parent[2] if parent else self.layout()
        return [(child[0], {str(key): value for key, value in child[1].items()}, child)
                for child in node[2]]

    def labels(self, parent=None):
        """What a user sees: "---" for a separator, an item chosen of several with a leading *."""
        shown = []
        for _, item, _ in self.items(parent):
            if not item.get("visible", True):
                continue
            if item.get("type") == "separator":
                shown.append("---")
            else:
                label = str(item.get("label", "")).replace("__", "_")
                shown.append(("*" if item.get("toggle-state") == 1 else "") + label)
        return shown

    def item(self, label, parent=None):
        for item in self.items(parent):
            if str(item[1].get("label", "")).replace("__", "_").startswith(label):
                return item
        raise AssertionError(f"no item {label} in {self.labels(parent)}")

    def open_menu(self):
        self.object(self["Menu"]).Event(0, "opened", dbus.Int32(0, variant_level=1),
                                        dbus.UInt32(0), dbus_interface=MENU)

    def click(self, item):
        self.object(self["Menu"]).Event(item[0], "clicked", dbus.Int32(0, variant_level=1),
                                        dbus.UInt32(0), dbus_interface=MENU)
