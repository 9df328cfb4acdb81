"""Adding, listing and completing tasks."""

import datetime
import json
import socket
import sqlite3
import time

from harness import programs
from support import CommandCase, boards, task, TOKEN

OFFLINE = "parvela: You're offline, or Parvela can't be reached. Check your connection and the server in Settings."
MISSING = "parvela: Add a personal access token in Settings (create one in Parvela → Settings → API and agents)."


def day(offset=0):
    return (datetime.date.today() + datetime.timedelta(offset)).isoformat()


class Tasks(CommandCase):
    def setUp(self):
        super().setUp()
        self.link()
        self.service.answers = {
            ("GET", "/boards"): (200, boards("Home", "Work", "Zoë's List", "work ")),
            ("POST", "/tasks"): lambda sent: (200, task(title=sent["title"])),
            ("GET", "/tasks?due=today"): (200, {"tasks": []}),
        }

    def created(self):
        (sent,) = self.service.sent("POST", "/tasks")
        return sent

    def test_add_sends_what_the_line_says(self):
        self.assert_says(self.parvela("add", "Write", "brief", "tomorrow", "9am", "!high"), 0, "Added TSK-42: Write brief")
        self.assertEqual(self.created(), {"board": "b1", "title": "Write brief", "due_date": day(1), "due_time": "09:00",
                                          "priority": "high"})
        self.assertEqual(set(self.service.tokens), {"Bearer " + TOKEN})

    def test_options_win_over_the_line(self):
        run = self.parvela("add", "Write brief today !low", "--due", "in 3 days", "--priority", "URGENT", "--board", "zoë's list")
        self.assert_says(run, 0, "Added TSK-42: Write brief")
        self.assertEqual(self.created(), {"board": "b3", "title": "Write brief", "due_date": day(3), "priority": "urgent"})

    def test_words_that_are_commands_or_look_like_options_are_words(self):
        self.assert_says(self.parvela("add", "open", "boards", "--", "-5", "degrees"), 0, "Added TSK-42: open boards -5 degrees")
        self.assert_says(self.parvela("add", "--", "--json"), 0, "Added TSK-42: --json")
        self.assert_says(self.parvela("add", "[Draft, v2]", "--board", "[x]", "[]"), 2, err="parvela: There is no board “[x]”.")
        self.assert_says(self.parvela("add", "[Draft, v2]", "--priority", "low", "[]"), 0, "Added TSK-42: [Draft, v2] []")
        self.assertEqual(self.parvela("add", "x", "-5", "degrees").returncode, 2)

    def test_the_default_board_is_used_without_asking_for_boards(self):
        self.write_settings(defaultBoardID="b9", defaultBoardName="Attic")
        self.assertEqual(self.parvela("add", "Sweep").returncode, 0)
        self.assertEqual([path for _, path, _ in self.service.requests], ["/tasks"])
        self.assertEqual(self.created()["board"], "b9")

    def test_notes_follow_the_success(self):
        self.assert_says(self.parvela("add", "Call Sam every monday"), 0,
                         "Added TSK-42: Call Sam\nRepeat rules can't be set from quick add — set the repeat in Parvela.")

    def test_output_that_is_not_taken(self):
        self.service.answers["GET", "/tasks?due=today"] = (200, {"tasks": [task(f"TSK-{n}", "x" * 100) for n in range(2000)]})
        self.service.answers["GET", "/tasks/NO-1"] = (404, {})
        full = "parvela: The output can't be written: No space left on device."
        cases = {
            "due | head -1 | wc -l": (0, "1", ""),
            "due >/dev/full": (1, "", full),
            "due --json >/dev/full": (1, "", full),
            "boards >/dev/full": (1, "", full),
            "parse x >/dev/full": (1, "", full),
            "--help >/dev/full": (1, "", full),
            "boards >&-": (1, "", "parvela: The output can't be written: Bad file descriptor."),
            "complete NO-1 2>/dev/full": (1, "", ""),
            "complete NO-1 2>&-": (1, "", ""),
        }
        for command, outcome in cases.items():
            with self.subTest(command):
                run = self.session.run("bash", "-o", "pipefail", "-c", f"{programs.path('parvela')} {command}")
                self.assert_says(run, *outcome)

    def test_an_unresolved_name_is_left_in_the_title(self):
        refusals = [(400, {"error": {"message": "Board has no label “garden”."}})]
        self.service.answers["POST", "/tasks"] = lambda sent: refusals.pop() if refusals else (200, task(title=sent["title"]))
        self.assert_says(self.parvela("add", "Weed #garden"), 0,
                         "Added TSK-42: Weed #garden\nBoard has no label “garden”. Left it in the title.")

    def test_what_makes_no_sense_is_refused_unsent(self):
        cases = [
            (["add", "tomorrow !high"], "Give the task a title."),
            (["add", "x", "--due", "someday"],
             "“someday” is not a date. Use YYYY-MM-DD, or words such as “tomorrow” or “next friday”."),
            (["add", "x", "--due", "2026-02-30"],
             "“2026-02-30” is not a date. Use YYYY-MM-DD, or words such as “tomorrow” or “next friday”."),
            (["add", "x", "--due", "tomorrow 9am"],
             "“tomorrow 9am” is not a date. Use YYYY-MM-DD, or words such as “tomorrow” or “next friday”."),
            (["add", "x", "--priority", "huge"], "“huge” is not a priority. Use low, medium, high or urgent."),
            (["add", "x", "--board", "Nowhere"], "There is no board “Nowhere”."),
            (["add", "x", "--board", "work"], "Several boards are called “work”. Name one by its id: b2, b4."),
        ]
        for arguments, message in cases:
            with self.subTest(arguments):
                self.assert_says(self.parvela(*arguments), 2, err="parvela: " + message)
        self.assertEqual(self.service.sent("POST", "/tasks"), [])

    def test_errors_have_their_texts_and_statuses(self):
        cases = [
            (403, {}, 1, "This token can't do that. Use a token with write access."),
            (422, {"error": {"message": "Title\x1b[31m too\nlong."}}, 1, "Title [31m too long."),
            (500, {}, 1, "Parvela had a problem (HTTP 500). Try again."),
            (401, {}, 3, "Token invalid or revoked — paste a new one in Settings."),
        ]
        for status, body, exit_status, message in cases:
            with self.subTest(status):
                self.service.answers["POST", "/tasks"] = (status, body)
                self.assert_says(self.parvela("add", "x"), exit_status, err="parvela: " + message)

    def test_no_board_to_add_to(self):
        self.service.answers["GET", "/boards"] = (200, boards())
        self.assert_says(self.parvela("add", "x"), 1, err="parvela: Pick a default board in Parvela Settings first.")

    def test_due_shows_open_tasks_only(self):
        self.assert_says(self.parvela("due"), 0, "Nothing due today.")
        self.service.answers["GET", "/tasks?due=today"] = (200, {"tasks": [
            task("TSK-1", "Late \x1b[2J one", dueDate="2020-02-03"), task("TSK-22", "日本", dueDate=day(), dueTime="09:30"),
            task("TSK-3", "Finished", dueDate=day(), done=True)]})
        run = self.parvela("due")
        self.assertEqual(run.stdout, "TSK-1   Late  [2J one  Mon, Feb 3, 2020  Home\nTSK-22  日本           Today, 9:30 AM    Home\n")
        self.assertEqual([one["key"] for one in json.loads(self.parvela("due", "--json").stdout)], ["TSK-1", "TSK-22"])

    def test_boards_marks_the_default(self):
        self.write_settings(defaultBoardID="b2")
        self.assert_says(self.parvela("boards"), 0, "   Home        b1\n*  Work        b2\n   Zoë's List  b3\n   work        b4")
        listed = json.loads(self.parvela("boards", "--json").stdout)
        self.assertEqual([(board["id"], board["default"]) for board in listed],
                         [("b1", False), ("b2", True), ("b3", False), ("b4", False)])

    def test_complete(self):
        self.service.answers["GET", "/tasks/TSK-42"] = (200, task(done=True))
        self.service.answers["PATCH", "/tasks/TSK-42"] = (200, task(done=True))
        self.assert_says(self.parvela("complete", "TSK-42"), 0, "Done: Write brief")
        self.assertEqual(self.service.sent("PATCH", "/tasks/TSK-42"), [{"done": True}])
        self.service.answers["GET", "/tasks/TSK-7"] = (404, {})
        self.assert_says(self.parvela("complete", "TSK-7"), 1, err="parvela: Not found.")

    def test_tasks_and_boards_as_json_have_the_promised_keys(self):
        self.write_settings(ParvelaAppURL="https://app.parvela.test", defaultBoardID="b2")
        service_task = task(dueDate=day(), url="/t/TSK-42", description="More", labelTags=[{"id": "l", "name": "l", "tone": "red"}])
        promised = {"id": "id-TSK-42", "key": "TSK-42", "title": "Write brief", "board": "Home", "boardId": "b1", "list": "To do",
                    "listId": "l1", "priority": "none", "dueDate": day(), "dueTime": None, "labels": [], "assignees": [], "done": False,
                    "url": "https://app.parvela.test/t/TSK-42"}
        self.service.answers["POST", "/tasks"] = self.service.answers["PATCH", "/tasks/TSK-42"] = (200, service_task)
        self.service.answers["GET", "/tasks/TSK-42"] = (200, service_task)
        self.service.answers["GET", "/tasks?due=today"] = (200, {"tasks": [service_task]})
        cases = {
            ("add", "x"): {"task": promised, "note": None},
            ("due",): [promised],
            ("complete", "TSK-42"): {"task": promised},
            ("boards",): [{"id": f"b{number}", "name": name, "default": number == 2}
                          for number, name in enumerate(("Home", "Work", "Zoë's List", "work "), 1)],
        }
        for command, answer in cases.items():
            with self.subTest(command):
                self.assertEqual(json.loads(self.parvela(*command, "--json").stdout), answer)

    def test_an_added_task_as_json(self):
        answer = json.loads(self.parvela("add", "Call Sam every monday", "--json").stdout)
        self.assertEqual(answer["task"]["key"], "TSK-42")
        self.assertIn("Repeat rules", answer["note"])

    def test_a_completed_task_as_json(self):
        self.service.answers["GET", "/tasks/TSK-42"] = (200, task())
        self.service.answers["PATCH", "/tasks/TSK-42"] = (200, task(done=True))
        answer = json.loads(self.parvela("complete", " TSK-42 ", "--json").stdout)
        self.assertEqual((answer["task"]["key"], answer["task"]["done"]), ("TSK-42", True))
        for key in ("", " "):
            self.assert_says(self.parvela("complete", key), 2, err="parvela: Which task? (like TSK-42)")


