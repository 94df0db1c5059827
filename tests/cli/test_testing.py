# test_testing.py: `kel test`: results and their forms, the helpers, snapshots, and what tests may not change.

import re
import unittest
import xml.etree.ElementTree as ElementTree

from kel_tool import BAD_INPUT, FAILED, ON_LUAJIT, PROJECT, SUCCEEDED, ToolTest

SCRIPT = """\
function pressed(event)
  print("pressed " .. event.target)
  kel.set_value("main.ok.count", kel.get_value("main.ok.count") + 1)
end

function broken()
  local function deep() error("boom") end
  deep()
  return 0
end

function warned() keldom.get_object("main.no") end
"""

MEMBERS = {
    "layers": [{"name": "main", "children": [
        {"type": "control", "name": "ok", "x": 5, "width": 20, "height": 10,
         "variables": {"count": {"type": "u8", "value": 0}, "text": "OK"},
         "draw": {"text": "{text} {count}", "color": "#ffffff"}},
        {"type": "control", "name": "cancel", "width": 20, "height": 10},
    ]}],
    "variables": {"mode": "heat", "target": {"type": "f64", "value": 21}, "locked": False},
    "handlers": [
        {"event": "press", "target": "main.ok", "function": "pressed"},
        {"event": "press", "target": "main.cancel", "function": "broken"},
        {"event": "warn", "function": "warned"},
        {"event": "kel.changed", "target": "mode", "function": "broken"},
    ],
}


def without_times(text):
    return re.sub(r"\d+\.\d{3}( seconds|\")", r"TIME\1", text)


class TestingTest(ToolTest):
    def write_app(self, scripts=None, **members):
        return super().write_app(scripts or {"main.lua": SCRIPT}, **{**MEMBERS, **members})

    def run_tests(self, code, *options, file="tests/a_spec.lua", **changes):
        """Runs one test file with this code."""
        self.write_app()
        self.write("demo/" + file, code)
        return self.kel("test", "demo", *options, **changes)

    def failures(self, code, *options):
        """The messages of what failed, with their places, in the order in which they are told."""
        result = self.run_tests(code, "--format", "tap", *options)
        self.assertEqual((result.status, result.err), (FAILED, ""), result.out)
        blocks = re.split(r"^(?:not )?ok .*\n|^1\.\..*\n", result.out, flags=re.MULTILINE)
        return [re.sub("^# ?", "", block, flags=re.MULTILINE).rstrip("\n") for block in blocks if block]


class Passing(TestingTest):
    def test_a_mark_a_test_and_the_numbers(self):
        result = self.run_tests('it("one", function() end)\nit("two", function() assert.is_true(true) end)')
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertEqual(without_times(result.out),
                         "++\n2 successes / 0 failures / 0 errors / 0 pending : TIME seconds\n")

    def test_one_summary_over_all_files_in_their_order(self):
        self.write_app()
        for name in ("c", "a", "b"):
            self.write(f"demo/tests/{name}_spec.lua", f'it("{name}", function() end)')
        self.write("demo/tests/helper.lua", 'error("no test file")')
        result = self.kel("test", "demo", "--format", "tap")
        self.assertResult(result, SUCCEEDED, out="ok 1 - a\nok 2 - b\nok 3 - c\n1..3\n")
        self.assertRegex(self.kel("test", "demo").out, r"^\+\+\+\n3 successes ")

    def test_files_and_folders_can_be_named(self):
        self.write_app()
        for name in ("demo/tests/a_spec.lua", "more/c_spec.lua", "more/b_spec.lua", "one.lua"):
            self.write(name, f'it("{name}", function() end)')
        result = self.kel("test", "demo/app.json", "one.lua", "more", "--format", "tap")
        self.assertResult(result, SUCCEEDED,
                          out="ok 1 - one.lua\nok 2 - more/b_spec.lua\nok 3 - more/c_spec.lua\n1..3\n")

    def test_each_file_has_a_fresh_application(self):
        self.write_app()
        code = 'it("starts", function() kel_test.expect_variable("main.ok.count", 0) kel_test.press("main.ok") end)'
        for name in ("a", "b"):
            self.write(f"demo/tests/{name}_spec.lua", code + "\nleft_behind = 1\nassert(not _G.seen) _G.seen = true")
        self.assertEqual(self.kel("test", "demo").status, SUCCEEDED)

    def test_what_the_application_prints_does_not_disturb(self):
        result = self.run_tests('it("a", function() kel_test.press("main.ok") end)', "--format", "tap")
        self.assertResult(result, SUCCEEDED, out="ok 1 - a\n1..1\n")

    def test_what_a_test_prints_goes_to_standard_error_at_once(self):
        result = self.run_tests('it("a", function() print("here", 1, nil) end)', "--format", "tap")
        self.assertResult(result, SUCCEEDED, out="ok 1 - a\n1..1\n", err="here\t1\tnil\n")

    def test_what_a_test_writes_goes_there_too(self):
        code = """\
io.write("file\\n")
it("a", function()
  io.write("1\\n")
  io.stdout:write("2\\n")
  io.output():write("3\\n")
  io.stdout:close()
  io.stderr:write("4\\n")
end)
"""
        result = self.run_tests(code, "--format", "tap")
        self.assertResult(result, SUCCEEDED, out="ok 1 - a\n1..1\n", err="file\n1\n2\n3\n4\n")

    def test_pending_tests_are_no_failures(self):
        result = self.run_tests('pending("later")\nit("b", function() pending("not yet") end)')
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertEqual(without_times(result.out), """\
..
0 successes / 0 failures / 0 errors / 2 pending : TIME seconds

Pending -> demo/tests/a_spec.lua @ 1
later

Pending -> demo/tests/a_spec.lua @ 2
b
demo/tests/a_spec.lua:2: not yet
""")

    def test_modules_beside_the_test_file_can_be_required(self):
        self.write("demo/tests/helper.lua", "return { press = function() kel_test.press('main.ok') end }")
        result = self.run_tests('local helper = require("helper")\n'
                                'it("a", function() helper.press() kel_test.expect_variable("main.ok.count", 1) end)')
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""), result.out)

    def test_a_filter_is_a_lua_pattern_on_the_full_name(self):
        code = ('describe("door", function() it("opens", function() end) it("shuts", function() error("no") end) end)\n'
                'it("opens a window", function() error("no") end)')
        result = self.run_tests(code, "--filter", "^door o%a+", "--format", "tap")
        self.assertResult(result, SUCCEEDED, out="ok 1 - door opens\n1..1\n")

    def test_a_list_runs_nothing(self):
        code = 'describe("door", function()\nsetup(error)\nit("opens", error)\nend)\npending("later")'
        result = self.run_tests(code, "--list")
        self.assertResult(result, SUCCEEDED,
                          out="demo/tests/a_spec.lua:3: door opens\ndemo/tests/a_spec.lua:5: later\n")

    def test_marks_on_a_terminal(self):
        self.write_app()
        self.write("demo/tests/a_spec.lua", 'it("a", function() end)')
        self.assertEqual(without_times(self.on_terminal("test", "demo")[1]), (
            "\033[32m●\033[0m\n\033[32m1\033[0m success / \033[1;31m0\033[0m failures / \033[35m0\033[0m errors / "
            "\033[33m0\033[0m pending : TIME seconds\n"))
        plain = self.on_terminal("test", "demo", NO_COLOR="1")[1]
        self.assertEqual(without_times(plain),
                         "●\n1 success / 0 failures / 0 errors / 0 pending : TIME seconds\n")


