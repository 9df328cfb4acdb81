"""What shells offer to complete."""

import os
import pty
import select
import time

from harness import programs
from support import CommandCase, boards, task

COMPLETIONS = programs.ROOT / "packaging" / "completions"

# zsh completes in a terminal only: a real one, in which a key lists what it would offer. The words that end the reading are typed
# in two pieces, because the terminal shows what is typed as well.
ZSH = """
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell "fpath=({folder} \\$fpath); autoload -Uz compinit; compinit -u -D"
zpty -w shell 'bindkey "^I" list-choices; zle-line-init() {{ print REA""DY }}; zle -N zle-line-init'
while zpty -r shell line; do [[ $line == *READY* ]] && break; done
zpty -w -n shell $'{line}\\t'
zpty -w -n shell $'\\x15print DO""NE\\n'
while zpty -r shell line; do print -r -- "$line"; [[ $line == *DONE* ]] && break; done
"""

# What stands behind "parvela" in a terminal: completions get their words from the program, and what is run tells its arguments.
TOLD = """#!/bin/sh
if [ "$1" = words ]; then exec {program} "$@"; fi
printf '%s\\n' "$@" > ~/told.new && mv ~/told.new ~/told
"""
BASH = """
PS1='ready> '; bind 'set bell-style none'; bind 'set enable-bracketed-paste off'; unset HISTFILE
source {file}
"""
ALL = "\x1b*"  # readline's key that inserts everything it would offer


class Bash:
    """A bash in a terminal."""

    def __init__(self, session, env):
        self._told = session.home / "told"
        rc = session.home / "bashrc"
        rc.write_text(BASH.format(file=COMPLETIONS / "parvela.bash"), encoding="utf-8")
        self._pid, self._terminal = pty.fork()
        if self._pid == 0:
            os.chdir(session.home)
            os.execvpe("bash", ["bash", "--rcfile", str(rc), "-i"], {**session.env, **env})
        self._wait()

    def _wait(self):
        shown = b""
        while not shown.endswith(b"ready> "):
            if not select.select([self._terminal], [], [], 10)[0]:
                os.write(self._terminal, b"\x03")  # a quote left open must not spoil what is typed next
                self._wait()
                raise AssertionError(f"no prompt behind {shown[-200:]}")
            shown += os.read(self._terminal, 4096)

    def run(self, keys):
        """Types a line and gives the arguments that the program got."""
        self._told.unlink(missing_ok=True)
        os.write(self._terminal, keys.encode() + b"\n")
        self._wait()
        return self._told.read_text(encoding="utf-8").splitlines() if self._told.exists() else None

    def close(self):
        os.close(self._terminal)
        os.waitpid(self._pid, 0)


