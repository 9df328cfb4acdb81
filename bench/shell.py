#!/usr/bin/python3
"""Measures the application beside the least window that can show the same page, and beside `chromium --app` where installed.

  bench/shell.py [--build build/release] [--part start|memory|idle] [--runs 7] [--installed /usr]

  start    from the start of the program to its first painted page: with one saved window, and with a window of twenty tabs;
           with --installed also that of a package (installed, or unpacked with dpkg-deb -x)
  memory   sum of the proportional set sizes of all its processes, with one page open and with five
  idle     processor time of all its processes in a minute without a user

All show the same page of a server in this script, in a private desktop session; the page says when it has painted. Each program
draws as it does best on this machine: the application decides for itself, the bare window is told. Medians and the ratios that
matter are printed; the exit status is 1 when a ratio is beyond its limit. Without --part everything is measured in one run.
"""

import argparse
import base64
import contextlib
import http.server
import json
import os
import pathlib
import shutil
import statistics
import sys
import threading
import time
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from answering import Answering  # noqa: E402
from harness.session import Session, interruptible  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

PAGE = b"""<!doctype html><meta charset="utf-8"><title>A page</title>
<style>body { font: 16px sans-serif; background: #EEF0EE; color: #1E2120 } li { margin: 4px }</style>
<h1>A page</h1><ul id="list"></ul>
<script>
  for (let i = 0; i < 200; ++i) document.getElementById('list').append(Object.assign(document.createElement('li'),
    { textContent: 'A line of the page, number ' + i }));
  requestAnimationFrame(() => requestAnimationFrame(() => fetch('/painted' + location.search, { method: 'POST' })));
  addEventListener('load', () => fetch('/loaded' + location.search, { method: 'POST' }));
</script>
"""

# Without a GPU the engine's accelerated path draws in software, at several times the cost.
HAS_GPU = any(pathlib.Path("/dev/dri").glob("renderD*"))
PLAIN_DRAWING = {} if HAS_GPU else {"GSK_RENDERER": "cairo", "WEBKIT_DISABLE_DMABUF_RENDERER": "1"}


class Page(Answering):
    """Serves the page and takes its word that it has painted."""

    protocol_version = "HTTP/1.1"

    def do_GET(self):
        found = urllib.parse.urlsplit(self.path).path == "/"
        self.answer(PAGE if found else b"", 200 if found else 404)

    def do_HEAD(self):
        self.answer(b"", 200)

    def do_POST(self):
        self.server.reports[self.path] = time.monotonic()
        self.answer(b"", 204)


class Bench:
    """A page server and the programs that show its pages, each in a fresh session."""

    def __init__(self, programs, installed):
        self.programs = programs
        self.installed = installed
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Page)
        self.server.daemon_threads = True
        self.server.reports = {}
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.site = f"http://127.0.0.1:{self.server.server_port}"

    def page(self, number):
        return f"{self.site}/?{number}"

    def bare(self, session, pages=1):
        return [session.start(self.programs / "bare-window", self.page(number), env=PLAIN_DRAWING) for number in range(pages)]

    def parvela(self, session, windows=1, tabs=1, programs=None):
        """As it starts with so many saved windows of so many tabs each; every window shows its last tab."""
        groups = [{"frame": f"{{{{{40 * window}, 0}}, {{1280, 820}}}}", "selected": tabs - 1, "miniaturized": False,
                   "tabs": [self.page(window if tab == tabs - 1 else 100 + tab) for tab in range(tabs)]}
                  for window in range(windows)]
        state = base64.b64encode(json.dumps({"groups": groups}).encode()).decode()
        settings = session.config_home / "parvela"
        settings.mkdir(parents=True, exist_ok=True)
        (settings / "defaults.json").write_text(
            json.dumps({"serverMode": "custom", "customAppURL": self.site, "customAPIURL": self.site,
                        "macWindowState": {"data": state}}), encoding="utf-8")
        return [session.start((programs or self.programs) / "parvela-desktop")]

    def chromium(self, session, pages=1):
        options = [f"--user-data-dir={session.home}/chromium", "--no-first-run", "--no-default-browser-check",
                   "--password-store=basic", *(["--no-sandbox"] if os.geteuid() == 0 else [])]
        started = [session.start("chromium", *options, f"--app={self.page(0)}")]
        for number in range(1, pages):  # the first one opens all windows
            self.wait_for("loaded", started, number)
            started.append(session.start("chromium", *options, f"--app={self.page(number)}"))
        return started

    def wait_for(self, what, processes, pages, patience=60):
        """The moment at which the last of the pages had "loaded" or "painted". Covered windows may never paint."""
        wanted = {f"/{what}?{number}" for number in range(pages)}

        def reported():
            if not any(process.running() for process in processes):
                raise AssertionError("the program ended:\n" + "".join(process.output() for process in processes))
            return wanted <= self.server.reports.keys()

        wait_until(reported, f"{pages} {what} pages", patience, interval=0.002)
        return max(self.server.reports[path] for path in wanted)

    @contextlib.contextmanager
    def showing(self, session, start, pages):
        """The program's processes and the time to paint, while it shows its pages."""
        self.server.reports.clear()
        begin = time.monotonic()
        started = start(session)
        try:
            self.wait_for("loaded", started, pages)
            seconds = self.wait_for("painted", started, 1) - begin
            yield lambda: tree(process.pid for process in started), seconds
        finally:
            for process in started:
                process.stop()


