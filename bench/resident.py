#!/usr/bin/python3
"""What the resident program costs: start, processor, wake-ups, memory, bytes written.

Each beside an empty program on the same libraries. Prints figures and passes no judgement.

    bench/resident.py BUILD-FOLDER [--years 10] [--seconds 120] [--only start,idle,busy,dashboard]
"""

import argparse
import datetime
import os
import shutil
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
ORVANTA = EMPTY = None  # set by main()
HOUR = 3600


def tasks(pid):
    folder = f"/proc/{pid}/task"
    return [os.path.join(folder, task) for task in os.listdir(folder)]


def cpu_seconds(pid):
    """Of all threads; to the nanosecond, where /proc/PID/stat counts in hundredths."""
    total = 0
    for task in tasks(pid):
        with open(os.path.join(task, "schedstat"), encoding="ascii") as file:
            total += int(file.read().split()[0])
    return total / 1e9


def wake_ups(pid):
    total = 0
    for task in tasks(pid):
        with open(os.path.join(task, "status"), encoding="utf-8") as file:
            total += sum(int(line.split()[1]) for line in file
                         if line.startswith("voluntary_ctxt_switches"))
    return total


def memory(pid):
    """KiB: resident, its proportional share (PSS), and what is the program's own."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        fields = dict(line.split()[:2] for line in file.readlines()[1:])
    return int(fields["Rss:"]), int(fields["Pss:"]), int(fields["Private_Dirty:"]) + int(fields["Private_Clean:"])


def written(pid):
    """Bytes handed to the kernel, and bytes that it must bring to the disk."""
    with open(f"/proc/{pid}/io", encoding="ascii") as file:
        fields = dict(line.split(": ") for line in file)
    return int(fields["wchar"]), int(fields["write_bytes"])


def print_memory(name, program, empty):
    ours, floor = memory(program.pid), memory(empty.pid)
    for what, mine, least in zip(("resident", "PSS", "its own"), ours, floor):
        print(f"{name}: {mine} KiB {what}, empty program {least} KiB: {mine / least:.2f} times")


def ten_years(build, years):
    """The benchmarks' store of this age; made at the first use."""
    day = datetime.date.today().isoformat()
    store = os.path.join(tempfile.gettempdir(), f"orvanta-bench-{years * 365}-days-until-{day}")
    if not os.path.exists(store):
        subprocess.run([os.path.join(build, "bench", "orvanta-bench"),
                        "--benchmark_filter=day/today"], check=True, stdout=subprocess.DEVNULL)
    return store


class Session:
    """An X session with a tray; the program runs in it."""

    def __init__(self, store=None):
        from desktop import Desktop
        from tray_host import TrayHost
        self.desktop = Desktop()
        if store:
            shutil.copytree(os.path.join(store, "Orvanta"),
                            os.path.join(self.desktop.env["XDG_DATA_HOME"], "Orvanta"))
        self.desktop.set_setting("onboarded", "1")
        self.windows = [self.desktop.open_window("xterm", "-T", f"Terminal {number}", "-e",
                                                 "sleep", "100000")[1] for number in range(2)]
        self.cleanups = []
        self.host = TrayHost(self)

    def addCleanup(self, end):
        """What a test would do when it ends."""
        self.cleanups.append(end)

    def last_span(self):
        """Its id and when it began."""
        db = sqlite3.connect(f"file:{self.desktop.database()}?mode=ro", uri=True)
        span = db.execute("SELECT id, start FROM events ORDER BY id DESC LIMIT 1").fetchone()
        db.close()
        return span or (0, 0)

    def close(self):
        for end in self.cleanups:
            end()
        self.desktop.stop()

    def start(self, program):
        """Starts it; returns it and the seconds until its icon is known to the panel."""
        known = len(self.host.watcher.items)
        began = time.monotonic()
        process = self.desktop.spawn(program)
        while len(self.host.watcher.items) == known:
            self.host.pump()
            assert time.monotonic() - began < 10
        return process, time.monotonic() - began


def stop(*programs):
    for program in programs:
        program.terminate()
        program.wait()


def measure_start(store):
    session = Session(store)
    try:
        times = {program: [] for program in (EMPTY, ORVANTA)}
        late = []
        for _ in range(15):
            for program, list_ in times.items():
                known = session.last_span()[0]
                began = time.time()
                process, seconds = session.start(program)
                list_.append(seconds)
                if program == ORVANTA:
                    while session.last_span()[0] == known:
                        time.sleep(0.01)
                    late.append(session.last_span()[1] - began - 1)
                stop(process)
        empty, ours = (statistics.median(times[program]) for program in (EMPTY, ORVANTA))
        print(f"start: icon known to the panel after {ours * 1000:.1f} ms, empty program "
              f"{empty * 1000:.1f} ms: {ours / empty:.2f} times; first tick "
              f"{statistics.median(late) * 1000:.1f} ms after the second that it waits")
    finally:
        session.close()


