# test_reference.py: docs/reference.md is what the definitions say, and those say only what editors understand.

import contextlib
import io
import re
import subprocess
import unittest
import unittest.mock

from editor_files import DEFINITIONS, PROJECT, EditorTest, reference

GOOD = """\
---@meta

---A module.
---@class m
m = {}

---What it takes.
---@alias m.word string|2

---Does it.
---
---- Warning `too ...`, `no`: it is
---  long.
---
---```lua
---m.f(1)
---```
---@param a m.word? the first
---@param b? table<string, m.word[]>
---@param ... string more
---@return thing? made by it
---@overload fun(a: thing): thing
function m.f(a, b, ...) end

---A thing.
---@class thing
local thing = {}

---Goes.
---
---```lua
---m.f(1):go()
---```
function thing:go() end
"""

# What is changed, into what, and what the reader says of it, with the line.
MALFORMED = (
    ("---@meta", "", ':1: expected "---@meta"'),
    ("---@param a m.word?", "---@parm a m.word?", 'no tag "@parm"'),
    ("---@param a m.word?", "---@choice a m.word?", 'no tag "@choice"'),
    ("---@param a m.word? the first", "---@param a", ':18: found "a", expected NAME TYPE WORDS'),
    ("---@param a m.word?", "---@param c m.word?", '@param for "c, b, ...", but the function has "a, b, ..."'),
    ("---@param b? table<string, m.word[]>\n", "", '@param for "a, ...", but'),
    ("function m.f(a, b, ...)", "function m.f(a, b)", "but the function has"),
    ("a m.word? the first\n---@param b? ", "a? m.word the first\n---@param b ", "optional parameter stands before"),
    ("m.f(a, b, ...) end", "m.f(a, b, ...) return end", ":23: found \"function m.f"),
    ("table<string, m.word[]>", "table<string m.word[]>", 'found " m.word[]>", expected ", "'),
    ("table<string, m.word[]>", "table<string, m.word[>", 'found "[>", expected ">"'),
    ("table<string, m.word[]>", "table<string, >", 'found ">", expected a type'),
    ("string|2", "string|nosuch", 'm.word: no type "nosuch"'),
    ("---@param a m.word?", "---@param a m.wort?", 'm.f: no type "m.wort"'),
    ("@return thing? made", "@return thong? made", 'm.f: no type "thong"'),
    ("@return thing? made by it", "@return thing?", 'found "", expected TYPE NAME WORDS'),
    ("fun(a: thing): thing", "fun(a: thing): thong", 'm.f: no type "thong"'),
    ("fun(a: thing): thing", "fun(a): thing", 'found "a", expected NAME: TYPE'),
    ("fun(a: thing): thing", "function(a: thing)", "expected fun(NAME: TYPE, ...): TYPE"),
    ("---A thing.\n", "", "there is no description"),
    ("---@class thing\n", "---@class think\n", 'expected "@class thing" above'),
    ("---@class thing\n", "---@class thing: thong\n", 'thing: no type "thong"'),
    ("---@class thing\n", "---@class thing: thing\n", "thing inherits from itself"),
    ("---@class thing\nlocal thing = {}", "---@class m\nlocal m = {}", "class m is there already"),
    ("function thing:go", "function thing.go", "thing is no module"),
    ("function thing:go", "function thong:go", "thong is no class"),
    ("function thing:go() end", "function thing:go() end\n\n---Lost words.\n", "belongs to nothing"),
    ("function thing:go() end", "function thing:go() end\nfunction thing:went() end", "there is no description"),
    ("---- Warning `too ...`", "---- Warnung `too ...`", 'expected "- Warning `TEXT`: when."'),
    ("---  long.", "---  long", 'expected "- Warning `TEXT`: when."'),
    ("---```lua\n---m.f(1):go()\n---```\n", "", "does not end with an example"),
    ("---@alias m.word string|2", "---@alias m.word", "with a type or with choices"),
    ("---@alias m.word string|2", "---@alias m.word\n---| 2 - two", "expected | VALUE # WORDS"),
    ("---@param ... string more\n", "---@param ... string more\n---words\n", "words come first"),
)


class Definitions(EditorTest):
    def read(self, text):
        return reference.read_definitions([self.folder / self.write("definitions.lua", text)])

    def test_well_formed_ones_are_read(self):
        definitions = self.read(GOOD)
        (function,) = definitions.classes["m"].functions
        self.assertEqual(function.full_name, "m.f")
        self.assertEqual([(param.name, param.optional, param.text) for param in function.params],
                         [("a", False, "the first"), ("b", True, ""), ("...", False, "more")])
        self.assertEqual([(each.channel, each.texts, each.reason) for each in function.failures],
                         [("Warning", ["too ...", "no"], "it is long.")])
        self.assertEqual(function.example, "m.f(1)")
        self.assertEqual([function.name for function in definitions.classes["thing"].functions], ["go"])

    def test_malformed_ones_are_refused(self):
        for old, new, expected in MALFORMED:
            with self.subTest(new):
                self.assertEqual(GOOD.count(old), 1)
                text = GOOD.replace(old, new)
                with self.assertRaises(reference.Malformed) as raised:
                    self.read(text)
                self.assertIn(expected, str(raised.exception))


class Page(EditorTest):
    def check(self, *arguments):
        command = [PROJECT / "tools/reference", *arguments]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def test_it_is_what_the_definitions_say(self):
        done = self.check("--check")
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_one_that_differs_fails(self):
        page = self.folder / self.write("reference.md", reference.PAGE.read_text(encoding="utf-8") + "more\n")
        said = io.StringIO()
        with unittest.mock.patch.object(reference, "PAGE", page), contextlib.redirect_stderr(said):
            with unittest.mock.patch("sys.argv", ["reference", "--check"]):
                self.assertEqual(reference.main(), 1)
        self.assertEqual(said.getvalue(), f"{page} is not what the definitions say: run tools/reference\n")

    def test_a_change_of_a_definition_changes_it(self):
        paths = []
        for path in DEFINITIONS[:2]:
            text = path.read_text(encoding="utf-8").replace("The upper edge, as an anchor.", "The top, as an anchor.")
            paths.append(self.folder / self.write(path.name, text))
        changed = reference.page_of(reference.read_definitions(paths))
        committed = reference.PAGE.read_text(encoding="utf-8")
        self.assertEqual(committed.replace("The upper edge, as an anchor.", "The top, as an anchor."), changed)
        self.assertNotEqual(committed, changed)

    def test_each_link_leads_to_a_heading_and_each_heading_is_one(self):
        page = reference.PAGE.read_text(encoding="utf-8")
        headings = [reference.anchor(text) for text in re.findall(r"^#+ `(.*)`$", page, re.MULTILINE)]
        self.assertEqual(len(headings), len(set(headings)))
        links = set(re.findall(r"\]\(#(.*?)\)", page))
        self.assertEqual(links - set(headings), set())
        self.assertGreater(len(links), 80)


if __name__ == "__main__":
    unittest.main()
