"""What passes on a session's bus: signals and calls overheard, names owned by recorders, and the notifications on the screen."""

import json
import pathlib
import re
import sys

from .waiting import wait_until

_FILE_MANAGER = """<node><interface name="org.freedesktop.FileManager1"><method name="ShowItems">
<arg type="as" direction="in"/><arg type="s" direction="in"/></method></interface></node>"""


class Monitor:
    """Overhears messages that match a D-Bus match rule, from the moment it is made."""

    def __init__(self, session, rule):
        self._process = session.start("dbus-monitor", "--session", rule)
        # Its own connection's first words are the sign that it listens.
        wait_until(lambda: "NameAcquired" in self.text or "NameLost" in self.text, "the bus monitor")

    @property
    def text(self):
        return self._process.output()


class FileManager:
    """Stands for the desktop's file manager; knows what it was asked to show."""

    def __init__(self, session):
        self._log = session.root / "file-manager.log"
        script = pathlib.Path(__file__).with_name("bus_peer.py")
        session.start(sys.executable, script, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", _FILE_MANAGER,
                      self._log)
        wait_until(lambda: session.bus_has("org.freedesktop.FileManager1"), "the file manager")

    def shown(self):
        """The URIs of each request, in order."""
        if not self._log.exists():
            return []
        calls = [json.loads(line) for line in self._log.read_text(encoding="utf-8").splitlines()]
        return [arguments[0] for method, arguments in calls if method == "ShowItems"]


class Notifications:
    """The session's notification daemon: what it was told to show since this was made, what it shows, and clicks."""

    _NAME, _PATH = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"

    def __init__(self, session):
        self._session = session
        self._monitor = Monitor(session, "interface='org.freedesktop.Notifications',member='Notify'")

    def titles(self):
        """The titles of all that programs posted, oldest first."""
        calls = self._monitor.text.split("member=Notify\n")[1:]
        # Strings of a call: program, icon, title, body.
        return [re.findall(r'^   string "(.*?)"$', one, re.MULTILINE | re.DOTALL)[2] for one in calls]

    def body(self, title):
        """The last body posted with this title, as it went over the bus."""
        calls = [one for one in self._monitor.text.split("member=Notify\n")[1:] if f'   string "{title}"\n' in one]
        return re.findall(r'^   string "(.*?)"$', calls[-1], re.MULTILINE | re.DOTALL)[3]

    def shown(self):
        """How many are on the screen."""
        answer = self._session.call_bus(self._NAME, self._PATH, "org.freedesktop.DBus.Properties.Get", "org.dunstproject.cmd0",
                                        "displayedLength")
        return int(re.search(r"uint32 (\d+)", answer).group(1))

    def wait_for(self, title):
        wait_until(lambda: title in self.titles() and self.shown() > 0, f"a notification '{title}'")

    def click(self):
        """Clicks the topmost one."""
        found = wait_until(lambda: self._session.run("xdotool", "search", "--onlyvisible", "--class", "Dunst").stdout.split(),
                           "a notification on the screen")
        self._session.run("xdotool", "mousemove", "--window", found[-1], "40", "12", "click", "1")
