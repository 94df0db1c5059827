# test_stack.py: what scripts take of the task's stack is bounded and known, and a stack that is too small is reported.

import re
import unittest

from freertos_tool import ON_FREERTOS, PROJECT, FreertosTest

PAGE = PROJECT / "docs/integration.md"
# "| `pcall.lua` | what | 72,944 | 15,344 |"
ROW = re.compile(r"^\| `(\w+\.lua)` \|.*\| ([\d,]+) \| ([\d,]+) \|$", re.MULTILINE)


def page_figures():
    """Script -> bytes of stack with the bounded Lua that this build has."""
    return {script: int(figure.replace(",", "")) for script, _, figure in ROW.findall(PAGE.read_text(encoding="utf-8"))}


class Stack(FreertosTest):
    def test_each_script_takes_what_the_page_says(self):
        pages = page_figures()
        scripts = sorted(path.name for path in (self.folder / "stack").glob("*.lua"))
        self.assertEqual(sorted(pages), scripts)
        for script in scripts:
            with self.subTest(script):
                status, _, err, figures = self.run_task("thermostat", "--script", "stack/" + script)
                self.assertEqual((status, err), (0, ""))
                # An interrupt may find the stack at its deepest and put the processor's registers there.
                self.assertAlmostEqual(figures["scripts"], pages[script], delta=300)

    def test_what_was_given_is_what_is_counted(self):
        *_, figures = self.run_task("thermostat", "--stack", "20000")
        self.assertEqual(figures["stack"], 20000)
        self.assertLess(figures["scripts"], 20000)
        self.assertLess(figures["reading"], 20000)

    def assertOverflow(self, *arguments):
        status, _, err = self.run_tool(ON_FREERTOS, *arguments)
        self.assertEqual((status, err), (3, '\nthe stack of the task "application" is too small\n'))

    def test_a_stack_too_small_for_the_application_is_reported(self):
        for stack in ("512", "1000", "4000", "6000"):
            with self.subTest(stack):
                self.assertOverflow("thermostat", "--stack", stack)

    def test_a_stack_too_small_for_a_script_is_reported(self):
        self.assertOverflow("thermostat", "--stack", "20000", "--script", "stack/gsub.lua")
        self.assertOverflow("thermostat", "--stack", "30000", "--script", "stack/pattern.lua")


if __name__ == "__main__":
    unittest.main()
