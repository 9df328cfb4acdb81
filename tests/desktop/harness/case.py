"""The base of desktop tests: a session, on request the local service and the application, and a report when a test fails."""

import shutil
import signal
import unittest

from . import programs, windows
from .application import Application
from .bus import Bus
from .service import LocalService
from .session import Keyring, Session, WindowManager
from .site import Site
from .waiting import wait_until

# No test needs nearly as long; one that hangs must not hang the whole run.
_LONGEST_TEST = 150


def report_folder():
    return programs.build_tree() / "desktop-failures"


class DesktopTest(unittest.TestCase):
    """Each test gets a fresh session; a class chooses its kind by these."""

    keyring = Keyring.unlocked
    window_manager = WindowManager.openbox
    size = (1280, 800)
    bus_services = ()
    notifications = True

    def setUp(self):
        signal.signal(signal.SIGALRM, self._took_too_long)
        signal.alarm(_LONGEST_TEST)
        self.addCleanup(signal.alarm, 0)
        self.session = Session(keyring=self.keyring, window_manager=self.window_manager, size=self.size,
                               bus_services=self.bus_services, notifications=self.notifications)
        self.session.__enter__()
        self.addCleanup(self.session.close)
        self.addCleanup(self._report_failure)

    def _took_too_long(self, *_):
        raise AssertionError(f"the test took longer than {_LONGEST_TEST} s")

    def use_service(self):
        """Brings up the local service; `person` is the demo person signed in with it."""
        self.service = LocalService(self.session)
        self.person = self.service.person()

    def use_application(self, web_url=None, api_url=None):
        """Prepares the application, pointed at the local service unless told otherwise. It is not started yet."""
        if web_url is None and not hasattr(self, "service"):
            self.use_service()
        self.app = Application(self.session, web_url or self.service.web_url, api_url or self.service.api_url)

    def link_device(self):
        """Links the application, which does not run, by a token made for it."""
        token = self.person.call("POST", "/api/tokens", {"name": "Desktop", "write": True})["token"]
        result = self.app.command("link-token", stdin=token + "\n")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        board = self.person.boards()[0]
        self.app.change_settings(defaultBoardID=board["id"], defaultBoardName=board["name"])

    def accessibility(self):
        tree = self.app.accessibility()
        self.addCleanup(tree.close)
        return tree

    def use_bus(self):
        self.bus = Bus(self.session)
        self.addCleanup(self.bus.close)

    def _report_failure(self):
        """A picture of the screen and what the programs said, while the session still stands."""
        outcome = self._outcome.result
        if not any(test is self for test, _ in outcome.failures + outcome.errors):
            return
        folder = report_folder() / self.id()
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        (folder / "programs.log").write_text(self.session.logs(), encoding="utf-8")
        try:
            windows.screenshot(self.session, folder / "screen.png")
        except (RuntimeError, OSError) as error:
            (folder / "no-screen.txt").write_text(str(error), encoding="utf-8")
        print(f"report of {self.id()}: {folder}", flush=True)

    def start_site(self, answers):
        """Starts the application on a web app of the test's own, whose server is `site`. Returns the page."""
        self.site = self.use_site(answers)
        self.use_application(self.site.url, self.site.url)
        self.app.start()
        return self.app.page(self.site.url)

    def use_site(self, answers):
        site = Site(answers)
        self.addCleanup(site.close)
        return site

    def start_signed_out(self, env=None, **settings):
        """Brings everything up to the page that asks to sign in. Returns the page."""
        self.use_application()
        self.app.change_settings(**settings)
        self.app.start(env=env)
        page = self.app.page(self.service.web_url)
        page.wait_for_text("Sign in to Parvela")
        return page

    def start_linked(self, **settings):
        """Brings everything up to a linked application whose page is at home. Returns the page."""
        page = self.start_signed_out(**settings)
        page.press("Explore the demo")
        page.press("Allow")
        wait_until(self.app.stored_token, "the token in the keyring")
        page.wait_for_path("/home")
        return page
