"""The way to the window: starting it, handing URLs to the one that runs, and the service of this machine."""

import contextlib
import os
import shutil
import signal
import subprocess
import unittest

from harness import programs
from harness.waiting import wait_until
from support import CommandCase, task, TOKEN

DESKTOP = """#!/bin/sh
# Stands for the windows program: keeps what it was asked for.
printf '%s\\n' "$#" "$@" >> "$HOME/started"
"""

RUNNING = """#!/usr/bin/python3
import sys
import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib
application = Gio.Application(application_id="app.parvela.Parvela", flags=Gio.ApplicationFlags.HANDLES_OPEN)
application.hold()
def say(text):
    print(text, flush=True)
application.connect("activate", lambda _: say("ready"))
application.connect("open", lambda _, files, *__: [say("open " + file.get_uri()) for file in files])
for name in ("reload-settings", "showQuickAdd"):
    action = Gio.SimpleAction(name=name)
    action.connect("activate", lambda which, _: say(which.get_name()))
    application.add_action(action)
application.run([])
"""

SERVICE = """#!/usr/bin/python3
import http.server, os, pathlib, sys, threading
(pathlib.Path(os.environ["HOME"]) / "service").open("a").write(" ".join(["started"] + sys.argv[1:]) + "\\n")
if (pathlib.Path(os.environ["HOME"]) / "broken").exists():
    sys.exit("The port is taken.")
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(404)
        self.send_header("Content-Length", "0")
        self.end_headers()
    def log_message(self, *_):
        pass
api = http.server.ThreadingHTTPServer(("127.0.0.1", 3213), Handler)
threading.Thread(target=api.serve_forever, daemon=True).start()
http.server.ThreadingHTTPServer(("127.0.0.1", 3100), Handler).serve_forever()
"""


class WindowCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.bin = self.session.root / "bin"
        self.bin.mkdir()
        self.addCleanup(shutil.rmtree, self.bin)
        shutil.copy(programs.path("parvela"), self.bin)
        self.write_program("parvela-desktop", DESKTOP)
        for name in ("started", "service", "broken"):
            (self.session.home / name).unlink(missing_ok=True)

    def write_program(self, name, text):
        (self.bin / name).write_text(text, encoding="utf-8")
        (self.bin / name).chmod(0o755)

    def parvela(self, *arguments, env=None, **options):
        # No program here looks at the display.
        return self.session.run(self.bin / "parvela", *arguments, env={"DISPLAY": ":none", **(env or {})}, **options)

    def started(self):
        file = self.session.home / "started"
        return file.read_text(encoding="utf-8").splitlines() if file.exists() else []


class Window(WindowCase):
    def setUp(self):
        super().setUp()
        self.write_settings(ParvelaAppURL="https://app.parvela.test")
        for key in ("TSK-42", "TSK-42%20&%20more"):
            self.service.answers["GET", f"/tasks/{key}"] = (200, task(url="/t/TSK-42"))
        self.service.answers["GET", "/tasks/TSK-7"] = (404, {})

    def test_a_task_is_opened_when_the_service_knows_it(self):
        self.assertEqual(self.parvela("open", "TSK-42").returncode, 3)
        self.link()
        self.addCleanup(self.parvela, "unlink")
        self.assert_says(self.parvela("open", "TSK-7"), 1, err="parvela: Not found.")
        self.assertEqual(self.started(), [])
        self.assert_says(self.parvela("open", "TSK-42"), 0, "Open TSK-42")
        self.assertEqual(self.started(), ["1", "https://app.parvela.test/t/TSK-42"])

    def test_without_a_display_nothing_is_said_to_be_open(self):
        self.link()
        self.addCleanup(self.parvela, "unlink")
        for form in ([], ["--json"]):
            self.assert_says(self.parvela("open", "TSK-42", *form, env={"DISPLAY": ""}), 1,
                             err="parvela: There is no display. Parvela's window needs a desktop session.")
        self.assertEqual(self.started(), [])

    def test_the_bus_starts_the_program_and_the_command_ends(self):
        self.link()
        self.addCleanup(self.parvela, "unlink")
        told = self.session.home / "told"
        for arguments, said, heard in ((["open", "TSK-42"], "Open TSK-42", "open https://app.parvela.test/t/TSK-42"),
                                       (["quick-add"], "", "showQuickAdd")):
            with self.subTest(arguments), self.startable_by_the_bus(told):
                self.assert_says(self.parvela(*arguments, env={"DISPLAY": ""}), 0, said)
                wait_until(lambda: heard in told.read_text(encoding="utf-8").splitlines(), "what it was told")
                self.assertEqual(self.started(), [])

    @contextlib.contextmanager
    def startable_by_the_bus(self, output):
        self.write_program("running", RUNNING)
        entry = self.session.root / "services" / "app.parvela.Parvela.service"
        entry.write_text(f"[D-BUS Service]\nName=app.parvela.Parvela\nExec=/bin/sh -c \"exec '{self.bin}/running' > '{output}'\"\n",
                         encoding="utf-8")
        bus = ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/org/freedesktop/DBus", "--method"]
        self.session.run(*bus, "org.freedesktop.DBus.ReloadConfig")
        try:
            yield
        finally:
            entry.unlink()
            self.session.run(*bus, "org.freedesktop.DBus.ReloadConfig")
            answer = self.session.run(*bus, "org.freedesktop.DBus.GetConnectionUnixProcessID", "app.parvela.Parvela").stdout
            if answer:
                os.kill(int(answer.strip("(,)\n").removeprefix("uint32 ")), signal.SIGTERM)
                wait_until(lambda: not self.session.run(*bus, "org.freedesktop.DBus.GetNameOwner", "app.parvela.Parvela").stdout, "its end")

    def test_without_a_command_the_window_opens(self):
        for arguments, passed in (([], []), (["--background"], ["--background"]),
                                  (["parvela://quick-add", "https://example.org/a?b=c d".replace(" ", "%20")],
                                   ["parvela://quick-add", "https://example.org/a?b=c%20d"]),
                                  (["quick-add"], ["--background", "parvela://quick-add"])):
            with self.subTest(arguments):
                (self.session.home / "started").unlink(missing_ok=True)
                self.assert_says(self.parvela(*arguments), 0)
                self.assertEqual(self.started(), [str(len(passed)), *passed])

    def test_what_is_neither_a_command_nor_a_url_opens_nothing(self):
        for arguments in (["ad"], ["relative/path"], ["--demo"], ["due", "extra"], ["due", "--", "extra"], ["add"],
                          ["--background", "due"]):
            with self.subTest(arguments):
                run = self.parvela(*arguments)
                self.assertEqual((run.returncode, run.stdout), (2, ""))
                self.assertTrue(run.stderr.startswith("parvela: "), run.stderr)
        self.assertEqual(self.started(), [])

    def test_a_missing_windows_program_is_named(self):
        (self.bin / "parvela-desktop").unlink()
        self.assert_says(self.parvela(), 1, err=f"parvela: “{self.bin}/parvela-desktop” can't be started: No such file or directory.")

    def test_the_program_that_runs_is_asked(self):
        self.write_program("running", RUNNING)
        running = self.session.start(self.bin / "running")
        self.addCleanup(running.stop)
        wait_until(lambda: "ready" in running.output(), "the running program")
        self.assertEqual(self.parvela("link-token", stdin=TOKEN).returncode, 0)
        self.assert_says(self.parvela("open", " TSK-42 & more"), 0, "Open TSK-42 & more")
        self.assertEqual(self.parvela("unlink").returncode, 0)
        self.assert_says(self.parvela("quick-add"), 0)
        self.assert_says(self.parvela("act", "due-today"), 1,
                         err="parvela: The Parvela that runs is of another version and does not know this. Quit it and try again.")
        told = ["ready", "reload-settings", "open https://app.parvela.test/t/TSK-42", "reload-settings", "showQuickAdd", ""]
        wait_until(lambda: running.output().split("\n") == told, "what it was told")
        self.assertEqual(self.started(), [])


