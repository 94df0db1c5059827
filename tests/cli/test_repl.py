# test_repl.py: `kel repl`: lines from a pipe, and a user at a terminal.

import contextlib
import fcntl
import os
import pty
import re
import resource
import select
import signal
import subprocess
import termios
import time
import unittest

from kel_tool import BAD_INPUT, FAILED, KEL, ON_LUAJIT, SUCCEEDED, Result, ToolTest, environment

SECONDS = 60  # longer than anything takes on a busy machine


class ReplTest(ToolTest):
    def repl(self, *lines, arguments=("demo",), merged=False):
        """Sends lines through a pipe."""
        completed = subprocess.run([KEL, "repl", *arguments], cwd=self.folder, env=environment(HOME=None),
                                   input="".join(line + "\n" for line in lines).encode(), stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT if merged else subprocess.PIPE, timeout=SECONDS,
                                   check=False)
        return Result(completed)

    def assertShown(self, pairs, **application):
        """Each line has its text as the one result, whatever came before."""
        self.write_app(**application)
        result = self.repl(*(line for line, _ in pairs))
        self.assertResult(result, SUCCEEDED, "".join(text for _, text in pairs))


class Results(ReplTest):
    def test_values_are_shown_as_lua_would_have_them(self):
        self.assertShown([
            ("1 + 1", "2\n"),
            ("0.1, -7, 1e300, 1/0, -1/0, 0/0", "0.1, -7, 1e+300, inf, -inf, nan\n"),
            ("nil", "nil\n"),
            ("true, false, nil", "true, false, nil\n"),
            (r"""'a "b"\n\\ °\t\1' .. '7\255'""", '"a \\"b\\"\\n\\\\ °\\t\\0017\\255"\n'),
            ("", ""),
            ("(function() end)()", ""),
            ("x = 5", ""),
            ("x", "5\n"),
            ("= x, 6", "5, 6\n"),
            ("return x + 1", "6\n"),
            ("-- nothing", ""),
        ])

    def test_tables_are_shown_in_the_order_of_their_keys(self):
        self.assertShown([
            ("{}", "{}\n"),
            ("{3, 2, 1}", "{ 3, 2, 1 }\n"),
            ("{b = 1, a = 2, [2] = 'two', 'one', ['end'] = 3, ['A b'] = 4, [-1] = 5, [4.5] = 6, [true] = 7}",
             '{\n  "one",\n  "two",\n  [-1] = 5,\n  [4.5] = 6,\n  ["A b"] = 4,\n  a = 2,\n  b = 1,\n  ["end"] = 3,\n'
             "  [true] = 7\n}\n"),
            ("{a = {b = {1, 2}}}", "{ a = { b = { 1, 2 } } }\n"),
            ("{a = {string.rep('x', 40), string.rep('y', 40)}}",
             '{\n  a = {\n    "' + "x" * 40 + '",\n    "' + "y" * 40 + '"\n  }\n}\n'),
            ("{{{{{}, {1}}}}}", "{ { { { {}, {...} } } } }\n"),
        ])

    def test_tables_in_themselves_end(self):
        self.assertShown([
            ("t = {} t.self = t t.list = {t}", ""),
            ("t", "{ list = { <cycle> }, self = <cycle> }\n"),
            ("s = {} return {s, s}", "{ {}, {} }\n"),
        ])

    def test_large_tables_are_cut(self):
        self.write_app()
        result = self.repl("t = {} for i = 1, 100000 do t[i] = i end return t", "wide = {} for i = 1, 100 do wide[i] = "
                           "{} for j = 1, 100 do wide[i][j] = wide end end return #wide")
        lines = result.out.splitlines()
        self.assertEqual(lines[:3], ["{", "  1,", "  2,"])
        self.assertEqual(lines[-4:], ["  1000,", "  ... 99000 more", "}", "100"])

    def test_handles_are_shown_with_kind_and_name(self):
        table = {"type": "table", "name": "list", "rows": 1, "cols": 1, "width": 9, "height": 9,
                 "templates": [{"name": "row", "width": 9, "height": 9}]}
        self.assertShown([
            ('ok = keldom.get_object("main.ok")', ""),
            ("ok", "<control main.ok>\n"),
            ("ok, 1", "<control main.ok>, 1\n"),
            ("{button = ok, [ok] = 1}", "{ button = <control main.ok>, [<control main.ok>] = 1 }\n"),
            ('keldom.get_object("home.main")', "<layer instance home.main>\n"),
            ('keldom.get_object("home.main"):get_layer()', "<layer main>\n"),
            ("keldom.get_screens()", "{ <screen home> }\n"),
            ("keldom.get_application()", "<application>\n"),
            ('keldom.get_object("main"):get_children()', "{ <control main.ok>, <group main.bar>, <table main.list> }\n"),
            ("ok:delete()", ""),
            ("ok", "<stale control main.ok>\n"),
        ], layers=[{"name": "main", "children": [
            {"type": "control", "name": "ok", "width": 1, "height": 1},
            {"type": "group", "name": "bar", "children": []}, table]}])

    def test_functions_and_coroutines_are_shown_as_tostring_has_them(self):
        self.write_app()
        result = self.repl("print", "coroutine.create(function() end)")
        self.assertRegex(result.out, r"\Afunction: 0x[0-9a-f]+\nthread: 0x[0-9a-f]+\n\Z")

    def test_metamethods_of_scripts_are_not_called(self):
        self.write_app()
        result = self.repl("setmetatable({1}, {__index = error, __tostring = error, __len = error})")
        self.assertResult(result, SUCCEEDED, "{ 1 }\n")

    def test_results_in_great_number_are_an_error_like_any_other(self):
        self.write_app()
        result = self.repl("unpack({}, 1, 7990)", "1")
        self.assertResult(result, FAILED, "1\n", "error: stack overflow (too many results)\n")


