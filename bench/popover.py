#!/usr/bin/python3
"""Measures the quick-add popover and the tray in a private session, with the whole application running.

  bench/popover.py open      from the press of the shortcut to a popover that is painted and has the keyboard
  bench/popover.py memory    what 1,000 openings leave behind
  bench/popover.py ticker    processor time with and without a running timer

It runs the programs of build/release, or of the build tree in $PARVELA_BUILD. The local service is the server.
"""

import argparse
import ctypes
import os
import pathlib
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))
os.environ.setdefault("PARVELA_BUILD", str(ROOT / "build" / "release"))

from harness import tray, windows  # noqa: E402
from harness.application import Application  # noqa: E402
from harness.bus import Bus  # noqa: E402
from harness.service import LocalService  # noqa: E402
from harness.session import Session, interruptible  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

_CONTROL, _ALT, _SPACE = 37, 64, 65  # places of the keys
_LONGEST = 5.0


class Eyes:
    """Presses keys and looks at the screen with as little work as possible."""

    def __init__(self, display):
        self._x = ctypes.CDLL("libX11.so.6")
        self._test = ctypes.CDLL("libXtst.so.6")
        self._x.XOpenDisplay.restype = ctypes.c_void_p
        self._x.XDefaultRootWindow.restype = ctypes.c_ulong
        self._x.XGetImage.restype = ctypes.c_void_p
        self._x.XGetPixel.restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(display.encode()))
        self._root = ctypes.c_ulong(self._x.XDefaultRootWindow(self._display))

    def focus(self):
        window, revert = ctypes.c_ulong(), ctypes.c_int()
        self._x.XGetInputFocus(self._display, ctypes.byref(window), ctypes.byref(revert))
        return window.value

    def pixel(self, x, y):
        image = ctypes.c_void_p(self._x.XGetImage(self._display, self._root, x, y, 1, 1, ctypes.c_ulong(0xFFFFFFFF), 2))
        colour = self._x.XGetPixel(image, 0, 0)
        self._x.XDestroyImage(image)
        return colour

    def press_shortcut(self):
        for key, down in ((_CONTROL, 1), (_ALT, 1), (_SPACE, 1), (_SPACE, 0), (_ALT, 0), (_CONTROL, 0)):
            self._test.XTestFakeKeyEvent(self._display, key, down, ctypes.c_ulong(0))
            if key == _SPACE and down:
                self._x.XFlush(self._display)
                pressed = time.perf_counter()
        self._x.XFlush(self._display)
        return pressed

    def wait(self, condition, what):
        end = time.perf_counter() + _LONGEST
        while not condition():
            if time.perf_counter() > end:
                raise RuntimeError(f"waited {_LONGEST:g} s for {what}")
            time.sleep(0.0005)
        return time.perf_counter()


