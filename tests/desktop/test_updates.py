"""New versions: looked for at the start and on request, offered only when they are signed and newer."""

import pathlib
import subprocess
import tempfile

from harness import programs, windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.waiting import stays_true, wait_until

APPCAST = programs.ROOT / "packaging" / "appcast"
PAGE = "https://parvela.example/download?from=app"


class Updates(DesktopTest):
    def setUp(self):
        super().setUp()
        self.server = self.use_site({})
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.key = self.appcast("key", self.folder / "key.pem")
        self.use_application()
        self.use_bus()

    def appcast(self, *arguments):
        return subprocess.run([APPCAST, *arguments], check=True, capture_output=True, text=True).stdout.strip()

    def feed(self, version, notes="Boards open twice as fast.\n\n<b>Plain</b> text & nothing else.", key="key.pem"):
        """A feed that offers one version, signed as a release is."""
        (self.folder / "notes.txt").write_text(notes, encoding="utf-8")
        if not (self.folder / key).exists():
            self.appcast("key", self.folder / key)
        feed = self.folder / f"{version}-{key}.xml"
        self.appcast("add", feed, version, PAGE, self.folder / "notes.txt", self.folder / key)
        return feed.read_bytes()

    def offer(self, feed):
        self.server.answers["/appcast.xml"] = (200, {}, feed)

    def start(self):
        self.process = self.session.start(programs.path("parvela-desktop-updates"),
                                          env={"PARVELA_TEST_FEED": f"{self.server.url}/appcast.xml", "PARVELA_TEST_FEED_KEY": self.key})
        window = self.app.wait_for_window()
        windows.wait_until_painted(window)
        return self.accessibility()

    def ask(self):
        self.bus.activate(APP_ID, "checkForUpdates")

    def test_a_new_version_is_offered_at_the_start_and_its_page_opens(self):
        self.offer(self.feed("99.1", "<b>Plain</b> text & nothing else.\n" + "A line of a long list.\n" * 60))
        tree = self.start()
        tree.wait_for(contains="Parvela 99.1 is available")
        notes = tree.wait_for(role="text", name="What is new")
        self.assertIn("<b>Plain</b> text & nothing else.", notes.text())
        offer = next(one for one in self.app.windows() if one.id == windows.active_window(self.session))
        for key in ("Page_Down", "Down"):
            before = windows.wait_until_painted(offer)
            windows.press(self.session, key)
            wait_until(lambda before=before: windows.pieces_that_differ(before, offer.pixels()) > 40, f"the notes to scroll by {key}")
        windows.press(self.session, "Return")
        wait_until(lambda: self.session.browser_urls() == [PAGE], "the download page in the browser")
        self.assertTrue(self.process.running())

        self.process.stop()
        tree = self.start()
        stays_true(lambda: len(self.server.requests) == 1 and not tree.find(contains="is available"),
                   "nothing is asked twice a day", duration=1)
        self.ask()
        tree.wait_for(role="push button", contains="Skip This Version").press()
        wait_until(lambda: self.app.settings().get("skippedUpdate") == "99.1", "the choice in the settings")

    def test_what_is_not_signed_or_not_newer_is_never_offered(self):
        signed = self.feed("99.1")
        altered = signed.replace(b"99.1", b"99.2")
        self.offer(altered)
        tree = self.start()
        wait_until(lambda: len(self.server.requests) == 1, "the check at the start")
        stays_true(lambda: not tree.find(contains="updates"), "a failure at the start is silent", duration=1)
        cases = [
            ("altered", altered, "is not signed"),
            ("unsigned", signed[:signed.rindex(b"<!--")], "is not signed"),
            ("another key", self.feed("99.1", key="other.pem"), "is not signed"),
            ("no feed", b"<html>Welcome to the network</html>", "is not signed"),
            ("huge", signed + b" " * 2_000_000, "could not be read"),
            ("older", self.feed("0.9"), "is the newest one"),
        ]
        for what, feed, answer in cases:
            with self.subTest(what):
                self.offer(feed)
                self.ask()
                tree.wait_for(contains=answer)
                self.assertIsNone(tree.find(contains="is available"))
                windows.press(self.session, "Return")
                wait_until(lambda: not tree.find(contains=answer), "the answer to be gone")
        self.server.close()
        self.ask()
        tree.wait_for(contains="could not be reached")
        self.assertEqual([], self.session.browser_urls())
