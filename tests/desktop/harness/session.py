"""A private desktop session: display, session bus, window manager, keyring, notifications, home folder, browser.

Nothing of the user's own session is touched: the session has its own HOME and XDG folders, and everything it starts is ended by
process id when it closes, also when the process that owns it is killed.
"""

import contextlib
import enum
import functools
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import threading

from . import processes
from .waiting import wait_until

_BROWSER_SCRIPT = """#!/bin/sh
# Stands for the user's browser: keeps what it was asked to open, one URL a line.
for url in "$@"; do printf '%s\\n' "$url"; done >> "{log}"
"""

_BROWSER_ENTRY = """[Desktop Entry]
Type=Application
Name=Recording Browser
Exec={script} %U
MimeType=x-scheme-handler/http;x-scheme-handler/https;text/html;
NoDisplay=true
"""

_DUNST_SETTINGS = """[global]
    follow = none
    origin = top-right
    mouse_left_click = do_action, close_current
    frame_width = 1
    markup = full
    font = Sans 10
[urgency_low]
    timeout = 0
[urgency_normal]
    timeout = 0
[urgency_critical]
    timeout = 0
"""

# Keeps the window manager from opening windows of its own or taking keys that belong to the program.
_OPENBOX_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy><center>yes</center></placement>
  <desktops><number>1</number></desktops>
  <keyboard></keyboard>
  <mouse>
    <context name="Client"><mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind></context>
    <context name="Titlebar">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="Left" action="Drag"><action name="Move"/></mousebind>
    </context>
    <context name="Root"><mousebind button="Left" action="Press"><action name="Unfocus"/></mousebind></context>
  </mouse>
</openbox_config>
"""

_BUS_SETTINGS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:path={runtime}/bus</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

_BUS_SERVICES = ("org.a11y.Bus",)


@functools.cache
def _sandbox_works():
    """Whether WebKit's sandbox can be set up here; many containers allow a process no namespaces of its own."""
    try:
        probe = subprocess.run(["bwrap", "--unshare-user-try", "--ro-bind", "/", "/", "--proc", "/proc", "true"],
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=20, check=False)
    except (FileNotFoundError, subprocess.TimeoutExpired):
        return False
    return probe.returncode == 0


class Keyring(enum.Enum):
    """The state in which the session's secret service is found."""

    unlocked = "unlocked"
    locked = "locked"
    absent = "absent"


class WindowManager(enum.Enum):
    openbox = "openbox"
    mutter = "mutter"