class Bench:
    """A linked application in the background, with another window in front."""

    def __init__(self, session):
        self.session = session
        self.bus = Bus(session)
        self.panel = tray.Panel(session, self.bus)
        self.panel.start()
        self.service = LocalService(session)
        self.app = Application(session, self.service.web_url, self.service.api_url)
        self.app.start()
        self.page = self.app.page(self.service.web_url)
        self.page.press("Explore the demo")
        self.page.press("Allow")
        wait_until(self.app.stored_token, "the token")
        self.item = self.panel.wait_for_item()
        self.session.start("xev", "-geometry", "200x100+20+500")
        other = windows.wait_for_window(session, lambda window: "Event Tester" in window.title)
        other.activate()
        self.eyes = Eyes(session.env["DISPLAY"])
        self.before = self.eyes.focus()
        self._learn()

    def _learn(self):
        """Opens it once by hand: which pixels change, and to which colours."""
        self.eyes.press_shortcut()
        popover = self.app.wait_for_window(lambda window: window.title == "Parvela Quick Add", "the popover")
        windows.wait_until_painted(popover)
        left, top, width, height = popover.geometry()
        self.places = [(left + width // 2, top + 8), (left + 10, top + height // 2), (left + width // 2, top + height - 8)]
        self.painted = [self.eyes.pixel(*place) for place in self.places]
        self.close()
        bare = [self.eyes.pixel(*place) for place in self.places]
        if any(one == other for one, other in zip(self.painted, bare)):
            raise RuntimeError("the popover can't be told from what is behind it")

    def is_open(self):
        return (self.eyes.focus() not in (self.before, 0, 1)
                and all(self.eyes.pixel(*place) == colour for place, colour in zip(self.places, self.painted)))

    def is_closed(self):
        return (self.eyes.focus() == self.before
                and all(self.eyes.pixel(*place) != colour for place, colour in zip(self.places, self.painted)))

    def open(self):
        """Seconds until it was there."""
        pressed = self.eyes.press_shortcut()
        return self.eyes.wait(self.is_open, "the popover") - pressed

    def close(self):
        self.eyes.press_shortcut()
        self.eyes.wait(self.is_closed, "the popover to close")

    def memory(self):
        """Proportional and resident set size in KiB."""
        text = pathlib.Path(f"/proc/{self.app.process.pid}/smaps_rollup").read_text(encoding="utf-8")
        sizes = dict(line.split(":", 1) for line in text.splitlines()[1:])
        return tuple(int(sizes[name].split()[0]) for name in ("Pss", "Rss"))

    def processor(self):
        """Processor time so far in ms, and how often the process went to sleep."""
        stat = pathlib.Path(f"/proc/{self.app.process.pid}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
        status = pathlib.Path(f"/proc/{self.app.process.pid}/status").read_text(encoding="utf-8")
        sleeps = int(status.partition("\nvoluntary_ctxt_switches:")[2].split()[0])
        return (int(stat[11]) + int(stat[12])) * 1000 / os.sysconf("SC_CLK_TCK"), sleeps


def measure_opening(bench, count):
    times = []
    for _ in range(count):
        time.sleep(0.3)  # idle, as it is when a person comes
        times.append(bench.open() * 1000)
        time.sleep(0.2)
        bench.close()
    times.sort()
    print(f"shortcut to painted popover with the keyboard, {count} times: median {statistics.median(times):.1f} ms, "
          f"95th percentile {times[int(len(times) * 0.95) - 1]:.1f} ms, slowest {times[-1]:.1f} ms")


def measure_memory(bench, count):
    def many(number):
        for _ in range(number):
            bench.open()
            bench.close()

    many(50)
    for block in range(5):
        pss, rss = bench.memory()
        print(f"after {50 + block * count // 4} openings: {rss} KiB resident, {pss} KiB proportional", flush=True)
        if block < 4:
            many(count // 4)


def measure_ticker(bench, seconds):
    def show(what):
        time.sleep(3)
        before, sleeps = bench.processor()
        time.sleep(seconds)
        after, later = bench.processor()
        print(f"{what}: {(after - before) / seconds:.2f} ms of processor time a second, {(later - sleeps) / seconds:.1f} wake-ups",
              flush=True)

    bench.page.evaluate("location.assign('/t/TSK-3')")
    bench.page.press("Start timer")
    wait_until(lambda: bench.item.XAyatanaLabel, "the timer")
    bench.page.close()
    for window in bench.app.windows():
        window.activate()
        windows.press(bench.session, "ctrl+w")
    wait_until(lambda: not bench.app.windows(), "no window")
    show("timer runs, no window")
    bench.item.choose("Stop Timer on TSK-3")
    wait_until(lambda: not bench.item.XAyatanaLabel, "the timer to stop", timeout=30)
    for window in bench.app.windows():
        window.activate()
        windows.press(bench.session, "ctrl+w")
    wait_until(lambda: not bench.app.windows(), "no window")
    show("no timer, no window")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=["open", "memory", "ticker"])
    parser.add_argument("--count", type=int, help="openings (open: 100, memory: 1000) or seconds (ticker: 20)")
    arguments = parser.parse_args()
    measure, usual = {"open": (measure_opening, 100), "memory": (measure_memory, 1000), "ticker": (measure_ticker, 20)}[arguments.what]
    with interruptible(), Session(bus_services=tray.BUS_SERVICES) as session:
        measure(Bench(session), arguments.count or usual)


if __name__ == "__main__":
    main()
