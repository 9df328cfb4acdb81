"""The local service on free ports, with its demo workspace, and a person's browser session with it."""

import contextlib
import http.cookiejar
import json
import os
import pathlib
import random
import socket
import urllib.error
import urllib.request

from . import programs
from .waiting import wait_until


def free_port():
    """A port for a program that is yet to start. The kernel gives those above 32767 to connections, so it could be gone by then."""
    while True:
        port = random.randrange(20000, 32768)
        with socket.socket() as probe, contextlib.suppress(OSError):
            probe.bind(("127.0.0.1", port))
            return port


class ServiceError(Exception):
    """The service refused a call: `status` and the message of its error body."""

    def __init__(self, status, message):
        super().__init__(f"{status}: {message}")
        self.status = status
        self.message = message


class LocalService:
    """A running parvela-local-service whose data goes with the session, or with whatever else has `root` and start().

    With PARVELA_ASSETS set, its pages come from that folder instead of those inside the program.
    """

    def __init__(self, session, demo=True):
        self._session = session
        self.web_port = free_port()
        self.api_port = free_port()
        self._arguments = ["--data", session.root / "service", "--web-port", self.web_port, "--api-port", self.api_port]
        if demo:
            self._arguments.append("--demo")
        if os.environ.get("PARVELA_ASSETS"):
            self._arguments += ["--assets", pathlib.Path(os.environ["PARVELA_ASSETS"]).resolve()]
        self._process = None
        self.start()

    @property
    def web_url(self):
        return f"http://localhost:{self.web_port}"

    @property
    def api_url(self):
        return f"http://127.0.0.1:{self.api_port}"

    def start(self):
        """Starts it, unless it runs; after stop() on the same ports with the same data."""
        if self._process and self._process.running():
            return
        self._process = self._session.start(programs.path("parvela-local-service"), *self._arguments)
        wait_until(self._answers, "the local service", timeout=20)

    def stop(self):
        self._process.stop()

    def _answers(self):
        if not self._process.running():
            raise AssertionError(f"the local service ended: {self._process.output()}")
        try:
            with urllib.request.urlopen(f"{self.web_url}/api/session", timeout=5):
                return True
        except urllib.error.HTTPError as error:
            return error.code == 401

    def person(self):
        """The demo person, signed in as in a browser."""
        return Person(self)


class Person:
    """A signed-in browser session: reads and changes the workspace behind the application's back, to check and to prepare."""

    def __init__(self, service):
        self._base = service.web_url
        self._opener = urllib.request.build_opener(urllib.request.HTTPCookieProcessor(http.cookiejar.CookieJar()))
        self.about = self.call("POST", "/api/session/demo", {})

    def call(self, method, path, body=None):
        request = urllib.request.Request(self._base + path, method=method, data=None if body is None else json.dumps(body).encode(),
                                         headers={"Content-Type": "application/json", "X-Parvela-Web": "1"})
        try:
            with self._opener.open(request, timeout=10) as answer:
                text = answer.read()
        except urllib.error.HTTPError as error:
            try:
                message = json.loads(error.read())["error"]["message"]
            except (ValueError, KeyError, TypeError):
                message = "no message"
            raise ServiceError(error.code, message) from None
        return json.loads(text) if text else None

    def boards(self):
        return self.call("GET", "/api/boards")["boards"]

    def cards(self, board_id):
        """The cards of a board: those open, and those done lately."""
        return self.call("GET", f"/api/boards/{board_id}/full")["tasks"]

    def find_card(self, title):
        """The card with this title on any board, None when there is none."""
        for board in self.boards():
            for card in self.cards(board["id"]):
                if card["title"] == title:
                    return card
        return None

    def tokens(self):
        return self.call("GET", "/api/tokens")["tokens"]
