"""The Settings window: by keyboard alone, and as a screen reader finds it."""

from harness import windows
from harness.case import DesktopTest
from harness.session import Keyring
from harness.waiting import stays_true, wait_until


class SettingsTest(DesktopTest):
    def open_settings(self):
        """By its keys, from a main window. Returns the window."""
        self.app.wait_for_window().activate()
        windows.press(self.session, "ctrl+comma")
        window = self.app.wait_for_window(lambda one: one.title == "Parvela Settings", "the Settings window")
        window.activate()
        self.tree = self.accessibility()
        return window

    def press(self, *keys):
        windows.press(self.session, *keys)

    def type(self, text):
        windows.type_text(self.session, text)

    def says(self, text):
        """Waits for a sentence anywhere in the application."""
        return self.tree.wait_for(contains=text)

    def retype(self, page, key, text):
        """Goes to a page, by a mnemonic to a field, and replaces what is in it."""
        self.press(f"alt+{page}", f"alt+{key}", "ctrl+a")
        self.type(text)


class Pages(SettingsTest):
    def test_every_control_has_a_name_and_the_window_closes_and_comes_back(self):
        self.start_linked()
        window = self.open_settings()
        there = {(element.role, element.name) for element in self.tree.find_all()}
        for control in [
                ("check box", "Hosted"), ("check box", "On this computer"), ("check box", "Custom"), ("text", "Web app address"),
                ("text", "API address"), ("push button", "Check Again"), ("combo box", "Default board"),
                ("check box", "Quick add shortcut"), ("check box", "Start at login"), ("check box", "Start hidden"),
                ("push button", "Smaller"), ("push button", "Larger"), ("push button", "Actual Size"),
                ("check box", "Check spelling"), ("check box", "Show notifications"), ("push button", "Unlink…"),
                ("text", "Paste a token"), ("push button", "Get an API Token…")]:
            with self.subTest(control=control):
                self.assertIn(control, there)

        for keys in ("Escape", "ctrl+w"):
            self.press(keys)
            wait_until(lambda: not window.exists(), "the Settings window to close")
            self.app.wait_for_window().activate()
            self.press("ctrl+comma")
            window = self.app.wait_for_window(lambda one: one.title == "Parvela Settings", "the Settings window again")
            window.activate()
        self.assertEqual(2, len(self.app.windows()), "one Settings window is kept")


class Server(SettingsTest):
    def test_an_address_that_makes_no_sense_stays_in_its_field_and_out_of_use(self):
        self.start_linked()
        window = self.open_settings()
        before = self.app.settings()["customAppURL"]
        self.retype(1, "w", "https://board.example/?x")
        self.says("Leave out the “?” and what follows it.")
        self.press("Return")
        stays_true(lambda: self.app.settings()["customAppURL"] == before, "the address in use", duration=0.5)
        self.press("Escape")
        wait_until(lambda: not window.exists(), "the Settings window to close")
        self.press("ctrl+comma")
        self.says("Leave out the “?” and what follows it.")
        self.assertEqual("https://board.example/?x", self.tree.find("text", "Web app address").text())

    def test_another_server_is_used_at_once_and_has_no_token(self):
        page = self.start_linked()
        self.open_settings()
        self.says("Reachable.")
        host_by_number = self.service.web_url.replace("localhost", "127.0.0.1")
        self.retype(1, "w", host_by_number)
        self.assertEqual(self.service.web_url, self.app.settings()["customAppURL"], "nothing applies while it is typed")
        self.press("Return")
        wait_until(lambda: self.app.settings()["customAppURL"] == host_by_number, "the address to be used")
        page.close()
        self.app.page(host_by_number)
        # The other origin was never linked, but the API site is the same, and so is its token.
        self.press("alt+4")
        self.says("Uses a personal access token")


class Account(SettingsTest):
    def test_a_token_is_pasted_checked_and_taken_out_of_sight_and_unlinking_asks(self):
        self.start_linked()
        window = self.open_settings()
        self.retype(4, "p", "no token")
        self.says("That doesn't look like a Parvela token. It starts with tk_.")
        token = self.person.call("POST", "/api/tokens", {"name": "Test", "write": True})["token"]
        self.retype(4, "p", f"Bearer {token}")
        self.press("Return")
        wait_until(lambda: self.app.stored_token() == token, "the pasted token in the keyring")
        self.says("The token is saved.")
        self.assertEqual("", self.tree.find("text", "Paste a token").text())
        self.assertEqual([], self.tree.find_all(contains=token), "a token is never shown whole")

        self.press("alt+u")
        self.tree.wait_for(name="Unlink This Mac?")
        self.press("Escape")
        stays_true(self.app.stored_token, "the token is kept", duration=0.5)
        window.activate()
        self.press("alt+u")
        self.tree.wait_for(name="Unlink This Mac?")
        self.press("alt+u")
        # GTK 4.8 ends the program when its tree is read while a dialog goes.
        wait_until(lambda: not self.app.stored_token(), "the token to be forgotten")
        self.says("Unlinked. The token was revoked.")
        self.assertNotIn(token, [one.get("token") for one in self.person.tokens()])
        self.says("Not linked")


class General(SettingsTest):
    def test_choices_apply_at_once(self):
        page = self.start_linked()
        wait_until(lambda: self.app.settings().get("defaultBoardID"), "a default board")
        self.open_settings()
        first = self.app.settings()["defaultBoardID"]
        self.press("alt+2", "alt+b", "Down", "Return")
        wait_until(lambda: self.app.settings()["defaultBoardID"] != first, "another default board")

        self.press("alt+s")
        wait_until(lambda: self.app.settings().get("spellCheckingEnabled") is False, "spelling to be left alone")

        autostart = self.session.config_home / "autostart" / "app.parvela.Parvela.desktop"
        self.press("alt+l")
        wait_until(autostart.exists, "the entry for the login")
        self.assertIn("--background", autostart.read_text(encoding="utf-8"))
        self.press("alt+h")
        wait_until(lambda: "--background" not in autostart.read_text(encoding="utf-8"), "the start to show a window")
        self.press("alt+l")
        wait_until(lambda: not autostart.exists(), "the entry to go")

        width = page.evaluate("innerWidth")
        self.tree.find("push button", "Larger").press()
        wait_until(lambda: page.evaluate("innerWidth") < width, "the open page to be larger")


class WithoutKeyring(SettingsTest):
    keyring = Keyring.absent

    def test_says_what_is_missing_and_keeps_what_was_pasted(self):
        self.use_application()
        self.app.start()
        self.open_settings()
        self.press("alt+4")
        self.says("No Keychain on this desktop")
        self.retype(4, "p", "tk_abcdef")
        self.press("Return")
        self.says("Couldn't save to the Keychain (error -")
        self.assertEqual(len("tk_abcdef"), len(self.tree.find("text", "Paste a token").text()))
