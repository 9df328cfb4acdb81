"""The application on a desktop that lacks something, or with a service that does not answer."""

from harness import windows
from harness.case import DesktopTest
from harness.session import Keyring
from harness.waiting import stays_true


class UnreachableService(DesktopTest):
    def test_shows_why_and_recovers(self):
        self.use_service()
        self.service.stop()
        self.use_application()
        self.app.start()
        window = self.app.wait_for_window()
        windows.wait_until_painted(window)
        page = self.app.page()
        page.wait_for_text("Try again")
        self.service.start()
        page.press("Try again")
        page.wait_for_text("Sign in to Parvela")


class NoKeyring(DesktopTest):
    keyring = Keyring.absent

    def test_the_page_works_and_a_refused_link_is_said_plainly(self):
        self.use_service()
        self.use_application()
        self.app.start()
        page = self.app.page(self.service.web_url)
        page.press("Explore the demo")
        page.press("Allow")
        self.accessibility().wait_for(contains="Couldn't save to the Keychain (error -")
        self.assertEqual([], [key for key in self.app.settings() if key.startswith(("linkInfo|", "linkedAPI|"))])
        self.assertTrue(self.app.process.running())


class LockedKeyring(DesktopTest):
    keyring = Keyring.locked

    def test_the_start_neither_waits_nor_asks_for_a_password(self):
        self.use_service()
        self.use_application()
        self.app.start()
        page = self.app.page(self.service.web_url)
        page.wait_for_text("Sign in to Parvela")
        stays_true(lambda: all("parvela" in str(window.wm_class).lower() for window in windows.windows(self.session)),
                   "only Parvela's own windows are there", duration=1.5)