def tree(roots):
    """The ids of these processes and of all that descend from them."""
    children = {}
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            with contextlib.suppress(OSError):
                parent = int((entry / "stat").read_text(encoding="utf-8", errors="replace").rpartition(")")[2].split()[1])
                children.setdefault(parent, []).append(int(entry.name))
    found, waiting = set(), list(roots)
    while waiting:
        pid = waiting.pop()
        found.add(pid)
        waiting += children.get(pid, [])
    return found


def mebibytes(pids):
    """Sum of the proportional set sizes."""
    total = 0
    for pid in pids:
        with contextlib.suppress(OSError):
            for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines():
                if line.startswith("Pss:"):
                    total += int(line.split()[1])
    return total / 1024


def processor_seconds(pids):
    """What the threads of these processes have used, as the scheduler knows it: the counts in ticks are far too coarse here."""
    nanoseconds = 0
    for pid in pids:
        with contextlib.suppress(OSError):
            for thread in pathlib.Path(f"/proc/{pid}/task").iterdir():
                nanoseconds += int((thread / "schedstat").read_text(encoding="ascii").split()[0])
    return nanoseconds / 1e9


class Verdicts:
    def __init__(self):
        self.all_met = True

    def judge(self, what, value, limit, unit=""):
        met = value <= limit
        self.all_met = self.all_met and met
        print(f"  {what}: {value:.2f}{unit} (limit {limit:g}{unit}) {'met' if met else 'MISSED'}", flush=True)


def measure_start(bench, runs, verdicts):
    ways = {"bare window": bench.bare,
            "Parvela, one tab": bench.parvela,
            "Parvela, twenty tabs": lambda session: bench.parvela(session, tabs=20)}
    if bench.installed:
        ways["installed, one tab"] = lambda session: bench.parvela(session, programs=bench.installed)
    if shutil.which("chromium"):
        ways["chromium --app"] = bench.chromium
    times = {name: [] for name in ways}
    with Session() as session:
        for run in range(runs + 1):
            for name, start in ways.items():
                with bench.showing(session, start, 1) as (_, seconds):
                    if run > 0:  # the first ones warm the caches
                        times[name].append(seconds)
    medians = {name: statistics.median(taken) for name, taken in times.items()}
    print(f"Start to first painted page, median of {runs}:")
    for name, taken in times.items():
        print(f"  {name:22} {medians[name] * 1000:5.0f} ms   ({min(taken) * 1000:.0f} to {max(taken) * 1000:.0f})")
    verdicts.judge("one tab to bare window", medians["Parvela, one tab"] / medians["bare window"], 1.15)
    verdicts.judge("twenty tabs to one tab", medians["Parvela, twenty tabs"] / medians["Parvela, one tab"], 1.2)
    if bench.installed:
        verdicts.judge("installed to build folder", medians["installed, one tab"] / medians["Parvela, one tab"], 1.05)


def measure_memory(bench, runs, verdicts):
    ways = {("bare window", 1): bench.bare,
            ("Parvela", 1): bench.parvela,
            ("Parvela", 5): lambda session: bench.parvela(session, windows=5)}
    if shutil.which("chromium"):
        ways[("chromium --app", 1)] = bench.chromium
        ways[("chromium --app", 5)] = lambda session: bench.chromium(session, pages=5)
    sizes = {}
    print(f"Memory of all processes, median of {runs}:")
    for (name, pages), start in ways.items():
        taken = []
        for _ in range(runs):
            with Session() as session, bench.showing(session, start, pages) as (processes, _):
                time.sleep(5)  # what a start needs for a moment is given back
                taken.append(mebibytes(processes()))
        sizes[name, pages] = statistics.median(taken)
        print(f"  {name:16} {pages} page{'s' if pages > 1 else ' '} {sizes[name, pages]:5.0f} MiB", flush=True)
    verdicts.judge("one page to bare window", sizes["Parvela", 1] / sizes["bare window", 1], 1.1)
    if ("chromium --app", 5) in sizes:
        verdicts.judge("five pages to chromium", sizes["Parvela", 5] / sizes["chromium --app", 5], 1.0)


def measure_idle(bench, _, verdicts):
    seconds = 60
    used = {}
    for name, start in {"bare window": bench.bare, "Parvela": bench.parvela}.items():
        with Session() as session, bench.showing(session, start, 1) as (processes, _):
            time.sleep(10)  # scroll bars fade, caches are written
            begin, before = time.monotonic(), processor_seconds(processes())
            time.sleep(seconds)
            used[name] = (processor_seconds(processes()) - before) / (time.monotonic() - begin) * 100
    print(f"Idle for {seconds} s:\n  bare window, of one core: {used['bare window']:.2f} %")
    verdicts.judge("Parvela, of one core", used["Parvela"], 0.2, " %")


def main():
    parts = {"start": measure_start, "memory": measure_memory, "idle": measure_idle}
    parser = argparse.ArgumentParser(prog="bench/shell.py", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=str(ROOT / "build" / "release"), help="build tree (default build/release)")
    parser.add_argument("--part", choices=parts, action="append", help="measure only this; may be given again")
    parser.add_argument("--runs", type=int, default=7, help="counted runs (default 7; memory takes at most 3)")
    parser.add_argument("--installed", help="prefix of an installed package, such as /usr")
    arguments = parser.parse_args()
    bench = Bench(pathlib.Path(arguments.build).resolve() / "bin",
                  arguments.installed and pathlib.Path(arguments.installed).resolve() / "bin")
    verdicts = Verdicts()
    with interruptible():
        for part in arguments.part or parts:
            parts[part](bench, min(arguments.runs, 3) if part == "memory" else arguments.runs, verdicts)
    return 0 if verdicts.all_met else 1


if __name__ == "__main__":
    sys.exit(main())