class Failing(TestingTest):
    def test_the_report_has_message_place_traceback_and_what_was_printed(self):
        result = self.run_tests("""\
describe("a door", function()
  local function check() assert.equal(1, 2) end

  it("opens", function()
    kel_test.press("main.ok")
    check()
  end)

  it("shuts", function() error("not now") end)
end)
""")
        self.assertEqual((result.status, result.err), (FAILED, ""))
        self.assertEqual(without_times(result.out), """\
-*
0 successes / 1 failure / 1 error / 0 pending : TIME seconds

Failure -> demo/tests/a_spec.lua @ 4
a door opens
demo/tests/a_spec.lua:2: Expected objects to be equal.
Passed in:
(number) 2
Expected:
(number) 1
stack traceback:
	demo/tests/a_spec.lua:2: in function 'check'
	demo/tests/a_spec.lua:6: in function <demo/tests/a_spec.lua:4>
printed:
pressed main.ok

Error -> demo/tests/a_spec.lua @ 9
a door shuts
demo/tests/a_spec.lua:9: not now
""")

    def test_an_error_in_a_handler_fails_the_test_with_its_traceback(self):
        messages = self.failures('it("a", function()\n  kel_test.press("main.cancel")\nend)')
        self.assertEqual(messages, ["""\
demo/tests/a_spec.lua @ 1
demo/tests/a_spec.lua:2: unexpected error: main.lua:7: boom
stack traceback:
	[C]: in function 'error'
	main.lua:7: in function 'deep'
	main.lua:8: in function <main.lua:6>"""])

    def test_a_warning_fails_the_test_that_caused_it_alone(self):
        result = self.run_tests("""\
it("a", function() end)
it("b", function()
  local x = 1
  keldom.get_object("main.no")
end)
it("c", function() end)
""", "--format", "tap")
        self.assertResult(result, FAILED, out="""\
ok 1 - a
not ok 2 - b
# demo/tests/a_spec.lua @ 2
# demo/tests/a_spec.lua:4: unexpected warning: No such object in DOM
ok 3 - c
1..3
""")

    def test_a_test_that_fails_tells_of_warnings_too(self):
        messages = self.failures('it("a", function()\n  kel_test.send("warn")\n  error("then this")\nend)')
        self.assertEqual(messages, ["""\
demo/tests/a_spec.lua @ 1
demo/tests/a_spec.lua:3: then this
demo/tests/a_spec.lua:2: unexpected warning: No such object in DOM"""])

    def test_warnings_are_counted_at_any_log_level(self):
        messages = self.failures('it("a", function() kel_test.send("warn") end)', "--log-level", "always")
        self.assertEqual(messages, [
            "demo/tests/a_spec.lua @ 1\ndemo/tests/a_spec.lua:1: unexpected warning: No such object in DOM"])

    def test_errors_outside_of_tests_are_told(self):
        for code, name in (('describe("d", function() error("here") end)', "d"),
                           ('describe("d", function() keldom.get_object("no") end)', "d"),
                           ('describe("d", function() setup(function() error("here") end) '
                            'it("a", function() end) end)', "d setup"),
                           ('before_each(function() error("here") end) it("a", function() end)', "before_each"),
                           ('after_each(function() keldom.get_object("no") end) it("a", function() end)', "after_each"),
                           ('teardown(function() error("here") end) it("a", function() end)', "teardown"),
                           ('it("a", function() finally(function() error("here") end) end)', "a"),
                           ('error("here")', "demo/tests/a_spec.lua")):
            with self.subTest(code=code):
                result = self.run_tests(code, "--format", "tap")
                self.assertEqual((result.status, result.err), (FAILED, ""))
                self.assertRegex(result.out, r"(?m)^not ok \d - " + re.escape(name) + "\n")
                self.assertRegex(result.out, r"a_spec\.lua:1: (here|unexpected warning: No such object in DOM)\n")

    def test_a_file_that_does_not_compile(self):
        result = self.run_tests('it("a", function()\n  x = = 1\nend)')
        self.assertEqual((result.status, result.err), (FAILED, ""))
        self.assertIn("Error -> demo/tests/a_spec.lua\ndemo/tests/a_spec.lua:2: unexpected symbol near '='\n",
                      result.out)

    def test_a_file_without_tests(self):
        result = self.run_tests('describe("nothing", function() end)')
        self.assertEqual((result.status, result.err), (FAILED, ""))
        self.assertIn("Error -> demo/tests/a_spec.lua\ndemo/tests/a_spec.lua: no tests found; a test is it(name, "
                      "function)\n", result.out)

    def test_a_filter_that_matches_nothing(self):
        result = self.run_tests('it("a", function() end)', "--filter", "zzz", "--format", "tap")
        self.assertResult(result, FAILED, out="1..0\n", err='error: no test has a name that matches "zzz"\n')

    def test_an_application_whose_scripts_fail_at_its_start(self):
        self.write_app({"main.lua": 'keldom.get_object("main.no")\nerror("at start")'}, handlers=[])
        self.write("demo/tests/a_spec.lua", 'it("a", function() end)')
        result = self.kel("test", "demo", "--format", "tap")
        self.assertResult(result, FAILED, out="""\
not ok 1 - demo/tests/a_spec.lua
# the application failed when it was started:
# warning: No such object in DOM
# error: main.lua:2: at start
# stack traceback:
# 	[C]: in function 'error'
# 	main.lua:2: in main chunk
1..1
""")

    def test_warnings_at_the_start_are_shown_and_no_failure(self):
        self.write_app({"main.lua": 'keldom.get_object("main.no")'}, handlers=[])
        self.write("demo/tests/a_spec.lua", 'it("a", function() end)')
        out = "ok 1 - a\n1..1\n"
        self.assertResult(self.kel("test", "demo", "--format", "tap"), SUCCEEDED, out=out,
                          err="warning: No such object in DOM\n")
        self.assertResult(self.kel("test", "demo", "--format", "tap", "--log-level", "error"), SUCCEEDED, out=out)

    def test_an_error_when_the_application_ends(self):
        self.write_app()
        self.write("demo/tests/a_spec.lua", """\
it("a", function() end)
left = newproxy(true)
getmetatable(left).__gc = function() kel.log("late", "error") end
_G.keep = left
kel_test.app.globals.keep = left
""")
        result = self.kel("test", "demo", "--format", "tap")
        self.assertResult(result, FAILED, out="""\
ok 1 - a
not ok 2 - demo/tests/a_spec.lua
# the application failed when it was stopped:
# error: late
1..2
""")

    def test_os_exit_ends_no_run(self):
        messages = self.failures('it("a", function()\n  os.exit(0)\nend)')
        self.assertEqual(messages, ["demo/tests/a_spec.lua @ 1\ndemo/tests/a_spec.lua:2: os.exit would end the tool; a "
                                    "test ends by returning or with error()"])

    def test_a_test_that_cannot_be_resumed_fails(self):
        messages = self.failures('it("a", function() coroutine.yield() end)')
        self.assertIn("attempt to yield", messages[0])