class Code(ReplTest):
    def test_unfinished_code_goes_on_on_the_next_line(self):
        self.assertShown([
            ("for i = 1, 2 do", ""),
            ("  print(i)", ""),
            ("end", "1\n2\n"),
            ("(function(a,", ""),
            ("b) return a + b end)(3,", ""),
            ("4)", "7\n"),
            ("1 +", ""),
            ("2", "3\n"),
            ("[[a", ""),
            (":help", ""),
            ("]]", '"a\\n:help\\n"\n'),
        ])

    def test_input_that_ends_too_early_is_an_error(self):
        self.write_app()
        result = self.repl("if true then", "x = 1")
        self.assertResult(result, FAILED, err="error: stdin:3: 'end' expected (to close 'if' at line 1) near '<eof>'\n")

    def test_a_string_in_quotes_ends_with_its_line(self):
        self.write_app()
        fault = "error: stdin:1: unfinished string near '<eof>'\n"
        result = self.repl('"unfinished', "'2", "1", merged=True)
        self.assertResult(result, FAILED, fault * 2 + "1\n")
        result = self.repl('"a\\', 'b"', '"a\\', "b", "2", merged=True)
        self.assertEqual((result.status, result.out.splitlines()[0], result.out.splitlines()[-1]),
                         (FAILED, '"a\\nb"', "2"))

    def test_the_last_line_needs_no_end(self):
        self.write_app()
        completed = subprocess.run([KEL, "repl", "demo"], cwd=self.folder, env=environment(), input=b"1 + 1",
                                   capture_output=True, timeout=SECONDS, check=False)
        self.assertResult(Result(completed), SUCCEEDED, "2\n")

    def test_no_error_ends_the_session(self):
        self.write_app()
        result = self.repl("x = = 1", "error('boom', 0)", "nosuch.field", "error({})", "error()",
                           "error(setmetatable({}, {__tostring = function() return 'an object' end}))",
                           "keldom.get_object('main.okk')", "\x1bLua", "2", merged=True)
        call = "stack traceback:\n\t[C]: in function 'error'\n\tstdin:1: in main chunk\n"
        if ON_LUAJIT: # which leaves the caller of a last call out
            call = "stack traceback:\n\t[builtin#19]: at ADDRESS\n"
            result.out = re.sub("0x[0-9a-f]+", "ADDRESS", result.out)
        self.assertResult(result, FAILED,
                          "error: stdin:1: unexpected symbol near '='\n"
                          "error: boom\n" + call +
                          "error: stdin:1: attempt to index global 'nosuch' (a nil value)\n"
                          "stack traceback:\n\tstdin:1: in main chunk\n"
                          "error: (error object is a table value)\n" + call +
                          "error: (error object is a nil value)\n" + call +
                          "error: an object\n" + call +
                          "warning: No such object in DOM\n"
                          "error: stdin: precompiled code is not run here\n"
                          "2\n")

    def test_locals_end_with_their_line_and_globals_stay(self):
        self.assertShown([("local a = 1; b = a", ""), ("a, b", "nil, 1\n")])

    def test_scripts_have_run_before_and_events_are_delivered_after_each_line(self):
        self.write_app(scripts={"a.lua": 'function go(e) print("pressed " .. e.target) end\nprint("ready")'},
                       handlers=[{"event": "press", "function": "go"}])
        result = self.repl('kel.queue_event("press", "main.ok") return 1', "2")
        self.assertResult(result, SUCCEEDED, "ready\n1\npressed main.ok\n2\n")


