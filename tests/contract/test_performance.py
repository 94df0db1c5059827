# test_performance.py: each check of tools/performance can fail, and what was written is what is checked.
#
#     python3 -B -m unittest tests/contract/test_performance.py

import contextlib
import importlib.machinery
import importlib.util
import io
import json
import pathlib
import sys
import tempfile
import unittest
import unittest.mock
import xml.etree.ElementTree

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))
loader = importlib.machinery.SourceFileLoader("performance", str(TOOLS / "performance"))
performance = importlib.util.module_from_spec(importlib.util.spec_from_loader("performance", loader))
loader.exec_module(performance)

SIZES = [(controls, depth) for controls in (10, 1000) for depth in (1, 3)]


def figures(look_up=1000, key=100, sizes=SIZES):
    """A look-up that grows with the model, and a key that does not: total and floor by operation and size."""
    of_look_up = {size: [5000 + look_up * size[0], 5000] for size in sizes}
    return {"look-up": of_look_up, "key, 1": {performance.STANDARD: [2000 + key, 2000]}}


def lines(costs):
    """What the counter prints."""
    found = [{"loop": 30, "counted": 30}, {"heap": 1000, "heap_size": 4000, "controls": 1000, "depth": 3}]
    for name, of_size in costs.items():
        for (controls, depth), (total, floor) in of_size.items():
            size = {"controls": controls, "depth": depth}
            found.append({"operation": name, **size, "total": total, "floor": floor})
    return "\n".join(map(json.dumps, found))


