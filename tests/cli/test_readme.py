# test_readme.py: the README shows what the tool prints, and scripts as they are.

import re
import shlex
import subprocess
import unittest

import kel_tool

README = (kel_tool.PROJECT / "README.md").read_text(encoding="utf-8")
CONSOLE = re.findall(r"```console\n\$ kel (.*)\n((?:.*\n)*?)```", README)


class Readme(kel_tool.ToolTest):
    def setUp(self):
        super().setUp()
        self.folder = kel_tool.PROJECT

    def test_console_blocks_end_as_the_commands_end(self):
        self.assertEqual(len(CONSOLE), 2)
        for command, shown in CONSOLE:
            with self.subTest(command):
                result = self.kel(*shlex.split(command))
                self.assertEqual((result.status, result.err), (0, ""))
                self.assertTrue(shown and result.out.endswith(shown), result.out)

    def test_the_demo_is_shown_whole(self):
        command, shown = CONSOLE[-1]
        self.assertEqual(self.kel(*shlex.split(command)).out, shown)

    def test_the_demo_is_what_make_demo_runs(self):
        dry_run = subprocess.run(["make", "--dry-run", "demo"], cwd=kel_tool.PROJECT, capture_output=True, check=True)
        self.assertIn(f"bin/kel {CONSOLE[-1][0]}\n", dry_run.stdout.decode())

    def test_lua_blocks_are_the_scripts_that_they_show(self):
        shown = re.findall(r"```lua\n((?:.*\n)*?)```", README)
        script = kel_tool.PROJECT / "examples/thermostat/extra/look_around.lua"
        self.assertEqual(shown, [script.read_text(encoding="utf-8")])


if __name__ == "__main__":
    unittest.main()
