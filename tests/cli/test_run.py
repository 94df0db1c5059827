# test_run.py: `kel run`: what it runs and in which order, and what the exit status says.

from kel_tool import BAD_INPUT, FAILED, SUCCEEDED, ToolTest


class Order(ToolTest):
    def test_an_application_without_objects_works(self):
        app = self.write_app(layers=[], screens=[])
        self.assertResult(self.kel("run", app), SUCCEEDED)

    def test_the_application_then_scripts_then_code_then_events(self):
        app = self.write_app(
            {"a.lua": 'print("application")\n'
                      'function note(event) print(event.name .. " " .. tostring(event.target)) end\n'},
            handlers=[{"event": "kel.started", "function": "note"}, {"event": "press", "function": "note"},
                      {"event": "tick", "function": "note"}])
        self.write("one.lua", 'print("script 1")\n')
        self.write("two.lua", 'print("script 2")\n')
        result = self.kel("run", "--event", "press:main.ok", "--exec", 'print("code 1")', app, "--script", "two.lua",
                          "--exec", 'print("code 2")', "--event", "tick", "--script", "one.lua", "--event", "press")
        self.assertResult(result, SUCCEEDED, out="application\nkel.started nil\nscript 2\nscript 1\ncode 1\ncode 2\n"
                                                 "press main.ok\ntick nil\npress nil\n")

    def test_each_is_followed_by_the_events_that_it_queued(self):
        app = self.write_app({"a.lua": 'function note(event) print("got " .. event.target) end\n'},
                             handlers=[{"event": "press", "function": "note"}])
        self.write("s.lua", 'kel.queue_event("press", "main.ok") print("script")\n')
        result = self.kel("run", app, "--script", "s.lua",
                          "--exec", 'kel.queue_event("press", "main.cancel") print("code")')
        self.assertResult(result, SUCCEEDED, out="script\ngot main.ok\ncode\ngot main.cancel\n")

    def test_a_script_is_named_from_the_working_folder(self):
        app = self.write_app()
        self.write("demo/inside.lua", 'print("inside")\n')
        self.assertResult(self.kel("run", app, "--script", "demo/inside.lua"), SUCCEEDED, out="inside\n")

    def test_the_module_of_the_plugin_is_there(self):
        app = self.write_app()
        result = self.kel("run", app, "--exec",
                          'print(keldom.get_object("main.ok"), keldom.get_screen("home"):get_type())')
        self.assertResult(result, SUCCEEDED, out="main.ok\t6\n")

    def test_code_is_taken_as_it_is(self):
        app = self.write_app()
        for code, out in (("", ""), ("-- nothing", ""), ("--[[nothing]] print('a  b')", "a  b\n"),
                          ("print(('%s'):format({1} and '[x]'))", "[x]\n")):
            with self.subTest(code):
                self.assertResult(self.kel("run", app, "--exec", code), SUCCEEDED, out=out)
        result = self.kel("run", app, "--exec", "[print(1)]")
        self.assertEqual((result.status, result.out), (FAILED, ""))
        self.assertEqual(result.err, "error: --exec:1: unexpected symbol near '['\n")

    def test_output_and_log_keep_their_order(self):
        app = self.write_app()
        result = self.kel("run", app, "--exec", 'print("one") kel.log("two", "warning") print("three") '
                                                'kel.log("four", "error") print("five")', merged=True)
        self.assertResult(result, SUCCEEDED, out="one\nwarning: two\nthree\nerror: four\nfive\n")


