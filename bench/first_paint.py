#!/usr/bin/python3
"""How long the dashboard is awaited: its window, its skeleton, the day that it shows.

From `orvanta --show` to what is seen on the screen, beside a page of one colour in the same window
and engine. Prints figures and passes no judgement.

    bench/first_paint.py BUILD-FOLDER [--years 2] [--runs 20] [--trace]
"""

import argparse
import ctypes
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
ROWS = range(30, 768, 41)
WIDTH = 1024
ALIKE = 0.985  # a clock that goes on, a caret that blinks
TRIVIAL = {"index.html": '<!doctype html><title>Orvanta</title><link rel="stylesheet" href="app.css">',
           "app.css": "html { background: #357 }"}
SETTLED = 1.0  # seconds without a change


class Image(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int), ("xoffset", ctypes.c_int),
                ("format", ctypes.c_int), ("data", ctypes.c_void_p)]


class Screen:
    """Some rows of pixels of an X screen, read as often as it takes."""

    def __init__(self, display):
        self.x = ctypes.CDLL("libX11.so.6")
        self.x.XOpenDisplay.restype = ctypes.c_void_p
        self.x.XGetImage.restype = ctypes.POINTER(Image)
        self.x.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(display.encode()))
        self.root = ctypes.c_ulong(self.x.XDefaultRootWindow(self.display))

    def look(self):
        every_plane, z_pixmap = ctypes.c_ulong(~0), 2
        rows = []
        for y in ROWS:
            image = self.x.XGetImage(self.display, self.root, 0, y, WIDTH, 1, every_plane, z_pixmap)
            rows.append(ctypes.string_at(image.contents.data, WIDTH * 4))
            self.x.XDestroyImage(image)
        return b"".join(rows)


def alike(one, other):
    """The share of equal pixels."""
    one, other = memoryview(one).cast("I"), memoryview(other).cast("I")
    return sum(map(int.__eq__, one, other)) / len(one)


def watch(screen, began):
    """Every picture until nothing changes any more: (seconds, picture)."""
    pictures = [(0.0, screen.look())]
    changed = began
    while time.monotonic() - changed < SETTLED or alike(pictures[-1][1], pictures[0][1]) > 0.9:
        picture = screen.look()
        now = time.monotonic()
        if picture != pictures[-1][1]:
            if alike(picture, pictures[-1][1]) < ALIKE:
                changed = now
            pictures.append((now - began, picture))
        assert now - began < 30, "nothing to see"
        time.sleep(0.003)
    return pictures


def first(pictures, check):
    return next(seconds for seconds, picture in pictures[1:] if check(picture))


def colours(picture):
    return len(set(memoryview(picture).cast("I")))


class Session:
    def __init__(self, store, web=None):
        from desktop import Desktop
        self.desktop = Desktop()
        if web:
            self.desktop.env["ORVANTA_WEB"] = web
        if store:
            shutil.copytree(os.path.join(store, "Orvanta"),
                            os.path.join(self.desktop.env["XDG_DATA_HOME"], "Orvanta"))
        self.program = self.desktop.start_orvanta()
        self.screen = Screen(self.desktop.env["DISPLAY"])

    def show(self):
        """The pictures from the command to the last change."""
        began = time.monotonic()
        shown = self.desktop.spawn(self.desktop.orvanta, "--show")
        pictures = watch(self.screen, began)
        shown.wait()
        return pictures

    def hide(self):
        desktop = self.desktop
        desktop.focus(int(desktop.windows_named("^Orvanta$")[0]))
        desktop.input("key", "ctrl+w")
        while desktop.windows_named("^Orvanta$"):
            time.sleep(0.05)
        time.sleep(0.5)

    def end_dashboard(self):
        for pid in children(self.program.pid):
            os.kill(pid, 9)
        time.sleep(1)

    def close(self):
        self.program.terminate()
        self.program.wait()
        self.desktop.stop()


def children(pid):
    found = []
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/children", encoding="ascii") as file:
            found += map(int, file.read().split())
    return found


def times(pictures):
    last = pictures[-1][1]
    empty = pictures[0][1]
    return {
        "window": first(pictures, lambda picture: alike(picture, empty) < 0.9),
        "skeleton": first(pictures, lambda picture: alike(picture, empty) < 0.9
                          and alike(picture, last) > 0.6),
        "painted": first(pictures, lambda picture: alike(picture, last) > ALIKE)}


def trace(pictures):
    print("seen:")
    for seconds, picture in pictures[1:]:
        print(f"  {seconds * 1000:6.0f} ms  like before {alike(picture, pictures[0][1]):.3f}"
              f"  like the last {alike(picture, pictures[-1][1]):.3f}  {colours(picture)} colours")


def print_row(name, values, floor=None):
    middle, worst = statistics.median(values) * 1000, max(values) * 1000
    ratio = f", {middle / floor:.2f} times the page of one colour" if floor else ""
    print(f"{name}: median {middle:.0f} ms, worst {worst:.0f} ms of {len(values)}{ratio}")
    return middle


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("--years", type=int, default=2)
    parser.add_argument("--runs", type=int, default=20)
    parser.add_argument("--trace", action="store_true", help="what is seen when")
    options = parser.parse_args()
    build = os.path.realpath(options.build)
    os.environ["ORVANTA"] = os.path.join(build, "orvanta")
    sys.path.insert(0, os.path.join(ROOT, "tests", "program"))
    sys.dont_write_bytecode = True
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([os.path.join(build, "tools", "make-store"), folder,
                        "--days", str(options.years * 365)], check=True, stdout=subprocess.DEVNULL)
        for name, text in TRIVIAL.items():
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                file.write(text)
        ours, trivial = Session(folder), Session(folder, web=folder)
        cold = {"window": [], "skeleton": [], "painted": []}
        again, floor = [], []
        for _ in range(options.runs):
            trivial.end_dashboard()
            ours.end_dashboard()
            simple, pictures = trivial.show(), ours.show()
            if options.trace:
                trace(simple)
                trace(pictures)
            floor.append(times(simple)["painted"])
            for name, seconds in times(pictures).items():
                cold[name].append(seconds)
            ours.hide()
            again.append(times(ours.show())["painted"])
        ours.close()
        trivial.close()
    least = print_row("page of one colour", floor)
    for name, values in cold.items():
        print_row(name, values, least)
    print_row("opened again, painted", again, least)


if __name__ == "__main__":
    main()
