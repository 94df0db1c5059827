# test_integration_page.py: docs/integration.md lists the symbols that the plug-in is held against, and its samples compile.

import os
import subprocess
import tempfile
import unittest

import check_symbols
from page_samples import PROJECT, lists, read_page, samples

STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Werror", "-fsyntax-only"]


def differences(page):
    """What a reader of the page would take for needed and is not, or the other way round."""
    found = lists(page)
    expected = {name: getattr(check_symbols, name) for name in ("HOST", "LUA", "C_LIBRARY")}
    return [
        f"{name}: {symbol}"
        for name, symbols in expected.items()
        for symbol in sorted(set(symbols) ^ set(found.get(name, [])))
    ]


class Lists(unittest.TestCase):
    def test_the_page_lists_what_the_plug_in_may_import(self):
        self.assertEqual(differences(read_page()), [])

    def test_a_symbol_too_few_or_too_many_is_found(self):
        page = read_page()
        self.assertEqual(differences(page.replace("lua_settop ", "", 1)), ["LUA: lua_settop"])
        self.assertEqual(differences(page.replace("memcpy memset\n", "memcpy memset puts\n", 1)), ["C_LIBRARY: puts"])
        self.assertEqual(len(differences(page.replace("<!-- list HOST -->", "", 1))), len(check_symbols.HOST))


class Samples(unittest.TestCase):
    def compile(self, compiler, suffix, text):
        with tempfile.TemporaryDirectory() as folder:
            source = os.path.join(folder, "sample" + suffix)
            with open(source, "w", encoding="utf-8") as file:
                file.write(text)
            lua = [f"-isystem{folder}" for folder in os.environ["LUA_INCLUDE"].split(":") if folder]
            done = subprocess.run(
                [*compiler, *STRICT, f"-I{PROJECT}/include", *lua, source], capture_output=True, text=True, check=False
            )
        return done.returncode, done.stderr

    def test_they_compile(self):
        c_samples = [text for text in samples(read_page(), "c") if "FreeRTOS.h" not in text]
        self.assertEqual(len(c_samples), 1)
        for text in c_samples:
            self.assertEqual(self.compile([os.environ["CC"], "-std=c99"], ".c", text), (0, ""))
        (text,) = samples(read_page(), "cpp")
        self.assertEqual(self.compile([os.environ["CXX"], "-std=c++20"], ".cpp", text), (0, ""))

    def test_one_that_is_wrong_does_not_compile(self):
        (text,) = [text for text in samples(read_page(), "c") if "FreeRTOS.h" not in text]
        status, err = self.compile([os.environ["CC"], "-std=c99"], ".c", text.replace("version.major", "version.first"))
        self.assertNotEqual(status, 0)
        self.assertIn("first", err)


if __name__ == "__main__":
    unittest.main()