class Offline(CommandCase):
    def setUp(self):
        super().setUp()
        with socket.socket() as unused:
            unused.bind(("127.0.0.1", 0))
            self.write_settings(ParvelaAPIURL=f"http://127.0.0.1:{unused.getsockname()[1]}")
        self.link()

    def test_a_line_for_a_known_board_waits(self):
        self.write_settings(defaultBoardID="b1", defaultBoardName="Home")
        for board in ([], ["--board", "b1"], ["--board", " home "]):
            with self.subTest(board):
                self.assert_says(self.parvela("add", "Write brief tomorrow", *board), 0,
                                 "Saved. It will be added when you are back online.")
        (database,) = (self.session.data_home / "parvela").glob("*.sqlite")
        with sqlite3.connect(database) as connection:
            tables = [name for (name,) in connection.execute("SELECT name FROM sqlite_master WHERE type = 'table'")]
            content = str([list(connection.execute(f"SELECT * FROM {table}")) for table in tables])
        self.assertIn("Write brief tomorrow", content)
        self.assertNotIn(TOKEN, content)

    def test_other_commands_say_that_they_are_offline(self):
        for arguments in (["due"], ["boards"], ["complete", "TSK-1"], ["add", "x", "--board", "Work"]):
            with self.subTest(arguments):
                begin = time.monotonic()
                self.assert_says(self.parvela(*arguments), 4, err=OFFLINE)
                self.assertLess(time.monotonic() - begin, 5)


class Unlinked(CommandCase):
    options = {}

    def test_nothing_is_sent_without_a_token(self):
        for arguments in (["add", "x"], ["due"], ["boards"], ["complete", "TSK-1"]):
            with self.subTest(arguments):
                self.assert_says(self.parvela(*arguments), 3, err=MISSING)
        self.assertEqual(self.service.requests, [])