class Limits(TestingTest):
    def test_a_loop_is_ended_wherever_it_is(self):
        loop = "while true do end"
        place = "demo/tests/a_spec.lua:1: "
        for code, places in ((loop, place),
                             (f"xpcall(error, function() {loop} end)", place),
                             (f"xpcall(function() {loop} end, function() {loop} end)", place),
                             # Lua 5.1 puts the place before a coroutine's error once more.
                             (f"coroutine.wrap(function() {loop} end)()", place if ON_LUAJIT else 2 * place),
                             ("while true do coroutine.create(function() end) end", place)):
            with self.subTest(code=code):
                found = self.failures(f'it("a", function() {code} end)\nit("b", function() end)',
                                      "--max-instructions", "100000", "--timeout", "20")
                self.assertEqual(found, [
                    f"demo/tests/a_spec.lua @ 1\n{places}instruction limit of 100000 reached"])

    def test_handlers_of_errors_are_called_below_the_limit(self):
        result = self.run_tests('it("a", function() assert.same({ false, "handled" }, '
                                '{ xpcall(error, function() return "handled" end) }) end)')
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""), result.out)

    def test_the_time_limit_names_the_test(self):
        code = 'while slow do end\ndescribe("a door", function() it("opens", function() while true do end end) end)'
        for start, name in (("", "demo/tests/a_spec.lua: a door opens"), ("slow = true ", "demo/tests/a_spec.lua")):
            result = self.run_tests(start + code, "--max-instructions", "0", "--timeout", "0.3")
            self.assertEqual(result.err, f'error: timed out after 0.3 seconds, while code "{name}" was running\n')

    @unittest.skipIf(ON_LUAJIT, "there the collector finds room for the next test")
    def test_the_memory_limit_names_the_test(self):
        messages = self.failures("""\
it("a", function() kept = {} pcall(function() for i = 1, 1e9 do kept[i] = {} end end) end)
it("b", function() end)
""", "--max-instructions", "0", "--max-memory", "20M")
        self.assertEqual(messages, ["""\
demo/tests/a_spec.lua @ 2
demo/tests/a_spec.lua:2: unexpected error: code "demo/tests/a_spec.lua: b": memory limit of 20971520 bytes reached"""])