class Completion(CommandCase):
    def setUp(self):
        super().setUp()
        (self.session.home / ".cache" / "parvela" / "words.json").unlink(missing_ok=True)
        self.link()
        self.addCleanup(self.parvela, "unlink")
        self.service.answers = {
            ("GET", "/boards"): (200, boards("Home", "Zoë's List")),
            ("GET", "/tasks"): (200, {"tasks": [task("TSK-1", "Write\tbrief\x1b"), task("TSK-22", "Call"), task("TSK-3", done=True)]}),
        }
        self.path = {"PATH": f"{programs.path('parvela').parent}:{os.environ['PATH']}"}

    def bash(self):
        folder = self.session.home / "bin"
        folder.mkdir(exist_ok=True)
        program = folder / "parvela"
        program.write_text(TOLD.format(program=programs.path("parvela")), encoding="utf-8")
        program.chmod(0o755)
        bash = Bash(self.session, {"PATH": f"{folder}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"})
        self.addCleanup(bash.close)
        return bash

    def test_bash(self):
        cases = {
            "parvela b\t": ["boards"],
            "parvela --loc\t": ["--local"],
            "parvela open " + ALL: ["open", "TSK-1", "TSK-22"],
            "parvela complete tsk-2\t": ["complete", "TSK-22"],
            "parvela add x --board " + ALL: ["add", "x", "--board", "Home", "Zoë's List"],
            "parvela add x --board zo\t": ["add", "x", "--board", "Zoë's List"],
            "parvela add x --board=Zo\t": ["add", "x", "--board=Zoë's List"],
            "~/bin/parvela add x --board Ho\t": ["add", "x", "--board", "Home"],
            "parvela add x --priority u\t": ["add", "x", "--priority", "urgent"],
            "parvela add x --due=tod\t": ["add", "x", "--due=today"],
            "parvela add x --due to" + ALL: ["add", "x", "--due", "today", "tomorrow"],
            "parvela add wri\t": ["add", "wri"],
            "parvela doctor -" + ALL: ["doctor", "--help", "--json"],
        }
        bash = self.bash()
        for keys, arguments in cases.items():
            with self.subTest(keys):
                self.assertEqual(bash.run(keys), arguments)

    def test_bash_takes_no_name_for_more_than_a_name(self):
        (self.session.home / "Folder").mkdir()
        names = {
            "Gam": "Gamma`touch broken`", "Del": "Delta$(touch broken)", "Ops": "Ops; touch broken", "Fol": "Folder", "\\~": "~root",
            "Bo": "Bob's", "Ki": "Kids'", "Sa": 'Say "hi"', "Ba": "Back\\slash", "Wo": "Wow!x", "Ra": "Ratio 1:2=3", "\\$": "$HOME", "-d": "-dash",
        }
        self.service.answers["GET", "/boards"] = (200, boards(*names.values()))
        bash = self.bash()
        for start, name in names.items():
            for quote in ("", '"', "'"):
                typed = quote + (start.replace("\\", "") if quote == "'" or start == "\\~" and quote else start)
                with self.subTest(typed):
                    self.assertEqual(bash.run(f"parvela add --board {typed}\t"), ["add", "--board", name])
        self.assertEqual(bash.run("parvela add --board Ratio\\ 1:\t"), ["add", "--board", "Ratio 1:2=3"])
        self.assertFalse((self.session.home / "broken").exists())

    def test_fish(self):
        cases = {
            "parvela b": ["boards"],
            "parvela open ": ["TSK-1", "TSK-22"],
            "parvela add x --board ": ["Home", "Zoë's List"],
            "parvela add x --priority u": ["urgent"],
            "parvela due --j": ["--json"],
        }
        for line, offered in cases.items():
            with self.subTest(line):
                script = f"source {COMPLETIONS}/parvela.fish; complete -C '{line}'"
                run = self.session.run("fish", "--no-config", "-c", script, env=self.path)
                self.assertEqual((run.returncode, run.stderr), (0, ""))
                self.assertEqual(sorted(one.split("\t")[0] for one in run.stdout.splitlines()), offered)

    def test_zsh(self):
        cases = {
            "parvela ": ["add ", "boards ", "quick-add ", "doctor "],
            "parvela open ": ["TSK-1  Write brief", "TSK-22  Call"],
            "parvela add x --board ": ["Home  b1", "Zoë's List  b2"],
            "~/bin/parvela add x --board=": ["Home  b1", "Zoë's List  b2"],
            "parvela add x --priority ": ["low", "urgent"],
        }
        for line, offered in cases.items():
            with self.subTest(line):
                script = ZSH.format(folder=COMPLETIONS, line=line)
                run = self.session.run("zsh", "-f", "-c", script, env=self.path)
                for one in offered:
                    self.assertIn(one, run.stdout)

    def test_words_are_kept_for_a_while_and_go_with_the_link(self):
        self.assertEqual(self.parvela("words", "keys").stdout, "TSK-1\tWrite brief \nTSK-22\tCall\n")
        asked = len(self.service.requests)
        self.assertEqual(self.parvela("words", "boards").stdout, "Home\tb1\nZoë's List\tb2\n")
        self.assertEqual(len(self.service.requests), asked)
        kept = self.session.home / ".cache" / "parvela" / "words.json"
        self.assertEqual(kept.stat().st_mode & 0o777, 0o600)

        # Older words are better than none when the service is slow, and when the keyring is slow or locked.
        content = kept.read_text(encoding="utf-8")
        at = content.index('"at":') + 5
        kept.write_text(content[:at] + "1" + content[content.index(",", at):], encoding="utf-8")
        self.service.answers["GET", "/boards"] = lambda _: time.sleep(3) or (200, boards())
        self.assertEqual(self.parvela("words", "keys").stdout, "TSK-1\tWrite brief \nTSK-22\tCall\n")
        with self.silent_keyring():
            begin = time.monotonic()
            self.assertEqual(self.parvela("words", "boards").stdout, "Home\tb1\nZoë's List\tb2\n")
            self.assertLess(time.monotonic() - begin, 4)
        for damaged in ("", "[]", "{}", content[:50], '{"site": 1}'):
            kept.write_text(damaged, encoding="utf-8")
            self.assert_says(self.parvela("words", "keys"), 0)
        self.parvela("unlink")
        self.assertFalse(kept.exists())
        self.assert_says(self.parvela("words", "keys"), 0)

    def test_words_can_be_kept_however_many_and_long_they_are(self):
        self.service.answers["GET", "/boards"] = (200, boards("Home", "x" * 5_000_000, *(f"Board {n}" for n in range(5000))))
        self.service.answers["GET", "/tasks"] = (200, {"tasks": [task("TSK-1", "y" * 5_000_000)]})
        for _ in range(2):
            offered = self.parvela("words", "boards").stdout.splitlines()
            self.assertEqual((offered[:2], len(offered)), (["Home\tb1", "Board 0\tb3"], 2000))
        self.assertEqual(len(self.service.requests), 2)
