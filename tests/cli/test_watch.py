# test_watch.py: `kel run --watch`: files change as people and editors change them, and each change is one run more.
# Nothing here sleeps: each step waits for what the tool says.

import os
import queue
import shutil
import signal
import subprocess
import threading
import time
import unittest

from kel_tool import KEL, ToolTest, environment

PATIENCE = 60 # seconds, for a machine with much else to do
SCRIPT = 'print("version %s")\n'


class Watching:
    """The tool in the background, its two streams in one."""

    def __init__(self, test, *arguments, app="demo"):
        self.test = test
        self.lines = queue.Queue()
        self.process = subprocess.Popen([KEL, "run", app, "--watch", *arguments], cwd=test.folder,
                                        # A run that is given up as it looks for leaks would say so.
                                        env=environment(ASAN_OPTIONS="detect_leaks=0"),
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        test.addCleanup(self.process.wait)
        test.addCleanup(self.process.kill)
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        with self.process.stdout as stream:
            for line in stream:
                self.lines.put(line.decode())

    def expect(self, *lines):
        """The next lines, exactly."""
        deadline = time.monotonic() + PATIENCE
        got = []
        try:
            while len(got) < len(lines):
                got.append(self.lines.get(timeout=max(0.0, deadline - time.monotonic())))
        except queue.Empty:
            pass
        self.test.assertEqual(got, [line + "\n" for line in lines])

    def end(self, with_signal=signal.SIGINT):
        """Ends it as Ctrl-C does, and finds that it said nothing more."""
        self.process.send_signal(with_signal)
        self.test.assertEqual(self.process.wait(timeout=PATIENCE), 0)
        self.reader.join()
        self.test.assertTrue(self.lines.empty())


class Watch(ToolTest):
    def start(self, *arguments, script=SCRIPT % 1, **members):
        self.write_app({"main.lua": script}, **members)
        return Watching(self, *arguments)

    def test_a_file_written_in_place(self):
        tool = self.start()
        tool.expect("version 1")
        self.write("demo/main.lua", SCRIPT % 2)
        tool.expect("changed: demo/main.lua", "version 2")
        tool.end()

    def test_a_file_put_in_place_by_rename(self):
        tool = self.start()
        tool.expect("version 1")
        for version in (2, 3):
            self.write("demo/main.lua.new", SCRIPT % version)
            os.replace(self.folder / "demo/main.lua.new", self.folder / "demo/main.lua")
            tool.expect("changed: demo/main.lua", f"version {version}")
        tool.end()

    def test_a_file_that_goes_and_comes_back(self):
        tool = self.start()
        tool.expect("version 1")
        os.remove(self.folder / "demo/main.lua")
        tool.expect("changed: demo/main.lua",
                    'demo/app.json: $.scripts[0]: cannot read "demo/main.lua" (No such file or directory), expected a '
                    "Lua script", "1 fault in demo/app.json")
        self.write("demo/main.lua", SCRIPT % 2)
        tool.expect("changed: demo/main.lua", "version 2")
        tool.end()

    def test_an_application_that_is_faulty_for_a_while(self):
        tool = self.start()
        tool.expect("version 1")
        good = (self.folder / "demo/app.json").read_text(encoding="utf-8")
        self.write("demo/app.json", "{\n")
        tool.expect("changed: demo/app.json",
                    "demo/app.json:2:1: found the end of the file, expected a member name in double quotes",
                    "1 fault in demo/app.json")
        self.write("demo/main.lua", SCRIPT % 2) # a script of the application, even now
        tool.expect("changed: demo/main.lua",
                    "demo/app.json:2:1: found the end of the file, expected a member name in double quotes",
                    "1 fault in demo/app.json")
        self.write("demo/app.json", good)
        tool.expect("changed: demo/app.json", "version 2")
        tool.end()

    def test_an_application_that_is_not_there_yet(self):
        tool = Watching(self)
        tool.expect("demo: cannot read the file (No such file or directory), expected an application file or a folder "
                    "that holds it as app.json", "1 fault in demo")
        self.write_app({"main.lua": SCRIPT % 1}, folder="made")
        os.rename(self.folder / "made", self.folder / "demo")
        tool.expect("changed: demo", "version 1")
        tool.end()

    def test_a_script_that_the_application_gains(self):
        tool = self.start()
        tool.expect("version 1")
        self.write("demo/lib/more.lua", 'print("more 1")\n')
        app = (self.folder / "demo/app.json").read_text(encoding="utf-8")
        self.write("demo/app.json", app.replace('"main.lua"', '"main.lua", "lib/more.lua"'))
        tool.expect("changed: demo/app.json", "version 1", "more 1")
        self.write("demo/lib/more.lua", 'print("more 2")\n')
        tool.expect("changed: demo/lib/more.lua", "version 1", "more 2")
        tool.end()

    def test_a_script_that_is_awaited_with_its_folder(self):
        tool = self.start()
        tool.expect("version 1")
        good = (self.folder / "demo/app.json").read_text(encoding="utf-8")
        self.write("demo/app.json", good.replace('"main.lua"', '"main.lua", "lib/more.lua"'))
        missing = ('demo/app.json: $.scripts[1]: cannot read "demo/lib/more.lua" (No such file or directory), expected a '
                   "Lua script", "1 fault in demo/app.json")
        tool.expect("changed: demo/app.json", *missing)
        os.mkdir(self.folder / "demo/lib")
        tool.expect("changed: demo/lib", *missing)
        self.write("demo/lib/more.lua", 'print("more 1")\n')
        tool.expect("changed: demo/lib/more.lua", "version 1", "more 1")
        tool.end()

    def test_a_script_that_is_awaited_in_a_folder_that_is_there(self):
        self.write_app({"main.lua": SCRIPT % 1, "more.lua": ""})
        os.remove(self.folder / "demo/more.lua")
        tool = Watching(self)
        missing = ('demo/app.json: $.scripts[1]: cannot read "demo/more.lua" (No such file or directory), expected a Lua '
                   "script", "1 fault in demo/app.json")
        tool.expect(*missing)
        self.write("demo/more.lua", 'print("more 1")\n')
        tool.expect("changed: demo/more.lua", "version 1", "more 1")
        tool.end()

    def start_with_folder(self):
        self.write_app({"scripts/main.lua": SCRIPT % 1})
        tool = Watching(self)
        tool.expect("version 1")
        return tool

    def test_a_folder_that_is_exchanged_by_rename(self):
        tool = self.start_with_folder()
        self.write("demo/new/main.lua", SCRIPT % 2)
        tool.process.send_signal(signal.SIGSTOP) # both renames are done when it looks
        os.rename(self.folder / "demo/scripts", self.folder / "demo/old")
        os.rename(self.folder / "demo/new", self.folder / "demo/scripts")
        tool.process.send_signal(signal.SIGCONT)
        tool.expect("changed: demo/scripts", "version 2")
        self.write("demo/old/main.lua", SCRIPT % 1) # is nobody's business any more
        self.write("demo/scripts/main.lua", SCRIPT % 3)
        tool.expect("changed: demo/scripts/main.lua", "version 3")
        tool.end()

    def test_a_folder_that_is_removed_and_copied_anew(self):
        tool = self.start_with_folder()
        self.write("demo/new/main.lua", SCRIPT % 2)
        tool.process.send_signal(signal.SIGSTOP) # both are done when it looks
        shutil.rmtree(self.folder / "demo/scripts")
        shutil.copytree(self.folder / "demo/new", self.folder / "demo/scripts")
        tool.process.send_signal(signal.SIGCONT)
        tool.expect("changed: demo/scripts, demo/scripts/main.lua", "version 2")
        self.write("demo/scripts/main.lua", SCRIPT % 3)
        tool.expect("changed: demo/scripts/main.lua", "version 3")
        tool.end()

    def test_a_folder_above_the_application_that_is_exchanged(self):
        self.write_app({"main.lua": SCRIPT % 1}, folder="above/demo")
        self.write_app({"main.lua": SCRIPT % 2}, folder="new/demo")
        tool = Watching(self, app="above/demo")
        tool.expect("version 1")
        tool.process.send_signal(signal.SIGSTOP)
        os.rename(self.folder / "above", self.folder / "old")
        os.rename(self.folder / "new", self.folder / "above")
        tool.process.send_signal(signal.SIGCONT)
        tool.expect("changed: above", "version 2")
        tool.end()

    def test_the_file_that_a_link_leads_to(self):
        self.write("elsewhere/real.lua", SCRIPT % 1)
        self.write_app()
        app = (self.folder / "demo/app.json").read_text(encoding="utf-8")
        self.write("demo/app.json", app.replace("{", '{"scripts": ["main.lua", "folder/real.lua"],', 1))
        os.symlink("../links/link.lua", self.folder / "demo/main.lua")
        os.symlink("../elsewhere", self.folder / "demo/folder")
        (self.folder / "links").mkdir()
        os.symlink(self.folder / "elsewhere/other.lua", self.folder / "links/link.lua") # leads nowhere yet
        tool = Watching(self)
        tool.expect('demo/app.json: $.scripts[0]: cannot read "demo/main.lua" (No such file or directory), expected a Lua '
                    "script", "1 fault in demo/app.json")
        self.write("elsewhere/other.lua", SCRIPT % "other 1")
        tool.expect("changed: demo/main.lua", "version other 1", "version 1")
        self.write("elsewhere/other.lua", SCRIPT % "other 2")
        tool.expect("changed: demo/main.lua", "version other 2", "version 1")
        self.write("elsewhere/real.lua", SCRIPT % 2)
        tool.expect("changed: demo/folder/real.lua", "version other 2", "version 2")
        tool.end()

    def test_what_the_command_line_adds_is_added_each_time_to_a_fresh_application(self):
        handlers = [{"event": "press", "target": "main.ok", "function": "count"}]
        script = "presses = 0\nfunction count() presses = presses + 1 print('presses', presses) end\n"
        self.write("extra.lua", 'print("extra 1")\n')
        tool = self.start("--script", "extra.lua", "--exec", "print('code')", "--event", "press:main.ok",
                          script=script, handlers=handlers)
        tool.expect("extra 1", "code", "presses\t1")
        self.write("extra.lua", 'print("extra 2")\n')
        tool.expect("changed: extra.lua", "extra 2", "code", "presses\t1")
        tool.end()

    def test_a_script_that_fails_or_overflows_the_stack_ends_the_run_alone(self):
        tool = self.start("--timeout", "1")
        tool.expect("version 1")
        self.write("demo/main.lua", "error('boom', 0)\n")
        tool.expect("changed: demo/main.lua", "error: boom", "stack traceback:", "\t[C]: in function 'error'",
                    "\tmain.lua:1: in main chunk")
        self.write("demo/main.lua", 'print(("x"):rep(30):find(("x*"):rep(30) .. "y"))')
        tool.expect("changed: demo/main.lua",
                    'error: timed out after 1 second, while script "main.lua" was running')
        self.write("demo/main.lua", SCRIPT % 2)
        tool.expect("changed: demo/main.lua", "version 2")
        tool.end()

    def test_a_run_that_is_under_way_is_given_up_for_the_next(self):
        tool = self.start(script='kel.log("up", "warning") while true do end')
        tool.expect("warning: up")
        self.write("demo/main.lua", SCRIPT % 2)
        tool.expect("changed: demo/main.lua", "version 2")
        tool.end()

    def test_the_end_does_not_wait_for_a_run(self):
        tool = self.start("--max-instructions", "0", script='kel.log("up", "warning") while true do end')
        tool.expect("warning: up")
        tool.end()

    def test_files_that_change_together_are_one_change(self):
        self.write("extra.lua", 'print("extra 1")\n')
        tool = self.start("--script", "extra.lua")
        tool.expect("version 1", "extra 1")
        tool.process.send_signal(signal.SIGSTOP) # both are there when it looks
        self.write("demo/main.lua", SCRIPT % 2)
        self.write("extra.lua", 'print("extra 2")\n')
        tool.process.send_signal(signal.SIGCONT)
        tool.expect("changed: demo/main.lua, extra.lua", "version 2", "extra 2")
        tool.end()

    def test_other_files_are_nobody_s_business(self):
        tool = self.start()
        tool.expect("version 1")
        self.write("demo/notes.txt", "x")
        self.write("demo/main.lua~", "x")
        self.write("demo/main.lua", SCRIPT % 2)
        tool.expect("changed: demo/main.lua", "version 2")
        tool.end()

    def test_a_log_in_a_watched_folder_does_not_keep_a_run_from_beginning(self):
        tool = self.start()
        tool.expect("version 1")
        done = threading.Event()

        def log():
            while not done.wait(0.01): # more often than the files of interest have to rest
                self.write("demo/log.txt", "x")
        logger = threading.Thread(target=log)
        logger.start()
        try:
            self.write("demo/main.lua", SCRIPT % 2)
            tool.expect("changed: demo/main.lua", "version 2")
        finally:
            done.set()
            logger.join()
        tool.end()

    def test_a_script_that_never_rests_is_run_all_the_same(self):
        tool = self.start()
        tool.expect("version 1")
        done = threading.Event()

        def save():
            while not done.wait(0.01):
                self.write("demo/main.lua.new", SCRIPT % 2)
                os.replace(self.folder / "demo/main.lua.new", self.folder / "demo/main.lua")
        writer = threading.Thread(target=save)
        writer.start()
        try:
            tool.expect("changed: demo/main.lua")
        finally:
            done.set()
            writer.join()
        tool.process.send_signal(signal.SIGINT)
        self.assertEqual(tool.process.wait(timeout=PATIENCE), 0)

    def test_it_ends_when_nobody_reads_what_runs_print(self):
        self.write_app({"main.lua": "print(('x'):rep(1e6))"})
        process = subprocess.Popen([KEL, "run", "demo", "--watch"], cwd=self.folder,
                                   env=environment(ASAN_OPTIONS="detect_leaks=0"), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.kill)
        process.stdout.read(1)
        process.stdout.close()
        self.assertEqual(process.wait(timeout=PATIENCE), 0)
        self.assertEqual(process.stderr.read(), b"")

    def test_being_told_to_end_is_as_good_as_an_interrupt(self):
        tool = self.start()
        tool.expect("version 1")
        tool.end(signal.SIGTERM)


if __name__ == "__main__":
    unittest.main()