class Input(TestingTest):
    def test_a_file_that_does_not_exist(self):
        self.write_app()
        self.assertResult(self.kel("test", "demo", "no_spec.lua"), BAD_INPUT,
                          err="error: test file no_spec.lua: No such file or directory\n")

    def test_an_application_without_tests(self):
        self.write_app()
        self.assertResult(self.kel("test", "demo"), BAD_INPUT,
                          err="error: no test files in demo/tests: expected names like main_spec.lua\n")

    def test_a_faulty_application(self):
        self.write("demo/app.json", "{}")
        result = self.kel("test", "demo")
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertTrue(result.err.endswith(" in demo/app.json\n"), result.err)

    def test_busted_is_not_installed(self):
        self.write("demo/tests/snapshots/a_spec/home.txt", "not compared, and not noted")
        result = self.run_tests('it("a", function() end)', LUA_PATH="/nowhere/?.lua")
        self.assertResult(result, BAD_INPUT, err="error: busted cannot be loaded: module 'busted.core' not found; "
                                                 "install the package lua-busted\n")

    def test_a_format_that_does_not_exist(self):
        result = self.run_tests("", "--format", "html")
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertIn("--format: html not in {terminal,tap,junit}", result.err)

    def test_a_filter_that_is_no_pattern_is_told_before_anything_runs(self):
        for pattern, fault in (("(", "unfinished capture"),
                               ("zzz(a", "unfinished capture"),
                               ("a)", "invalid pattern capture"),
                               ("zzz[", "malformed pattern (missing ']')"),
                               ("[]", "malformed pattern (missing ']')"),
                               ("[^%]", "malformed pattern (missing ']')"),
                               ("%f[a", "malformed pattern (missing ']')"),
                               ("100%", "malformed pattern (ends with '%')"),
                               ("%fa", "missing '[' after '%f' in pattern"),
                               ("%b(", "unbalanced pattern"),
                               ("(a)%2", "invalid capture index"),
                               ("(a%1)", "invalid capture index"),
                               ("%0", "invalid capture index"),
                               (33 * "()", "too many captures")):
            with self.subTest(pattern=pattern):
                result = self.run_tests('print("ran") it("a", function() end)', "--filter", pattern)
                self.assertResult(result, BAD_INPUT, err=f'error: --filter: "{pattern}" is no Lua pattern: {fault}\n')

    def test_all_that_lua_takes_for_a_pattern_can_be_a_filter(self):
        patterns = ("^(a)()%1[]x%]^-]*[^]b]?%b()%f[%W]%%.-$", 32 * "()", "[a-]", "*", "]", "a^$b", "((a)b)%2", "%bxx")
        checks = "".join(f'string.find("aab(x)%", [==[{pattern}]==])\n' for pattern in patterns)
        result = self.run_tests(f'it("x", function()\n{checks}end)')
        self.assertEqual(result.status, SUCCEEDED, result.out)
        for pattern in patterns:
            with self.subTest(pattern=pattern):
                result = self.run_tests('it("x", function() end)', "--filter", pattern, "--list")
                self.assertNotIn("is no Lua pattern", result.err)
                self.assertIn(result.status, (SUCCEEDED, FAILED))

    def test_an_output_file_is_for_junit(self):
        result = self.run_tests("", "--output", "x.xml")
        self.assertResult(result, BAD_INPUT,
                          err="error: --output: is for --format junit\nRun 'kel test --help' for usage.\n")
        self.assertFalse((self.folder / "x.xml").exists())


