# test_vars.py: `kel vars`: the data variables, as columns and as JSON.

import json
import unittest

from kel_tool import BAD_INPUT, FAILED, SUCCEEDED, ToolTest

VARIABLES = {
    "mode": "a \"b\"\n\\ °\t\x01",
    "count": {"type": "i32", "value": -7},
    "ratio": {"type": "f64", "value": 0.5},
    "counter": {"type": "u8", "value": 3},
}
OK = """\
main.ok.kld_height  i16     10
main.ok.kld_hidden  u8      0
main.ok.kld_width   i16     20
main.ok.kld_x       i16     0
main.ok.kld_y       i16     0
"""


class Vars(ToolTest):
    def test_all_variables_in_the_order_of_their_keys(self):
        self.write_app(variables=VARIABLES)
        result = self.kel("vars", "demo")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        keys = [line.split(" ")[0] for line in result.out.splitlines()]
        self.assertEqual(keys, sorted(keys))
        self.assertEqual(len(keys), 4 + 2 + 2 * 5 + 6)
        lines = [line for line in result.out.splitlines() if not line.startswith(("main", "home"))]
        self.assertEqual(lines, [
            "count                   i32     -7",
            "counter                 u8      3",
            'mode                    string  "a \\"b\\"\\n\\\\ °\\t\\001"',
            "ratio                   f64     0.5",
        ])

    def test_a_prefix_means_whole_components(self):
        self.write_app(variables=VARIABLES, layers=[{"name": "main", "children": [
            {"type": "control", "name": name, "width": 20, "height": 10} for name in ("ok", "ok_too")]}])
        self.assertResult(self.kel("vars", "demo", "main.ok"), SUCCEEDED, OK)
        self.assertResult(self.kel("vars", "demo", "main.ok.kld_x"), SUCCEEDED, "main.ok.kld_x  i16     0\n")
        self.assertResult(self.kel("vars", "demo", "count"), SUCCEEDED, "count  i32     -7\n")

    def test_letters_stand_for_what_begins_with_them_when_no_component_is_so_named(self):
        self.write_app(variables=VARIABLES)
        self.assertResult(self.kel("vars", "demo", "main.o"), SUCCEEDED, OK)
        self.assertResult(self.kel("vars", "demo", "main.ok."), SUCCEEDED, OK)
        self.assertResult(self.kel("vars", "demo", "cou"), SUCCEEDED, "count    i32     -7\ncounter  u8      3\n")

    def test_json_holds_type_and_value(self):
        self.write_app(variables=VARIABLES)
        result = self.kel("vars", "demo", "--json")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        found = json.loads(result.out)
        self.assertEqual(list(found), sorted(found))
        self.assertEqual(found["count"], {"type": "i32", "value": -7})
        self.assertIs(type(found["count"]["value"]), int)
        self.assertEqual(found["ratio"], {"type": "f64", "value": 0.5})
        self.assertEqual(found["mode"], {"type": "string", "value": VARIABLES["mode"]})
        self.assertEqual(json.loads(self.kel("vars", "demo", "count", "--json").out),
                         {"count": {"type": "i32", "value": -7}})

    def test_json_is_whole_whatever_a_string_or_number_holds(self):
        self.write_app(variables=VARIABLES, scripts={
            "a.lua": 'kel.set_value("mode", "\\255\\254a", "ratio", 0/0)'})
        found = json.loads(self.kel("vars", "demo", "--json").out)
        self.assertEqual(found["mode"]["value"], "\ufffd\ufffda")
        self.assertIsNone(found["ratio"]["value"])
        self.assertIn('"\\255\\254a"\n', self.kel("vars", "demo", "mode").out)

    def test_an_application_without_variables_under_no_prefix_is_empty(self):
        self.write_app(layers=[], screens=[])
        self.assertResult(self.kel("vars", "demo"), SUCCEEDED)
        self.assertResult(self.kel("vars", "demo", "--json"), SUCCEEDED, "{}\n")

    def test_no_match_is_bad_input_with_the_nearest(self):
        self.write_app(variables=VARIABLES)
        begin = "error: there is no variable whose key begins with "
        self.assertResult(self.kel("vars", "demo", "main.okk"), BAD_INPUT,
                          err=begin + '"main.okk"; did you mean main.ok?\n')
        self.assertResult(self.kel("vars", "demo", "rateo"), BAD_INPUT, err=begin + '"rateo"; did you mean ratio?\n')
        self.assertResult(self.kel("vars", "demo", "x"), BAD_INPUT, err=begin + '"x"\n')

    def test_events_come_before_and_what_scripts_print_stays_apart(self):
        self.write_app(scripts={"a.lua": 'function go() kel.set_value("count", 8) print("gone") end'},
                       variables=VARIABLES, handlers=[{"event": "press", "target": "main.ok", "function": "go"}])
        self.assertResult(self.kel("vars", "demo", "count", "--after", "press:main.ok"), SUCCEEDED,
                          "count  i32     8\n", "gone\n")

    def test_a_script_that_fails_is_reported_and_the_variables_are_printed(self):
        self.write_app(scripts={"a.lua": 'kel.set_value("count", 1)\nerror("boom")'}, variables=VARIABLES)
        result = self.kel("vars", "demo", "count")
        self.assertEqual((result.status, result.out), (FAILED, "count  i32     1\n"))
        self.assertTrue(result.err.startswith("error: a.lua:2: boom\n"), result.err)


if __name__ == "__main__":
    unittest.main()
