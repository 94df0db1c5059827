# test_little_heap.py: where the board's heap is used up, scripts get Lua's error or the warning, and go on.

import unittest

from device_tool import ON_SMALL_HEAP, DeviceTest # shows where the next one is
from board_runs import FILL, REPEAT


class LittleHeap(DeviceTest):
    def run_script(self, text, *arguments):
        (self.folder / "script.lua").write_text(text, encoding="utf-8")
        status, out, err = self.run_tool(ON_SMALL_HEAP, "run", "thermostat", "--script", "script.lua", *arguments)
        return status, out.decode().partition("begin\n")[2], err.decode()

    def test_a_script_that_takes_all_fails_and_the_application_goes_on(self):
        cool = ("--event", "press:climate.mode.cool")
        status, out, err = self.run_script("print('begin') local list while true do list = {list} end", *cool)
        self.assertEqual((status, err), (1, "error: not enough memory\n"))
        self.assertTrue(out.endswith("\n  idle                     room 20.4 °C, target 21.0 °C, mode cool\n"), out)

    def test_a_script_that_keeps_all_fails_and_so_does_what_needs_memory_then(self):
        calls = ("--exec", "x={}") * 12
        status, out, err = self.run_script("print('begin') while true do list = {list} end", *calls)
        self.assertEqual((status, out), (1, ""))
        self.assertEqual(err, "error: not enough memory\n" * 13)

    def test_scripts_give_memory_back(self):
        status, out, err = self.run_script(FILL + """
            print("begin")
            for round = 1, 3 do
                local hoard = fill()
                hoard = nil
                collectgarbage()
                print(keldom.get_object("climate.target.warmer"))
            end
        """)
        self.assertEqual((status, out, err), (0, "climate.target.warmer\n" * 3, ""))

    def ways_to_fail(self, call):
        """What a call does when it finds no memory: Lua's error, or no result and a warning. The set of both."""
        status, out, err = self.run_script("local function CALL() " + call + " end " + REPEAT + "print(CALL() ~= nil)")
        self.assertEqual(status, 0, err)
        *outcomes, afterwards = out.splitlines()
        self.assertEqual(len(outcomes), 20)
        self.assertEqual(afterwards, "true")
        warnings = err.splitlines()
        self.assertEqual(outcomes.count("true\tnil"), len(warnings))
        return {outcome for outcome in outcomes if outcome != "true\tnil"} | set(warnings)

    def test_a_handle_without_memory(self):
        found = self.ways_to_fail("return (keldom.get_object('climate.target.warmer'))")
        self.assertEqual(found, {"false\tnot enough memory", "warning: Object has no qualified name"})

    def test_a_list_of_handles_without_memory(self):
        found = self.ways_to_fail("return (keldom.get_object('climate.target'):get_children())")
        self.assertEqual(found, {"false\tnot enough memory", "warning: Object has no qualified name"})


if __name__ == "__main__":
    unittest.main()
