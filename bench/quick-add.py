#!/usr/bin/python3
"""Measures quick add and the tray from outside, as a user sees them: what is on the screen, and when.

  bench/quick-add.py [--build build/release] [--part open|key|memory|ticker] [--runs N]

  open     from the press of the shortcut, while another program has the keyboard, until the window has it and is painted, with 5
           and with 5,000 tasks due (40 openings each)
  key      from a key press until the piece that it completes is highlighted, at the end of lines of several lengths (40 keys each)
  memory   what 1,000 openings leave behind
  ticker   processor time in 20 s with and without a running timer, no window open

The program runs in a private desktop session against a service in this script, for the ticker against the local service; key
presses are real ones (XTest), and the screen is read until it shows what is waited for. Without --part everything is measured.
"""

import argparse
import ctypes
import ctypes.util
import datetime
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

from harness import tray, windows  # noqa: E402
from harness.application import Application  # noqa: E402
from harness.bus import Bus  # noqa: E402
from harness.service import LocalService  # noqa: E402
from harness.session import Session, interruptible  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

PATIENCE = 5.0
LINE_LENGTHS = (20, 100, 500)


BOARDS = json.dumps({"workspace": {"id": "w", "name": "Workspace"}, "workspaces": [],
                     "boards": [{"id": "b", "name": "Board", "private": False, "lists": []}]}).encode()
BOARD = json.dumps({"id": "b", "name": "Board", "description": "", "icon": "", "private": False, "lists": [],
                    "labels": [{"id": f"l{i}", "name": f"Label {i}", "tone": "blue"} for i in range(20)],
                    "people": [{"id": f"p{i}", "name": f"Person {i}", "color": "#fff"} for i in range(50)],
                    "open": 0, "done": 0, "overdue": 0}).encode()


def due_tasks(count):
    today = datetime.date.today().isoformat()
    return json.dumps({"today": today, "tasks": [
        {"id": f"t{i}", "key": f"TSK-{i}", "title": f"Task number {i} with a title of ordinary length", "board": "Board",
         "board_id": "b", "list": "To do", "list_id": "l", "assignees": [], "priority": "none", "labels": [],
         "due_date": today, "done": False} for i in range(count)]}).encode()


class Service(http.server.BaseHTTPRequestHandler):
    """As much of the service as the window asks for; `server.tasks` is the answer to what is due. Nothing is computed here: this
    process also looks at the screen, and every opening of the window asks for everything anew."""

    protocol_version = "HTTP/1.1"

    def do_GET(self):
        if self.path.startswith("/api/v1/tasks"):
            text = self.server.tasks
        else:
            text = BOARD if self.path.startswith("/api/v1/boards/") else BOARDS
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text)

    def log_message(self, *_):
        pass


class Screen:
    """A connection of our own to the display: presses keys and reads pixels without starting a program for each."""

    class _Image(ctypes.Structure):
        _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int), ("xoffset", ctypes.c_int), ("format", ctypes.c_int),
                    ("data", ctypes.POINTER(ctypes.c_ubyte)), ("byte_order", ctypes.c_int), ("bitmap_unit", ctypes.c_int),
                    ("bitmap_bit_order", ctypes.c_int), ("bitmap_pad", ctypes.c_int), ("depth", ctypes.c_int),
                    ("bytes_per_line", ctypes.c_int)]

    def __init__(self, name):
        self._x = ctypes.CDLL(ctypes.util.find_library("X11"))
        self._test = ctypes.CDLL(ctypes.util.find_library("Xtst"))
        x = self._x
        x.XOpenDisplay.restype = ctypes.c_void_p
        x.XStringToKeysym.restype = ctypes.c_ulong
        x.XGetImage.restype = ctypes.POINTER(self._Image)
        x.XDefaultRootWindow.restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(x.XOpenDisplay(name.encode()))
        self._root = ctypes.c_ulong(x.XDefaultRootWindow(self._display))

    def press(self, *keys):
        """One key with those before it held."""
        codes = [self._x.XKeysymToKeycode(self._display, ctypes.c_ulong(self._x.XStringToKeysym(key.encode()))) for key in keys]
        for code in codes:
            self._test.XTestFakeKeyEvent(self._display, code, 1, ctypes.c_ulong(0))
        for code in reversed(codes):
            self._test.XTestFakeKeyEvent(self._display, code, 0, ctypes.c_ulong(0))
        self._x.XSync(self._display, 0)

    def pixels(self, x, y, width, height):
        image = self._x.XGetImage(self._display, self._root, x, y, width, height, ctypes.c_ulong(0xFFFFFFFF), 2)
        data = ctypes.string_at(image.contents.data, image.contents.bytes_per_line * height)
        self._x.XDestroyImage(image)
        return data

    def focused(self):
        window, revert = ctypes.c_ulong(), ctypes.c_int()
        self._x.XGetInputFocus(self._display, ctypes.byref(window), ctypes.byref(revert))
        return window.value