class Forms(TestingTest):
    CODE = """\
describe("a <door> & #1", function()
  it("opens", function() end)
  it("shuts\\nslowly \\1\\255 # SKIP", function() error("]]> \\27[31m") end)
  pending("is \\"painted\\"")
  it("locks", function() assert.equal("a", "b") end)
end)
"""

    def test_tap_is_one_stream_with_one_plan(self):
        self.write("demo/tests/b_spec.lua", 'it("b", function() end)')
        result = self.run_tests(self.CODE.replace("\\255", ""), "--format", "tap")
        self.assertEqual((result.status, result.err), (FAILED, ""))
        points = [line for line in result.out.splitlines() if not line.startswith("#")]
        self.assertEqual(points, [
            "ok 1 - a <door> & \\#1 opens",
            "not ok 2 - a <door> & \\#1 shuts slowly   \\# SKIP",
            'ok 3 - a <door> & \\#1 is "painted" # SKIP ',
            "not ok 4 - a <door> & \\#1 locks",
            "ok 5 - b",
            "1..5",
        ])

    def test_junit_is_one_document_with_a_suite_a_file(self):
        self.write("demo/tests/b_spec.lua", 'it("b", function() kel_test.press("main.ok") error("x") end)')
        result = self.run_tests(self.CODE, "--format", "junit")
        self.assertEqual((result.status, result.err), (FAILED, ""))
        root = ElementTree.fromstring(result.out)
        self.assertEqual(root.tag, "testsuites")
        self.assertEqual([root.get(name) for name in ("tests", "failures", "errors", "skipped")],
                         ["5", "1", "2", "1"])
        first, second = root
        self.assertEqual((first.get("name"), second.get("name")), ("demo/tests/a_spec.lua", "demo/tests/b_spec.lua"))
        self.assertEqual([first.get(name) for name in ("tests", "failures", "errors", "skipped")],
                         ["4", "1", "1", "1"])
        door = "a <door> & #1 "
        self.assertEqual([(case.get("name"), case.get("line"), [child.tag for child in case]) for case in first],
                         [(door + "opens", "2", []), (door + "shuts\nslowly ?? # SKIP", "3", ["error"]),
                          (door + 'is "painted"', "4", ["skipped"]), (door + "locks", "5", ["failure"])])
        self.assertEqual(first[1][0].text, "demo/tests/a_spec.lua:3: ]]> ?[31m")
        self.assertEqual(first[3][0].get("message"), "demo/tests/a_spec.lua:5: Expected objects to be equal.")
        self.assertEqual(second[0].get("classname"), "demo/tests/b_spec.lua")
        self.assertEqual(second[0].find("system-out").text, "pressed main.ok\n")

    def test_junit_in_a_file_leaves_the_terminal_to_the_reader(self):
        result = self.run_tests('it("a", function() end)', "--format", "junit", "--output", "r.xml")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertRegex(result.out, r"^\+\n1 success / 0 failures ")
        self.assertEqual(ElementTree.parse(self.folder / "r.xml").getroot().get("tests"), "1")
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["demo", "r.xml"])

    def test_an_output_file_that_cannot_be_written_stays_as_it_was(self):
        (self.folder / "r.xml").mkdir()
        result = self.run_tests('it("a", function() end)', "--format", "junit", "--output", "r.xml")
        self.assertEqual((result.status, result.err), (BAD_INPUT, "error: output file r.xml: Is a directory\n"))
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["demo", "r.xml"])


