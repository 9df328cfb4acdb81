"""Where the programs under test stand."""

import os
import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent.parent


def build_tree():
    """The build tree whose programs are run: $PARVELA_BUILD, or that of the preset "dev"."""
    return pathlib.Path(os.environ.get("PARVELA_BUILD", ROOT / "build" / "dev"))


def path(name):
    return build_tree() / "bin" / name
