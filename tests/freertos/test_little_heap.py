# test_little_heap.py: where the kernel's heap is used up, scripts get Lua's error or the warning, and all else goes on.

import unittest

from freertos_tool import ON_FREERTOS, FreertosTest # shows where the next one is
from board_runs import REPEAT

CALL = "local function CALL() return (keldom.get_object('climate.target.warmer')) end"
WARNING = "warning: Object has no qualified name"


class LittleHeap(FreertosTest):
    def test_a_script_that_takes_all_fails_and_the_application_goes_on(self):
        script = self.write("script.lua", "local list while true do list = {list} end")
        status, out, err, figures = self.run_task(
            "thermostat", "--script", script, "--event", "press:climate.mode.cool"
        )
        self.assertEqual((status, err), (1, "error: not enough memory\n"))
        self.assertTrue(out.endswith("\n  idle                     room 20.4 °C, target 21.0 °C, mode cool\n"), out)
        self.assertGreater(figures["refused"], 0)

    def test_a_handle_without_memory_is_an_error_or_a_warning(self):
        script = self.write("script.lua", CALL + REPEAT + "print(CALL())")
        status, out, err, _ = self.run_task("thermostat", "--script", script)
        self.assertEqual(status, 0, err)
        *outcomes, afterwards = out.partition("begin\n")[2].splitlines()
        self.assertEqual(afterwards, "climate.target.warmer")
        self.assertEqual(len(outcomes), 20)
        self.assertEqual(set(outcomes), {"true\tnil", "false\tnot enough memory"})
        self.assertEqual(err.splitlines(), [WARNING] * outcomes.count("true\tnil"))

    def test_a_heap_too_small_for_the_application_is_said(self):
        status, out, err, figures = self.run_task("thermostat", "--heap", "200000")
        self.assertEqual((status, out, err), (4, "", "error: not enough memory to run the application\n"))
        self.assertGreater(figures["refused"], 0)

    def test_a_heap_too_small_for_the_task_is_said(self):
        for size in (("--heap", "50000"), ("--stack", "1000000"), ("--stack", "4294967295")):
            with self.subTest(size):
                outcome = self.run_tool(ON_FREERTOS, "thermostat", *size)
                self.assertEqual(outcome, (4, "", "error: there is no memory for the application's task\n"))

    def test_wherever_memory_ends_it_is_said(self):
        seen = set()
        for heap in range(100000, 430000, 11003):
            with self.subTest(heap):
                status, _, err, _ = self.run_task("thermostat", "--heap", str(heap))
                seen.add(status)
                if status == 0:
                    self.assertEqual(err, "")
                else:
                    self.assertIn(status, (1, 4))
                    self.assertIn("not enough memory", err)
        self.assertLessEqual({0, 4}, seen)


if __name__ == "__main__":
    unittest.main()
