# test_run_input.py: `kel run` with files that are missing or not what they should be; and where the plug-in is found.

import os
import shutil

from kel_tool import BAD_INPUT, KEL, PLUGIN, SUCCEEDED, ToolTest


class Application(ToolTest):
    def test_a_missing_application(self):
        result = self.kel("run", "nosuch")
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertRegex(result.err, r"\Anosuch: .*\(No such file or directory\).*\n1 fault in nosuch\n\Z")

    def test_faults_are_named_and_nothing_is_run(self):
        app = self.write_app({"a.lua": 'print("ran")\n'}, size={"width": 0, "height": 80}, nosuch=1)
        result = self.kel("run", app)
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        lines = result.err.splitlines()
        self.assertEqual(len(lines), 3)
        self.assertRegex(result.err, r"(?m)^demo/app.json: \$\.size\.width: ")
        self.assertRegex(result.err, r"(?m)^demo/app.json: \$\.nosuch: ")
        self.assertEqual(lines[-1], "2 faults in demo/app.json")


class Scripts(ToolTest):
    def test_a_missing_script_is_bad_input_and_nothing_is_run(self):
        app = self.write_app({"a.lua": 'print("ran")\n'})
        result = self.kel("run", app, "--script", "nosuch.lua")
        self.assertResult(result, BAD_INPUT, err="error: script nosuch.lua: No such file or directory\n")

    def test_a_folder_is_no_script(self):
        result = self.kel("run", self.write_app(), "--script", "demo")
        self.assertResult(result, BAD_INPUT, err="error: script demo: Is a directory\n")

    def test_all_that_is_wrong_is_named_at_once(self):
        result = self.kel("run", "nosuch", "--script", "one.lua", "--script", "two.lua", "--plugin", "three.so")
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        for name in ("nosuch: ", "error: script one.lua: ", "error: script two.lua: ", "\n  three.so (--plugin): "):
            self.assertIn(name, result.err)


class Plugin(ToolTest):
    ADVICE = "Name it with --plugin FILE or in the environment as KEL_PLUGIN.\n"
    CODE = 'print(keldom.get_object("main.ok"))'

    def copy_tool(self):
        os.makedirs(self.folder / "installed/bin")
        return shutil.copy(KEL, self.folder / "installed/bin/kel")

    def test_the_option_goes_before_the_environment(self):
        result = self.kel("run", self.write_app(), "--plugin", PLUGIN, "--exec", self.CODE, KEL_PLUGIN="nosuch.so")
        self.assertResult(result, SUCCEEDED, out="main.ok\n")

    def test_a_plugin_in_the_working_folder_needs_no_slash(self):
        shutil.copy(PLUGIN, self.folder / "mine.so")
        result = self.kel("run", self.write_app(), "--plugin", "mine.so", "--exec", self.CODE, KEL_PLUGIN=None)
        self.assertResult(result, SUCCEEDED, out="main.ok\n")

    def test_it_is_found_near_the_tool(self):
        program = self.copy_tool()
        app = self.write_app()
        for place in ("installed/bin", "installed/lib/luakeldom", "installed/lib"):
            with self.subTest(place):
                os.makedirs(self.folder / place, exist_ok=True)
                shutil.copy(PLUGIN, self.folder / place / "luakeldom.so")
                result = self.kel("run", app, "--exec", self.CODE, program=program, KEL_PLUGIN=None)
                self.assertResult(result, SUCCEEDED, out="main.ok\n")

    def test_the_nearest_place_goes_first(self):
        program = self.copy_tool()
        self.write("installed/lib/luakeldom.so", "no plug-in at all\n")
        shutil.copy(PLUGIN, self.folder / "installed/bin/luakeldom.so")
        result = self.kel("run", self.write_app(), program=program, KEL_PLUGIN=None)
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertIn("installed/bin/../lib/luakeldom.so", result.err)

    def test_not_found_names_every_place(self):
        bin_folder = os.path.dirname(self.copy_tool())
        result = self.kel("run", self.write_app(), program=f"{bin_folder}/kel", KEL_PLUGIN=None)
        reason = ": No such file or directory\n"
        self.assertResult(result, BAD_INPUT, err="error: plug-in not found; looked for:\n"
                                                 f"  {bin_folder}/../lib/luakeldom.so{reason}"
                                                 f"  {bin_folder}/../lib/luakeldom/luakeldom.so{reason}"
                                                 f"  {bin_folder}/luakeldom.so{reason}" + self.ADVICE)

    def test_a_named_plugin_is_the_only_one_that_is_tried(self):
        app = self.write_app()
        missing = "error: plug-in not found; looked for:\n  nosuch.so ({}): No such file or directory\n" + self.ADVICE
        self.assertResult(self.kel("run", app, "--plugin", "nosuch.so"), BAD_INPUT, err=missing.format("--plugin"))
        self.assertResult(self.kel("run", app, KEL_PLUGIN="nosuch.so"), BAD_INPUT, err=missing.format("KEL_PLUGIN"))

    def test_an_empty_environment_variable_counts_as_none(self):
        program = self.copy_tool()
        shutil.copy(PLUGIN, self.folder / "installed/bin/luakeldom.so")
        self.assertResult(self.kel("run", self.write_app(), program=program, KEL_PLUGIN=""), SUCCEEDED)

    def test_a_file_that_is_no_shared_object(self):
        app = self.write_app({"a.lua": 'print("ran")\n'})
        self.write("text.so", "no plug-in at all\n")
        result = self.kel("run", app, "--plugin", "text.so")
        self.assertResult(result, BAD_INPUT, err='error: Cannot load plug-in "./text.so": ./text.so: file too short\n')
