# test_same_output.py: on the board the tool prints what it prints on the desktop.

import shutil
import unittest

from device_tool import ON_DESKTOP, ON_DEVICE, PROJECT, DeviceTest # shows where the next one is
from board_runs import demo_events


class SameOutput(DeviceTest):
    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")
        return name

    def test_the_demo(self):
        _, out, err = self.assertSame(0, "run", "thermostat", *demo_events())
        self.assertIn(b"Press on climate.target.warmer\n", out)
        self.assertEqual(err, b"")

    def test_the_extra_scripts(self):
        for script in sorted((PROJECT / "examples/thermostat/extra").glob("*.lua")):
            with self.subTest(script.name):
                self.assertSame(0, "run", "thermostat", "--script", "thermostat/extra/" + script.name)

    def test_warnings_and_errors_of_scripts(self):
        script = self.write("wrong.lua", """
            local handle = keldom.get_object("climate.target.warmer")
            keldom.get_object("nowhere")
            handle:set_x("wide")
            handle:set_bounds(1, 2)
            print(pcall(handle.get_x))
            print(handle:get_value("no_such_variable"))
            local function deep() error("from the depth") end
            deep()
        """)
        _, _, err = self.assertSame(1, "run", "thermostat", "--script", script)
        self.assertIn(b"stack traceback:", err)

    def test_numbers(self):
        script = self.write("numbers.lua", """
            for _, number in ipairs({0, -0.0, 0.1, 1 / 3, 1e15, 1e16, 123456789012, 2^31, 2^53, 1e300, 5e-324,
                                     1 / 0, -1 / 0}) do
                print(number, ("%g %.17g %d"):format(number, number, math.min(math.max(number, -2^31), 2^31 - 1)))
            end
            print(7 % -3, -7 % 3, 2^0.5, math.sin(1), math.exp(1), tonumber("0x7fffffff"), tonumber("1e2"))
            for _, number in ipairs({32767, -32768, 3.99, -3.99}) do
                keldom.get_object("climate.target.warmer"):set_x(number)
                print(keldom.get_object("climate.target.warmer"):get_x())
            end
        """)
        self.assertSame(0, "run", "thermostat", "--strict", "--script", script)

    def test_numbers_whose_width_matters(self):
        """Lua's integers have the width of a pointer, and C does not say what becomes of a number that is out of range."""
        script = self.write("widths.lua", """
            print(0 / 0)
            print(keldom.get_object("climate"):key(0 / 0))
            print(("%x"):format(-1), ("%d"):format(2^40), ("%d"):format(-2^40), tonumber("-1", 16))
        """)
        arguments = ("run", "thermostat", "--script", script)
        for tool, expected in (
            (ON_DESKTOP, "-nan\nclimate.-nan\nffffffffffffffff\t1099511627776\t-1099511627776\t1.844674407371e+19\n"),
            (ON_DEVICE, "nan\nclimate.nan\n0\t2147483647\t-2147483648\t4294967295\n"),
        ):
            status, out, err = self.run_tool(tool, *arguments)
            self.assertEqual((status, err), (0, b""))
            self.assertEqual(out.decode()[-len(expected):], expected)

    def test_help_and_version(self):
        for arguments in (["--help"], ["run", "--help"], ["check", "--help"], ["--version"]):
            with self.subTest(arguments):
                self.assertSame(0, *arguments)

    def test_bad_usage(self):
        for arguments in ([], ["walk"], ["run"], ["run", "thermostat", "--log-level", "loud"],
                          ["run", "thermostat", "--event", "press:"], ["run", "nowhere"],
                          ["run", "thermostat", "--script", "no.lua"],
                          ["run", "thermostat", "--event", "press:climate.target.warmr"]):
            with self.subTest(arguments):
                self.assertSame(2, *arguments)

    def test_checking_applications(self):
        self.assertSame(0, "check", "thermostat")
        self.assertSame(0, "check", "thermostat/app.json")
        bad = PROJECT / "tests/host/bad_applications"
        files = sorted(bad.glob("*.json"))
        self.assertTrue(files)
        for file in files:
            with self.subTest(file.name):
                shutil.copy(file, self.folder)
                self.assertSame(2, "check", file.name)


if __name__ == "__main__":
    unittest.main()
