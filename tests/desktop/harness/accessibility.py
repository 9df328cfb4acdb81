"""The programs of a session as a screen reader sees them.

libatspi is bound to one session for the life of a process, while a test run sees many: so the looking is done by an agent, a
process inside the session that takes one request a line and answers with one line (JSON).
"""

import dataclasses
import json
import pathlib
import subprocess
import sys

from . import processes
from .waiting import wait_until

_AGENT = "accessibility_agent.py"


@dataclasses.dataclass(frozen=True)
class Element:
    """One accessible object as it was when found; its methods ask anew."""

    tree: object
    handle: int
    role: str
    name: str
    description: str
    states: frozenset

    def text(self):
        """The text in it (an entry's content), or its name when it holds none."""
        return self.tree.ask("text", handle=self.handle)

    def set_text(self, text):
        self.tree.ask("set_text", handle=self.handle, text=text)

    def press(self):
        """Runs its first action, what a click would do."""
        self.tree.ask("press", handle=self.handle)

    def focus(self):
        self.tree.ask("focus", handle=self.handle)

    def extents(self):
        """(x, y, width, height) within its window, in pixels."""
        return tuple(self.tree.ask("extents", handle=self.handle))


class AccessibilityTree:
    """Look-ups in what the session's programs expose. `application` limits them to programs whose name contains it."""

    def __init__(self, session, application=""):
        self._application = application
        script = pathlib.Path(__file__).with_name(_AGENT)
        log = session.root / "logs" / f"accessibility-{id(self)}.log"
        self._agent = subprocess.Popen([sys.executable, script], env=session.env, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       stderr=open(log, "wb"), text=True, preexec_fn=processes.end_with_parent)

    def close(self):
        self._agent.stdin.close()
        self._agent.stdout.close()
        self._agent.terminate()
        self._agent.wait()

    def ask(self, request, **parameters):
        self._agent.stdin.write(json.dumps({"request": request, **parameters}) + "\n")
        self._agent.stdin.flush()
        line = self._agent.stdout.readline()
        if not line:
            raise RuntimeError("the accessibility agent ended")
        answer = json.loads(line)
        if "error" in answer:
            raise LookupError(answer["error"])
        return answer["value"]

    def find_all(self, role=None, name=None, contains=None, visible_only=True):
        """Elements by role ("push button", "text", ...), exact name, or a part of the name; only visible ones unless told so."""
        found = self.ask("find", application=self._application, role=role, name=name, contains=contains, visible_only=visible_only)
        return [Element(self, one["handle"], one["role"], one["name"], one["description"], frozenset(one["states"]))
                for one in found]

    def find(self, role=None, name=None, contains=None, visible_only=True):
        """The first such element or None."""
        found = self.find_all(role, name, contains, visible_only)
        return found[0] if found else None

    def wait_for(self, role=None, name=None, contains=None, timeout=15.0):
        what = " ".join(part for part in (role or "element", f"'{name}'" if name else "", f"with '{contains}'" if contains else "")
                        if part)
        return wait_until(lambda: self.find(role, name, contains), f"{what} in the accessibility tree", timeout, interval=0.1)

    def ask_past_the_end(self):
        """A question about a window that is not there."""
        self.ask("ask_past_the_end", application=self._application)

    def outline(self):
        """The whole visible tree as indented text, for a failure report."""
        return self.ask("outline", application=self._application)