class Helpers(TestingTest):
    def assert_message(self, code, message):
        """That a test of this code, in line 2, fails with this message."""
        found = self.failures(f'it("a", function()\n  {code}\nend)')
        self.assertEqual(found, [f"demo/tests/a_spec.lua @ 1\ndemo/tests/a_spec.lua:2: {message}"])

    def assert_passes(self, code):
        result = self.run_tests(f'it("a", function()\n{code}\nend)')
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""), result.out)

    def test_the_application_is_known(self):
        self.assert_passes("""\
assert.equal("demo", kel_test.app.name)
assert.equal("demo", kel_test.app.path)
assert.equal(pressed, kel_test.app.globals.pressed)""")

    def test_press_and_send(self):
        self.assert_passes("""\
kel_test.press("main.ok")
kel_test.send("press", "main.ok")
kel.queue_event("press", "main.ok")
assert.equal(1, kel_test.pump())
assert.equal(0, kel_test.pump())
kel_test.send("nobody hears")
kel_test.expect_variable("main.ok.count", 3)""")

    def test_a_wrong_target_is_told_with_the_nearest(self):
        self.assert_message('kel_test.press("main.okk")', 'there is no object "main.okk"; did you mean main.ok?')
        self.assert_message('kel_test.send("press", "elsewhere")', 'there is no object "elsewhere"')
        self.assert_message('kel_test.send("")', 'expected the name of an event, found ""')

    def test_variables(self):
        self.assert_passes("""\
assert.equal("heat", kel_test.variable("mode"))
assert.equal(21, kel_test.variable("target"))
kel_test.set_variable("target", 21.5)
kel_test.expect_variable("target", 21.5)
kel_test.set_variable("locked", true)
kel_test.expect_variable("locked", true)
kel_test.expect_variable("locked", 1)
assert.same({ count = 0, text = "OK", kld_x = 5, kld_y = 0, kld_width = 20, kld_height = 10, kld_hidden = 0 },
            kel_test.values("main.ok"))
assert.equal("OK", kel_test.values("main")["ok.text"])""")

    def test_expectations_of_variables(self):
        self.assert_message('kel_test.expect_variable("target", 21.5)', "variable target: expected 21.5, found 21")
        self.assert_message('kel_test.expect_variable("target", "21")', 'variable target: expected "21", found 21')
        self.assert_message('kel_test.expect_variable("mode", nil)', 'variable mode: expected nil, found "heat"')
        self.assert_message('kel_test.expect_variable("locked", true)', "variable locked: expected 1, found 0")

    def test_a_call_that_takes_the_place_of_its_caller_is_told_with_the_test(self):
        for code, message in (('expect_variable("mode", 1)', 'variable mode: expected 1, found "heat"'),
                              ('press("no")', 'there is no object "no"')):
            found = self.failures(f'it("a", function()\n  return kel_test.{code}\nend)')
            self.assertEqual(found, [f"demo/tests/a_spec.lua @ 1\ndemo/tests/a_spec.lua:1: {message}"])

    def test_a_wrong_key_is_told_with_the_nearest(self):
        nearest = 'there is no variable "targt"; did you mean target?'
        for code in ('expect_variable("targt", 1)', 'variable("targt")', 'set_variable("targt", 1)'):
            self.assert_message("kel_test." + code, nearest)

    def test_wrong_arguments_are_told_where_they_are_given(self):
        calls = {
            "press()": "the name of an object, found nil",
            'send("press", 5)': "the name of an object, found 5",
            "values(true)": "the name of an object, found true",
            "send(5)": "the name of an event, found 5",
            "send()": "the name of an event, found nil",
            "variable()": "the key of a variable, found nil",
            "set_variable(1, 2)": "the key of a variable, found 1",
            'set_variable("target")': "a number, a string or a boolean, found nil",
            'expect_variable(nil, "heat")': "the key of a variable, found nil",
            'expect_warning("x")': "an action, a function, found nil",
            "expect_warning(kel_test.pump)": "a text or a pattern, found function",
            "expect_snapshot()": "the name of a screen, found nil",
            'expect_snapshot("home", 5)': "the name of a snapshot, found 5",
            'expect_snapshot("home", false)': "the name of a snapshot, found false",
        }
        code = "".join(f"it([[{call}]], function() local x = kel_test.{call} return x end)\n" for call in calls)
        messages = [re.sub("function: .*", "function", message) for message in self.failures(code)]
        self.assertEqual(messages, [f"demo/tests/a_spec.lua @ {line}\ndemo/tests/a_spec.lua:{line}: expected {text}"
                                    for line, text in enumerate(calls.values(), 1)])

    def test_a_colon_in_the_place_of_a_dot_is_told(self):
        for call, meaning in (('press("main.ok")', "the name of an object"), ('send("x")', "the name of an event"),
                              ('variable("mode")', "the key of a variable"),
                              ('expect_warning("x", print)', "a text or a pattern"),
                              ('expect_snapshot("home")', "the name of a screen")):
            self.assert_message("kel_test:" + call, f'expected {meaning}, found kel_test: write "." and not ":"')

    def test_values_that_differ_look_different(self):
        self.assert_message('kel_test.set_variable("target", 0.1 + 0.2) kel_test.expect_variable("target", 0.3)',
                            "variable target: expected 0.3, found 0.30000000000000004")
        self.assert_message('kel_test.set_variable("target", 0.1) kel_test.expect_variable("target", 1e300)',
                            "variable target: expected 1e+300, found 0.1")
        self.assert_message(r'kel_test.set_variable("main.ok.text", "a\n\\n\t\r\1") '
                            r'kel_test.expect_variable("main.ok.text", "é\127")',
                            r'variable main.ok.text: expected "é\127", found "a\n\\n\t\r\001"')

    def test_a_value_that_no_variable_can_have(self):
        messages = self.failures('it("a", function() kel_test.set_variable("target", {}) end)')
        self.assertIn(":1: expected a number, a string or a boolean, found table", messages[0])
        messages = self.failures('it("a", function() kel_test.set_variable("target", "x") end)')
        self.assertIn(":1: unexpected warning: ", messages[0])

    def test_setting_a_variable_calls_its_handlers(self):
        messages = self.failures('it("a", function() kel_test.set_variable("mode", "cool") end)')
        self.assertIn(":1: unexpected error: main.lua:7: boom", messages[0])

    def test_expected_warnings(self):
        self.assert_passes("""\
kel_test.expect_warning("No such object", function() kel_test.send("warn") end)
kel_test.expect_warning("^No such %a+ in DOM$", function() kel_test.send("warn") end)
kel_test.expect_warning("boom", function() kel_test.press("main.cancel") end)""")

    def test_a_warning_that_does_not_come(self):
        self.assert_message('kel_test.expect_warning("late", kel_test.pump)', 'no warning with "late" was logged')

    def test_other_warnings_than_the_expected_one(self):
        self.assertEqual(self.failures("""\
it("a", function()
  keldom.get_object("main.no")
  kel_test.expect_warning("mine", function()
    kel.log("mine", "warning")
    kel.log("another", "error")
  end)
end)
"""), ["""\
demo/tests/a_spec.lua @ 1
demo/tests/a_spec.lua:2: unexpected warning: No such object in DOM
demo/tests/a_spec.lua:5: unexpected error: another"""])


