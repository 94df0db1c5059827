# pages.py: the pages that readers find in the repository, and where the project's files are for these tests.

import pathlib
import sys

PROJECT = pathlib.Path(__file__).resolve().parents[2]

sys.path.insert(0, str(PROJECT / "tests/cli"))
import kel_tool  # noqa: E402,F401, needs the path above; the tests take it from here


def manual_pages():
    """The manual's, relative to the project's folder."""
    return sorted(path.relative_to(PROJECT).as_posix() for path in (PROJECT / "docs").rglob("*.md"))


def all_pages():
    others = ["README.md", "ARCHITECTURE.md", "CONTRIBUTING.md", "CHANGELOG.md", "lua/README.md",
              "examples/thermostat/README.md"]
    return others + manual_pages()


def read_page(page):
    return (PROJECT / page).read_text(encoding="utf-8")
