"""What the tests of the command stand on: a private bus, keyring and home folder without a display, and a scripted service."""

import contextlib
import json
import os
import signal
import unittest

from harness import programs
from harness.session import Session
from harness.site import Server

TOKEN = "tk_secret0123456789"


class CommandSession(Session):
    """A session of a terminal: no display, no window manager, no notifications."""

    def __init__(self, **options):
        super().__init__(notifications=False, **options)

    def _start_display(self):
        self.env["TERM"] = "xterm"

    def _start_window_manager(self):
        pass


class Service(Server):
    """An API site that answers as told and keeps what it was asked. Paths stand without "/api/v1"."""

    def __init__(self):
        self.answers = {}  # (method, path) -> (status, object) or a function of the request's object that gives it
        self.requests = []  # (method, path, object or None)
        self.tokens = []
        super().__init__()

    def answer(self, method, path, headers, body):
        path = path.removeprefix("/api/v1")
        content = json.loads(body) if body else None
        self.requests.append((method, path, content))
        self.tokens.append(headers.get("Authorization"))
        answer = self.answers.get((method, path), (404, {"error": {"message": f"No {method} {path}."}}))
        status, value = answer(content) if callable(answer) else answer
        return status, {"Content-Type": "application/json"}, json.dumps(value).encode()

    def sent(self, method, path):
        return [content for one, where, content in self.requests if (one, where) == (method, path)]


def task(key="TSK-42", title="Write brief", **changes):
    return {"id": "id-" + key, "key": key, "title": title, "board": "Home", "boardId": "b1", "list": "To do", "listId": "l1",
            "assignees": [], "priority": "none", "labels": [], "done": False, **changes}


def boards(*names):
    return {"workspace": {"id": "w1", "name": "Acme"}, "workspaces": [],
            "boards": [{"id": f"b{number}", "name": name, "private": False, "lists": []}
                       for number, name in enumerate(names, 1)]}


class CommandCase(unittest.TestCase):
    """One private session and service for the tests of a class."""

    options = {}

    @classmethod
    def setUpClass(cls):
        cls.session = CommandSession(**cls.options)
        cls.enterClassContext(cls.session)

    def setUp(self):
        self.service = Service()
        self.addCleanup(self.service.close)
        self.settings = {"ParvelaAPIURL": self.service.url}
        self.write_settings()

    def write_settings(self, **changes):
        self.settings.update(changes)
        folder = self.session.config_home / "parvela"
        folder.mkdir(exist_ok=True)
        (folder / "defaults.json").write_text(json.dumps(self.settings), encoding="utf-8")

    def read_settings(self):
        return json.loads((self.session.config_home / "parvela" / "defaults.json").read_text(encoding="utf-8"))

    def parvela(self, *arguments, stdin=None, env=None):
        return self.session.run(programs.path("parvela"), *arguments, stdin=stdin, env=env)

    @contextlib.contextmanager
    def silent_keyring(self):
        """The keyring is there and answers nothing."""
        (daemon,) = self.session.programs("gnome-keyring-daemon")
        os.kill(daemon.pid, signal.SIGSTOP)
        try:
            yield
        finally:
            os.kill(daemon.pid, signal.SIGCONT)

    def link(self):
        done = self.parvela("link-token", stdin=TOKEN + "\n")
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def assert_says(self, run, status, out="", err=""):
        """The whole outcome of a run: exit status and both outputs, without their last line break."""
        self.assertEqual((run.returncode, run.stdout.rstrip("\n"), run.stderr.rstrip("\n")), (status, out, err))
        self.assertNotIn(TOKEN, run.stdout + run.stderr)
