"""A session of its own for a test: buses, X server, home. Nothing of it outlives the test."""

import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import dbus
import dbus.bus

from recorded import Recorded

ORVANTA = os.environ["ORVANTA"]
TICK = 2.5  # seconds: the program looks every 2, and this machine may be busy

# No service directories: what a program asks for is there or is not, and nothing is left running.
BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path={folder}/bus</listen>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


MOCK = "org.freedesktop.DBus.Mock"


def wait_for(check, seconds, what, meanwhile=None):
    """The first true answer of check(); an error when none comes in time, with what(), if it can be
    called, as things are by then."""
    deadline = time.time() + seconds
    while True:
        answer = check()
        if answer:
            return answer
        if time.time() > deadline:
            raise AssertionError(f"{what() if callable(what) else what}: not within {seconds} s")
        if meanwhile:
            meanwhile()
        time.sleep(0.1)


def pass_time(seconds, meanwhile=None):
    """For what is to be seen not to happen."""
    end = time.time() + seconds
    wait_for(lambda: time.time() >= end, seconds + 5, "time passes", meanwhile)


def cpu_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Bus:
    def __init__(self, desktop, name):
        self.desktop = desktop
        folder = desktop.make_folder(name)
        self.config = desktop.write(f"{folder}/bus.conf", BUS_CONFIG.format(folder=folder))
        self.address = f"unix:path={folder}/bus"
        self.start()

    def start(self):
        self.daemon, _ = self.desktop.spawn_telling(
            "dbus-daemon", f"--config-file={self.config}", "--nofork", "--print-address=%d")

    def stop(self):
        kill(self.daemon)

    def connect(self):
        return dbus.bus.BusConnection(self.address)