class Status(ReplTest):
    def test_success_when_nothing_failed(self):
        self.write_app()
        self.assertResult(self.repl(), SUCCEEDED)
        self.assertResult(self.repl('kel.log("careful", "warning")'), SUCCEEDED, err="warning: careful\n")

    def test_failure_when_a_line_a_handler_or_a_script_failed(self):
        self.write_app(scripts={"a.lua": "function go() error('boom', 0) end"},
                       handlers=[{"event": "press", "function": "go"}])
        self.assertEqual(self.repl("x = = 1", "1").status, FAILED)
        self.assertEqual(self.repl("kel.queue_event('press')").status, FAILED)
        self.assertEqual(self.repl(":event press", ":quit").status, FAILED)
        self.assertEqual(self.repl(":nosuch").status, FAILED)
        self.write_app(scripts={"a.lua": "error('boom', 0)"})
        self.assertEqual(self.repl("1").status, FAILED)

    def test_an_application_that_cannot_be_loaded_is_bad_input(self):
        self.assertEqual(self.repl("1", arguments=("nosuch",)).status, BAD_INPUT)


class Commands(ReplTest):
    def test_tree_and_vars_show_what_there_is_now(self):
        self.write_app(variables={"count": {"type": "u8", "value": 1}})
        result = self.repl('keldom.get_object("main.ok"):set_x(9) kel.set_value("count", 2)', ":tree main.ok",
                           ":vars count", ":tree main.okk", ":vars cuont", merged=True)
        self.assertResult(result, FAILED, "control main.ok  9,0  20x10\ncount  u8      2\n"
                          'error: there is no object "main.okk"; did you mean main.ok?\n'
                          'error: there is no variable whose key begins with "cuont"; did you mean count?\n')

    def test_event_sends_one(self):
        self.write_app(scripts={"a.lua": "function go(e) print(e.name, e.target) end"},
                       handlers=[{"event": "press", "function": "go"}])
        result = self.repl(":event press:main.ok", ":event press", merged=True)
        self.assertResult(result, SUCCEEDED, "press\tmain.ok\npress\tnil\n")
        result = self.repl(":event press:", ":event press:main.okk", merged=True)
        self.assertResult(result, FAILED, 'error: expected NAME or NAME:TARGET, found "press:"\n'
                          'error: event "press" on main.okk: there is no object of that name; did you mean main.ok?\n')

    def test_snapshot_draws_a_screen_as_it_is_now(self):
        if "snapshot" in os.environ.get("KEL_ABSENT", "").split():
            self.skipTest("this build draws nothing")
        layers = [{"name": "main", "children": [{"type": "control", "name": "ok", "width": 20, "height": 10,
                                                 "draw": {"text": "{text}"}, "variables": {"text": "before"}}]}]
        self.write_app(layers=layers, screens=[{"name": "home", "layers": [{"layer": "main"}]},
                                               {"name": "empty", "layers": []}])
        result = self.repl('kel.set_value("main.ok.text", "after")', ":snapshot home.txt", ":snapshot empty empty.txt")
        self.assertResult(result, SUCCEEDED)
        self.assertIn("after", (self.folder / "home.txt").read_text(encoding="utf-8"))
        self.assertNotIn("after", (self.folder / "empty.txt").read_text(encoding="utf-8"))
        result = self.repl(":snapshot home.gif", ":snapshot nosuch/home.txt")
        self.assertResult(result, FAILED, err='error: expected a file name that ends in .svg, .png or .txt, found '
                          '"home.gif"\nerror: nosuch/home.txt cannot be written: No such file or directory\n')

    def test_reload_reads_the_files_anew(self):
        self.write_app(scripts={"a.lua": 'print("first")'})
        with self.started() as process:
            self.assertEqual(self.ask(process, "x = 1 return x", 2), "first\n1\n")
            self.write("demo/a.lua", 'print("second")')
            self.assertEqual(self.ask(process, ":reload", 1), "second\n")
            self.assertEqual(self.ask(process, "x", 1), "nil\n")
            self.write("demo/app.json", "{")
            process.stdin.write(b":reload\n")
            self.write("demo/a.lua", 'print("third")')
            self.assertEqual(self.ask(process, "y = 2 return y", 1), "2\n")
            process.stdin.close()
            self.assertEqual(process.wait(SECONDS), FAILED)
            self.assertEqual(process.stderr.read().decode(),
                             "demo/app.json:1:2: found the end of the file, expected a member name in double quotes\n"
                             "1 fault in demo/app.json\n"
                             "note: the application that was loaded before goes on\n")

    @contextlib.contextmanager
    def started(self):
        process = subprocess.Popen([KEL, "repl", "demo"], cwd=self.folder, env=environment(), stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
        with process:
            yield process

    @staticmethod
    def ask(process, line, count):
        process.stdin.write(line.encode() + b"\n")
        return "".join(process.stdout.readline().decode() for _ in range(count))

    def test_a_failing_script_does_not_keep_the_new_one_from_running(self):
        self.write_app(scripts={"a.lua": "x = (x or 0) + 1 error('boom', 0)"})
        result = self.repl(":reload", "x")
        self.assertEqual((result.status, result.out), (FAILED, "1\n"))

    def test_help_names_every_command(self):
        self.write_app()
        result = self.repl(":help")
        self.assertEqual(result.status, SUCCEEDED)
        for word in (":tree [NAME]", ":vars [PREFIX]", ":snapshot [SCREEN] FILE", ":event NAME[:TARGET]", ":reload", ":help", ":quit"):
            self.assertIn(f"  {word} ", result.out)

    def test_blanks_before_the_colon_are_nothing(self):
        self.write_app()
        self.assertIn("\n  :quit ", self.repl(" :help").out)
        self.assertResult(self.repl("\t :quit", "1"), SUCCEEDED)

    def test_quit_ends_the_session(self):
        self.write_app()
        self.assertResult(self.repl(":quit", "1"), SUCCEEDED)

    def test_wrong_commands_are_refused_with_the_nearest(self):
        self.write_app()
        result = self.repl(":trea", ":x", ":", ":tree a b", ":event", ":reload now")
        self.assertResult(result, FAILED, err="error: there is no command :trea; did you mean :tree?\n"
                          "error: there is no command :x\n"
                          "error: there is no command :\n"
                          "error: :tree takes [NAME], found 2 words\n"
                          "error: :event takes NAME[:TARGET], found 0 words\n"
                          "error: :reload takes nothing, found 1 word\n")


class Terminal:
    """A session at a pseudo-terminal of its own."""

    PROMPT = "\n> "

    def __init__(self, folder, *arguments, file_size=None, **changes):
        """file_size: the most that it can write to a file, as on a full disk."""
        controller, terminal = pty.openpty()

        def take_terminal():
            os.setsid()
            fcntl.ioctl(terminal, termios.TIOCSCTTY, 0)
            if file_size is not None:
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (file_size, file_size))

        self.controller = controller
        self.process = subprocess.Popen(
            [KEL, "repl", *arguments], cwd=folder, stdin=terminal, stdout=terminal, stderr=terminal,
            env=environment(LC_ALL="C.UTF-8", NO_COLOR="1", **changes), preexec_fn=take_terminal)
        os.close(terminal)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        os.close(self.controller)

    def wait_for_editing(self):
        """What is typed before the editor has the terminal is echoed by the terminal itself, a second time."""
        end = time.monotonic() + SECONDS
        while termios.tcgetattr(self.controller)[3] & termios.ICANON:
            if time.monotonic() > end:
                raise TimeoutError("the terminal is not being edited")
            time.sleep(0.01)

    def read_until(self, text):
        received = b""
        end = time.monotonic() + SECONDS
        while text.encode() not in received.replace(b"\r", b""):
            ready = select.select([self.controller], [], [], max(0, end - time.monotonic()))[0]
            try:
                chunk = os.read(self.controller, 4096) if ready else b""
            except OSError:
                chunk = b""  # how Linux tells that the last one has left the terminal
            if not chunk:
                raise AssertionError(f"{text!r} did not come, but {received.decode()!r}")
            received += chunk
        return received.decode().replace("\r", "")

    def type(self, keys, until=PROMPT):
        """Types at the prompt; returns what came as far as `until` and with it."""
        self.wait_for_editing()
        os.write(self.controller, keys.encode())
        return self.read_until(until)

    def run(self, line):
        """What a line gives: all between it and the next prompt."""
        shown = self.type(line + "\n")
        return shown[shown.index("\n") + 1:-len(self.PROMPT)]


