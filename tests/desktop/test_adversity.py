"""The application on a desktop that lacks something, or with a service that does not answer."""

import os
import pathlib
import signal

from harness import processes, windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.session import Keyring
from harness.waiting import stays_true, wait_until


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
        page = self.start_signed_out()
        page.press("Explore the demo")
        page.press("Allow")
        self.accessibility().wait_for(contains="Couldn't save to the Keychain (error -")
        self.assertEqual([], [key for key in self.app.settings() if key.startswith(("linkInfo|", "linkedAPI|"))])
        self.assertTrue(self.app.process.running())


class LockedKeyring(DesktopTest):
    keyring = Keyring.locked

    def test_the_start_neither_waits_nor_asks_for_a_password(self):
        self.start_signed_out()
        stays_true(lambda: all("parvela" in str(window.wm_class).lower() for window in windows.windows(self.session)),
                   "only Parvela's own windows are there", duration=1.5)


class NoSessionBus(DesktopTest):
    def test_windows_settings_and_quick_add_come_up(self):
        self.start_signed_out(env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere/bus"})
        self.app.wait_for_window().activate()
        windows.press(self.session, "ctrl+comma")
        self.app.wait_for_window(lambda one: one.title == "Parvela Settings", "the Settings window")
        windows.press(self.session, "ctrl+alt+space")
        self.app.wait_for_window(lambda one: one.title == "Parvela Quick Add", "the quick-add window")


class ScreenReader(DesktopTest):
    def test_asks_for_windows_that_have_just_gone(self):
        self.start_linked()
        tree = self.accessibility()
        for action, keys in (("newWindow", "ctrl+w"), ("showSettings", "Escape"), ("showQuickAdd", "Escape")):
            with self.subTest(action=action):
                before = self.app.windows()
                self.session.run("gapplication", "action", APP_ID, action)
                window = wait_until(lambda: next((one for one in self.app.windows() if one not in before), None), "another window")
                tree.ask_past_the_end()
                window.activate()
                windows.press(self.session, keys)
                wait_until(lambda: not window.exists(), "the window to close")
                tree.ask_past_the_end()
                self.assertIsNotNone(tree.find("frame"), "the program answers")


class LostParts(DesktopTest):
    def web_processes(self):
        return {pid for pid in processes.descendants(f"PARVELA_SESSION={self.session.root}")
                if "WebKitWebProcess" in pathlib.Path(f"/proc/{pid}/cmdline").read_text(encoding="utf-8").split("\0")[0]}

    def end_page(self):
        """Kills what shows the page, as a fault in it would."""
        gone = self.web_processes()
        for pid in gone:
            os.kill(pid, signal.SIGKILL)
        return gone

    def test_a_page_that_dies_comes_back_and_one_that_keeps_dying_is_left_alone(self):
        self.use_application()
        self.app.start()
        self.app.wait_for_window(lambda one: one.title.startswith("Sign in"), "the page")
        for _ in range(2):
            gone = self.end_page()
            wait_until(lambda: self.web_processes() - gone, "a new process for the page")
            self.app.page(self.service.web_url).wait_for_text("Sign in to Parvela")
        gone = self.end_page()
        wait_until(lambda: self.web_processes() - gone, "a new process for the error page")
        page = self.app.page()
        page.wait_for_text("The page stopped working several times in a row.")
        page.press("Try again")
        page.wait_for_text("Sign in to Parvela")

    def test_windows_and_pages_outlive_the_session_bus(self):
        page = self.start_linked()
        window = self.app.wait_for_window()
        window.activate()
        bus, = (process for process in self.session.programs("dbus-daemon"))
        bus.stop()
        windows.press(self.session, "ctrl+shift+i")
        page.wait_for_path("/inbox")
        stays_true(lambda: self.app.process.running(), "the application runs on")
