"""What the programs say about themselves, and to who uses them wrongly."""

from harness import programs
from support import CommandCase


class Help(CommandCase):
    def test_every_program_names_itself_and_its_version(self):
        for program, usage in (("parvela", r"(?m)^Usage: parvela "), ("parvela-desktop", r"(?m)^ +parvela-desktop \[.+\] \[URL…\]$"),
                               ("parvela-local-service", r"(?m)^Usage: parvela-local-service ")):
            with self.subTest(program):
                shown = self.session.run(programs.path(program), "--help")
                self.assertEqual((shown.returncode, shown.stderr), (0, ""))
                self.assertRegex(shown.stdout, usage)
                version = self.session.run(programs.path(program), "--version")
                self.assertRegex(version.stdout, r"^Parvela \d+\.\d+\.\d+\n$")
                self.assertEqual((version.returncode, version.stderr), (0, ""))

    def test_a_wrong_option_is_refused(self):
        for program, status in (("parvela", 2), ("parvela-desktop", 1), ("parvela-local-service", 2)):
            with self.subTest(program):
                run = self.session.run(programs.path(program), "--wrong")
                self.assertEqual((run.returncode, run.stdout), (status, ""))
                self.assertIn("--wrong", run.stderr)

    def test_a_window_without_a_display_says_so(self):
        self.assert_says(self.session.run(programs.path("parvela-desktop")), 1,
                         err="parvela: There is no display. Parvela's window needs a desktop session.")
