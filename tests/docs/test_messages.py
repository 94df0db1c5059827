# test_messages.py: docs/messages.md has each text that the plug-in says, in its channel, and no other; and what it has
# of the host's texts is either seen in a sample or stands in the host's or the tool's sources.

import re
import unittest

import samples
from pages import PROJECT, manual_pages, read_page

PLUGIN = sorted((PROJECT / "src/plugins/kel/luakeldom").glob("*.cpp"))
OTHERS = sorted((PROJECT / "src/host").glob("*.cpp")) + sorted((PROJECT / "src/cli").rglob("*.cpp"))
CHANNELS = {"warn": "Warning", "kel_app_log": "Warning", "warn_argument": "Warning", "raise_error": "Error",
            "kl_lua_error": "Error", "raise_argument_error": "Error"}
PASSED_ON = {"%s", "Argument %d must be %s", "This function expects %s%d arguments (self, %s)"}
LITERAL = r'"((?:[^"\\]|\\.)*)"'


class Source:
    """Sources without comments and compile-time checks; each literal is replaced by its number, as `#7#`."""

    def __init__(self, paths):
        text = "\n".join(path.read_text(encoding="utf-8") for path in paths)
        text = re.sub(r"//.*|static_assert\([^;]*;|#include .*", "", text)
        self.literals, self.used = [], set()
        self.text = re.sub(LITERAL, self.keep, text)
        constants = re.findall(r"const(?:expr)? char (\w+)\[\] = #(\d+)#", self.text)
        self.constants = {name: int(number) for name, number in constants}

    def keep(self, match):
        self.literals.append(match[1])
        return f"#{len(self.literals) - 1}#"

    def value(self, argument):
        """The text that an argument stands for, or None where only the running program knows."""
        number = re.fullmatch(r"#(\d+)#", argument)
        index = int(number[1]) if number else self.constants.get(argument)
        if index is None:
            return None
        self.used.add(index)
        return self.literals[index]


def texts_of_call(source, name, arguments):
    values = [source.value(argument) for argument in arguments]
    if name == "warn_argument" and values[2]:
        return [f"Argument {arguments[1]} must be {values[2]}"]
    if name == "raise_argument_error" and values[2]:
        return [f"Argument ... must be {values[2]}"]
    if name in ("warn", "raise_error") and values[1]:
        return [values[1]]
    if name in ("kel_app_log", "kl_lua_error"):
        start = 2 if name == "kel_app_log" else 1
        if values[start] not in PASSED_ON:
            return [values[start] % tuple(values[start + 1:])]
    return []


def plugin_texts(source):
    """{(channel, text)}, and the literals that look like texts and belong to no known call."""
    found = set()
    for name, inside in re.findall(r"\b(" + "|".join(CHANNELS) + r")\(((?:[^()]|\([^()]*\))*)\)", source.text):
        arguments = [argument.strip() for argument in inside.split(",")]
        found |= {(CHANNELS[name], text) for text in texts_of_call(source, name, arguments)}
    for word, count, number in re.findall(r"(exactly|at_least)\((\d)\),\s+(#\d+#)", source.text):
        least = "at least " if word == "at_least" else ""
        found.add(("Warning", f"This function expects {least}{count} arguments (self, {source.value(number)})"))
    for number in re.findall(r"constexpr axis_t \w+\{.*?(#\d+#)\}", source.text):
        found.add(("Error", f"Argument ... must be {source.value(number)}"))
    for number in re.findall(r"says_at_least \? (#\d+#) :", source.text):
        source.value(number)  # "at least ", as above
    left = [text for index, text in enumerate(source.literals) if " " in text and index not in source.used]
    return found, left


def section(page, title):
    return re.search(rf"^## {title}\n(.*?)(?=^## |\Z)", page, re.MULTILINE | re.DOTALL)[1]


def documented(page):
    return {
        (channel, text)
        for channel in ("Warning", "Error")
        for text in re.findall(r"^(?:### |\| )`(.+?)`", section(page, channel + "s of keldom"), re.MULTILINE)
    }


def differences(page):
    return documented(page) ^ plugin_texts(Source(PLUGIN))[0]


def host_texts(page):
    rest = page[page.index("## Warnings of the host"):]
    return re.findall(r"^\| `(.+?)` \|", rest, re.MULTILINE)


def seen_lines():
    """What the samples of all pages show, each line without what says its kind or place."""
    blocks = [block.text for page in manual_pages() for block in samples.blocks_of(read_page(page))]
    return re.findall(r"(?:warning:|error:|note:|app\.json:|--> false) +(?:\$\S+: |\S+\.lua:\d+: )?(.*)", "\n".join(blocks))


def is_known(text, lines, literals):
    fragments = re.split(r"\.\.\.", text)
    pattern = ".*".join(map(re.escape, fragments))
    return any(re.fullmatch(pattern, line) for line in lines) or all(
        fragment.strip(' "#()') in literals for fragment in fragments)


class Messages(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.page = read_page("docs/messages.md")

    def test_it_has_each_text_of_the_plug_in_and_no_other(self):
        self.assertEqual(differences(self.page), set())

    def test_no_text_of_the_plug_in_is_overlooked(self):
        found, left = plugin_texts(Source(PLUGIN))
        self.assertEqual(left, [])
        self.assertGreater(len(found), 30)

    def test_a_missing_text_is_found_whichever_it_is(self):
        for channel, text in documented(self.page):
            with self.subTest(text):
                before, title, after = self.page.partition(f"## {channel}s of keldom\n")
                after = re.sub(rf"^(### |\| )`{re.escape(text)}`", r"\1", after, count=1, flags=re.MULTILINE)
                self.assertEqual(differences(before + title + after), {(channel, text)})

    def test_a_text_in_the_wrong_channel_is_found(self):
        page = self.page.replace("## Warnings of keldom", "## X").replace("## Errors of keldom", "## Warnings of keldom")
        page = page.replace("## X", "## Errors of keldom")
        self.assertGreater(len(differences(page)), 30)

    def test_a_new_text_in_the_code_is_found(self):
        source = Source(PLUGIN)
        source.literals.append("Something new")
        number = len(source.literals) - 1
        source.text += f"warn(app, #{number}#); raise_error(L, #{number}#);"
        self.assertEqual(plugin_texts(source)[0] - documented(self.page),
                         {("Warning", "Something new"), ("Error", "Something new")})

    def test_texts_of_host_and_tool_are_seen_in_samples_or_sources(self):
        lines, literals = seen_lines(), "\n".join(Source(OTHERS).literals).replace('\\"', '"')
        texts = host_texts(self.page)
        self.assertGreater(len(texts), 25)
        self.assertEqual([text for text in texts if not is_known(text, lines, literals)], [])
        self.assertFalse(is_known("Cannot paint ... blue", lines, literals))


if __name__ == "__main__":
    unittest.main()
