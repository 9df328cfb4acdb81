#!/usr/bin/python3
"""Measures the doors of automation: what they take beyond the service's own time.

  bench/automation.py [--build build/release] [--runs 15] [--tasks 10000]

A scripted service answers at once and notes how long it held each request. Measured in a private desktop session: "parvela add"
with the application closed and running, AddTask on the bus with the application closed (the bus starts it) and running, and the
search of the desktop over the given number of tasks. Medians and the slowest run are printed, in milliseconds.
"""

import argparse
import contextlib
import http.server
import json
import os
import pathlib
import statistics
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from harness.application import APP_ID, Application  # noqa: E402
from harness.session import Session  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

WORDS = "write call review plan draft brief garden invoice report zebra window summer market robin".split()


class Service(http.server.BaseHTTPRequestHandler):
    """Answers what the doors ask, and adds up how long that took."""

    protocol_version = "HTTP/1.1"

    def answer(self):
        begin = time.monotonic()
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        if self.command == "POST":
            data = json.dumps({**self.server.task(7), "title": json.loads(body)["title"]}).encode()
        elif self.path.endswith("/boards"):
            data = self.server.boards
        else:
            data = self.server.tasks
        self.send_response(200)
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        self.wfile.write(data)
        self.wfile.flush()
        self.server.spent += time.monotonic() - begin

    do_GET = do_POST = do_PATCH = answer

    def log_message(self, *_):
        pass


def serve(count):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Service)
    server.daemon_threads = True
    server.spent = 0.0

    def task(number):
        title = " ".join(WORDS[(number * step + number // 7) % len(WORDS)] for step in (1, 3, 5, 11))
        return {"id": f"t{number}", "key": f"TSK-{number}", "title": f"{title} {number}", "board": "Home", "boardId": "b1",
                "list": "To do", "listId": "l1", "assignees": [], "priority": "none", "labels": [], "done": False}

    server.task = task
    server.tasks = json.dumps({"tasks": [task(number) for number in range(count)]}).encode()
    server.boards = json.dumps({"workspace": {"id": "w", "name": "Acme"}, "workspaces": [],
                                "boards": [{"id": "b1", "name": "Home", "private": False, "lists": []}]}).encode()
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


def measure(name, runs, server, action, prepare=lambda: None):
    times = []
    for _ in range(runs + 1):
        prepare()
        server.spent = 0.0
        begin = time.monotonic()
        action()
        times.append((time.monotonic() - begin - server.spent) * 1000)
    times = times[1:]  # the first warms the caches
    print(f"{name:58} {statistics.median(times):7.1f}  slowest {max(times):7.1f}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=ROOT / "build" / "release", type=pathlib.Path)
    parser.add_argument("--runs", default=15, type=int)
    parser.add_argument("--tasks", default=10000, type=int)
    arguments = parser.parse_args()
    os.environ["PARVELA_BUILD"] = str(arguments.build.resolve())
    server = serve(arguments.tasks)
    url = f"http://127.0.0.1:{server.server_port}"
    with Session() as session:
        app = Application(session, url, url)
        app.change_settings(defaultBoardID="b1", defaultBoardName="Home")
        app.install()

        def command(*words, stdin=None):
            run = app.command(*words, stdin=stdin)
            if run.returncode != 0:
                sys.exit(f"parvela {' '.join(words)}: {run.stderr}")

        # gi takes long to load and a program of its own per call long to start: one connection measures the calls alone.
        import gi
        gi.require_version("Gio", "2.0")
        from gi.repository import Gio, GLib
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        bus = Gio.DBusConnection.new_for_address_sync(session.env["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)

        def call(name, interface, method, values):
            return bus.call_sync(APP_ID, f"/app/parvela/Parvela/{name}", interface, method, values, None, 0, 20000, None).unpack()

        def add():
            call("Automation", "app.parvela.Automation1", "AddTask", GLib.Variant("(ssss)", ("Write brief tomorrow", "", "", "")))

        def stop():
            with contextlib.suppress(GLib.Error):
                bus.call_sync(APP_ID, "/app/parvela/Parvela", "org.freedesktop.Application", "ActivateAction",
                              GLib.Variant("(sava{sv})", ("quit", [], {})), None, Gio.DBusCallFlags.NO_AUTO_START, 5000, None)
            wait_until(lambda: not app.answers(), "the application to end")

        command("link-token", stdin="tk_bench0123456789\n")
        measure("parvela add, application closed", arguments.runs, server, lambda: command("add", "Write brief tomorrow"))
        measure("AddTask on the bus, application closed", max(3, arguments.runs // 3), server, add, stop)
        if app.windows():
            sys.exit("a window opened")
        measure("parvela add, application running", arguments.runs, server, lambda: command("add", "Write brief tomorrow"))
        measure("AddTask on the bus, application running", arguments.runs, server, add)
        phrases = iter(f"{WORDS[number % len(WORDS)]} {WORDS[(number * 5 + 2) % len(WORDS)][:3]}" for number in range(10000))
        found = []

        def search():
            found.append(call("SearchProvider", "org.gnome.Shell.SearchProvider2", "GetInitialResultSet",
                              GLib.Variant("(as)", (next(phrases).split(),)))[0])

        search()
        measure(f"desktop search over {arguments.tasks} tasks", arguments.runs * 4, server, search)
        if not any(one.startswith("task:") for result in found for one in result):
            sys.exit("nothing was found")
        stop()


if __name__ == "__main__":
    main()