class Failures(ToolTest):
    TRACEBACK = r"stack traceback:\n(?:.*\n)+"
    DEEP = 'local function deep()\n  error("boom")\nend\ndeep()\n'

    def check_failure(self, result, pattern, out=""):
        self.assertEqual((result.status, result.out), (FAILED, out))
        self.assertRegex(result.err, r"\A" + pattern + r"\Z")

    def test_a_script_of_the_application_that_fails(self):
        app = self.write_app({"a.lua": self.DEEP, "b.lua": 'print("next")\n'})
        self.check_failure(self.kel("run", app), r"error: a.lua:2: boom\n" + self.TRACEBACK, out="next\n")

    def test_the_traceback_names_every_line_on_the_way(self):
        app = self.write_app({"a.lua": self.DEEP})
        result = self.kel("run", app)
        self.assertIn("a.lua:2: in function 'deep'", result.err)
        self.assertIn("a.lua:4: in main chunk", result.err)

    def test_a_script_of_the_application_that_does_not_compile(self):
        app = self.write_app({"a.lua": "x = 1\ny = = 2\n"})
        self.check_failure(self.kel("run", app), r"error: a.lua:2: unexpected symbol near '='\n")

    def test_a_handler_that_fails(self):
        app = self.write_app({"a.lua": 'function on_press()\n  error("boom")\nend\n'},
                             handlers=[{"event": "press", "target": "main.ok", "function": "on_press"}])
        self.check_failure(self.kel("run", app, "--event", "press:main.ok"),
                           r"error: a.lua:2: boom\n" + self.TRACEBACK)

    def test_a_script_on_the_command_line_that_fails(self):
        app = self.write_app()
        self.write("s.lua", '\nerror("boom")\n')
        self.check_failure(self.kel("run", app, "--script", "s.lua"), r"error: s.lua:2: boom\n" + self.TRACEBACK)

    def test_a_script_on_the_command_line_that_does_not_compile(self):
        app = self.write_app()
        self.write("s.lua", "x = 1\ny = = 2\n")
        self.check_failure(self.kel("run", app, "--script", "s.lua"), r"error: s.lua:2: unexpected symbol near '='\n")

    def test_code_that_fails(self):
        app = self.write_app()
        self.check_failure(self.kel("run", app, "--exec", 'error("boom")'), r"error: --exec:1: boom\n" + self.TRACEBACK)

    def test_pieces_of_code_are_numbered_in_messages(self):
        app = self.write_app()
        result = self.kel("run", app, "--exec", "x = 1", "--exec", 'error("boom")')
        self.check_failure(result, r"error: --exec\[2\]:1: boom\n" + self.TRACEBACK)

    def test_the_rest_runs_after_a_failure(self):
        app = self.write_app({"a.lua": 'function on_press() print("pressed") end\n'},
                             handlers=[{"event": "press", "function": "on_press"}])
        self.write("bad.lua", "nosuch()\n")
        self.write("good.lua", 'print("good")\n')
        result = self.kel("run", app, "--script", "bad.lua", "--script", "good.lua", "--exec", "nosuch()",
                          "--exec", 'print("code")', "--event", "press")
        self.assertEqual((result.status, result.out), (FAILED, "good\ncode\npressed\n"))
        self.assertEqual(result.err.count("error: "), 2)