def use(desktop, windows, seconds):
    """A busy user: types all the time, a new title every 3 s, another window every 20 s."""
    end = time.monotonic() + seconds
    beat = 0
    while time.monotonic() < end:
        window = windows[beat // 20 % len(windows)]
        if beat % 20 == 0:
            desktop.focus(window)
        if beat % 3 == 0:
            desktop.run("xprop", "-id", str(window), "-f", "_NET_WM_NAME", "8u", "-set",
                        "_NET_WM_NAME", f"Document {beat} — un titre assez long pour une fenêtre")
        desktop.touch()
        beat += 1
        time.sleep(max(0, min(1, end - time.monotonic())))


def measure_running(name, store, seconds):
    session = Session(store)
    try:
        if name == "idle":
            session.desktop.set_setting("idle_threshold", "5")
        empty, _ = session.start(EMPTY)
        program, _ = session.start(ORVANTA)
        time.sleep(12)  # it has settled, and in the idle case sees that nobody is there
        session.host.pump()
        del session.host.signals[:]
        before = cpu_seconds(program.pid), wake_ups(program.pid), *written(program.pid)
        began = time.monotonic()
        if name == "idle":
            while time.monotonic() - began < seconds:
                time.sleep(1)
                session.host.pump()
        else:
            use(session.desktop, session.windows, seconds)
            session.host.pump()
        passed = time.monotonic() - began
        after = cpu_seconds(program.pid), wake_ups(program.pid), *written(program.pid)
        cpu, wakes, characters, disk = (b - a for a, b in zip(before, after))
        print(f"{name}, {passed:.0f} s: {cpu / passed:.4%} of a core, {cpu / passed * HOUR:.2f} s "
              f"an hour; {wakes / passed:.2f} wake-ups a second; "
              f"{len(session.host.signals) / passed * 60:.1f} signals to the panel a minute")
        print(f"{name}: {characters / passed * HOUR / 2**20:.2f} MiB an hour written to files, "
              f"{disk / passed * HOUR / 2**20:.2f} MiB an hour to the disk")
        print_memory(name, program, empty)
        stop(program, empty)
    finally:
        session.close()


def below(pid):
    """The program's children, theirs, and so on."""
    found = []
    for task in tasks(pid):
        with open(os.path.join(task, "children"), encoding="ascii") as file:
            for child in map(int, file.read().split()):
                found += [child, *below(child)]
    return found


def measure_dashboard(store):
    """The program's memory before, with and after a dashboard, which ends 2 s after its window."""
    session = Session(store)
    session.desktop.env["ORVANTA_LINGER_SECONDS"] = "2"

    def windows():
        found = session.desktop.run("xdotool", "search", "--onlyvisible", "--name", "^Orvanta$")
        return found.stdout.split()

    def settled(done):
        while not done():
            time.sleep(0.2)
        time.sleep(15)  # the menu has read the day again, and what came with it is given back

    try:
        empty, _ = session.start(EMPTY)
        program, _ = session.start(ORVANTA)
        settled(lambda: True)
        print_memory("before a dashboard", program, empty)
        session.desktop.run(ORVANTA, "--show")
        for report in ("week", "recap", "suggestions"):
            session.desktop.call(report)
        settled(windows)
        print_memory("with the dashboard open", program, empty)
        dashboard = sum(memory(pid)[1] for pid in below(program.pid))
        print(f"the dashboard and its web engine: {dashboard / 1024:.0f} MiB PSS")
        session.desktop.focus(int(windows()[0]))
        session.desktop.run("timeout", "5", "xdotool", "key", "ctrl+w")
        settled(lambda: not below(program.pid))
        print_memory("after it has ended", program, empty)
        stop(program, empty)
    finally:
        session.close()


def main():
    global ORVANTA, EMPTY
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("--years", type=int, default=10)
    parser.add_argument("--seconds", type=int, default=120)
    parser.add_argument("--only", default="start,idle,busy,dashboard")
    options = parser.parse_args()
    build = os.path.realpath(options.build)
    ORVANTA = os.environ["ORVANTA"] = os.path.join(build, "orvanta")
    EMPTY = os.path.join(build, "bench", "empty-program")
    sys.path.insert(0, os.path.join(ROOT, "tests", "program"))
    sys.dont_write_bytecode = True
    store = ten_years(build, options.years) if options.years else None
    for measurement in options.only.split(","):
        if measurement == "start":
            measure_start(store)
        elif measurement == "dashboard":
            measure_dashboard(store)
        else:
            measure_running(measurement, store, options.seconds)


if __name__ == "__main__":
    main()
