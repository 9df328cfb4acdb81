"""The documents: every command in them is run by something, and these are run here."""

import functools
import os
import pathlib
import re
import shlex
import shutil
import tempfile
import unittest

from harness import documents, programs
from harness.case import DesktopTest
from harness.waiting import wait_until

#: What runs commands of the documents, beside the tests of this folder.
RUNNERS = (".ci/run", "scripts/test", "packaging/check-packages", "packaging/test-packages", "packaging/installed/run", "packaging/installed/service")


@functools.cache
def code(program):
    """A script without its comments."""
    return re.sub(r"^\s*#.*$", "", (programs.ROOT / program).read_text(encoding="utf-8"), flags=re.MULTILINE)


def is_run(document, section, command):
    """Whether a program has the command as it stands, or takes all commands of its section or document."""
    first = shlex.split(command)[0]
    if first == ".ci/run":
        return all(f"check_{word}()" in code(first) for word in shlex.split(command)[1:])
    if command in RUNNERS:
        return True
    tests = [f"tests/desktop/{path.name}" for path in pathlib.Path(__file__).parent.glob("test_*.py")]
    command, document, section = re.escape(command), re.escape(document), re.escape(section)
    runs = re.compile(rf"(?<![\w./-]){command}(?=[\"';]|$| &&| \|)"
                      rf'|documents\.commands\("{document}"(, "{section}")?\)|documented {document} "{section}"', re.MULTILINE)
    return any(runs.search(code(program)) for program in (*RUNNERS, *tests))


class EveryCommand(unittest.TestCase):
    def test_is_run_by_something(self):
        for document in documents.documents():
            for section in documents.sections(document):
                for command in documents.commands(document, section):
                    with self.subTest(document=document, section=section):
                        self.assertTrue(is_run(document, section, command), f"nothing runs: {command}")

    def test_in_a_sentence_begins_one_that_is_run(self):
        shown = [command for document in documents.documents() if documents.sections(document) for command in documents.commands(document)]
        known = {shlex.split(command)[0] for command in shown}
        for document in documents.documents():
            for mention in re.findall(r"`([^`]+)`", documents.prose(document)):
                first, *others = mention.split()
                if others and (first in known or "/" in first and (programs.ROOT / first).is_file()):
                    with self.subTest(document):
                        self.assertTrue(any(command.startswith(mention) for command in shown) or is_run(document, "no section", mention),
                                        f"stands in no block: {mention}")


class Typed(DesktopTest):
    """Commands that are typed at the root of the sources, with the programs of the build tree under test."""

    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)  # what they leave behind stays out of the sources
        for path in programs.ROOT.iterdir():
            if path.name != "build":
                (self.root / path.name).symlink_to(path)
        (self.root / "build").mkdir()
        (self.root / "build" / "dev").symlink_to(programs.build_tree().resolve())
        self.env = {"PATH": f"{programs.path('parvela').parent}:{os.environ['PATH']}",
                    "PARVELA_BUILD": str(programs.build_tree().resolve())}

    def type(self, command, stdin=None):
        result = self.session.run("sh", "-ec", f"cd {self.root}; {command}", env=self.env, timeout=90, stdin=stdin)
        self.assertEqual(0, result.returncode, f"{command}\n{result.stdout}{result.stderr}")
        return result.stdout

    def start(self, command):
        """Starts it in a network of its own, where every port is free, unless this machine allows none."""
        own_network = ["unshare", "--map-current-user", "--keep-caps", "--net", "sh", "-c", "ip link set lo up && exec \"$@\"", "sh"]
        if self.session.run(*own_network, "true").returncode != 0:
            own_network = []
        return self.session.start(*own_network, "sh", "-c", f"cd {self.root}; exec env {command}", env=self.env)

    def wait_for_port(self, process, port):
        def listens():
            self.assertTrue(process.running(), process.output())
            connections = pathlib.Path(f"/proc/{process.pid}/net/tcp").read_text(encoding="ascii")
            return re.search(rf" 0100007F:{port:04X} \S+ 0A ", connections)

        wait_until(listens, f"port {port} of {process.arguments[-1]}", 30)

    def test_what_is_installed(self):
        self.assertIn("libgtk-4-dev\n", self.type("scripts/setup --list"))

    def test_chosen_tests(self):
        self.assertRegex(self.type("tests/desktop/run EveryCommand"), r"\n[1-9]\d* passed, 0 failed\n$")

    def test_looking_at_the_program(self):
        display = self.type("scripts/headless --shell", stdin='echo "$DISPLAY"\n').strip()
        self.assertNotIn(display, ("", self.session.env["DISPLAY"]))
        inspected = "WEBKIT_INSPECTOR_HTTP_SERVER=127.0.0.1:9222 build/dev/bin/parvela-desktop"
        for command, port in (("scripts/headless build/dev/bin/parvela --local --demo", 3100),
                              (f"scripts/headless sh -c '{inspected}'", 9222),
                              ("build/dev/bin/parvela-local-service --demo --assets LocalService/web", 3213)):
            with self.subTest(command):
                process = self.start(command)
                self.wait_for_port(process, port)
                process.stop(grace=20)
        process = self.start("scripts/headless --screenshot out.png build/dev/bin/parvela --local --demo")
        wait_until(lambda: not process.running(), "the picture", 60)
        self.assertEqual(0, process.exit_status(), process.output())
        self.assertTrue((self.root / "out.png").read_bytes().startswith(b"\x89PNG"))

    def test_running_the_local_service(self):
        for command in documents.commands("docs/local-service.md", "Running it"):
            with self.subTest(command):
                process = self.start(command)
                for port in (3100, 3213):
                    self.wait_for_port(process, port)
                wait_until(lambda process=process: "Parvela is running: http://localhost:3100" in process.output(), "what it prints")
                process.stop()
                self.assertEqual(0, process.exit_status(), process.output())

    def test_a_copy_of_the_local_services_data(self):
        self.use_service()
        data = self.session.root / "service"
        (self.session.data_home / "parvela-local-service").symlink_to(data)
        board = self.person.boards()[0]
        self.person.call("PATCH", f"/api/boards/{board['id']}", {"name": "As it was"})
        self.type('sqlite3 ~/.local/share/parvela-local-service/parvela.sqlite ".backup copy.sqlite"')
        self.person.call("PATCH", f"/api/boards/{board['id']}", {"name": "As it is"})
        self.service.stop()
        shutil.move(self.root / "copy.sqlite", data / "parvela.sqlite")
        self.service.start()
        self.assertEqual("As it was", self.service.person().boards()[0]["name"])

    def test_the_feed_of_new_versions(self):
        (self.root / "notes.txt").write_text("Faster.\n", encoding="utf-8")
        script = "\n".join(documents.commands("docs/release.md", "The feed of new versions"))
        public = self.type(script).splitlines()[0]
        settings = (self.root / "build" / "release" / "CMakeCache.txt").read_text(encoding="utf-8")
        self.assertRegex(settings, f"(?m)^PARVELA_UPDATE_PUBLIC_KEY:[A-Z]+={re.escape(public)}$")
        self.assertRegex(settings, "(?m)^PARVELA_UPDATE_FEED_URL:[A-Z]+=https://example.org/parvela/appcast.xml$")
