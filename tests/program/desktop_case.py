"""A test of the real program in a session of its own."""

import http.server
import os
import threading
import unittest
from pathlib import Path

from desktop import TICK, Desktop, cpu_seconds, pass_time, wait_for


def children(pid, name=""):
    """It and the processes under it, those whose program has that name."""
    try:
        program = os.path.basename(os.readlink(f"/proc/{pid}/exe"))
        lists = [path.read_text("ascii") for path in Path(f"/proc/{pid}/task").glob("*/children")]
    except (FileNotFoundError, ProcessLookupError):  # it ends just now
        return []
    found = [pid] if program.startswith(name) else []
    return found + [one for child in " ".join(lists).split() for one in children(int(child), name)]


class DesktopCase(unittest.TestCase):
    """Each test in a session of its own, made as these say."""

    kind, programs, options = Desktop, (), {}

    def setUp(self):
        self.desktop = self.kind(*self.programs, **self.options)
        self.addCleanup(self.desktop.stop)

    def run_orvanta(self, *words, status=0):
        """Runs the program to its end; returns what it printed, in order or as errors."""
        done = self.desktop.run(self.desktop.orvanta, *words)
        self.assertEqual((words, done.returncode), (words, status))
        return (done.stderr if status else done.stdout).decode("utf-8")

    def check_span(self, count, seconds, since, meanwhile=None, **columns):
        """There come to be so many spans; the newest began then and has these values."""
        wait_for(lambda: len(self.desktop.spans()) >= count, seconds, f"span {count}", meanwhile)
        spans = self.desktop.spans()
        self.assertEqual(len(spans), count, [tuple(span) for span in spans])
        self.assertEqual({key: spans[-1][key] for key in columns}, columns)
        self.assertAlmostEqual(spans[-1]["start"], since, delta=TICK)

    def serve(self, answer):
        """A web server that answers a path with what answer(path) yields; returns its port."""
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                body = answer(self.path).encode()
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        return server.server_port

    def check_rest(self, program, seconds, most):
        """Whatever happened, it does not keep the machine busy."""
        before = cpu_seconds(program.pid)
        pass_time(seconds)
        self.assertLess(cpu_seconds(program.pid) - before, most)