class Snapshots(TestingTest):
    CODE = 'it("a", function()\n  kel_test.expect_snapshot("home")\nend)'
    FILE = "demo/tests/snapshots/a_spec/home.txt"
    TEXT = """\
screen home 100x80
layer home.main 100x80 at 0,0
  control main.ok 20x10 at 5,0 text "OK 0" #ffffff 16px left
  control main.cancel 20x10 at 0,0
"""

    def stored(self):
        return {str(path.relative_to(self.folder / "demo/tests/snapshots")): path.read_text(encoding="utf-8")
                for path in (self.folder / "demo/tests/snapshots").rglob("*.*")}

    def test_a_missing_one_fails_and_writes_nothing(self):
        self.assertEqual(self.failures(self.CODE), [f"""\
demo/tests/a_spec.lua @ 1
demo/tests/a_spec.lua:2: no snapshot {self.FILE}; kel test --update-snapshots writes it"""])
        self.assertFalse((self.folder / "demo/tests/snapshots").exists())

    def test_an_update_writes_it_and_then_it_holds(self):
        self.assertEqual(self.run_tests(self.CODE, "--update-snapshots").status, SUCCEEDED)
        self.assertEqual(self.stored(), {"a_spec/home.txt": self.TEXT})
        result = self.run_tests(self.CODE)
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))

    def test_a_difference_is_shown_line_by_line(self):
        self.write(self.FILE, self.TEXT.replace("OK 0", "OK 9"))
        self.assertEqual(self.failures(self.CODE), [f"""\
demo/tests/a_spec.lua @ 1
demo/tests/a_spec.lua:2: snapshot {self.FILE} differs:
--- {self.FILE}
+++ what is shown
@@ -1,4 +1,4 @@
 screen home 100x80
 layer home.main 100x80 at 0,0
-  control main.ok 20x10 at 5,0 text "OK 9" #ffffff 16px left
+  control main.ok 20x10 at 5,0 text "OK 0" #ffffff 16px left
   control main.cancel 20x10 at 0,0"""])

    def test_distant_changes_are_shown_apart(self):
        children = [{"type": "control", "name": f"c{i}", "width": 1, "height": 1} for i in range(20)]
        members = {"layers": [{"name": "main", "children": children}], "handlers": []}
        lines = ["screen home 100x80", "layer home.main 100x80 at 0,0"]
        lines += [f"  control main.c{i} 1x1 at 0,0" for i in range(20)]
        stored = ["extra"] + lines[:12] + lines[13:]
        self.write_app(**members)
        self.write("demo/tests/a_spec.lua", self.CODE)
        self.write(self.FILE, "\n".join(stored))  # no line end
        out = self.kel("test", "demo").out
        difference = out[out.index("@@"):]
        self.assertEqual(difference, """\
@@ -1,4 +1,3 @@
-extra
 screen home 100x80
 layer home.main 100x80 at 0,0
   control main.c0 1x1 at 0,0
@@ -11,6 +10,7 @@
   control main.c7 1x1 at 0,0
   control main.c8 1x1 at 0,0
   control main.c9 1x1 at 0,0
+  control main.c10 1x1 at 0,0
   control main.c11 1x1 at 0,0
   control main.c12 1x1 at 0,0
   control main.c13 1x1 at 0,0
@@ -19,4 +19,4 @@
   control main.c16 1x1 at 0,0
   control main.c17 1x1 at 0,0
   control main.c18 1x1 at 0,0
-  control main.c19 1x1 at 0,0
\\ No newline at end of file
+  control main.c19 1x1 at 0,0
""")

    def test_a_name_tells_snapshots_of_a_screen_apart(self):
        code = """\
it("a", function()
  kel_test.expect_snapshot("home", "before")
  kel_test.press("main.ok")
  kel_test.expect_snapshot("home", "after-press_1")
end)
"""
        self.assertEqual(self.run_tests(code, "--update-snapshots").status, SUCCEEDED)
        self.assertEqual(self.stored(), {"a_spec/before.txt": self.TEXT,
                                         "a_spec/after-press_1.txt": self.TEXT.replace("OK 0", "OK 1")})

    def test_a_name_that_is_used_twice_must_mean_the_same(self):
        code = ('it("a", function()\n  kel_test.expect_snapshot("home")\n  kel_test.press("main.ok")\n'
                '  kel_test.expect_snapshot("home")\nend)')
        self.assertIn("a_spec.lua:4: snapshot demo/", self.failures(code, "--update-snapshots")[0])
        self.assertEqual(self.stored(), {"a_spec/home.txt": self.TEXT})

    def test_unused_ones_are_noted_when_all_tests_ran_and_passed(self):
        self.write("demo/tests/snapshots/a_spec/old.txt", "x")
        self.write("demo/tests/snapshots/a_spec/older.txt", "x")
        self.write("demo/tests/snapshots/a_spec/readme.md", "x")
        note = "note: snapshot demo/tests/snapshots/a_spec/{}.txt: no test compares it\n".format
        result = self.run_tests(self.CODE, "--update-snapshots")
        self.assertEqual((result.status, result.err), (SUCCEEDED, note("old") + note("older")))
        for code, options in ((self.CODE, ("--filter", "a")), (self.CODE, ("--list",)),
                              (self.CODE + '\nit("b", function() error("x") end)', ())):
            self.assertEqual(self.run_tests(code, *options).err, "")

    def test_a_screen_or_a_name_that_cannot_be(self):
        messages = self.failures("""\
it("a", function() kel_test.expect_snapshot("hom") end)
it("b", function() kel_test.expect_snapshot("home", "../up") end)
""", "--update-snapshots")
        self.assertEqual([message.split("\n")[1] for message in messages], [
            'demo/tests/a_spec.lua:1: no screen "hom"; did you mean home?',
            'demo/tests/a_spec.lua:2: snapshot name "../up" has more than letters, digits, "_" and "-"'])

    def test_one_that_cannot_be_written(self):
        self.write("demo/tests/snapshots", "a file")
        self.assertIn(f"a_spec.lua:2: snapshot {self.FILE}: Not a directory",
                      self.failures(self.CODE, "--update-snapshots")[0])


