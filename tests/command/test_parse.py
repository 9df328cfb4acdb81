"""Parsing lines without a service."""

import json
import subprocess
import unittest

from harness import programs


def parvela(*arguments, stdin=None):
    return subprocess.run([programs.path("parvela"), *arguments], input=stdin, stdin=None if stdin is not None else subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=20, check=False)


class Parse(unittest.TestCase):
    def test_one_line(self):
        run = parvela("parse", "--today", "2026-11-21", "Write", "brief", "tomorrow", "9am", "!high", "#home")
        lines = run.stdout.splitlines()
        self.assertEqual((run.returncode, lines[0], lines[-5:]), (
            0, "Write brief tomorrow 9am !high #home",
            ["title     Write brief", "date      Tomorrow (2026-11-22)", "time      9 AM (09:00)", "priority  High", "label     home"]))
        self.assertEqual(json.loads(parvela("parse", "--json", "--today", "2026-11-21", "Zoë tomorrow every fri").stdout), {
            "title": "Zoë", "assigneeIds": [], "labelIds": [], "priority": "none", "dueDate": "2026-11-22", "dueTime": None,
            "repeat": {"freq": "weekly", "weekdays": [5], "monthDay": None, "rule": "weekly:5", "display": "Every Fri"},
            "tokens": [{"start": 4, "end": 12, "kind": "date", "value": "2026-11-22", "display": "Tomorrow"},
                       {"start": 13, "end": 22, "kind": "repeat", "value": "weekly:5", "display": "Every Fri"}]})

    def test_words_keep_what_an_option_would_take_for_a_list(self):
        for words in (["[a, b]"], ["[]"], ["x", "[y]"], ["[y]", "--json", "x"], ["x", "--", "[y, z]", "--json"]):
            with self.subTest(words):
                title = " ".join(word for word in words if word != "--" and (word != "--json" or "--" in words))
                self.assertEqual(json.loads(parvela("parse", "--json", *words).stdout)["title"], title)

    def test_many_lines(self):
        lines = ["2026-11-21\tCall tomorrow", "", "2026-02-30\tx", "no tab", "2026-01-01\ta\tb", "2026-11-21\t" + "x" * 2_000_000,
                 "2026-11-21\tlast, without a line break"]
        run = parvela("parse", "--lines", stdin="\n".join(lines))
        answers = [json.loads(line) for line in run.stdout.splitlines()]
        self.assertEqual(run.returncode, 2)
        self.assertEqual([answer.get("title", "error") for answer in answers],
                         ["Call", "error", "error", "error", "a b", "error", "last, without a line break"])
        self.assertEqual(parvela("parse", "--lines", stdin="2026-11-21\tx\r\n").returncode, 0)
        self.assertEqual(parvela("parse", "--lines", stdin="").stdout, "")

    def test_each_line_is_answered_before_the_next_is_asked_for(self):
        with subprocess.Popen([programs.path("parvela"), "parse", "--lines"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                              bufsize=1) as process:
            for title in ("one", "two"):
                process.stdin.write(f"2026-11-21\t{title}\n")
                self.assertEqual(json.loads(process.stdout.readline())["title"], title)
            process.stdin.close()
            self.assertEqual(process.wait(10), 0)

    def test_wrong_use(self):
        for arguments in (["parse"], ["parse", "--lines", "x"], ["parse", "--today", "21.11.2026", "x"], ["parse", "x", "--what"], ["parse", "-x"]):
            with self.subTest(arguments):
                run = parvela(*arguments)
                self.assertEqual((run.returncode, run.stdout), (2, ""))
                self.assertTrue(run.stderr.startswith("parvela: "), run.stderr)
