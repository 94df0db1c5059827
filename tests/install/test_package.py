# test_package.py: the Debian package that PACKAGE names: its description, its contents, and the tool in it.

import os
import pathlib
import re
import tempfile
import unittest

from installed_tree import files_below, listed_files, run

PACKAGE = pathlib.Path(os.environ["PACKAGE"])


class Package(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(prefix="kel-package-")
        cls.addClassCleanup(holder.cleanup)
        cls.root = pathlib.Path(holder.name).resolve()
        run("dpkg-deb", "--extract", PACKAGE, cls.root)
        cls.kel = cls.root / "usr/bin/kel"

    def field(self, name):
        return run("dpkg-deb", "--field", PACKAGE, name).stdout.rstrip("\n")

    def test_the_files_are_those_of_the_list(self):
        self.assertEqual(sorted(files_below(self.root)), sorted(f"usr/{name}" for name in listed_files(self.kel)))

    def test_all_are_roots_and_none_else_may_write(self):
        for line in run("dpkg-deb", "--contents", PACKAGE).stdout.splitlines():
            mode, owner = line.split()[:2]
            self.assertEqual(owner, "root/root", line)
            runs = mode.startswith("d") or line.endswith("/usr/bin/kel")
            self.assertEqual(mode[1:], "rwxr-xr-x" if runs else "rw-r--r--", line)

    def test_it_says_what_it_is(self):
        version = run(self.kel, "--version").stdout.removeprefix("kel ").strip()
        architecture = run("dpkg", "--print-architecture").stdout.strip()
        self.assertEqual(PACKAGE.name, f"luakeldom_{version}_{architecture}.deb")
        self.assertEqual((self.field("Package"), self.field("Version"), self.field("Architecture")),
                         ("luakeldom", version, architecture))
        self.assertEqual((self.field("Section"), self.field("Maintainer")),
                         ("devel", "luakeldom developers <luakeldom@localhost>"))
        self.assertRegex(self.field("Description"), r"\AA document-object model for the Lua scripts of an embedded GUI\n ")

    def test_it_depends_on_the_libraries_that_its_programs_load(self):
        depends = set(re.findall(r"(?:^|, )([^ ,]+)", self.field("Depends")))
        self.assertIn("liblua5.1-0", depends)
        dynamic = run("readelf", "--dynamic", self.kel, self.root / "usr/lib/luakeldom/luakeldom.so").stdout
        for library in set(re.findall(r"\(NEEDED\) +Shared library: \[(.*)\]", dynamic)):
            owners = set(re.findall("^([^:]+):", run("dpkg-query", "--search", f"*/{library}").stdout, re.MULTILINE))
            self.assertTrue(owners & depends, f"{library} is in {owners}, and none of them is among {depends}")
        self.assertEqual(self.field("Recommends"), "liblua5.1-0-dev, lua-busted")

    def test_the_tool_in_it_runs_the_example_in_it(self):
        result = run(self.kel, "run", self.root / "usr/share/luakeldom/examples/thermostat", "--strict", folder="/")
        self.assertIn("  heating                  room 20.4 °C, target 21.0 °C, mode heat\n", result.stdout)


if __name__ == "__main__":
    unittest.main()
