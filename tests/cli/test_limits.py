# test_limits.py: scripts that do not end, eat memory or recurse for ever are stopped with a message that says which one
# it was; the application, and what the command line asks for next, go on wherever the process can.

import os
import pathlib
import re
import signal
import subprocess
import time
import unittest

from kel_tool import BAD_INPUT, FAILED, KEL, ON_LUAJIT, PROJECT, SUCCEEDED, ToolTest, environment

HOSTILE = PROJECT / "tests/cli/hostile"

MAIN = """
function alive() print("alive") end
function again() kel.queue_event("again") end
function hang() print(("x"):rep(30):find(("x*"):rep(30) .. "y")) end
function spin() while true do end end
"""
HANDLERS = [
    {"event": "press", "function": "alive"},
    {"event": "again", "function": "again"},
    {"event": "hang", "target": "main.ok", "function": "hang"},
    {"event": "spin", "target": "main.ok", "function": "spin"},
]
BOUNDS = ("--max-instructions", "1000000", "--max-memory", "4M")
INSTRUCTIONS = "instruction limit of 1000000 reached"
MEMORY = "memory limit of 4194304 bytes reached"

# What is said of a script of that name. After each of them the application's handler still says that it is alive.
SURVIVED = {
    "endless_loop": "endless_loop.lua:2: " + INSTRUCTIONS,
    "endless_loop_in_pcall": "endless_loop_in_pcall.lua:3: " + INSTRUCTIONS,
    "endless_loop_in_coroutine":
        "endless_loop_in_coroutine.lua:2: endless_loop_in_coroutine.lua:2: " + INSTRUCTIONS,
    "endless_calls_of_load": "endless_calls_of_load.lua:2: instruction limit of 10000 reached",
    "endless_error_handler": "endless_error_handler.lua:2: " + INSTRUCTIONS,
    "endless_tostring": "(error object is a table value)",
    "memory_in_small_pieces": 'script "memory_in_small_pieces.lua": ' + MEMORY,
    "memory_in_one_piece": 'script "memory_in_one_piece.lua": ' + MEMORY,
    "memory_by_concatenation": 'script "memory_by_concatenation.lua": ' + MEMORY,
    "deep_recursion": "deep_recursion.lua:2: stack overflow",
    "deep_library_calls": "C stack overflow",
    "error_that_is_a_table": "(error object is a table value)",
    "error_that_is_nil": "(error object is a nil value)",
    "error_in_tostring": "(error object is a table value)",
    "sort_without_order": "sort_without_order.lua:4: invalid order function for sorting",
}
# Those for which the usual bound takes longer than a test should.
BOUNDS_OF = {"endless_calls_of_load": ("--max-instructions", "10000", "--max-memory", "4M")}
# Those that catch what would have ended them, and what they print.
CAUGHT = {
    "memory_caught": "false\tnot enough memory\n1000\n",
    "error_in_error_handler": "false\terror in error handling\n",
}
# Those of which only the end of the process is the end.
FATAL = {
    "endless_pattern": ("before\n", 'timed out after 1 second, while script "endless_pattern.lua" was running'),
    "deep_pattern":
        ("", 'C stack overflow inside a library function, while script "deep_pattern.lua" was running'),
}
if ON_LUAJIT: # it bounds the depth of patterns itself, and asks a function for its code once
    del FATAL["deep_pattern"], SURVIVED["endless_calls_of_load"]
    CAUGHT["endless_calls_of_load"] = ""
    SURVIVED["deep_pattern"] = "deep_pattern.lua:2: pattern too complex"


def without_tracebacks(text):
    return "".join(line for line in text.splitlines(keepends=True)
                   if not line.startswith(("\t", "stack traceback:")))


class LimitsTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_app({"main.lua": MAIN}, handlers=HANDLERS)

    def run_hostile(self, name, *options, **changes):
        result = self.kel("run", "demo", *BOUNDS_OF.get(name, BOUNDS), *options, "--script", os.path.relpath(self.copy(name), self.folder),
                          "--event", "press", **changes)
        result.err = without_tracebacks(result.err)
        return result

    def copy(self, name):
        return self.folder / self.write(f"{name}.lua", (HOSTILE / f"{name}.lua").read_text(encoding="utf-8"))


