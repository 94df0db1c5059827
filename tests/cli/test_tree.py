# test_tree.py: `kel tree`: the objects of an application, as text and as JSON.

import json
import unittest

from kel_tool import BAD_INPUT, FAILED, SUCCEEDED, ToolTest

LAYERS = [{"name": "main", "children": [
    {"type": "control", "name": "ok", "x": 1, "y": 2, "width": 20, "height": 10},
    {"type": "group", "name": "bar", "x": 3, "y": -4, "hidden": True, "children": [
        {"type": "control", "name": "go", "width": 5, "height": 6}]},
    {"type": "table", "name": "list", "width": 60, "height": 40, "rows": 2, "cols": 2,
     "templates": [{"name": "day", "width": 30, "height": 9}, {"name": "hour", "width": 20, "height": 9}],
     "cells": [[{"template": "day"}, {"template": "hour"}], [{"template": "day"}, {"template": "day"}]]},
]}]
SCREENS = [{"name": "home", "layers": [{"layer": "main", "x": 7, "y": 8, "alpha": 128, "hidden": True}]}]

TEXT = """\
application demo                    100x80
  screen home
    layer instance home.main  7,8   100x80  alpha 128  hidden
  layer main                        100x80
    control main.ok           1,2   20x10
    group main.bar            3,-4          hidden
      control main.bar.go     0,0   5x6
    table main.list           0,0   60x40   2x2 cells
      template main.day             30x9
      template main.hour            20x9
"""