class Session:
    """Use as a context manager. `env` is the environment of everything that runs in it."""

    keyring_password = "correct horse"

    def __init__(self, keyring=Keyring.unlocked, window_manager=WindowManager.openbox, size=(1280, 800), notifications=True,
                 bus_services=(), extra_env=None):
        self.keyring = keyring
        self.window_manager = window_manager
        self.size = size
        self.notifications = notifications
        self.bus_services = tuple(bus_services)
        self.extra_env = extra_env or {}
        self.env = {}
        self.root = None
        self._started = []

    def __enter__(self):
        processes.become_subreaper()
        # The accessibility bus puts a socket below this folder, and a socket's path must stay short.
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="parvela-"))
        try:
            self._make_folders()
            self._log_in()
        except BaseException:
            self.close()
            raise
        return self

    def _log_in(self):
        self._start_display()
        self._start_bus()
        self._start_window_manager()
        self._start_keyring()
        if self.notifications:
            self._start_notifications()

    def log_out_and_in(self):
        """Ends every program, and brings up another display and another bus for the same person."""
        for process in reversed(self._started):
            process.stop()
        processes.end_descendants(self._marker)
        self._log_in()

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends everything that ran in the session and removes its folders."""
        if threading.current_thread() is threading.main_thread():
            interrupt = signal.signal(signal.SIGINT, signal.SIG_IGN)  # an impatient second Ctrl-C must not leave things behind
            try:
                self._close()
            finally:
                signal.signal(signal.SIGINT, interrupt)
        else:
            self._close()

    def _close(self):
        for process in reversed(self._started):
            process.stop()
        self._started.clear()
        if self.root:
            processes.end_descendants(self._marker)
            # A service that was just ended may still be writing its last file.
            shutil.rmtree(self.root, ignore_errors=True)
            self.root = None

    # What tests and tools use.

    def start(self, *arguments, env=None, name=None, cwd=None):
        """Starts a program in the session with its output in a log file and returns its Process."""
        log = self.root / "logs" / f"{len(self._started):02}-{name or pathlib.Path(str(arguments[0])).name}.log"
        process = processes.Process(arguments, {**self.env, **(env or {})}, log=log, cwd=cwd)
        self._started.append(process)
        return process

    def programs(self, name):
        """The started programs with this name."""
        return [process for process in self._started if process.name == name]

    def run(self, *arguments, env=None, timeout=20, stdin=None):
        """Runs a program to its end and returns subprocess.CompletedProcess with text output. Does not judge its exit status."""
        return subprocess.run([str(argument) for argument in arguments], env={**self.env, **(env or {})}, input=stdin,
                              stdin=None if stdin is not None else subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=timeout, check=False)

    def run_binary(self, *arguments, timeout=20):
        """Runs a program to its end and returns the bytes it writes; raises CalledProcessError when it fails."""
        return subprocess.run([str(argument) for argument in arguments], env=self.env, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=timeout, check=True).stdout

    def call(self, *arguments, env=None):
        """Runs a program that takes over our terminal (input, output, signals) and returns its exit status, 128 + n after signal n."""
        process = processes.Process(arguments, {**self.env, **(env or {})}, stdin=None)
        try:
            status = process.popen.wait()
        finally:
            process.stop()
        return 128 - status if status < 0 else status

    def call_bus(self, destination, path, method, *arguments):
        """The answer of "interface.Method" as gdbus prints it; raises RuntimeError when the call fails."""
        result = self.run("gdbus", "call", "--session", "--dest", destination, "--object-path", path, "--method", method, *arguments)
        if result.returncode != 0:
            raise RuntimeError(f"{method}: {result.stderr.strip()}")
        return result.stdout.strip()

    def bus_has(self, name):
        """Whether a program owns the name on the session's bus."""
        return "true" in self.call_bus("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", name)

    @property
    def home(self):
        return self.root / "home"

    @property
    def config_home(self):
        return self.home / ".config"

    @property
    def data_home(self):
        return self.home / ".local" / "share"

    def browser_urls(self):
        """What the default browser was asked to open so far, in order."""
        log = self.root / "browser.log"
        return log.read_text(encoding="utf-8").splitlines() if log.exists() else []

    def lock_keyring(self):
        """Locks the keyring as a desktop's screen lock may."""
        self.call_bus("org.freedesktop.secrets", "/org/freedesktop/secrets", "org.freedesktop.Secret.Service.Lock",
                       "['/org/freedesktop/secrets/collection/login']")

    def logs(self):
        """The output of every program of the session, for a failure report."""
        parts = []
        for process in self._started:
            text = process.output().strip()
            if text:
                parts.append(f"--- {process.name} ({process.pid}, exit {process.exit_status()}) ---\n{text}")
        return "\n".join(parts)

    # How the session comes up.

    @property
    def _marker(self):
        return f"PARVELA_SESSION={self.root}"

    def _make_folders(self):
        for folder in (self.home, self.config_home, self.data_home / "applications", self.home / ".cache",
                       self.home / ".local" / "state", self.home / "Downloads", self.root / "logs"):
            folder.mkdir(parents=True)
        runtime = self.root / "run"
        runtime.mkdir(mode=0o700)
        kept = {name: value for name, value in os.environ.items()
                if name in ("PATH", "LANG", "TZ", "TERM", "TMPDIR", "USER", "LOGNAME") or name.startswith(("ASAN_", "UBSAN_", "LSAN_"))}
        self.env = {
            **kept,
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_CONFIG_HOME": str(self.config_home),
            "XDG_DATA_HOME": str(self.data_home),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_STATE_HOME": str(self.home / ".local" / "state"),
            "XDG_CURRENT_DESKTOP": "X-Generic",
            "XDG_SESSION_TYPE": "x11",
            "PARVELA_SESSION": str(self.root),
            "GDK_BACKEND": "x11",
            "GSETTINGS_BACKEND": "memory",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "LC_ALL": "C.UTF-8",
            "NO_PROXY": "localhost,127.0.0.1,::1",
            **self.extra_env,
        }
        if not _sandbox_works():
            # WebKit ends the program where it cannot set up its sandbox. A private session shows loopback pages only.
            self.env["WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS"] = "1"
        script = self.root / "browser"
        script.write_text(_BROWSER_SCRIPT.format(log=self.root / "browser.log"), encoding="utf-8")
        script.chmod(0o755)
        (self.data_home / "applications" / "recording-browser.desktop").write_text(
            _BROWSER_ENTRY.format(script=script), encoding="utf-8")
        (self.config_home / "mimeapps.list").write_text(
            "[Default Applications]\n" + "".join(f"{kind}=recording-browser.desktop\n" for kind in
                                                 ("x-scheme-handler/http", "x-scheme-handler/https", "text/html")),
            encoding="utf-8")
        (self.config_home / "user-dirs.dirs").write_text('XDG_DOWNLOAD_DIR="$HOME/Downloads"\n', encoding="utf-8")

    def _start_and_read(self, what, arguments):
        """Starts a program that reports one line (a display number, a bus address) on the descriptor that replaces "{fd}"."""
        reader, writer = os.pipe()
        try:
            log = self.root / "logs" / f"{len(self._started):02}-{arguments[0]}.log"
            process = processes.Process([argument.format(fd=writer) for argument in arguments], self.env, log=log,
                                        pass_fds=(writer,))
            self._started.append(process)
        finally:
            os.close(writer)
        with os.fdopen(reader, encoding="utf-8") as pipe:
            line = pipe.readline().strip()
        if not line:
            raise RuntimeError(f"{what} did not come up: {process.output().strip()}")
        return line

    def _start_display(self):
        width, height = self.size
        number = self._start_and_read("the private display", [
            "Xvfb", "-displayfd", "{fd}", "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp", "-noreset"])
        self.env["DISPLAY"] = f":{number}"

    def _start_bus(self):
        settings = self.root / "bus.conf"
        settings.write_text(_BUS_SETTINGS.format(runtime=self.root / "run", services=self._service_folder()), encoding="utf-8")
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self._start_and_read("the private session bus", [
            "dbus-daemon", f"--config-file={settings}", "--nofork", "--nopidfile", "--print-address={fd}"])

    def _service_folder(self):
        """Only these services may be started by a call: a session must not depend on what else the machine has installed."""
        folder = self.root / "services"
        if folder.exists():
            return folder
        folder.mkdir()
        for name in _BUS_SERVICES + self.bus_services:
            found = [path for path in (pathlib.Path(data) / "dbus-1" / "services" / f"{name}.service" for data in
                                       ("/usr/local/share", "/usr/share")) if path.exists()]
            if not found:
                raise RuntimeError(f"no bus service file for {name}: is its package installed (scripts/setup)?")
            (folder / found[0].name).symlink_to(found[0])
        return folder

    def _start_window_manager(self):
        if self.window_manager is WindowManager.mutter:
            process = self.start("mutter", "--x11")
        else:
            settings = self.root / "openbox.xml"
            settings.write_text(_OPENBOX_SETTINGS, encoding="utf-8")
            process = self.start("openbox", "--config-file", settings)

        def ready():
            if not process.running():
                raise AssertionError(f"the window manager ended: {process.output()}")
            answer = self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK").stdout
            return "window id" in answer

        wait_until(ready, "the window manager")

    def _start_keyring(self):
        if self.keyring is Keyring.absent:
            return
        secret = self.root / "keyring-password"
        secret.write_text(self.keyring_password, encoding="utf-8")
        with open(secret, "rb") as stdin:
            log = self.root / "logs" / f"{len(self._started):02}-gnome-keyring-daemon.log"
            self._started.append(processes.Process(
                ["gnome-keyring-daemon", "--unlock", "--components=secrets", "--foreground"], self.env, log=log, stdin=stdin))
        wait_until(lambda: self.bus_has("org.freedesktop.secrets"), "the keyring")
        if self.keyring is Keyring.locked:
            self.lock_keyring()

    def _start_notifications(self):
        settings = self.root / "dunstrc"
        settings.write_text(_DUNST_SETTINGS, encoding="utf-8")
        self.start("dunst", "-conf", settings)
        wait_until(lambda: self.bus_has("org.freedesktop.Notifications"), "the notification daemon")


@contextlib.contextmanager
def interruptible():
    """Turns a termination request into KeyboardInterrupt, so that a session is closed in order."""

    def interrupt(*_):
        raise KeyboardInterrupt

    previous = {number: signal.signal(number, interrupt) for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)}
    try:
        yield
    finally:
        for number, handler in previous.items():
            signal.signal(number, handler)