LISTENER = """#!/bin/sh
exec setpriv --reuid 65534 --clear-groups /usr/bin/python3 -c '
import socket, time
server = socket.create_server(("127.0.0.1", 3213))
print("listening", flush=True)
time.sleep(60)'
"""


def can_have_private_network():
    return subprocess.run(["unshare", "-rn", "true"], capture_output=True, check=False).returncode == 0


@unittest.skipUnless(can_have_private_network(), "needs a network of its own, because the local service has fixed ports")
class Local(WindowCase):
    def setUp(self):
        super().setUp()
        self.write_program("parvela-local-service", SERVICE)
        self.write_settings(serverMode="production")

    def in_private_network(self, script):
        return self.session.run("unshare", "-rn", "sh", "-c", f"ip link set lo up; {script}", env={"P": str(self.bin / "parvela"), "DISPLAY": ":none"})

    def service_starts(self):
        return (self.session.home / "service").read_text(encoding="utf-8").splitlines()

    def test_the_service_is_started_once_and_used(self):
        run = self.in_private_network('"$P" --local --demo; echo "first $?"; "$P" --local due; echo "second $?"')
        self.assertEqual(run.stdout, "first 0\nsecond 3\n", run.stderr)
        self.assertEqual(self.service_starts(), ["started --demo"])
        self.assertEqual(self.started(), ["0"])
        self.assertEqual(self.read_settings()["serverMode"], "local")

    def test_a_service_that_does_not_come_up_is_reported(self):
        (self.session.home / "broken").touch()
        run = self.in_private_network('"$P" --local; echo $?')
        self.assertEqual(run.stdout, "1\n")
        log = self.session.home / ".local" / "state" / "parvela" / "local-service.log"
        self.assertEqual(run.stderr, f"parvela: The Parvela service of this machine ended at once. “{log}” says why.\n")
        self.assertEqual(log.read_text(encoding="utf-8"), "The port is taken.\n")
        self.assertEqual(self.read_settings()["serverMode"], "production")
        self.assertEqual(self.started(), [])

    @unittest.skipUnless(os.geteuid() == 0, "needs a second user")
    def test_the_service_of_another_user_is_not_used(self):
        self.write_program("listener", LISTENER)
        script = 'ip link set lo up; mkfifo "$F"; "$L" > "$F" & read line < "$F"; "$P" --local; echo $?; "$P" doctor | grep Server; kill $!'
        environment = {"P": str(self.bin / "parvela"), "L": str(self.bin / "listener"), "F": str(self.bin / "listens")}
        del self.settings["ParvelaAPIURL"]
        self.write_settings(serverMode="local")
        run = self.session.run("unshare", "-n", "sh", "-c", script, env=environment)
        taken = "Port 3213 of this machine is taken by another user"
        self.assertEqual(run.stderr, f"parvela: {taken}. Start your own service with “parvela-local-service --web-port 3101 "
                                     "--api-port 3214”, and name it in Settings.\n")
        self.assertRegex(run.stdout, rf"^1\nproblem +Server +{taken}, who receives what you send")
        self.assertEqual(self.started(), [])
