"""Storing and forgetting tokens, and what a keyring may do in between."""

import json
import os
import pty
import select
import subprocess

from harness import programs
from harness.session import Keyring
from support import CommandCase, TOKEN

NO_TOKEN = "parvela: That doesn't look like a Parvela token. It starts with tk_."


class Link(CommandCase):
    def setUp(self):
        super().setUp()
        self.service.answers["GET", "/tasks?due=today"] = (200, {"tasks": []})
        self.service.answers["POST", "/token/revoke"] = (200, {"ok": True})

    def test_a_pasted_token_is_used_until_it_is_unlinked(self):
        self.assert_says(self.parvela("link-token", stdin=f"  Bearer {TOKEN}  \n"), 0, f"The token for {self.service.url} is saved.")
        self.assertEqual(self.parvela("due").returncode, 0)
        self.assertEqual(self.service.tokens, ["Bearer " + TOKEN])
        self.assert_says(self.parvela("unlink"), 0, "Unlinked. The token was revoked.")
        self.assertEqual(len(self.service.sent("POST", "/token/revoke")), 1)
        self.assertEqual(self.parvela("due").returncode, 3)
        self.assert_says(self.parvela("unlink"), 0, "No token was stored.")

    def test_unlinking_says_what_became_of_the_token(self):
        untold = "Unlinked. The service couldn't be told: revoke the token in Parvela → Settings → API and agents."
        for status, said in ((200, "Unlinked. The token was revoked."), (401, "Unlinked. The token was revoked."), (403, untold), (500, untold)):
            with self.subTest(status):
                self.link()
                self.service.answers["POST", "/token/revoke"] = (status, {"ok": True})
                self.assert_says(self.parvela("unlink"), 0, said)
                self.assertEqual(self.parvela("due").returncode, 3)
        self.link()
        self.assertEqual(json.loads(self.parvela("unlink", "--json").stdout), {"linked": False, "hadToken": True, "revoked": False})
        self.assertEqual(json.loads(self.parvela("unlink", "--json").stdout), {"linked": False, "hadToken": False, "revoked": False})

    def test_what_is_no_token_is_not_stored(self):
        for text in ("hello\n", "\n", "tk_\n", "tk_" + "x" * 600 + "\n"):
            self.assert_says(self.parvela("link-token", stdin=text), 2, err=NO_TOKEN)
        for text in ("", "x" * 5000):
            self.assert_says(self.parvela("link-token", stdin=text), 2, err="parvela: No token was given on standard input.")
        self.assertEqual(self.parvela("due").returncode, 3)

    def test_a_typed_token_is_not_shown(self):
        ours, terminal = pty.openpty()
        with subprocess.Popen([programs.path("parvela"), "link-token"], env=self.session.env, stdin=terminal, stdout=terminal,
                              stderr=terminal, start_new_session=True) as process:
            os.close(terminal)
            shown = self.read_until(ours, b": ")
            os.write(ours, TOKEN.encode() + b"\n")
            shown += self.read_until(ours, b"saved.")
            self.assertEqual(process.wait(10), 0)
        os.close(ours)
        self.assertIn(b"Token for http", shown)
        self.assertNotIn(TOKEN.encode(), shown)
        self.assertEqual(self.parvela("unlink").returncode, 0)

    def read_until(self, descriptor, end):
        shown = b""
        while not shown.rstrip(b"\r\n").endswith(end.rstrip()) and select.select([descriptor], [], [], 10)[0]:
            shown += os.read(descriptor, 4096)
        return shown


class LockedKeyring(CommandCase):
    options = {"keyring": Keyring.locked}

    def test_reading_does_not_wait_and_saving_reports_the_status(self):
        self.assertEqual(self.parvela("due").returncode, 3)
        self.assert_says(self.parvela("link-token", stdin=TOKEN), 1, err="parvela: Couldn't save to the Keychain (error -25308).")
        self.assert_says(self.parvela("unlink"), 1, err="parvela: A token is still in the Keychain. Unlock the Keychain and unlink again.")


class NoKeyring(CommandCase):
    options = {"keyring": Keyring.absent}

    def test_reading_does_not_wait_and_saving_reports_the_status(self):
        self.assertEqual(self.parvela("due").returncode, 3)
        self.assert_says(self.parvela("link-token", stdin=TOKEN), 1, err="parvela: Couldn't save to the Keychain (error -25291).")
        self.assert_says(self.parvela("unlink"), 1,
                         err="parvela: The Keychain doesn't answer, so a token may still be in it. Unlink again once it does.")
