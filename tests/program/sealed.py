"""A desktop in a network of its own, where everything that a program says to the kernel's sockets is
written down."""

import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

from desktop import Desktop, wait_for

SERVICE = str(Path(__file__).with_name("web_service.py"))


def network_of(pid):
    return os.readlink(f"/proc/{pid}/ns/net")


def own_network():
    """A process that holds a network namespace, and the words that start another in it."""
    user = [] if os.geteuid() == 0 else ["--map-root-user"]
    holder = subprocess.Popen(["unshare", *user, "--net", "setpriv", "--pdeathsig", "KILL",
                               "sleep", "600"], stderr=subprocess.DEVNULL)
    here = network_of("self")
    wait_for(lambda: holder.poll() is not None or network_of(holder.pid) != here, 5, "the network")
    if holder.poll() is not None:
        raise unittest.SkipTest("a network namespace is not allowed here")
    inside = ["--user", "--preserve-credentials"] if user else []
    return holder, ("nsenter", "--target", str(holder.pid), *inside, "--net", *Desktop.prefix)


class SealedDesktop(Desktop):
    """Not even its own loopback is up, unless a service is started."""

    def __init__(self, **options):
        self.holder, self.prefix = own_network()
        try:
            super().__init__(**options)
            self.traces = self.make_folder("traces")
            if self.run(*self.traced("true")).returncode != 0:
                raise unittest.SkipTest("strace is not here, or not allowed to look")
        except BaseException:
            self.end_network()
            raise

    def stop(self):
        super().stop()
        self.end_network()

    def end_network(self):
        self.holder.kill()
        self.holder.wait()

    def traced(self, *command):
        """The command, with all that it starts under strace, whose child it is not."""
        return ("strace", "--daemonize", "--follow-forks", "--output-separately", "--seccomp-bpf",
                "--quiet=all", "--trace=%network", "--string-limit=64",
                f"--output={self.folder}/traces/{Path(command[0]).name}", *command)

    def start_service(self):
        """A web server in this network; returns its port and the file of what it is asked."""
        asked = os.path.join(self.folder, "asked")
        _, port = self.spawn_telling(sys.executable, SERVICE, asked, "%d")
        return int(port), asked

    def counters(self):
        """Packets and bytes of every interface, received and sent, that are not 0."""
        lines = self.run("cat", "/proc/net/dev").stdout.decode().splitlines()[2:]
        assert any(line.strip().startswith("lo:") for line in lines), lines
        return [line for line in lines if any(int(word) for word in line.split(":")[1].split())]

    def calls(self):
        """Of each traced program its network calls, as strace writes them."""
        found = {}
        for path in Path(self.traces).iterdir():
            found.setdefault(path.name.rpartition(".")[0], []).extend(
                path.read_text("utf-8", "replace").splitlines())
        return found

    def families(self):
        """The kinds of sockets that any program made, and of addresses that it spoke to."""
        return {family for calls in self.calls().values() for call in calls
                for family in re.findall(r"^socket(?:pair)?\((\w+)|sa_family=(\w+)", call)
                for family in family if family}

    def addresses(self):
        """Internet addresses that were connected or sent to."""
        return {call for calls in self.calls().values() for call in calls
                if re.search(r"sa_family=AF_INET", call)
                and call.startswith(("connect(", "sendto(", "sendmsg(", "sendmmsg("))}