class Events(ToolTest):
    def write_handled_app(self):
        script = 'function note(event) print(event.name .. " on " .. tostring(event.target)) end\n'
        return self.write_app({"a.lua": script},
                              variables={"mode": "heat"},
                              handlers=[{"event": "press", "target": "main.ok", "function": "note"},
                                        {"event": "kel.changed", "target": "mode", "function": "note"}])

    def test_a_target_that_no_object_has(self):
        result = self.kel("run", self.write_handled_app(), "--event", "press:nosuch.thing.at_all")
        self.assertResult(result, BAD_INPUT,
                          err='error: event "press" on nosuch.thing.at_all: there is no object of that name\n')

    def test_a_misspelt_target_gives_the_nearest_name(self):
        for wrong, nearest in (("main.cancle", "main.cancel"), ("hone", "home"), ("home.mian", "home.main")):
            with self.subTest(wrong):
                result = self.kel("run", self.write_handled_app(), "--event", "press:" + wrong)
                self.assertResult(result, BAD_INPUT, err=f'error: event "press" on {wrong}: there is no object of that '
                                                         f"name; did you mean {nearest}?\n")

    def test_the_nearest_of_equally_long_names_has_most_letters_right(self):
        buttons = [{"type": "control", "name": name} for name in ("down", "left", "lift")]
        app = self.write_app(layers=[{"name": "main", "children": buttons}])
        result = self.kel("run", app, "--event", "press:main.lifd")
        self.assertEqual(result.status, BAD_INPUT)
        self.assertTrue(result.err.endswith("; did you mean main.lift?\n"), result.err)

    def test_an_unknown_target_ends_the_run(self):
        result = self.kel("run", self.write_handled_app(), "--event", "press:main.ok", "--event", "press:main.no",
                          "--event", "press:main.ok")
        self.assertEqual((result.status, result.out), (BAD_INPUT, "press on main.ok\n"))

    def test_the_target_may_be_a_variable(self):
        result = self.kel("run", self.write_handled_app(), "--event", "kel.changed:mode")
        self.assertResult(result, SUCCEEDED, out="kel.changed on mode\n")

    def test_an_event_that_no_handler_is_for_is_noted(self):
        app = self.write_handled_app()
        self.assertResult(self.kel("run", app, "--event", "pres:main.ok", "--strict"), SUCCEEDED,
                          err='note: no handler is called for event "pres" on main.ok; did you mean press?\n')
        self.assertResult(self.kel("run", app, "--event", "press"), SUCCEEDED,
                          err='note: no handler is called for event "press"\n')


class Log(ToolTest):
    ALL = 'kel.log("e", "error") kel.log("w", "warning") kel.log("i", "info")'

    def check_levels(self, expected, *options):
        self.assertResult(self.kel("run", self.write_app(), "--exec", self.ALL, *options), SUCCEEDED, err=expected)

    def test_warnings_and_errors_are_shown_unless_told_otherwise(self):
        self.check_levels("error: e\nwarning: w\n")

    def test_each_level_shows_itself_and_what_is_more_important(self):
        self.check_levels("", "--log-level", "always")
        self.check_levels("error: e\n", "--log-level", "error")
        self.check_levels("error: e\nwarning: w\n", "--log-level", "warning")
        for level in ("info", "event1", "action", "diag1"):
            self.check_levels("error: e\nwarning: w\ninfo: i\n", "--log-level", level)

    def test_every_level_name_is_taken(self):
        app = self.write_app()
        for level in ("diag2", "event2", "trace1", "trace2"):
            self.assertEqual(self.kel("run", app, "--log-level", level).status, SUCCEEDED)

    def test_a_failure_is_shown_even_at_a_level_that_hides_errors(self):
        result = self.kel("run", self.write_app(), "--log-level", "always", "--exec", 'error("boom")')
        self.assertEqual((result.status, result.out), (FAILED, ""))
        self.assertRegex(result.err, r"\Aerror: --exec:1: boom\nstack traceback:\n(?:.*\n)+\Z")


class Strict(ToolTest):
    def test_without_warnings(self):
        self.assertResult(self.kel("run", self.write_app(), "--strict"), SUCCEEDED)

    def test_warnings_alone_do_no_harm(self):
        result = self.kel("run", self.write_app(), "--exec", 'keldom.get_object("main.nosuch")')
        self.assertResult(result, SUCCEEDED, err="warning: No such object in DOM\n")

    def test_one_warning(self):
        result = self.kel("run", self.write_app(), "--strict", "--exec", 'keldom.get_object("main.nosuch")')
        self.assertResult(result, FAILED, err="warning: No such object in DOM\n"
                                              "error: 1 warning logged, and --strict allows none\n")

    def test_warnings_that_are_not_shown_count(self):
        result = self.kel("run", self.write_app(), "--strict", "--log-level", "always", "--exec",
                          'kel.log("w", "warning") kel.log("e", "error") kel.log("i", "info")')
        self.assertResult(result, FAILED, err="error: 2 warnings logged, and --strict allows none\n")