class Performance(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.page = pathlib.Path(folder.name) / "performance.md"
        self.picture = pathlib.Path(folder.name) / "performance.svg"

    def run_main(self, argument, costs=None, text=None, error=None):
        printed = lines(costs or figures()) if text is None else text
        counted = unittest.mock.Mock(return_value=printed, side_effect=error)
        said = io.StringIO()
        with (
            unittest.mock.patch.multiple(performance, run_counter=counted, PAGE=self.page, PICTURE=self.picture),
            unittest.mock.patch.object(sys, "argv", ["performance", argument]),
            contextlib.redirect_stdout(said),
            contextlib.redirect_stderr(said),
        ):
            status = performance.main()
        return status, said.getvalue().splitlines()

    def write(self, costs=None):
        self.assertEqual(self.run_main("--write", costs), (0, []))

    def check(self, **changed):
        return self.run_main("--check", figures(**changed))


class Check(Performance):
    def setUp(self):
        super().setUp()
        self.write()

    def misses(self, *faults, **changed):
        status, said = self.check(**changed)
        self.assertEqual(said[:-1], [f"MISSED {fault}" for fault in faults])
        self.assertEqual(status, 1)

    def test_what_was_written_is_kept(self):
        self.assertEqual(self.check(), (0, ["2 of 2 operations cost what the page says or less"]))

    def test_fewer_instructions_are_no_fault(self):
        self.assertEqual(self.check(look_up=500, key=50)[0], 0)

    def test_a_slower_operation_is_missed(self):
        self.misses(
            "look-up: 1,040,000 instructions of its own with 1,000 controls at depth 1, 1,000,000 on the page, "
            "1,030,010 allowed",
            look_up=1040,
        )

    def test_three_percent_are_allowed_and_no_more(self):
        self.assertEqual(self.check(look_up=1030)[0], 0)
        self.assertEqual(self.check(look_up=1031)[0], 1)

    def test_ten_instructions_more_are_allowed_and_no_more(self):
        self.assertEqual(self.check(key=113)[0], 0)
        self.misses(
            "key, 1: 114 instructions of its own with 1,000 controls at depth 3, 100 on the page, 113 allowed", key=114
        )

    def test_growth_at_one_size_alone_is_missed(self):
        costs = figures()
        costs["look-up"][10, 3][0] += 1000
        status, said = self.run_main("--check", costs)
        self.assertEqual(status, 1)
        fault = "11,000 instructions of its own with 10 controls at depth 3, 10,000 on the page, 10,310 allowed"
        self.assertEqual(said[0], f"MISSED look-up: {fault}")

    def test_a_higher_floor_is_no_fault_of_the_operation(self):
        costs = figures()
        costs["key, 1"][performance.STANDARD] = [9100, 9000]
        self.assertEqual(self.run_main("--check", costs)[0], 0)

    def test_a_missing_operation_is_missed(self):
        costs = figures()
        del costs["key, 1"]
        status, said = self.run_main("--check", costs)
        self.assertEqual((status, said[0]), (1, "MISSED key, 1: is on the page, but was not counted"))

    def test_a_missing_size_is_missed(self):
        self.misses("look-up: 1,000 controls at depth 1 are only on the page", sizes=[(10, 1), (10, 3), (1000, 3)])

    def test_a_new_operation_is_missed(self):
        costs = figures()
        costs["new"] = {performance.STANDARD: [2, 1]}
        status, said = self.run_main("--check", costs)
        self.assertEqual((status, said[0]), (1, "MISSED new: is not on the page; `make performance` adds it"))

    def test_a_new_size_is_missed(self):
        self.misses("look-up: 20 controls at depth 1 are only counted", sizes=[*SIZES, (20, 1)])

    def test_all_operations_are_checked(self):
        status, said = self.check(look_up=2000, key=2000)
        self.assertEqual((status, len(said)), (1, 3))


class NothingToCompare(Performance):
    def test_a_page_without_tables(self):
        self.page.write_text("# Performance\n")
        said = ["performance: the page has no table of operations; `make performance` writes it"]
        self.assertEqual(self.check(), (2, said))

    def test_no_page(self):
        status, said = self.check()
        self.assertEqual(status, 2)
        self.assertIn("No such file", said[0])

    def test_a_counter_that_prints_nothing(self):
        self.write()
        said = ["performance: the counter has printed no operation"]
        self.assertEqual(self.run_main("--check", text=""), (2, said))

    def test_a_counter_that_fails(self):
        self.write()
        error = performance.CannotTell("it ended with 1")
        self.assertEqual(self.run_main("--check", error=error), (2, ["performance: it ended with 1"]))

    def test_a_counter_that_cannot_be_started_or_ends_early_is_told(self):
        for program in ("/nowhere", "/bin/false"):
            with unittest.mock.patch.object(performance, "EMULATE", program), self.subTest(program):
                with self.assertRaises(performance.CannotTell):
                    performance.run_counter("count_operations")


class Page(Performance):
    def test_the_page_has_total_floor_own_and_ratio(self):
        self.write()
        self.assertIn("| key, 1 | 2,100 | 2,000 | 100 | 1.05 |\n", self.page.read_text())

    def test_the_page_has_growth_by_size_and_depth(self):
        self.write()
        self.assertIn("### look-up\n", self.page.read_text())
        self.assertIn("| 1,000 | 1,005,000 | 1,000,000 | 1,005,000 | 1,000,000 |\n", self.page.read_text())

    def test_the_page_says_what_the_largest_model_takes(self):
        self.write()
        said = "1,000 controls at depth 3, takes 1,000 bytes of the board's heap of 4,000;"
        self.assertIn(said, self.page.read_text())

    def test_the_committed_page_and_the_tool_agree(self):
        committed = performance.read_page(performance.ROOT.joinpath("docs/performance.md").read_text())
        self.assertIn((10000, 6), committed["get_children, all controls"])
        self.assertGreater(committed["get_x"][performance.STANDARD], 0)

    def test_the_picture_has_a_line_for_each_operation_that_grows(self):
        self.write()
        drawn = xml.etree.ElementTree.fromstring(self.picture.read_text())
        texts = [element.text for element in drawn.iter("{http://www.w3.org/2000/svg}text")]
        self.assertIn("look-up", texts)
        self.assertNotIn("key, 1", texts)
        self.assertIn("controls in the container", texts)
        self.assertIn("instructions of a call", texts)


if __name__ == "__main__":
    unittest.main()
