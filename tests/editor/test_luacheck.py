# test_luacheck.py: luacheck with the standard finds what scripts misspell, and what the sandbox has closed.

import subprocess
import unittest

from editor_files import PROJECT, STANDARD, EditorTest


class Luacheck(EditorTest):
    def luacheck(self, *arguments):
        command = ["luacheck", "--no-color", "--codes", *map(str, arguments)]
        done = subprocess.run(command, cwd=self.folder, capture_output=True, text=True, check=False)
        return [line.split(": ", 1)[1] for line in done.stdout.splitlines() if ": (" in line]

    def check(self, code):
        self.write(".luacheckrc", f'std = dofile("{STANDARD}")\n')
        return self.luacheck(self.write("script.lua", code + "\n"))

    def test_what_is_there_passes(self):
        self.assertEqual(self.check('keldom.get_table("week.plan"):set_x(1, kel.CENTER) print(os.time())'), [])

    def test_misspelt_names_are_reported(self):
        self.assertEqual(self.check('keldom.get_objekt("week.plan")'),
                         ["(W143) accessing undefined field 'get_objekt' of global 'keldom'"])
        self.assertEqual(self.check("print(kel.MIDDLE)"), ["(W143) accessing undefined field 'MIDDLE' of global 'kel'"])

    def test_writing_to_the_modules_is_reported(self):
        self.assertEqual(self.check("keldom.get_object = nil"),
                         ["(W122) setting read-only field 'get_object' of global 'keldom'"])

    def test_what_the_sandbox_has_closed_is_reported(self):
        self.assertEqual(self.check('os.exit() io.write("x") require("x")'),
                         ["(W143) accessing undefined field 'exit' of global 'os'",
                          "(W113) accessing undefined variable 'io'",
                          "(W113) accessing undefined variable 'require'"])

    def test_the_projects_own_settings_use_it(self):
        self.folder = PROJECT
        self.assertEqual(self.luacheck("lua", "examples"), [])
        done = subprocess.run(["luacheck", "--no-color", "--codes", "-"], input='keldom.get_objekt("x")\n', cwd=PROJECT,
                              capture_output=True, text=True, check=False)
        self.assertIn("(W143) accessing undefined field 'get_objekt' of global 'keldom'", done.stdout)


if __name__ == "__main__":
    unittest.main()
