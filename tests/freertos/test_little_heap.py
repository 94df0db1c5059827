# test_little_heap.py: where the kernel's heap is used up, scripts get Lua's error or the warning, and all else goes on.

import unittest

from freertos_tool import ON_FREERTOS, FreertosTest

# fill() takes all memory, in ever smaller pieces, and gives it as a list, the smallest pieces first.
FILL = """
local function fill()
    local hoard, count = false, 0
    local function keep(size)
        hoard = {hoard, string.rep(count .. " ", size)}
        count = count + 1
    end
    local function link()
        hoard = {hoard}
        count = count + 1
    end
    for _, size in ipairs({10000, 1000, 100, 1}) do
        while pcall(keep, size) do end
    end
    repeat
        collectgarbage()
        local before = count
        while pcall(link) do end
    until count == before
    return hoard
end
"""

# Asks for a handle until there is none, with a little more room each time.
REPEAT = FILL + """
print("begin")
for room = 0, 19 do
    local hoard = fill()
    for _ = 1, room do hoard = hoard[1] end
    collectgarbage()
    local fine, result
    repeat fine, result = pcall(keldom.get_object, "climate.target.warmer") until not fine or not result
    hoard = nil
    collectgarbage()
    print(fine, result)
end
print(keldom.get_object("climate.target.warmer"))
"""

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
        script = self.write("script.lua", REPEAT)
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
