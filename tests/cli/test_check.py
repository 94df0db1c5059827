# test_check.py: `kel check`: faults of an application file and of its scripts.

import os

from kel_tool import BAD_INPUT, FAILED, SUCCEEDED, ToolTest


class Check(ToolTest):
    UNREADABLE = ("cannot read the file (No such file or directory), "
                  "expected an application file or a folder that holds it as app.json\n")

    def test_an_application_without_faults_is_counted(self):
        app = self.write_app({"a.lua": "x = 1\n"}, variables={"mode": "heat"}, layers=[
            {"name": "main", "children": [
                {"type": "group", "name": "bar", "children": [{"type": "control", "name": "ok"}]},
                {"type": "table", "name": "list", "rows": 2, "cols": 1, "templates": [
                    {"name": "row", "variables": {"text": ""}}]},
            ]},
            {"name": "other"},
        ])
        # mode 1, the layers' sizes 2 + 2, the instance 6, the group 3, the control 5, the table 7, the cells' texts 2.
        self.assertResult(self.kel("check", app), SUCCEEDED,
                          out="demo/app.json: 1 screen, 2 layers, 3 objects, 28 variables, 1 script: no faults\n")

    def test_the_file_may_be_named_instead_of_the_folder(self):
        self.write_app()
        result = self.kel("check", "demo/app.json")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertRegex(result.out, r"\Ademo/app.json: .*: no faults\n\Z")

    def test_scripts_are_not_run(self):
        app = self.write_app({"a.lua": 'print("ran") error("ran")\n'})
        result = self.kel("check", app)
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertNotIn("ran", result.out)

    def test_no_plugin_is_needed(self):
        app = self.write_app()
        self.assertEqual(self.kel("check", app, KEL_PLUGIN="nosuch.so").status, SUCCEEDED)

    def test_a_missing_file(self):
        result = self.kel("check", "nosuch")
        self.assertResult(result, BAD_INPUT, err="nosuch: " + self.UNREADABLE + "1 fault in nosuch\n")

    def test_a_folder_without_an_application_file(self):
        os.mkdir(self.folder / "empty")
        result = self.kel("check", "empty")
        self.assertResult(result, BAD_INPUT, err="empty/app.json: " + self.UNREADABLE + "1 fault in empty/app.json\n")

    def test_malformed_json_is_named_with_line_and_column(self):
        self.write("demo/app.json", '{\n  "name": "demo",\n  "size": }\n')
        result = self.kel("check", "demo")
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertRegex(result.err, r"\Ademo/app.json:3:11: .+\n1 fault in demo/app.json\n\Z")

    def test_all_faults_are_named_at_once(self):
        app = self.write_app(size={"width": 0, "height": 80}, nosuch=1,
                             screens=[{"name": "home", "layers": [{"layer": "mian"}]}])
        result = self.kel("check", app)
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        lines = result.err.splitlines()
        self.assertEqual(len(lines), 4)
        for path in (r"\$\.size\.width", r"\$\.nosuch", r"\$\.screens\[0\]\.layers\[0\]\.layer"):
            self.assertRegex(result.err, r"(?m)^demo/app.json: " + path + ": ")
        self.assertEqual(lines[-1], "3 faults in demo/app.json")

    def test_a_missing_script_of_the_application_is_bad_input(self):
        app = self.write_app({"nosuch.lua": ""})
        os.remove(self.folder / app / "nosuch.lua")
        result = self.kel("check", app)
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertRegex(result.err, r"\Ademo/app.json: \$\.scripts\[0\]: .*nosuch.lua.*\n1 fault in demo/app.json\n\Z")

    def test_scripts_that_do_not_compile_are_named_with_their_line(self):
        app = self.write_app({"a.lua": "x = 1\ny = = 2\n", "good.lua": "z = 3\n", "b.lua": "\n\nfor\n"})
        result = self.kel("check", app)
        self.assertEqual((result.status, result.out), (FAILED, ""))
        first, second, count = result.err.splitlines()
        self.assertRegex(first, r"\Ademo/a.lua:2: unexpected symbol near '='\Z")
        self.assertRegex(second, r"\Ademo/b.lua:[34]: .*expected")
        self.assertEqual(count, "2 faults in demo/app.json")