class HostileScripts(LimitsTest):
    def test_every_script_has_a_test(self):
        names = {path.stem for path in HOSTILE.glob("*.lua")}
        self.assertEqual(names, set(SURVIVED) | set(CAUGHT) | set(FATAL))

    def test_what_a_script_can_be_stopped_from_does_not_stop_the_application(self):
        for name, message in SURVIVED.items():
            with self.subTest(name):
                self.assertResult(self.run_hostile(name), FAILED, "alive\n", f"error: {message}\n")

    def test_a_script_that_catches_what_would_have_ended_it_has_not_failed(self):
        for name, printed in CAUGHT.items():
            with self.subTest(name):
                self.assertResult(self.run_hostile(name), SUCCEEDED, printed + "alive\n")

    def test_out_of_reach_the_process_ends_with_one_message_and_all_output(self):
        for name, (printed, message) in FATAL.items():
            with self.subTest(name):
                self.assertResult(self.run_hostile(name, "--timeout", "1"), FAILED, printed, f"error: {message}\n")


class Bounds(LimitsTest):
    def test_by_default_an_endless_loop_ends(self):
        result = self.kel("run", "demo", "--event", "spin:main.ok", "--event", "press")
        self.assertEqual((result.status, result.out), (FAILED, "alive\n"))
        self.assertTrue(result.err.startswith("error: main.lua:5: instruction limit of 100000000 reached\n"), result.err)

    def test_by_default_a_string_of_a_gigabyte_is_too_long(self):
        result = self.kel("run", "demo", "--exec", "s = 'x' while #s < 2^30 do s = s .. s end", "--event", "press")
        self.assertResult(result, FAILED, "alive\n",
                          'error: code "--exec": memory limit of 268435456 bytes reached\n')

    def test_each_script_and_each_event_has_the_whole_bound(self):
        loop = "for i = 1, 700000 do end"
        result = self.kel("run", "demo", "--max-instructions", "1000000", "--exec", loop, "--exec", loop)
        self.assertResult(result, SUCCEEDED)

    def test_0_is_no_bound(self):
        code = "s = 'x' while #s < 2^28 do s = s .. s end for i = 1, 110e6 do end print(#s)"
        result = self.kel("run", "demo", "--max-instructions", "0", "--max-memory", "0", "--timeout", "0",
                          "--exec", code)
        self.assertResult(result, SUCCEEDED, "268435456\n")

    def test_memory_has_units(self):
        for bound, bytes_ in (("2000000", 2000000), ("600k", 600 * 1024), ("3M", 3 << 20), ("3mb", 3 << 20)):
            with self.subTest(bound):
                result = self.kel("run", "demo", "--max-memory", bound, "--exec", "print(#('x'):rep(1e7))")
                self.assertResult(result, FAILED,
                                  err=f'error: code "--exec": memory limit of {bytes_} bytes reached\n')

    def test_bounds_that_are_none(self):
        for option, value, expected in (
                ("--max-instructions", "-5", 'expected a number from 0 up, found "-5"'),
                ("--timeout", "-1", 'expected a number from 0 up, found "-1"'),
                ("--timeout", "soon", 'expected a number from 0 up, found "soon"'),
                ("--max-memory", "-5", 'expected a number of bytes such as 500k or 64M, found "-5"'),
                ("--max-memory", "5Z", 'expected a number of bytes such as 500k or 64M, found "5Z"')):
            with self.subTest(option=option, value=value):
                self.assertResult(self.kel("run", "demo", option, value), BAD_INPUT,
                                  err=f"error: {option}: {expected}\nRun 'kel run --help' for usage.\n")


