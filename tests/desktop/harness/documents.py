"""The commands that the documents give their readers to type.

As a program it prints those of one section, one a line, for scripts that run them:

  PYTHONPATH=tests/desktop python3 -m harness.documents README.md Install
"""

import re
import sys
import typing

from .programs import ROOT

_HEADING_OR_BLOCK = re.compile(r"^## (?P<heading>[^\n]*)$|^(?P<indent> *)```(?P<language>\w*)\n(?P<text>.*?)^(?P=indent)```$",
                               re.MULTILINE | re.DOTALL)


class Block(typing.NamedTuple):
    """What stands between a pair of fences."""

    section: str
    language: str
    text: str


def documents():
    """Every document of the project, as a path from its root."""
    return sorted(str(path.relative_to(ROOT)) for folder in (ROOT, ROOT / "docs") for path in folder.glob("*.md"))


def read(document):
    return (ROOT / document).read_text(encoding="utf-8")


def blocks(document):
    section = ""
    for match in _HEADING_OR_BLOCK.finditer(read(document)):
        if match["heading"]:
            section = match["heading"]
        else:
            yield Block(section, match["language"], match["text"])


def prose(document):
    """The document without its blocks."""
    return _HEADING_OR_BLOCK.sub("", read(document))


def commands(document, section=None):
    """The commands of a document or of one of its sections, without comments; one that goes on in the next line is one."""
    found = []
    for block in blocks(document):
        if block.language == "sh" and section in (None, block.section):
            lines = re.sub(r"\\\n *", "", block.text).splitlines()
            found += [command for line in lines if (command := re.sub(r"(^|\s+)# .*", "", line.strip()))]
    if not found:
        raise LookupError(f"{document} has no commands" + (f" in the section {section}" if section else ""))
    return found


def sections(document):
    """The sections that have commands, in order."""
    return list(dict.fromkeys(block.section for block in blocks(document) if block.language == "sh"))


if __name__ == "__main__":
    print("\n".join(commands(sys.argv[1], sys.argv[2])))
