"""The common ground of the web tests: a service with the demo workspace and a browser for each class."""

import os
import pathlib
import tempfile
import unittest
import urllib.error
import urllib.request

from browser import Browser
from harness import programs
from harness.processes import Process
from harness.service import Person, free_port
from harness.waiting import wait_until


class Service:
    """parvela-local-service on free ports; its data lives in `folder`."""

    def __init__(self, folder, demo=True):
        self._folder = folder
        self._demo = demo
        self._starts = 0
        self.web_port = free_port()
        self.api_port = free_port()
        self.start()

    @property
    def web_url(self):
        return f"http://localhost:{self.web_port}"

    @property
    def api_url(self):
        return f"http://127.0.0.1:{self.api_port}"

    def start(self):
        """Starts it, again after stop() on the same ports with the same data."""
        self._starts += 1
        arguments = ["--data", self._folder / "data", "--web-port", self.web_port, "--api-port", self.api_port]
        if self._demo:
            arguments.append("--demo")
        if os.environ.get("PARVELA_ASSETS"):
            arguments += ["--assets", pathlib.Path(os.environ["PARVELA_ASSETS"]).resolve()]
        environment = {**os.environ, "HOME": str(self._folder), "XDG_DATA_HOME": str(self._folder), "TZ": "UTC"}
        self._process = Process([programs.path("parvela-local-service"), *arguments], env=environment,
                                log=self._folder / f"service-{self._starts}.log")
        wait_until(self._answers, "the local service", timeout=20)

    def stop(self):
        self._process.stop()

    def _answers(self):
        if not self._process.running():
            raise AssertionError(f"the local service ended: {self._process.output()}")
        try:
            urllib.request.urlopen(f"{self.web_url}/api/session", timeout=5).close()
        except urllib.error.HTTPError as error:
            return error.code == 401
        except OSError:
            return False
        return True


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
        cls.service = Service(cls.folder, cls.demo)
        cls.addClassCleanup(cls.service.stop)
        environment = {**os.environ, "HOME": str(cls.folder), "TZ": "UTC", "LC_ALL": "C.UTF-8"}
        cls.browser = Browser(cls.folder / "chromedriver.log", environment)
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.browser.go("about:blank")  # what the last test left must not see its session end
        self.browser.forget_everything(self.service.web_url)
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
        return Person(self.service)

    def card(self, title):
        return self.person().find_card(title)
