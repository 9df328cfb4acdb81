"""What scripts/run does once everything is built: brings up the local service, a session if there is none, and Parvela."""

import argparse
import contextlib
import json
import os
import pathlib
import subprocess
import sys
import urllib.error
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from harness import windows  # noqa: E402
from harness.processes import Process  # noqa: E402
from harness.session import Session, interruptible  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

PROGRAMS = ROOT / "build" / "release" / "bin"
WEB_SITE = "http://localhost:3100"
API_SITE = "http://127.0.0.1:3213"
APP_ID = "app.parvela.Parvela"


class Problem(Exception):
    """Something the person who runs this has to know; the text says it all."""


def answer(url):
    """The JSON that a site answers with, whatever its status; None when nobody listens there, {} for anything that is no JSON."""
    opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
    try:
        with opener.open(url, timeout=5) as response:
            body = response.read()
    except urllib.error.HTTPError as error:
        body = error.read()
    except OSError:
        return None
    try:
        return json.loads(body)
    except ValueError:
        return {}


def service_state():
    """"running", "absent", or a Problem when something else has the ports."""
    web, api = answer(f"{WEB_SITE}/api/session"), answer(f"{API_SITE}/api/v1/me")
    if web is None and api is None:
        return "absent"
    if isinstance(web, dict) and ("demo" in web or "me" in web) and isinstance(api, dict) and "error" in api:
        return "running"
    raise Problem(f"something that is not a Parvela service has {WEB_SITE if web is not None else API_SITE}")


@contextlib.contextmanager
def local_service():
    """The local service for as long as the block runs; one that runs already is used as it is."""
    if service_state() == "running":
        print(f"Using the Parvela service that runs at {WEB_SITE}")
        yield
        return
    data = pathlib.Path(os.environ.get("XDG_DATA_HOME") or pathlib.Path.home() / ".local" / "share") / "parvela-demo"
    data.mkdir(mode=0o700, parents=True, exist_ok=True)
    log = data / "service.log"
    log.write_bytes(b"")
    service = Process([PROGRAMS / "parvela-local-service", "--data", data, "--demo"], dict(os.environ), log=log)
    try:
        def up():
            if not service.running():
                raise Problem(f"the local service ended at once:\n{service.output()}")
            return service_state() == "running"

        wait_until(up, "the local service to answer", timeout=30)
        print(f"The demo workspace is at {WEB_SITE}, its data in {data}")
        yield
    finally:
        service.stop()


def running_elsewhere():
    """Whether another process is Parvela in this desktop session."""
    result = subprocess.run(["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
                             "org.freedesktop.DBus.NameHasOwner", APP_ID], capture_output=True, text=True, check=False)
    return "true" in result.stdout


def run_on_desktop():
    with local_service():
        program = Process([PROGRAMS / "parvela", "--local"], dict(os.environ))
        try:
            status = program.popen.wait()
            if status == 0 and running_elsewhere():
                print("Parvela was running already and shows its window. Ctrl-C here ends the local service.")
                wait_until(lambda: not running_elsewhere(), "Parvela to end", timeout=float("inf"), interval=1)
            return status
        finally:
            program.stop()


def run_headless(arguments):
    extra_env = {"ADW_DEBUG_COLOR_SCHEME": "prefer-dark"} if arguments.dark else {}
    with local_service(), Session(size=arguments.size, extra_env=extra_env) as session:
        if arguments.screenshot is None:
            print(f"No display is used: Parvela runs in a private headless session (DISPLAY={session.env['DISPLAY']}).")
            print("Ctrl-C ends it. scripts/run --screenshot FILE saves what a person would see.", flush=True)
            return session.call(PROGRAMS / "parvela", "--local")
        program = session.start(PROGRAMS / "parvela", "--local")

        def window():
            if not program.running():
                raise Problem(f"Parvela ended at once:\n{program.output()}")
            return next((one for one in windows.windows(session) if APP_ID in one.wm_class), None)

        windows.wait_until_painted(wait_until(window, "Parvela's window", timeout=60))
        windows.screenshot(session, arguments.screenshot)
        print(f"Saved {arguments.screenshot}")
        return 0


def size(text):
    width, _, height = text.partition("x")
    return int(width), int(height)


def main():
    parser = argparse.ArgumentParser(prog="scripts/run")
    parser.add_argument("--screenshot", metavar="FILE")
    parser.add_argument("--headless", action="store_true")
    parser.add_argument("--dark", action="store_true")
    parser.add_argument("--size", metavar="WxH", type=size, default=(1280, 800))
    arguments = parser.parse_args()
    has_display = os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")
    try:
        with interruptible():
            if has_display and not arguments.headless and arguments.screenshot is None:
                return run_on_desktop()
            return run_headless(arguments)
    except KeyboardInterrupt:
        return 130
    except (AssertionError, Problem, RuntimeError, OSError) as error:
        print(f"scripts/run: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