class Timeout(LimitsTest):
    def test_the_message_names_the_handler_and_its_event(self):
        result = self.kel("run", "demo", "--timeout", "0.5", "--event", "press", "--event", "hang:main.ok")
        self.assertResult(result, FAILED, "alive\n",
                          'error: timed out after 0.5 seconds, while handler "hang" for "hang" of "main.ok" was '
                          "running\n")

    def test_a_very_long_name_is_cut_between_two_letters(self):
        folder = "\N{GREEK SMALL LETTER ALPHA}" * 100 + "/" # 201 bytes
        script = self.write(folder * 8 + "spin.lua", "while true do end")
        result = self.kel("run", "demo", "--timeout", "1", "--max-instructions", "0", "--script", script)
        name = (folder * 8)[:5 * 101 + 5] # 1015 bytes, with script " before it 1023 of 1024
        self.assertResult(result, FAILED,
                          err=f'error: timed out after 1 second, while script "{name} was running\n')

    def test_it_counts_for_each_thing_that_the_command_line_asks_for(self):
        wait = "local stop = os.clock() + 0.2 while os.clock() < stop do end"
        arguments = [word for _ in range(10) for word in ("--exec", wait)]
        self.assertResult(self.kel("run", "demo", "--timeout", "1.9", *arguments), SUCCEEDED)

    def test_it_counts_for_all_events_that_one_event_brings_about(self):
        code = """function again()
                      local stop = os.clock() + 0.1
                      while os.clock() < stop do end
                      kel.queue_event("again")
                  end"""
        result = self.kel("run", "demo", "--timeout", "1", "--exec", code, "--event", "again")
        self.assertResult(result, FAILED, err='error: timed out after 1 second, while handler "again" for "again" was '
                                              "running\n")

    def test_nobody_who_reads_the_output_does_not_keep_it_from_ending(self):
        code = "while true do print(('x'):rep(1000)) end"
        process = subprocess.Popen([KEL, "run", "demo", "--timeout", "1", "--exec", code], cwd=self.folder,
                                   env=environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.assertEqual(process.wait(timeout=60), FAILED)
        self.assertEqual(process.stderr.read().decode(),
                         'error: timed out after 1 second, while code "--exec" was running\n')

    def full_pipe(self):
        """A pipe that takes nothing more. Gives both ends."""
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        os.set_blocking(writer, False)
        try:
            while os.write(writer, b"x" * 4096):
                pass
        except BlockingIOError:
            os.set_blocking(writer, True)
        return reader, writer

    def hang_with(self, **streams):
        """Its exit status, the time it took, and what it says on standard error if that is not one of the streams."""
        streams = {"stdout": subprocess.DEVNULL, "stderr": subprocess.PIPE, **streams}
        begin = time.monotonic()
        process = subprocess.Popen([KEL, "run", "demo", "--timeout", "1", "--exec", "print('x')", "--event",
                                    "hang:main.ok"], cwd=self.folder, env=environment(), stdin=subprocess.DEVNULL,
                                   **streams)
        self.addCleanup(process.kill)
        said = process.communicate(timeout=60)[1]
        return process.returncode, time.monotonic() - begin, said

    HANG = b'error: timed out after 1 second, while handler "hang" for "hang" of "main.ok" was running\n'

    def test_output_that_waits_for_a_reader_who_never_reads_does_not_keep_the_report_back(self):
        _, full = self.full_pipe()
        status, seconds, said = self.hang_with(stdout=full)
        self.assertEqual((status, said), (FAILED, self.HANG))
        self.assertTrue(1 < seconds < 30, seconds)

    def test_messages_that_nobody_reads_do_not_keep_it_from_ending(self):
        _, full = self.full_pipe()
        for streams in ({"stderr": full}, {"stdout": full, "stderr": full}):
            with self.subTest(**streams):
                status, seconds, _ = self.hang_with(**streams)
                self.assertEqual(status, FAILED)
                self.assertTrue(1 < seconds < 30, seconds)

    def test_the_bound_on_the_report_does_not_depend_on_what_the_process_was_given(self):
        _, full = self.full_pipe()
        ignore = ["sh", "-c", 'trap "" ALRM; exec "$@"', "sh"]
        process = subprocess.Popen([*ignore, KEL, "run", "demo", "--timeout", "1", "--event", "hang:main.ok"],
                                   cwd=self.folder, env=environment(), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=full,
                                   preexec_fn=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGALRM}))
        self.addCleanup(process.kill)
        self.assertEqual(process.wait(timeout=60), FAILED)

    def test_signals_are_the_main_threads(self):
        process = subprocess.Popen([KEL, "run", "demo", "--exec", "kel.log('up', 'warning')", "--event", "hang:main.ok"],
                                   cwd=self.folder, env=environment(), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.assertEqual(process.stderr.readline(), b"warning: up\n")
        masks = {}
        for task in os.listdir(f"/proc/{process.pid}/task"):
            status = pathlib.Path(f"/proc/{process.pid}/task/{task}/status").read_text(encoding="ascii")
            masks[int(task)] = int(re.search(r"^SigBlk:\t(\w+)", status, re.MULTILINE)[1], 16)
        interrupt = 1 << (signal.SIGINT - 1)
        self.assertEqual(masks.pop(process.pid) & interrupt, 0)
        self.assertEqual({mask & interrupt for mask in masks.values()}, {interrupt})


class Crashes(LimitsTest):
    def test_a_signal_that_somebody_sends_stays_what_it_is(self):
        process = subprocess.Popen([KEL, "run", "demo", "--exec", "kel.log('up', 'warning')", "--event", "hang:main.ok"],
                                   cwd=self.folder, env=environment(ASAN_OPTIONS="handle_segv=0"),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.kill)
        self.assertEqual(process.stderr.readline(), b"warning: up\n")
        process.send_signal(signal.SIGSEGV)
        _, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, -signal.SIGSEGV)
        self.assertEqual(err, b"")


if __name__ == "__main__":
    unittest.main()
