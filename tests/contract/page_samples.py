# page_samples.py: reads docs/integration.md: its lists of symbols, and its samples of code.

import pathlib
import re

PROJECT = pathlib.Path(__file__).resolve().parents[2]
PAGE = PROJECT / "docs/integration.md"

LIST = re.compile(r"^<!-- list (\w+) -->\n```\n(.*?)^```$", re.MULTILINE | re.DOTALL)
SAMPLE = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def read_page():
    return PAGE.read_text(encoding="utf-8")


def lists(page):
    """Name of the list -> its symbols, in the page's order."""
    return {name: text.split() for name, text in LIST.findall(page)}


def samples(page, language):
    return [text for found, text in SAMPLE.findall(page) if found == language]
