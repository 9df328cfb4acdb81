"""Parvela itself in a session: the application and the command, pointed at a local service."""

import base64
import json
import re

from . import programs, windows
from .accessibility import AccessibilityTree
from .page import Inspector
from .service import free_port

APP_ID = "app.parvela.Parvela"


class Application:
    """The application's settings, processes and surfaces in one session."""

    def __init__(self, session, web_url, api_url):
        self._session = session
        self._inspector_port = free_port()
        self.inspector = Inspector(self._inspector_port)
        self.process = None
        self.change_settings(serverMode="custom", customAppURL=web_url, customAPIURL=api_url)

    # Settings.

    @property
    def settings_file(self):
        return self._session.config_home / "parvela" / "defaults.json"

    def settings(self):
        return json.loads(self.settings_file.read_text(encoding="utf-8")) if self.settings_file.exists() else {}

    def change_settings(self, **values):
        """Changes settings while no process of the application runs."""
        self.settings_file.parent.mkdir(mode=0o700, exist_ok=True)
        self.settings_file.write_text(json.dumps({**self.settings(), **values}), encoding="utf-8")

    # Processes.

    def start(self, *arguments, env=None):
        """Starts the application and keeps its process as `process`. Only this first one opens the inspector's port."""
        inspector = {"WEBKIT_INSPECTOR_HTTP_SERVER": f"127.0.0.1:{self._inspector_port}"}
        self.process = self._session.start(programs.path("parvela-desktop"), *arguments, env={**inspector, **(env or {})})
        return self.process

    def start_again(self, *arguments):
        """A second launch, as a launcher or a link would do it."""
        return self._session.run(programs.path("parvela-desktop"), *arguments)

    def command(self, *arguments, stdin=None, timeout=20):
        """Runs the `parvela` command to its end."""
        return self._session.run(programs.path("parvela"), *arguments, stdin=stdin, timeout=timeout)

    def install(self):
        """Lets the session's bus and its links start the application, as they do when it is installed. What they start does not
        become `process`; answers() tells whether it is there."""
        packaging = programs.build_tree() / "packaging"
        desktop_entry = (packaging / f"{APP_ID}.desktop").read_text(encoding="utf-8")
        folder = programs.path("parvela").parent
        applications = self._session.data_home / "applications"
        (applications / f"{APP_ID}.desktop").write_text(desktop_entry.replace("Exec=parvela", f"Exec={folder}/parvela"), encoding="utf-8")
        service = (packaging / f"{APP_ID}.service").read_text(encoding="utf-8")
        (self._session.root / "services" / f"{APP_ID}.service").write_text(
            re.sub(r"Exec=\S*/", f"Exec={folder}/", service), encoding="utf-8")
        self._session.run("update-desktop-database", applications)
        inspector = f"{{'WEBKIT_INSPECTOR_HTTP_SERVER': '127.0.0.1:{self._inspector_port}'}}"
        for method, arguments in (("UpdateActivationEnvironment", [inspector]), ("ReloadConfig", [])):
            self._session.call_bus("org.freedesktop.DBus", "/org/freedesktop/DBus", f"org.freedesktop.DBus.{method}", *arguments)

    def answers(self):
        """Whether the application has its name on the session bus, however it was started."""
        return self._session.bus_has(APP_ID)

    def call(self, method, *arguments, object_name="Automation", interface="app.parvela.Automation1"):
        """Calls one of its objects on the bus, which starts the application when need be. Returns gdbus's whole run."""
        return self._session.run("gdbus", "call", "--session", "--dest", APP_ID, "--object-path", f"/app/parvela/Parvela/{object_name}",
                                 "--method", f"{interface}.{method}", *arguments)

    # Surfaces.

    def windows(self):
        """Its windows of every kind."""
        return [window for window in windows.windows(self._session) if APP_ID in window.wm_class]

    def wait_for_window(self, accept=lambda window: True, what="a window of Parvela", timeout=30.0):
        return windows.wait_for_window(self._session, lambda window: APP_ID in window.wm_class and accept(window), what, timeout)

    def page(self, path="", timeout=30.0):
        """The page of the view whose URL contains `path`."""
        return self.inspector.page(path, timeout)

    def quick_add(self):
        """The quick-add window, None while there is none."""
        return next((window for window in self.windows() if window.title == "Parvela Quick Add"), None)

    def saved_windows(self):
        """The windows and tabs that the next start brings back: [{"frame", "tabs", "selected", ...}]."""
        state = self.settings().get("macWindowState")
        return json.loads(base64.b64decode(state["data"]))["groups"] if state else []

    def accessibility(self):
        return AccessibilityTree(self._session)

    # The keyring.

    def stored_token(self):
        """The token of the current API site in the keyring, None when there is none or the keyring cannot be read."""
        url = self.settings().get("customAPIURL", "")
        account = re.sub(r"^https?://", "", url)
        result = self._session.run("secret-tool", "lookup", "service", "app.parvela.token", "account", account)
        return result.stdout.strip() or None
