#!/usr/bin/python3
"""Measures how long the application needs from its start to the first painted page, beside a bare WebKitGTK window.

  bench/start-up.py [--build build/release] [--runs 9] [--installed /usr]

Both programs show the same page of a server in this script, in a private desktop session. The page says when it has painted:
that moment counts. The runs alternate; the first pair warms the caches and does not count. Medians and their ratio are printed.
With --installed the program of a package (installed, or unpacked with dpkg-deb -x) takes its turn too, beside that of the build.
"""

import argparse
import http.server
import json
import pathlib
import statistics
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from answering import Answering  # noqa: E402
from harness.session import Session  # noqa: E402

PAGE = b"""<!doctype html><meta charset="utf-8"><title>Start</title>
<style>body { font: 16px sans-serif; background: #EEF0EE; color: #1E2120 } li { margin: 4px }</style>
<h1>Start</h1><ul id="list"></ul>
<script>
  for (let i = 0; i < 200; ++i) document.getElementById('list').append(Object.assign(document.createElement('li'),
    { textContent: 'A line of the page, number ' + i }));
  requestAnimationFrame(() => requestAnimationFrame(() => fetch('/painted', { method: 'POST' })));
</script>
"""


class Page(Answering):
    """Serves the page and takes its word that it has painted."""

    def do_GET(self):
        self.answer(PAGE if self.path == "/" else b"", 200 if self.path == "/" else 404)

    def do_POST(self):
        self.server.painted_at = time.monotonic()
        self.server.painted.set()
        self.answer(b"", 204)


def time_to_paint(session, server, *command, patience=60):
    """Seconds from the start of the command to its painted page."""
    server.painted.clear()
    begin = time.monotonic()
    process = session.start(*command)
    try:
        if not server.painted.wait(patience):
            raise RuntimeError(f"{command[0]} painted nothing in {patience} s:\n{process.output()}")
        return server.painted_at - begin
    finally:
        process.stop()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=str(ROOT / "build" / "release"), help="build tree (default build/release)")
    parser.add_argument("--runs", type=int, default=9, help="counted runs of each program (default 9)")
    parser.add_argument("--limit", type=float, default=1.15, help="the largest ratio that passes (default 1.15)")
    parser.add_argument("--installed", help="prefix of an installed package, such as /usr")
    arguments = parser.parse_args()
    programs = pathlib.Path(arguments.build).resolve() / "bin"

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Page)
    server.painted = threading.Event()
    threading.Thread(target=server.serve_forever, daemon=True).start()
    url = f"http://127.0.0.1:{server.server_port}"

    # Both draw the same way, whatever this machine has.
    drawing = {"GSK_RENDERER": "cairo", "WEBKIT_DISABLE_DMABUF_RENDERER": "1"}
    commands = {"bare window": [programs / "bare-window", url], "Parvela": [programs / "parvela-desktop"]}
    if arguments.installed:
        commands["installed"] = [pathlib.Path(arguments.installed).resolve() / "bin" / "parvela-desktop"]
    seconds = {name: [] for name in commands}
    with Session(extra_env=drawing) as session:
        settings = session.config_home / "parvela"
        settings.mkdir(parents=True)
        (settings / "defaults.json").write_text(json.dumps({"serverMode": "custom", "customAppURL": url, "customAPIURL": url}),
                                                encoding="utf-8")
        for run in range(arguments.runs + 1):
            for name, command in commands.items():
                seconds[name].append(time_to_paint(session, server, *command))
            times = "   ".join(f"{name} {taken[-1] * 1000:5.0f} ms" for name, taken in seconds.items())
            print(times + ("  (warming up)" if run == 0 else ""), flush=True)

    medians = {name: statistics.median(taken[1:]) for name, taken in seconds.items()}
    bare_median, application_median = medians["bare window"], medians["Parvela"]
    if arguments.installed:
        print(f"median: installed {medians['installed'] * 1000:.0f} ms, {medians['installed'] / application_median:.2f} of the build's")
    ratio = application_median / bare_median
    print(f"median: bare window {bare_median * 1000:.0f} ms, Parvela {application_median * 1000:.0f} ms, ratio {ratio:.2f} "
          f"(limit {arguments.limit})")
    return 0 if ratio <= arguments.limit else 1


if __name__ == "__main__":
    sys.exit(main())
