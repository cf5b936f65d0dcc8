"""What a screen reader finds of one application: a process of its own, as libatspi ends the one
that it is in where it does not like what it meets. Answers in a line what it is asked in one:
"tree NAME"  the application of the window of that name, and all objects of this, parents first
"focus"      the object that got the focus last, or that had it before there was anybody to tell
"events"     what was added since the last time: the role of what it was added to, and its text"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402 pylint: disable=wrong-import-position

last_focus = None
added = []


def text_of(node):
    text = node.get_text_iface()
    return Atspi.Text.get_text(text, 0, -1) if text else ""


def describe(node, depth):
    states = node.get_state_set()
    focused = states.contains(Atspi.StateType.FOCUSED)
    return {"depth": depth, "role": node.get_role_name(), "name": node.get_name() or "",
            "text": text_of(node), "focusable": states.contains(Atspi.StateType.FOCUSABLE),
            "focused": focused, "attributes": dict(node.get_attributes() or {}) if focused else {}}


def walk(node, depth=0):
    yield describe(node, depth)
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child:
            yield from walk(child, depth + 1)


def window_named(name):
    desktop = Atspi.get_desktop(0)
    for number in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(number)
        for index in range(application.get_child_count() if application else 0):
            window = application.get_child_at_index(index)
            if window and window.get_name() == name:
                return application, window
    return None, None


def tree(name):
    application, window = window_named(name)
    if not window:
        return []
    application.clear_cache()  # not every change of a name is told
    return [{**describe(application, 0), "description": application.get_description()},
            *walk(window, 1)]


def path_of(node):
    path = []
    while node:
        path.append(node.get_role_name())
        node = node.get_parent()
    return path


def describe_focus(node):
    return {**describe(node, 0), "path": path_of(node)}


def focused_in(node):
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        found = child and focused_in(child)
        if found:
            return found
    return node if node.get_state_set().contains(Atspi.StateType.FOCUSED) else None


def focus():
    """The object told of last. What a window's engine gave the focus while it was still joining the
    tree, it tells nobody: only the widget around it is heard of then, if anything."""
    if last_focus and "document web" in last_focus["path"]:
        return last_focus
    try:
        application, window = window_named("Orvanta")
        if not window:
            return last_focus
        application.clear_cache()
        node = focused_in(window)
        return describe_focus(node) if node else last_focus
    except GLib.Error:
        return last_focus  # it is gone again


def on_event(event):
    global last_focus  # pylint: disable=global-statement
    try:
        if event.type.startswith("object:state-changed:focused"):
            if event.detail1:
                last_focus = describe_focus(event.source)
        else:
            added.append([event.source.get_role_name(), text_of(event.any_data)])
    except GLib.Error:
        pass  # it is gone again


def on_line(channel, _condition):
    line = channel.readline()
    if not line:
        loop.quit()
        return False
    command, _, rest = line.strip().partition(" ")
    if command == "tree":
        answer = tree(rest)
    elif command == "focus":
        answer = focus()
    else:
        answer, added[:] = added[:], []
    print(json.dumps(answer), flush=True)
    return True


Atspi.init()
Atspi.set_timeout(3000, 15000)
listener = Atspi.EventListener.new(on_event)
for kind in ("object:state-changed:focused", "object:children-changed:add"):
    listener.register(kind)
loop = GLib.MainLoop()
GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, on_line)
print(json.dumps("ready"), flush=True)
loop.run()
