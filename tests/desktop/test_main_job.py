"""From the first start to a task on the board, as a person would do it."""

import datetime

from harness import windows
from harness.case import DesktopTest
from harness.waiting import stays_true, wait_until


class MainJob(DesktopTest):
    def test_sign_in_link_and_add_a_task_from_the_terminal(self):
        self.use_application()
        self.app.start()
        window = self.app.wait_for_window()
        page = self.app.page(self.service.web_url)
        page.wait_for_text("Sign in to Parvela")
        windows.wait_until_painted(window)

        # Real keys, so that the way from the keyboard into the page is part of the test.
        window.activate()
        page.focus("Explore the demo")
        windows.press(self.session, "Return")
        page.wait_for_text("Link this Mac?")
        self.assertIsNone(self.app.stored_token(), "nothing is linked before the person allows it")
        page.focus("Allow")
        windows.press(self.session, "Return")

        token = wait_until(self.app.stored_token, "the token in the keyring")
        self.assertRegex(token, r"^tk_[A-Za-z0-9_-]+$")
        self.assertEqual(1, len([one for one in self.person.tokens() if one["kind"] == "device"]))
        self.assertNotIn(token, self.app.settings_file.read_text(encoding="utf-8"))

        board = self.person.boards()[0]
        wait_until(lambda: self.app.settings().get("defaultBoardID") == board["id"], "the first board to be the default board")
        page.evaluate(f"location.assign('/b/{board['id']}')")
        page.wait_for_text("In progress")
        self.assertNotIn("\nWrite brief\n", page.text)

        result = self.app.command("add", "Write brief tomorrow !high #design @robin")
        self.assertEqual(0, result.returncode, result.stderr)
        card = self.person.find_card("Write brief")
        self.assertIsNotNone(card, result.stdout)
        tomorrow = datetime.date.today() + datetime.timedelta(days=1)
        self.assertEqual((board["id"], tomorrow.isoformat(), "high", ["Design"], ["Robin Hale"]),
                         (card["board_id"], card["due_date"], card["priority"], card["labels"], card["assignees"]))
        self.assertIn(card["key"], result.stdout)
        page.wait_for_text("\nWrite brief\n")  # by itself: the open page hears of the change

        self.assertNotIn(token, self.session.logs())


class SecondLaunch(DesktopTest):
    def test_hands_over_to_the_one_that_runs(self):
        page = self.start_linked()
        links = [
            (["parvela://open?path=/inbox"], "/inbox"),
            (["parvela://task/TSK-2"], "/t/TSK-2"),
            ([f"{self.service.web_url}/my"], "/my"),
            ([], "/my"),
            (["parvela://open?path=//elsewhere.example"], "/my"),
            (["no-such-thing"], "/my"),
        ]
        for arguments, path in links:
            with self.subTest(arguments=arguments):
                self.assertEqual(0, self.app.start_again(*arguments).returncode)
                page.wait_for_path(path)
        self.assertEqual(1, len(self.app.windows()))
        self.assertTrue(self.app.process.running())

    def test_command_opens_a_task_in_the_window(self):
        page = self.start_linked()
        result = self.app.command("open", "TSK-3")
        self.assertEqual((0, "Open TSK-3\n"), (result.returncode, result.stdout))
        page.wait_for_path("/t/TSK-3")


class LaunchOptions(DesktopTest):
    def test_open_a_task_form_or_a_window_at_the_start_and_in_the_program_that_runs(self):
        page = self.start_linked()
        self.assertEqual(0, self.app.start_again("--new-window").returncode)
        wait_until(lambda: len(self.app.windows()) == 2, "a second window")
        self.assertEqual(0, self.app.start_again("--background").returncode)
        stays_true(lambda: len(self.app.windows()) == 2, "nothing is shown", duration=0.5)
        page.close()
        self.app.windows()[1].activate()
        windows.press(self.session, "ctrl+w")
        wait_until(lambda: len(self.app.windows()) == 1, "the second window to close")
        self.app.windows()[0].activate()
        windows.press(self.session, "ctrl+q")
        wait_until(lambda: not self.app.process.running(), "the application to quit")

        self.app.start("--new-task")
        self.app.page(self.service.web_url).wait_for_text("Add another")


class Unlink(DesktopTest):
    def test_revokes_and_forgets_the_token(self):
        self.start_linked()
        result = self.app.command("unlink")
        self.assertEqual(0, result.returncode, result.stderr)
        self.assertIsNone(self.app.stored_token())
        self.assertEqual([], [one for one in self.person.tokens() if one["kind"] == "device"])
        self.assertEqual([], [key for key in self.app.settings() if key.startswith(("linkInfo|", "linkedAPI|"))])
        self.assertEqual(3, self.app.command("due").returncode)
