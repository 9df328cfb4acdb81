"""What the doctor finds in sessions that lack something."""

import json
import socket
import threading
import time

from harness.session import Keyring
from support import CommandCase, TOKEN

ROWS = ["Versions", "Session", "Automation", "Tray", "Desktop portal", "Keyring", "Notifications", "Renderer", "Server", "Link",
        "Waiting lines", "Files", "Links", "Start at login"]


class Doctor(CommandCase):
    def setUp(self):
        super().setUp()
        self.write_settings(ParvelaAppURL=self.service.url)
        for file in (self.session.data_home / "parvela").glob("waiting-lines*"):
            file.unlink()

    def rows(self):
        run = self.parvela("doctor", "--json")
        self.assertEqual(run.stderr, "")
        self.assertNotIn(TOKEN, run.stdout)
        rows = {row["what"]: row for row in json.loads(run.stdout)}
        for row in rows.values():
            self.assertTrue(row["finding"] and (row["remedy"] or row["verdict"] == "good"), row)
        self.assertEqual(run.returncode, 1 if any(row["verdict"] == "problem" for row in rows.values()) else 0)
        return rows

    def verdicts(self, *names):
        rows = self.rows()
        return [rows[name]["verdict"] for name in names]

    def test_everything_is_looked_at(self):
        rows = self.rows()
        self.assertEqual(list(rows), ROWS)
        self.assertRegex(rows["Versions"]["finding"], r"^Parvela [\d.]+, GLib [\d.]+, GTK [\d.]+, libadwaita [\d.]+, WebKitGTK [\d.]+\.$")
        expected = {"Session": "notice", "Tray": "notice", "Keyring": "good", "Notifications": "notice", "Server": "good",
                    "Link": "notice", "Waiting lines": "good", "Files": "good", "Links": "notice"}
        self.assertEqual({what: rows[what]["verdict"] for what in expected}, expected)
        text = self.parvela("doctor").stdout
        for what in ROWS:
            self.assertRegex(text, rf"(?m)^(good|notice|problem) +{what}  ")

    def test_the_link_is_checked(self):
        self.service.answers["GET", "/me"] = (200, {"id": "1", "name": "A", "email": "a@b.c", "workspace": {"id": "w", "name": "Acme"}})
        self.link()
        self.addCleanup(self.parvela, "unlink")
        self.assertEqual(self.rows()["Link"], {"what": "Link", "verdict": "good", "remedy": "",
                                               "finding": "This device is linked to the workspace “Acme”."})
        for status, verdict in ((401, "problem"), (500, "notice")):
            self.service.answers["GET", "/me"] = (status, {})
            self.assertEqual(self.verdicts("Link"), [verdict])

        asked = threading.Event()
        self.addCleanup(asked.set)
        self.service.answers["GET", "/me"] = lambda _: asked.wait(30) and (200, {})
        begin = time.monotonic()
        self.assertEqual(self.rows()["Link"]["remedy"], "Parvela took too long to answer. Try again.")
        self.assertLess(time.monotonic() - begin, 12)

    def test_a_server_that_is_away_and_lines_that_wait(self):
        self.link()
        self.addCleanup(self.parvela, "unlink")
        with socket.socket() as unused:
            unused.bind(("127.0.0.1", 0))
            away = f"http://127.0.0.1:{unused.getsockname()[1]}"
        self.write_settings(ParvelaAppURL=away)
        self.assertIn("the web app at " + away, self.rows()["Server"]["finding"])
        self.write_settings(ParvelaAPIURL=away, defaultBoardID="b1")
        self.link()
        self.parvela("add", "x")
        self.assertEqual(self.verdicts("Server", "Link", "Waiting lines"), ["problem", "notice", "notice"])

    def test_a_keyring_that_does_not_answer(self):
        with self.silent_keyring():
            rows = self.rows()
        self.assertEqual(rows["Keyring"]["finding"], "The keyring does not answer, so no token can be read.")
        self.assertEqual(rows["Link"]["finding"], "Whether this device is linked is not known while the keyring does not answer.")

    def test_a_folder_that_cannot_be_written(self):
        cache = self.session.home / ".cache" / "parvela"
        cache.write_text("in the way")
        self.addCleanup(cache.unlink)
        self.assertRegex(self.rows()["Files"]["finding"], r"/\.cache/parvela can't be written: .+\.$")


class LockedKeyring(CommandCase):
    options = {"keyring": Keyring.locked}

    def test_is_a_problem(self):
        rows = {row["what"]: row for row in json.loads(self.parvela("doctor", "--json").stdout)}
        self.assertEqual(rows["Keyring"]["finding"], "The keyring is locked.")
        self.assertEqual(rows["Link"]["finding"], "Whether this device is linked is not known while the keyring is locked.")


class NoBus(CommandCase):
    options = {"keyring": Keyring.absent}

    def test_is_said_once(self):
        run = self.parvela("doctor", "--json", env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
        rows = {row["what"]: row["verdict"] for row in json.loads(run.stdout)}
        self.assertEqual((run.returncode, rows["Session bus"]), (1, "problem"))
        self.assertNotIn("Keyring", rows)
        rows = {row["what"]: row["verdict"] for row in json.loads(self.parvela("doctor", "--json").stdout)}
        self.assertEqual(rows["Keyring"], "problem")