class AtTerminal(ReplTest):
    CTRL_A, CTRL_C, CTRL_D, TAB, UP, LEFT = "\x01", "\x03", "\x04", "\t", "\x1b[A", "\x1b[D"

    def open(self, **changes):
        changes.setdefault("XDG_STATE_HOME", str(self.folder / "state"))
        terminal = Terminal(self.folder, "demo", **changes)
        self.addCleanup(terminal.close)
        self.greeting = terminal.read_until(Terminal.PROMPT)
        return terminal

    def leave(self, terminal, keys=CTRL_D):
        terminal.wait_for_editing()
        os.write(terminal.controller, keys.encode())
        self.assertEqual(terminal.process.wait(SECONDS), SUCCEEDED)

    def test_lines_are_prompted_for_and_edited(self):
        self.write_app()
        terminal = self.open()
        self.assertTrue(self.greeting.startswith("kel "), self.greeting)
        self.assertIn(", application demo. :help lists the commands, Ctrl-D ends.\n> ", self.greeting)
        self.assertEqual(terminal.run("1 + 1"), "2")
        self.assertTrue(terminal.type("'2'" + self.LEFT * 2 + "1\n").endswith('\n"12"\n> '))
        self.assertIn('"°C"', terminal.run("'°C'"))
        self.assertEqual(terminal.run("'ä" + "\x7f" + "b'"), '"b"')
        self.leave(terminal)

    def test_unfinished_code_has_its_own_prompt_and_ctrl_c_cancels_it(self):
        self.write_app()
        terminal = self.open()
        terminal.type("x = {\n", "\n..> ")
        self.assertIn("^C\n> ", terminal.type(self.CTRL_C))
        terminal.type("x = {\n", "\n..> ")
        terminal.type("7}\n")
        self.assertIn("^C\n> ", terminal.type("this is not Lua" + self.CTRL_C))
        self.assertEqual(terminal.run("x"), "{ 7 }")
        self.leave(terminal)

    def test_ctrl_c_ends_a_script_that_runs(self):
        self.write_app()
        terminal = self.open()
        loops = ("io_ = 1 print('on') while true do end",
                 "print('on') while true do pcall(function() while true do end end) end",
                 "print('on') coroutine.wrap(function() while true do end end)()")
        for loop in loops:
            with self.subTest(loop):
                terminal.type(loop + "\n", "\non\n")
                os.write(terminal.controller, self.CTRL_C.encode())
                self.assertIn("stdin:1: interrupted\n", terminal.read_until(Terminal.PROMPT))
        self.assertEqual(terminal.run("io_"), "1")
        self.leave(terminal)

    def test_ctrl_c_ends_handlers_that_queue_each_other(self):
        self.write_app(scripts={"a.lua": """
            n = 0
            function go() n = n + 1 if n == 1 then print('on') end kel.queue_event('go') end
            function spin() print('on') kel.queue_event('spin') while true do end end
        """}, handlers=[{"event": event, "function": event} for event in ("go", "spin")])
        terminal = self.open()
        for line in ("kel.queue_event('spin')", ":event spin"):
            terminal.type(line + "\n", "\non\n")
            os.write(terminal.controller, self.CTRL_C.encode())
            shown = terminal.read_until(Terminal.PROMPT)
            self.assertIn("a.lua:4: interrupted\n", shown)
            self.assertIn("warning: Interrupted: events that waited are dropped, 1\n", shown)
            self.assertEqual(terminal.run("1"), "1")
        self.leave(terminal)

    HANGS = "print('on') return string.rep('a', 100000):find('.-.-.-.-b')"

    def test_ctrl_c_ends_the_tool_where_a_library_function_does_not_end(self):
        self.write_app()
        terminal = self.open()
        terminal.type(self.HANGS + "\n", "\non\n")
        os.write(terminal.controller, self.CTRL_C.encode())
        time.sleep(0.2)
        self.assertIsNone(terminal.process.poll())
        os.write(terminal.controller, self.CTRL_C.encode())
        shown = terminal.read_until("note: a library function does not end; Ctrl-C again ends kel\n")
        self.assertEqual(shown.count("note: "), 1)
        self.assertIsNone(terminal.process.poll())
        os.write(terminal.controller, self.CTRL_C.encode())
        self.assertEqual(terminal.process.wait(SECONDS), 130)
        self.assertTrue(termios.tcgetattr(terminal.controller)[3] & termios.ICANON)

    def test_ctrl_c_at_the_prompt_never_ends_the_tool(self):
        self.write_app()
        terminal = self.open()
        for _ in range(4):
            self.assertIn("^C\n> ", terminal.type("x" + self.CTRL_C))
        self.assertEqual(terminal.run("1"), "1")
        self.leave(terminal)

    def test_ctrl_c_ends_a_script_of_the_application_at_its_start(self):
        self.write_app(scripts={"a.lua": "print('on') while true do end"})
        terminal = Terminal(self.folder, "demo", XDG_STATE_HOME=str(self.folder))
        self.addCleanup(terminal.close)
        terminal.read_until("on\n")
        os.write(terminal.controller, self.CTRL_C.encode())
        self.assertIn("a.lua:1: interrupted\n", terminal.read_until(Terminal.PROMPT))
        terminal.type(":reload\n", "on\n")
        os.write(terminal.controller, self.CTRL_C.encode())
        self.assertIn("a.lua:1: interrupted\n", terminal.read_until(Terminal.PROMPT))
        self.assertEqual(terminal.run("1"), "1")
        self.leave(terminal)

    def test_the_exit_status_tells_nothing_of_errors_that_the_user_has_seen(self):
        self.write_app()
        terminal = self.open()
        self.assertIn("error: boom\n", terminal.run("error('boom', 0)"))
        self.leave(terminal, ":quit\n")

    def test_tab_completes_from_the_running_application(self):
        self.write_app(variables={"target": 1, "tariff": 2}, scripts={"a.lua": """
            ok = keldom.get_object("main.ok")
            layer, app = keldom.get_layer("main"), keldom.get_application()
            ui = {buttons = {first = ok}, press = print}
            called = false
            trap = setmetatable({}, {__index = function() called = true end})
        """})
        terminal = self.open()
        for typed, shown in (
            ('keldom.get_object("main.c', 'keldom.get_object("main.cancel'),
            ("x = 'home.m", "x = 'home.main"),
            ('kel.get_value("main.ok.kld_wi', 'kel.get_value("main.ok.kld_width'),
            ('kel.set_value("target", kel.get_value("tari',
             'kel.set_value("target", kel.get_value("tariff'),
            ("ok:get_pos", "ok:get_position"),
            ("ui.buttons.first:set_al", "ui.buttons.first:set_al"),
            ("ui.buttons.first:get_par", "ui.buttons.first:get_parents"),
            ("ui.pr", "ui.press"),
            ("print(keldom.get_scr", "print(keldom.get_screen"),
            ("kel.que", "kel.queue_event"),
            ("keld", "keldom"),
            ('"°" .. keldom.get_application():ge', '"°" .. keldom.get_application():ge'),
            ("print('°', tost", "print('°', tostring"),
            ("trap.a", "trap.a"),
            (":tre", ":tree"),
            (":tree main.c", ":tree main.cancel"),
            (":event press:home.m", ":event press:home.main"),
            ("  :tre", "  :tree"),
            (" :tree main.c", " :tree main.cancel"),
            (":snapshot ho", ":snapshot home"),
            (":snapshot home ho", ":snapshot home ho"),
            ('ok:get_value("kld_wi', 'ok:get_value("kld_width'),
            ('ok:set_value("kld_x", 1, "kld_hi', 'ok:set_value("kld_x", 1, "kld_hidden'),
            ("ui.buttons.first:get_data('kld_he", "ui.buttons.first:get_data('kld_height"),
            ('x = ok:key("kld_wi', 'x = ok:key("kld_width'),
            ('layer:get_value("cancel.kld_wi', 'layer:get_value("cancel.kld_width'),
            ('app:get_value("tari', 'app:get_value("tariff'),
            ('nosuch:get_value("kld_wi', 'nosuch:get_value("kld_wi'),
            ('ui:get_value("kld_wi', 'ui:get_value("kld_wi'),
        ):
            with self.subTest(typed):
                terminal.type(typed + self.TAB + "|", "|")
                self.assertEqual(self.typed_line(terminal), shown + "|")
        self.assertEqual(terminal.run("called"), "false")
        self.leave(terminal)

    def typed_line(self, terminal):
        """Makes a text of the line that stands at the prompt, and has Lua show it."""
        shown = terminal.type("]=]" + self.CTRL_A + "[=[" + "\n")
        return shown[:-len(Terminal.PROMPT)].rsplit("\n", 1)[-1][1:-1].replace('\\"', '"')

    def test_tab_twice_lists_what_fits(self):
        self.write_app(scripts={"a.lua": 'ok = keldom.get_object("main.ok")'})
        terminal = self.open()
        shown = terminal.type("ok:get_" + self.TAB + self.TAB, "> ok:get_")
        listed = shown[shown.index("\n"):].split()
        for method in ("get_x", "get_name", "get_position", "get_value", "get_parents", "get_hidden"):
            self.assertIn(method, listed)
        for other in ("set_x", "clone", "get_rows", "__gc"):
            self.assertNotIn(other, listed)
        terminal.type(self.CTRL_C)
        self.leave(terminal)

    def test_lines_are_remembered_from_run_to_run(self):
        self.write_app()
        terminal = self.open()
        for line in ("first = 1", "second = '°'", "second = '°'", ""):
            terminal.run(line)
        self.leave(terminal)
        file = self.folder / "state" / "kel" / "history"
        self.assertEqual(file.read_text(encoding="utf-8"), "first = 1\nsecond = '°'\n")
        self.assertEqual(file.stat().st_mode & 0o777, 0o600)
        self.assertEqual(file.parent.stat().st_mode & 0o777, 0o700)
        terminal = self.open()
        self.assertEqual(terminal.run("first, second"), "nil, nil")
        terminal.type(self.UP * 3 + "\n")
        self.assertEqual(terminal.run("first"), "1")
        self.leave(terminal)

    def test_history_is_in_the_home_folder_when_nothing_else_is_said(self):
        self.write_app()
        terminal = self.open(XDG_STATE_HOME=None, HOME=str(self.folder / "home"))
        terminal.run("x = 1")
        self.leave(terminal)
        self.assertEqual(self.read("home/.local/state/kel/history"), "x = 1\n")

    def test_history_that_has_grown_is_cut_to_its_newest_lines(self):
        self.write_app()
        self.write("state/kel/history", "".join(f"x = {number}\n" for number in range(2000)))
        terminal = self.open()
        self.leave(terminal)
        self.assertEqual(self.read("state/kel/history"), "".join(f"x = {number}\n" for number in range(1000, 2000)))

    def test_history_that_cannot_be_cut_stays_as_it_is(self):
        self.write_app()
        lines = "".join(f"x = {number}\n" for number in range(2500))
        self.write("state/kel/history", lines)
        terminal = Terminal(self.folder, "demo", file_size=4096, XDG_STATE_HOME=str(self.folder / "state"))
        self.addCleanup(terminal.close)
        terminal.read_until(Terminal.PROMPT)
        self.assertEqual(terminal.run("1"), "1")
        self.leave(terminal)
        self.assertEqual(self.read("state/kel/history"), lines)
        self.assertEqual([path.name for path in (self.folder / "state/kel").iterdir()], ["history"])

    def test_history_is_a_regular_file_or_none(self):
        self.write_app()
        folder = self.folder / "state" / "kel"
        folder.mkdir(parents=True)
        for make in (lambda file: file.symlink_to("/dev/zero"), os.mkfifo):
            make(folder / "history")
            terminal = self.open()
            self.assertEqual(terminal.run("1"), "1")
            self.leave(terminal)
            (folder / "history").unlink()

    def test_without_a_place_for_history_all_else_works(self):
        self.write_app()
        terminal = self.open(XDG_STATE_HOME="/proc/nowhere")
        self.assertEqual(terminal.run("1"), "1")
        self.assertEqual(terminal.type(self.UP + "\n", "> 1\n1\n> ")[-8:], "> 1\n1\n> ")
        self.leave(terminal)

    def test_in_a_pipe_ctrl_c_ends_the_tool(self):
        self.write_app()
        process = subprocess.Popen([KEL, "repl", "demo"], cwd=self.folder, env=environment(), stdin=subprocess.PIPE,
                                   stderr=subprocess.PIPE, bufsize=0)
        with process:
            process.stdin.write(b"kel.log('on', 'warning') while true do end\n")
            self.assertEqual(process.stderr.readline(), b"warning: on\n")
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(SECONDS), -signal.SIGINT)

    def read(self, path):
        return (self.folder / path).read_text(encoding="utf-8")


if __name__ == "__main__":
    unittest.main()