class Desktop(Recorded):
    """Call stop() at the end. `env` is the environment of everything that runs in it."""

    # What everything is started with, and the program.
    prefix = ("setpriv", "--pdeathsig", "KILL")
    orvanta = ORVANTA

    def __init__(self, screen=True, session_bus=True, system_bus=False):
        self.folder = tempfile.mkdtemp(prefix="orvanta-test-")
        self.processes = []
        self.mounts = []
        self.x_server = None
        self.env = {key: value for key, value in os.environ.items()
                    if key == "PATH" or key == "TZ" or key.endswith("SAN_OPTIONS")}
        nowhere = "unix:path=" + os.path.join(self.folder, "no-bus")
        self.env.update(
            LANG="C.UTF-8", LANGUAGE="fr", NO_AT_BRIDGE="1", GTK_A11Y="none",
            HOME=self.make_folder("home"), XDG_CONFIG_HOME=self.make_folder("config"),
            XDG_RUNTIME_DIR=self.make_folder("runtime"), XDG_DATA_HOME=self.make_folder("data"),
            DBUS_SYSTEM_BUS_ADDRESS=nowhere, DBUS_SESSION_BUS_ADDRESS=nowhere)
        try:
            if session_bus:
                self.session = Bus(self, "session-bus")
                self.env["DBUS_SESSION_BUS_ADDRESS"] = self.session.address
            if system_bus:
                self.system = Bus(self, "system-bus")
                self.env["DBUS_SYSTEM_BUS_ADDRESS"] = self.system.address
            if screen:
                self.start_screen()
        except BaseException:
            self.stop()
            raise

    def stop(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.kill()
            process.wait()
        for mounted in self.mounts:
            subprocess.run(["umount", "-l", mounted], check=True)
        shutil.rmtree(self.folder, ignore_errors=True)

    def make_folder(self, name):
        path = os.path.join(self.folder, name)
        os.mkdir(path, 0o700)
        return path

    def write(self, name, text, mode=0o644):
        """A file in the user's folder, or wherever the path leads; returns its path."""
        path = os.path.join(self.env["HOME"], name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)
        return path

    def install(self, name, text):
        """A desktop file."""
        self.write(os.path.join(self.env["XDG_DATA_HOME"], "applications", f"{name}.desktop"),
                   "[Desktop Entry]\nType=Application\n" + text)

    def spawn(self, *command, env=None, fds=()):
        """Starts a program that dies with us at the latest."""
        output = os.path.join(self.folder, f"{len(self.processes)}.out")
        with open(output, "wb") as file:
            process = subprocess.Popen(
                [*self.prefix, *command], env={**self.env, **(env or {})},
                stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.STDOUT, pass_fds=fds,
                cwd=self.env["HOME"])
        process.output = output
        self.processes.append(process)
        return process

    def spawn_telling(self, *command):
        """Starts a program that writes a line to the file of number %d; returns it and the line."""
        reader, writer = os.pipe()
        process = self.spawn(*(word.replace("%d", str(writer)) for word in command), fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as file:
            return process, file.readline().strip()

    def mock(self, bus, name, *arguments):
        """Starts a mock; returns it and a connection to it once its name is there."""
        mock = self.spawn(sys.executable, "-m", "dbusmock", *arguments)
        connection = bus.connect()
        wait_for(lambda: connection.name_has_owner(name), 10, f"{name} is up")
        return mock, connection

    def run(self, *command, env=None, timeout=10):
        """Runs a program to its end."""
        return subprocess.run([*self.prefix, *command], env={**self.env, **(env or {})},
                              capture_output=True, stdin=subprocess.DEVNULL, check=False,
                              timeout=timeout)

    # A disk that can be filled

    def on_small_disk(self, size):
        """Puts the data on a disk of their own, an empty one; skips the test where that is not
        allowed."""
        data = self.env["XDG_DATA_HOME"]
        done = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size},mode=700", "tmpfs", data],
                              capture_output=True, check=False)
        if done.returncode != 0:
            raise unittest.SkipTest("mounting a file system is not allowed here")
        self.mounts.append(data)

    def fill_disk(self):
        """Leaves not a page free on it; returns the file to remove."""
        path = os.path.join(self.env["XDG_DATA_HOME"], "filler")
        with open(path, "wb", buffering=0) as file:
            try:
                while True:
                    file.write(b"x" * 4096)
            except OSError:
                pass
        return path

    # The X server and its windows

    def start_screen(self):
        self.x_server, number = self.spawn_telling(
            "Xvfb", "-displayfd", "%d", "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset")
        self.env["DISPLAY"] = ":" + number
        self.spawn("openbox")
        wait_for(lambda: self.root_windows("_NET_SUPPORTING_WM_CHECK"), 10, "openbox is up")

    def root_windows(self, name):
        text = self.run("xprop", "-root", name).stdout.decode()
        return [int(word.strip(","), 16) for word in text.split() if word.startswith("0x")]

    def windows_named(self, name):
        """Those in sight, as xdotool numbers them. A tooltip, which has its program's name, is none;
        one that goes while xdotool searches makes it find nothing at all."""
        return [str(window) for window in self.root_windows("_NET_CLIENT_LIST")
                if re.search(name, self.title_of(window))]

    def title_of(self, window):
        return self.run("xdotool", "getwindowname", str(window)).stdout.decode().strip()

    def open_window(self, *command, seconds=15):
        """Starts a program; returns it and its window."""
        before = self.root_windows("_NET_CLIENT_LIST")
        program = self.spawn(*command)

        def new_window():
            return [window for window in self.root_windows("_NET_CLIENT_LIST")
                    if window not in before]
        return program, wait_for(new_window, seconds, f"{command[0]} has a window")[-1]

    def focus(self, window):
        """Brings the window to the front; returns when it came there."""
        self.run("timeout", "5", "xdotool", "windowactivate", str(window))
        wait_for(lambda: self.root_windows("_NET_ACTIVE_WINDOW") == [window], 5, "focus moves")
        return time.time()

    def input(self, *words):
        """Mouse and keyboard: a command of xdotool."""
        done = self.run("timeout", "5", "xdotool", *words)
        assert done.returncode == 0, done.stderr

    def touch(self):
        """Input: the mouse moves a little. Returns when."""
        self.input("mousemove_relative", "1", "0", "mousemove_relative", "--", "-1", "0")
        return time.time()

    # Orvanta

    def start_orvanta(self, env=None):
        """Starts the program, which its user knows already, and waits for its first span."""
        self.set_setting("onboarded", "1")
        known = len(self.spans())
        program = self.spawn(self.orvanta, env=env)
        wait_for(lambda: len(self.spans()) > known, 10, "the first span")
        return program

    def call(self, *words, env=None):
        """`orvanta --call …`: exit status and the answer."""
        done = self.run(self.orvanta, "--call", *words, env=env)
        try:
            return done.returncode, json.loads(done.stdout.decode("utf-8"))
        except ValueError as error:  # which would not say why
            raise AssertionError(f"no answer: {done}") from error

    def newest(self, seconds, meanwhile=None, **columns):
        """The newest span, once these are its values."""
        def shown():
            spans = self.spans()
            return spans and all(spans[-1][key] == columns[key] for key in columns) and spans[-1]
        return wait_for(shown, seconds, lambda: f"{columns}, but {[*map(tuple, self.spans()[-2:])]}",
                        meanwhile)


def end(program, how=signal.SIGTERM):
    """Ends the program, which has to end well; returns when it was asked to."""
    asked = time.time()
    program.send_signal(how)
    status = program.wait(timeout=10)
    assert status == 0, (status, output_of(program)[-2000:])
    return asked


def kill(program):
    program.kill()
    program.wait()


def output_of(program):
    with open(program.output, encoding="utf-8") as file:
        return file.read()
