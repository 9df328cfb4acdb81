"""The common ground of the web tests: a service with the demo workspace and a browser for each class."""

import os
import pathlib
import tempfile
import unittest

from browser import Browser
from harness.processes import Process
from harness.service import LocalService
from harness.waiting import wait_until


class Home:
    """Where the programs of a class run: a home folder of their own, without a desktop."""

    def __init__(self, root):
        self.root = root
        self.env = {**os.environ, "HOME": str(root), "XDG_DATA_HOME": str(root), "TZ": "UTC", "LC_ALL": "C.UTF-8"}

    def start(self, *arguments):
        return Process(arguments, env=self.env, log=self.root / "programs.log")


class WebCase(unittest.TestCase):
    """Each class has its own service and browser, each test a browser that remembers nothing."""

    demo = True
    #: Facts of the fake desktop shell; None: an ordinary browser.
    shell = None
    #: Console errors that a test expects, as parts of their texts. The first call of a signed-out page is answered by 401.
    expected_problems = ("/api/session - Failed to load resource: the server responded with a status of 401",)

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="parvela-web-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        home = Home(cls.folder)
        cls.service = LocalService(home, cls.demo)
        cls.addClassCleanup(cls.service.stop)
        cls.browser = Browser(cls.folder / "chromedriver.log", home.env)
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.forget_everything()
        self.browser.problems()
        self.expected = list(self.expected_problems)
        if self.shell is not None:
            self.addCleanup(self.browser.take_back, self.browser.shell(**self.shell))

    def tearDown(self):
        self._keep_screenshot()
        unexpected = [text for text in self.browser.problems() if not any(part in text for part in self.expected)]
        self.assertEqual(unexpected, [], "the browser's console shows errors")

    def _keep_screenshot(self):
        """With PARVELA_SCREENSHOTS set, leaves a picture of a failed test's page in that folder."""
        outcome = self._outcome.result
        if os.environ.get("PARVELA_SCREENSHOTS") and any(test is self for test, _ in outcome.failures + outcome.errors):
            self.browser.screenshot(pathlib.Path(os.environ["PARVELA_SCREENSHOTS"]) / f"{self._testMethodName}.png")

    def forget_everything(self):
        """Makes the browser one that was never here. A page that is still open would see its session end and ask again."""
        self.browser.go("about:blank")
        self.browser.forget_everything(self.service.web_url)

    # What most tests begin with
    def url(self, path):
        return self.service.web_url + path

    def open(self, path="/home"):
        """Shows a page of the app, signed in as the demo person."""
        self.browser.go(self.url(path))
        wait_until(lambda: self.browser.all("#main") or self.browser.all("button", "Explore the demo"), "the app or its sign-in page")
        if not self.browser.all("#main"):
            self.browser.click("button", "Explore the demo")
            self.browser.one("#main")
            self.browser.wait_path(path)
        self.settled()

    def settled(self):
        """Waits until nothing on the page is loading."""
        self.browser.gone("#main .skeleton")

    def person(self):
        """The demo person as another browser session, to check and to prepare what the page should show."""
        return self.service.person()

    def card(self, title):
        return self.person().find_card(title)
