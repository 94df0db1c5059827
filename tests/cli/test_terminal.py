# test_terminal.py: colours, which are for terminals alone.

import subprocess

from kel_tool import FAILED, KEL, SUCCEEDED, ToolTest, environment

ESCAPE = "\033["


class Colours(ToolTest):
    WARN = ("run", "demo", "--exec", 'print("out") kel.log("careful", "warning") error("boom")')

    def test_none_when_not_on_a_terminal(self):
        self.write_app()
        for arguments in (self.WARN, ("check", "demo"), ("check", "nosuch"), ("run",)):
            result = self.kel(*arguments)
            self.assertNotIn(ESCAPE, result.out + result.err)

    def test_level_names_on_a_terminal(self):
        self.write_app()
        status, text = self.on_terminal(*self.WARN)
        self.assertEqual(status, FAILED)
        lines = ("out\n", "\033[33mwarning\033[0m: careful\n", "\033[1;31merror\033[0m: --exec:1: boom\n")
        self.assertTrue(text.startswith("".join(lines)), text)

    def test_a_good_verdict_on_a_terminal(self):
        self.write_app()
        status, text = self.on_terminal("check", "demo")
        self.assertEqual(status, SUCCEEDED)
        self.assertTrue(text.endswith(": \033[32mno faults\033[0m\n"), text)

    def test_none_when_the_environment_says_so(self):
        self.write_app()
        for changes in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            with self.subTest(changes):
                self.assertNotIn(ESCAPE, self.on_terminal(*self.WARN, **changes)[1])

    def test_an_empty_no_color_counts_as_none(self):
        self.write_app()
        self.assertIn(ESCAPE, self.on_terminal(*self.WARN, NO_COLOR="")[1])


class StandardOutput(ToolTest):
    def test_output_that_cannot_be_written_is_a_failure(self):
        self.write_app()
        with open("/dev/full", "wb") as full:
            completed = subprocess.run([KEL, "run", "demo", "--exec", 'print("x")'], cwd=self.folder, env=environment(),
                                       stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual(completed.returncode, FAILED)
        self.assertEqual(completed.stderr.decode(),
                         "error: standard output cannot be written: No space left on device\n")