def until(condition, what):
    """Milliseconds until the condition holds; looks without a pause."""
    begin = time.perf_counter()
    while not condition():
        if time.perf_counter() - begin > PATIENCE:
            raise SystemExit(f"quick-add: waited in vain for {what}")
    return (time.perf_counter() - begin) * 1000


def summary(label, times):
    ordered = sorted(times)
    high = ordered[min(len(ordered) - 1, int(len(ordered) * 0.95))]
    print(f"{label:<38} median {statistics.median(ordered):6.1f}   95 % {high:6.1f}   max {ordered[-1]:6.1f}   ms, n = {len(ordered)}")


def resident_kib(process):
    text = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
    return int(text.split("VmRSS:")[1].split()[0])


def processor(process):
    """Processor time so far in ms, and how often the process went to sleep."""
    stat = pathlib.Path(f"/proc/{process.pid}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="utf-8")
    sleeps = int(status.partition("\nvoluntary_ctxt_switches:")[2].split()[0])
    return (int(stat[11]) + int(stat[12])) * 1000 / os.sysconf("SC_CLK_TCK"), sleeps


class Run:
    """The program in a fresh session, with so many tasks due and a draft in its field."""

    def __init__(self, server, tasks, draft=""):
        server.tasks = due_tasks(tasks)
        self.session = Session().__enter__()
        url = f"http://127.0.0.1:{server.server_port}"
        self.app = Application(self.session, url, url)
        if draft:
            self.app.change_settings(quickAddDraft=json.dumps({"text": draft, "literals": []}))
        linked = self.app.command("link-token", stdin="tk_measured0123456789")
        assert linked.returncode == 0, linked.stderr
        self.app.start("--background")
        self.session.start("xev", "-event", "keyboard")
        self.other = windows.wait_for_window(self.session, lambda window: "Event Tester" in window.title)
        self.screen = Screen(self.session.env["DISPLAY"])
        self.area = None
        self.session.run("xdotool", "mousemove", 0, 0)  # a row under the pointer looks different
        # The first opening tells where the window stands, and lets the lists arrive.
        wait_until(self._open_somehow, "the quick-add window")
        self.area = wait_until(self._window, "the window").geometry()
        time.sleep(1.5)
        self.painted = self.look()

    def _window(self):
        return next((one for one in self.app.windows() if one.title == "Parvela Quick Add"), None)

    def _open_somehow(self):
        self.screen.press("Control_L", "Alt_L", "space")
        time.sleep(0.5)
        return self._window()

    def look(self):
        """The lower part, where the list and the buttons are: nothing blinks there."""
        x, y, width, height = self.area
        return self.screen.pixels(x + 4, y + height - 200, width - 8, 196)

    def close(self):
        self.screen.press("Escape")
        until(lambda: self.look() != self.painted, "the window to go")
        until(lambda: self.screen.focused() == self.other.id, "the keyboard to go back")
        time.sleep(0.15)

    def opening(self):
        before = self.screen.focused()
        begin = time.perf_counter()
        self.screen.press("Control_L", "Alt_L", "space")
        until(lambda: self.look() == self.painted, "the painted window")
        until(lambda: self.screen.focused() != before, "the keyboard")
        return (time.perf_counter() - begin) * 1000

    def key(self):
        """The last letter of "!high", typed at the end of the line."""
        x, y, _, _ = self.area
        field = (x + 22, y + 62, 336, 38)
        self.screen.press("BackSpace")
        time.sleep(0.12)
        # The caret blinks: highlighted is what turns a good part of the field's end into another colour.
        before = self.screen.pixels(*field)
        begin = time.perf_counter()
        self.screen.press("h")
        until(lambda: sum(a != b for a, b in zip(before, self.screen.pixels(*field))) > 900, "the highlight")
        return (time.perf_counter() - begin) * 1000

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.session.close()


def line_of(length):
    words = "brief @p1 #l2 plan tomorrow "
    text = (words * (length // len(words) + 1))[:max(0, length - 6)].rstrip()
    return f"{text} !high"


def measure_opening(server, count):
    for tasks in (5, 5000):
        with Run(server, tasks) as run:
            run.close()
            run.opening()
            run.close()
            times = []
            for _ in range(count):
                times.append(run.opening())
                run.close()
            summary(f"shortcut to painted, {tasks} tasks due", times)


def measure_keys(server, count):
    for length in LINE_LENGTHS:
        with Run(server, 5, draft=line_of(length)) as run:
            summary(f"key to highlight, {length} characters", [run.key() for _ in range(count)])


def measure_memory(server, count):
    with Run(server, 5) as run:
        run.close()
        done = 0
        for block in (50, *[count // 4] * 4):
            for _ in range(block):
                run.opening()
                run.close()
            done += block
            print(f"after {done} openings: {resident_kib(run.app.process)} KiB resident", flush=True)


def measure_ticker(_, seconds):
    with Session(bus_services=tray.BUS_SERVICES) as session:
        panel = tray.Panel(session, Bus(session))
        panel.start()
        service = LocalService(session)
        app = Application(session, service.web_url, service.api_url)
        app.start()
        page = app.page(service.web_url)
        page.press("Explore the demo")
        page.press("Allow")
        wait_until(app.stored_token, "the token")
        item = panel.wait_for_item()

        def show(what):
            for window in app.windows():
                window.activate()
                windows.press(session, "ctrl+w")
            wait_until(lambda: not app.windows(), "no window")
            time.sleep(3)
            before, sleeps = processor(app.process)
            time.sleep(seconds)
            after, later = processor(app.process)
            print(f"{what}: {(after - before) / seconds:.2f} ms of processor time a second, {(later - sleeps) / seconds:.1f} wake-ups",
                  flush=True)

        page.evaluate("location.assign('/t/TSK-3')")
        page.press("Start timer")
        wait_until(lambda: item.XAyatanaLabel, "the timer")
        page.close()
        show("timer runs")
        item.choose("Stop Timer on TSK-3")
        wait_until(lambda: not item.XAyatanaLabel, "the timer to stop", timeout=30)
        show("no timer")


PARTS = {"open": (measure_opening, 40), "key": (measure_keys, 40), "memory": (measure_memory, 1000), "ticker": (measure_ticker, 20)}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--part", choices=PARTS, action="append", help="measure only this; may be given again")
    parser.add_argument("--runs", type=int, help="openings, keys or seconds instead of the usual number")
    arguments = parser.parse_args()
    os.environ.update(no_proxy="*", NO_PROXY="*", PARVELA_BUILD=str(ROOT / arguments.build))
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Service)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    with interruptible():
        for part in arguments.part or PARTS:
            measure, usual = PARTS[part]
            measure(server, arguments.runs or usual)


if __name__ == "__main__":
    main()