class Tree(ToolTest):
    def write_objects(self, code=""):
        return self.write_app(scripts={"a.lua": code}, layers=LAYERS, screens=SCREENS)

    def test_text_shows_every_object_below_what_contains_it(self):
        self.write_objects()
        self.assertResult(self.kel("tree", "demo"), SUCCEEDED, TEXT)

    def test_a_name_shows_that_object_and_what_it_contains(self):
        self.write_objects()
        self.assertResult(self.kel("tree", "demo", "main.bar"), SUCCEEDED,
                          "group main.bar         3,-4       hidden\n  control main.bar.go  0,0   5x6\n")
        self.assertResult(self.kel("tree", "demo", "home.main"), SUCCEEDED,
                          "layer instance home.main  7,8  100x80  alpha 128  hidden\n")
        self.assertResult(self.kel("tree", "demo", "main.hour"), SUCCEEDED, "template main.hour    20x9\n")

    def test_a_table_that_is_named_shows_its_cells(self):
        self.write_objects()
        self.assertResult(self.kel("tree", "demo", "main.list"), SUCCEEDED,
                          "table main.list       0,0  60x40  2x2 cells\n"
                          "  template main.day        30x9\n"
                          "  template main.hour       20x9\n"
                          "  row 0: main.day main.hour\n"
                          "  row 1: main.day main.day\n")

    def test_what_scripts_have_changed_is_shown(self):
        self.write_objects("""
            local ok = keldom.get_object("main.ok")
            ok:set_position(30, 40)
            ok:hide()
            ok:clone("copy", "main.bar", {kld_width = 21})
            keldom.get_object("main.list"):set_rows(1)
            keldom.get_object("main.bar.go"):delete()
        """)
        out = self.kel("tree", "demo", "main").out
        self.assertIn("  control main.ok          30,40  20x10   hidden\n", out)
        self.assertIn("    control main.bar.copy  30,40  21x10   hidden\n", out)
        self.assertIn("  table main.list          0,0    60x40   1x2 cells\n", out)
        self.assertNotIn("main.bar.go", out)

    def test_json_has_the_fields_of_each_kind_in_a_fixed_order(self):
        self.write_objects()
        result = self.kel("tree", "demo", "--json")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        tree = json.loads(result.out)
        self.assertEqual(list(tree), ["kind", "name", "width", "height", "screens", "layers"])
        self.assertEqual(tree["kind"], "application")
        self.assertEqual(tree["screens"], [{"kind": "screen", "name": "home", "instances": [
            {"kind": "layer_instance", "name": "home.main", "x": 7, "y": 8, "width": 100, "height": 80, "alpha": 128,
             "hidden": True}]}])
        ok = {"kind": "control", "name": "main.ok", "x": 1, "y": 2, "width": 20, "height": 10, "hidden": False}
        go = {"kind": "control", "name": "main.bar.go", "x": 0, "y": 0, "width": 5, "height": 6, "hidden": False}
        bar = {"kind": "group", "name": "main.bar", "x": 3, "y": -4, "hidden": True, "children": [go]}
        table = {"kind": "table", "name": "main.list", "x": 0, "y": 0, "width": 60, "height": 40, "rows": 2, "cols": 2,
                 "hidden": False, "templates": [
                     {"kind": "template", "name": "main.day", "width": 30, "height": 9},
                     {"kind": "template", "name": "main.hour", "width": 20, "height": 9}]}
        self.assertEqual(tree["layers"], [
            {"kind": "layer", "name": "main", "width": 100, "height": 80, "children": [ok, bar, table]}])
        self.assertEqual(list(tree["layers"][0]["children"][0]), list(ok))

    def test_json_of_a_table_has_its_cells(self):
        self.write_objects()
        table = json.loads(self.kel("tree", "demo", "main.list", "--json").out)
        self.assertEqual((table["kind"], table["name"]), ("table", "main.list"))
        self.assertEqual(table["cells"], [["main.day", "main.hour"], ["main.day", "main.day"]])

    def test_an_unknown_name_is_bad_input_with_the_nearest(self):
        self.write_objects()
        self.assertResult(self.kel("tree", "demo", "main.lst"), BAD_INPUT,
                          err='error: there is no object "main.lst"; did you mean main.list?\n')
        self.assertResult(self.kel("tree", "demo", "main.huor"), BAD_INPUT,
                          err='error: there is no object "main.huor"; did you mean main.hour?\n')
        self.assertResult(self.kel("tree", "demo", "list"), BAD_INPUT,
                          err='error: there is no object "list"; did you mean main.list?\n')
        self.assertResult(self.kel("tree", "demo", "ist"), BAD_INPUT, err='error: there is no object "ist"\n')
        self.assertResult(self.kel("tree", "demo", "demo"), BAD_INPUT, err='error: there is no object "demo"\n')

    def test_events_come_before(self):
        self.write_app(scripts={"a.lua": "function go(e) keldom.get_object(e.target):set_x(e.target:len()) end"},
                       handlers=[{"event": "press", "function": "go"}])
        result = self.kel("tree", "demo", "main.cancel", "--after", "press:main.ok", "--after", "press:main.cancel")
        self.assertResult(result, SUCCEEDED, "control main.cancel  11,0  20x10\n")
        result = self.kel("tree", "demo", "--after", "press:main.okk")
        self.assertResult(result, BAD_INPUT, err='error: event "press" on main.okk: there is no object of that name;'
                                                 " did you mean main.ok?\n")

    def test_what_scripts_print_stays_out_of_the_tree(self):
        self.write_app(scripts={"a.lua": 'print("hello")'})
        self.assertResult(self.kel("tree", "demo", "main.ok"), SUCCEEDED, "control main.ok  0,0  20x10\n", "hello\n")

    def test_a_script_that_fails_is_reported_and_the_tree_is_printed(self):
        self.write_app(scripts={"a.lua": 'keldom.get_object("main.ok"):set_x(5)\nerror("boom")'})
        result = self.kel("tree", "demo", "main.ok")
        self.assertEqual((result.status, result.out), (FAILED, "control main.ok  5,0  20x10\n"))
        self.assertTrue(result.err.startswith("error: a.lua:2: boom\n"), result.err)

    def test_a_faulty_application_is_bad_input(self):
        self.assertEqual(self.kel("tree", "nosuch").status, BAD_INPUT)


if __name__ == "__main__":
    unittest.main()
