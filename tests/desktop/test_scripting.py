"""The commands of docs/scripting.md and the example script, as a reader would run them."""

import os

from harness import documents, programs
from harness.case import DesktopTest

EXAMPLE = programs.ROOT / "docs" / "examples" / "day.sh"


class Guide(DesktopTest):
    def setUp(self):
        super().setUp()
        self.use_service()
        self.use_application()
        self.app.install()
        token = self.person.call("POST", "/api/tokens", {"name": "Scripts", "write": True})["token"]
        (self.session.home / "token.txt").write_text(token + "\n", encoding="utf-8")
        self.board = self.person.boards()[0]
        self.person.call("PATCH", f"/api/boards/{self.board['id']}", {"name": "Home"})
        self.path = {"PATH": f"{programs.path('parvela').parent}:{os.environ['PATH']}"}

    def shell(self, command):
        return self.session.run("sh", "-c", f"cd ~; {command}", env=self.path, timeout=60)

    def test_every_command_works(self):
        told = {}
        for command in documents.commands("docs/scripting.md"):
            result = self.shell(command)
            told[command] = result.stdout
            with self.subTest(command):
                self.assertEqual(0, result.returncode, result.stderr)
                if "||" not in command:
                    self.assertEqual("", result.stderr)
        self.assertTrue(self.person.find_card("Call Sam")["due_date"])
        self.assertRegex(told["parvela add \"Buy stamps\" --json | jq -r '.task.key'"], r"^[A-Z]+-\d+\n$")
        self.assertEqual("ended with 1\n", told['parvela complete NO-1 || echo "ended with $?"'])
        self.assertEqual("ended with 2\n", told['parvela add Write --due someday || echo "ended with $?"'])
        self.assertTrue(self.person.find_card("Write brief"))
        self.app.wait_for_window()

    def test_the_day_of_the_example(self):
        self.shell("parvela link-token < token.txt")
        morning = self.shell(f"{EXAMPLE} morning")
        self.assertEqual((0, ""), (morning.returncode, morning.stderr))
        self.assertRegex(morning.stdout, r"Added \S+: Read the inbox\nAdded \S+: Water the plants\n$")
        again = self.shell(f"{EXAMPLE} morning")
        self.assertNotIn("Added", again.stdout)
        *listed, late = again.stdout.splitlines()
        self.assertEqual(f"{sum('  Today' not in line for line in listed)} of them are late.", late)
        self.assertRegex(self.shell(f"{EXAMPLE} note Ask Robin about -x- next week").stdout, r"^Noted as \S+\n$")
        evening = self.shell(f"{EXAMPLE} evening")
        self.assertEqual((0, ""), (evening.returncode, evening.stderr))
        self.assertIn("Done: Water the plants\n", evening.stdout)
        self.assertTrue(self.person.find_card("Read the inbox")["done"])
        self.service.stop()
        self.assertEqual(4, self.shell(f"{EXAMPLE} evening").returncode)