class Sandbox(TestingTest):
    LOOK = """\
local paths, seen = {}, {}
local function look(value, path)
  table.insert(paths, path)
  if type(value) ~= "table" or seen[value] then return end
  seen[value] = true
  for key, field in pairs(value) do look(field, path .. "." .. tostring(key)) end
end
look(_G, "_G")
look(getmetatable(""), "(string)")
table.sort(paths)
print(table.concat(paths, " "))
print(pcall(getmetatable, keldom.get_application()))
print(loadstring("\\27Lua"))
"""
    LIBRARIES = ("table", "math", "string", "coroutine", "os", "kel", "keldom")

    def test_scripts_find_what_they_find_on_the_device(self):
        scripts = {"main.lua": "function look_around()\n" + self.LOOK + "end look_around()"}
        handlers = [{"event": "look", "function": "look_around"}]
        self.write_app(scripts, handlers=handlers)
        expected = self.kel("run", "demo", "--event", "look").out
        at_start, at_event = expected[:len(expected) // 2], expected[len(expected) // 2:]
        self.assertEqual(at_start, at_event)
        self.assertNotRegex(at_start, r"\b(io|require|package|debug|dofile|os\.exit|kel_test|describe)\b")
        for library in self.LIBRARIES:
            self.assertRegex(at_start, rf" _G\.{library}\.\w+ ")
        leaks = "".join(f"{library}.leak = function() end\n" for library in self.LIBRARIES)
        self.write("demo/tests/a_spec.lua", leaks + """\
assert(io and require and debug and package and dofile and os.getenv and newproxy)
for _, name in ipairs({ "table", "math", "string", "coroutine", "os", "kel", "keldom" }) do
  assert(require(name) == _G[name] and _G[name].leak)
end
leaked = 1
_G.leaked_too = 1
it("looks", function() kel_test.send("look") assert.equal(1, 2) end)
""")
        printed = self.kel("test", "demo").out.split("printed:\n")[1]
        self.assertEqual(printed, at_event)

    def test_a_script_that_relies_on_a_closed_library_fails_in_the_test(self):
        for library in ('require("os")', 'io.write("x")', "os.getenv('HOME')", "debug.getinfo(1)"):
            with self.subTest(library=library):
                self.write_app({"main.lua": f"function pressed()\n  {library}\nend"},
                               handlers=[{"event": "press", "target": "main.ok", "function": "pressed"}])
                self.write("demo/tests/a_spec.lua", 'it("a", function() kel_test.press("main.ok") end)')
                result = self.kel("test", "demo")
                self.assertEqual(result.status, FAILED)
                self.assertRegex(result.out, r"a_spec\.lua:1: unexpected error: main\.lua:2: attempt to ")

    def test_globals_of_tests_and_of_scripts_are_apart(self):
        self.write_app({"main.lua": "shared = { n = 1 }\nfunction pressed() shared.n = shared.n + (mine or 1) end\n"
                                   "function log() kel.log('text') end"},
                       handlers=[{"event": "press", "target": "main.ok", "function": "pressed"},
                                 {"event": "log", "function": "log"}])
        self.write("demo/tests/a_spec.lua", """\
it("a", function()
  mine = 10
  _G.mine = 10
  kel_test.press("main.ok")
  assert.equal(2, shared.n)
  kel_test.app.globals.mine = 10
  kel_test.press("main.ok")
  assert.equal(12, shared.n)
  kel_test.app.globals.kel.log = function() shared.n = 0 end
  kel_test.send("log")
  assert.equal(0, shared.n)
end)
""")
        result = self.kel("test", "demo")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""), result.out)


class Manual(TestingTest):
    PAGE = (PROJECT / "docs/testing.md").read_text(encoding="utf-8")

    def test_it_names_every_helper_with_its_arguments(self):
        helpers = (PROJECT / "lua/kel_test.lua").read_text(encoding="utf-8")
        defined = re.findall(r"^function kel_test\.(\w+\([^)]*\))", helpers, re.MULTILINE)
        told = re.findall(r"^\| `(\w+\([^)]*\))` \|", self.PAGE, re.MULTILINE)
        self.assertEqual(len(told), 9)
        self.assertEqual(sorted(told), sorted(re.sub(r", (target|name)\)", r" [, \1])", text) for text in defined))
