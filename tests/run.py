#!/usr/bin/python3
"""Runs parts of the test suite one after the other and adds up what they report.

A part is a folder here with a program "run" in it. It prints what it likes, ends with a line "N passed, N failed" (more such
counts may follow, for example ", 1 skipped"), and exits with 0 only when nothing failed.
"""

import collections
import pathlib
import re
import signal
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
PARTS = ["unit", "web", "command", "desktop"]


def run_part(name, arguments):
    """Runs one part with its output passed through; returns its counts by word, for example {"passed": 12, "failed": 0}."""
    print(f"\n== {name} tests ==", flush=True)
    begin = time.monotonic()
    counts = collections.Counter()
    with subprocess.Popen([HERE / name / "run", *arguments], stdout=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True,
                          errors="replace") as process:
        signal.signal(signal.SIGTERM, lambda *_: process.terminate())
        for line in process.stdout:
            print(line, end="", flush=True)
            if re.fullmatch(r"\d+ passed, \d+ failed(, \d+ \w+)*", line.strip()):
                counts = collections.Counter({word: int(number) for number, word in re.findall(r"(\d+) (\w+)", line)})
    if process.returncode != 0 and not counts["failed"]:
        print(f"{name} tests ended with status {process.returncode} without naming a failure", flush=True)
        counts["failed"] = 1
    if not counts["passed"] and not counts["failed"]:
        print(f"{name} tests reported no result", flush=True)
        counts["failed"] = 1
    print(f"== {name} tests took {time.monotonic() - begin:.0f} s ==", flush=True)
    return counts


def main():
    chosen = [argument for argument in sys.argv[1:] if argument in PARTS] or PARTS
    unknown = [argument for argument in sys.argv[1:] if argument not in PARTS]
    if unknown:
        print(f"tests/run.py: unknown part {unknown[0]}; the parts are {', '.join(PARTS)}", file=sys.stderr)
        return 2
    total = collections.Counter(passed=0, failed=0)
    for part in chosen:
        total.update(run_part(part, []))
    others = "".join(f", {number} {word}" for word, number in total.items() if word not in ("passed", "failed") and number)
    print(f"\n{total['passed']} passed, {total['failed']} failed{others}", flush=True)
    return 1 if total["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
