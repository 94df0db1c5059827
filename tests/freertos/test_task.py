# test_task.py: in a task of FreeRTOS an application does what it does on the desktop, and the figures are of that.

import unittest

from freertos_tool import ON_DESKTOP, ON_FREERTOS, PROJECT, FreertosTest # shows where the next one is
from board_runs import demo_events


class Task(FreertosTest):
    def test_the_demo_prints_what_it_prints_on_the_desktop(self):
        status, out, err, figures = self.run_task("thermostat", *demo_events())
        self.assertEqual((status, out, err), self.run_tool(ON_DESKTOP, "thermostat", *demo_events()))
        self.assertIn("Press on climate.target.warmer\n", out)
        self.assertEqual(figures["refused"], 0)

    def test_scripts_fail_as_on_the_desktop(self):
        script = self.write("wrong.lua", "keldom.get_object('nowhere') error('from the depth')")
        status, out, err, _ = self.run_task("thermostat", "--script", script)
        self.assertEqual((status, out, err), self.run_tool(ON_DESKTOP, "thermostat", "--script", script))
        self.assertEqual(status, 1)
        self.assertIn("warning: No such object in DOM\n", err)

    def test_scripts_take_from_the_kernels_heap(self):
        keep = self.write("keep.lua", "kept = string.rep('x', 200000)")
        *_, plain = self.run_task("thermostat")
        *_, keeping = self.run_task("thermostat", "--script", keep)
        self.assertGreater(keeping["heap_used"], 250000)
        # The text is put together in a buffer, which is in use meanwhile.
        self.assertGreater(keeping["heap_used"], plain["heap_used"] + 100000)
        self.assertLess(keeping["heap_used"], keeping["heap"])

    def test_the_kernel_schedules_another_task_meanwhile(self):
        busy = self.write("busy.lua", "for i = 1, 3000000 do end")
        *_, figures = self.run_task("thermostat", "--script", busy)
        self.assertGreater(figures["ticks"], 20)
        # A tick may pass while the other task is late, and one may come before the first is counted.
        self.assertGreater(figures["beats"], figures["ticks"] // 2)
        self.assertLessEqual(figures["beats"], figures["ticks"] + figures["ticks"] // 10 + 1)

    def test_a_command_line_that_is_wrong_is_refused(self):
        for arguments, what in [
            ((), "no application is named"),
            (("thermostat", "more"), 'unexpected "more"'),
            (("thermostat", "--loud"), 'unexpected "--loud"'),
            (("thermostat", "--loud", "1"), 'unexpected "--loud 1"'),
            (("thermostat", "--event"), 'unexpected "--event"'),
            (("thermostat", "--stack", "8k"), 'unexpected "--stack 8k"'),
            (("thermostat", "--stack", "511"), 'unexpected "--stack 511"'),
            (("thermostat", "--heap", "-1"), 'unexpected "--heap -1"'),
        ]:
            with self.subTest(arguments):
                status, out, err = self.run_tool(ON_FREERTOS, *arguments)
                self.assertEqual((status, out), (2, ""))
                self.assertTrue(err.startswith(f"error: {what}; expected: APP [--script FILE]"), err)

    def test_an_application_that_is_wrong_is_refused(self):
        for path in ("nowhere", "bad.json"):
            self.write("bad.json", (PROJECT / "tests/host/bad_applications/shape_texts.json").read_text())
            with self.subTest(path):
                status, out, err, _ = self.run_task(path)
                desktop = self.run_tool(ON_DESKTOP, path)
                self.assertEqual((status, out), (2, ""))
                self.assertEqual(err, desktop[2])


if __name__ == "__main__":
    unittest.main()
