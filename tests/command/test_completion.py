"""What shells offer to complete."""

import os
import pathlib
import time

from harness import programs
from support import CommandCase, boards, task

COMPLETIONS = programs.ROOT / "packaging" / "completions"

BASH = """
source {file}
COMP_WORDS=({words}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
_parvela; printf '%s\\n' "${{COMPREPLY[@]}}"
"""

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

    def bash(self, words):
        script = BASH.format(file=COMPLETIONS / "parvela.bash", words=words)
        run = self.session.run("bash", "--norc", "-c", script, env=self.path)
        self.assertEqual((run.returncode, run.stderr), (0, ""), words)
        return run.stdout.split("\n")[:-1] if run.stdout.strip() else []

    def test_bash(self):
        cases = {
            "parvela b": ["boards"],
            "parvela --loc": ["--local"],
            "parvela open ''": ["TSK-1", "TSK-22"],
            "parvela complete TSK-2": ["TSK-22"],
            "parvela complete tsk-2": ["TSK-22"],
            "parvela add x --board ''": ["Home", "Zoë's List"],
            "parvela add x --board zo": ["Zoë's List"],
            "parvela add x --board '\"Zoë'": ["Zoë's List"],
            "parvela add x --priority u": ["urgent"],
            "parvela add x --due to": ["today", "tomorrow"],
            "parvela add wri": [],
            "parvela due --j": ["--json"],
            "parvela doctor -": ["--json", "--help"],
        }
        for words, offered in cases.items():
            with self.subTest(words):
                self.assertEqual(self.bash(words), offered)

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

        # Older words are better than none when the service is slow.
        content = kept.read_text(encoding="utf-8")
        at = content.index('"at":') + 5
        kept.write_text(content[:at] + "1" + content[content.index(",", at):], encoding="utf-8")
        self.service.answers["GET", "/boards"] = lambda _: time.sleep(3) or (200, boards())
        self.assertEqual(self.parvela("words", "keys").stdout, "TSK-1\tWrite brief \nTSK-22\tCall\n")
        for damaged in ("", "[]", "{}", content[:50], '{"site": 1}'):
            kept.write_text(damaged, encoding="utf-8")
            self.assert_says(self.parvela("words", "keys"), 0)
        self.parvela("unlink")
        self.assertFalse(kept.exists())
        self.assert_says(self.parvela("words", "keys"), 0)

    def test_the_service_has_no_say_in_what_the_shell_does(self):
        self.service.answers["GET", "/boards"] = (200, boards("$(touch broken)", "`touch broken`", "x'; touch broken; '"))
        self.assertEqual(len(self.bash("parvela add x --board ''")), 3)
        self.assertFalse((pathlib.Path.cwd() / "broken").exists())
