"""Storing and forgetting tokens, and what a keyring may do in between."""

import json
import os
import pty
import select
import subprocess
import time

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

    def test_a_silent_keyring_is_waited_for_once(self):
        self.link()
        self.addCleanup(self.parvela, "unlink")
        unread = "parvela: No Keychain answers, so no token can be read. Start your keyring and try again."
        unknown = "parvela: The Keychain doesn't answer, so a token may still be in it. Unlink again once it does."
        for arguments, status, said in ((["add", "x"], 3, unread), (["unlink"], 1, unknown)):
            with self.subTest(arguments), self.silent_keyring():
                begin = time.monotonic()
                self.assert_says(self.parvela(*arguments), status, err=said)
                self.assertLess(time.monotonic() - begin, 9)

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
        while not shown.rstrip().endswith(end.rstrip()) and select.select([descriptor], [], [], 10)[0]:
            shown += os.read(descriptor, 4096)
        return shown


class LockedKeyring(CommandCase):
    options = {"keyring": Keyring.locked}

    def test_reading_does_not_wait_and_saving_reports_the_status(self):
        locked = "parvela: The Keychain is locked, so the token in it can't be read. Unlock it and try again."
        for arguments in (["due"], ["boards"], ["add", "x"]):
            self.assert_says(self.parvela(*arguments), 3, err=locked)
        kept = self.session.home / ".cache" / "parvela" / "words.json"
        kept.parent.mkdir(exist_ok=True)
        kept.write_text(json.dumps({"site": self.service.url, "at": 1, "boards": [["Home", "b1"]]}), encoding="utf-8")
        self.assert_says(self.parvela("words", "boards"), 0, "Home\tb1")
        self.assert_says(self.parvela("link-token", stdin=TOKEN), 1, err="parvela: Couldn't save to the Keychain (error -25308).")
        self.assert_says(self.parvela("unlink"), 1, err="parvela: A token is still in the Keychain. Unlock the Keychain and unlink again.")


class NoKeyring(CommandCase):
    options = {"keyring": Keyring.absent}

    def test_reading_does_not_wait_and_saving_reports_the_status(self):
        self.assertEqual(self.parvela("due").returncode, 3)
        self.assert_says(self.parvela("link-token", stdin=TOKEN), 1, err="parvela: Couldn't save to the Keychain (error -25291).")
        self.assert_says(self.parvela("unlink"), 1,
                         err="parvela: The Keychain doesn't answer, so a token may still be in it. Unlink again once it does.")
