# test_usage.py: the command line itself: help, version, and what is wrong usage.

from kel_tool import BAD_INPUT, SUCCEEDED, ToolTest


class Help(ToolTest):
    def check_help(self, result, *expected):
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        for text in expected:
            self.assertIn(text, result.out)

    def test_help_names_the_commands_and_has_examples(self):
        self.check_help(self.kel("--help"), "check", "run", "--version", "Examples:\n  kel run examples/thermostat\n",
                        "Exit status: 0 success; 1 a script or a test failed; 2 bad usage or bad input.")

    def test_help_of_run_names_every_option_and_has_examples(self):
        self.check_help(self.kel("run", "--help"), "--script FILE", "--exec CODE", "--event NAME[:TARGET]",
                        "--log-level LEVEL", "--strict", "--plugin FILE", "Examples:\n  kel run examples/thermostat\n")

    def test_help_of_check_has_examples(self):
        self.check_help(self.kel("check", "--help"), "Examples:\n  kel check examples/thermostat\n")

    def test_help_of_test_names_every_option_and_has_examples(self):
        self.check_help(self.kel("test", "--help"), "--format FORMAT", "--output FILE", "--filter PATTERN", "--list",
                        "--update-snapshots", "Examples:\n  kel test examples/thermostat\n")

    def test_version_is_the_name_and_three_numbers(self):
        result = self.kel("--version")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertRegex(result.out, r"\Akel \d+\.\d+\.\d+\n\Z")


class WrongUsage(ToolTest):
    def check_usage(self, arguments, message, command):
        result = self.kel(*arguments)
        self.assertResult(result, BAD_INPUT, err=f"error: {message}\nRun '{command} --help' for usage.\n")

    def test_no_command(self):
        self.check_usage([], "A command is missing", "kel")

    def test_unknown_command(self):
        commands = "run, check, snapshot, test, tree, vars, repl"
        self.check_usage(["frobnicate"], f'there is no command "frobnicate"; there are {commands}', "kel")
        self.check_usage(["tre", "c"], f'there is no command "tre"; did you mean tree? There are {commands}', "kel")
        self.check_usage(["foo", "--frob"], f'there is no command "foo"; there are {commands}', "kel")
        self.check_usage([""], f'there is no command ""; there are {commands}', "kel")

    def test_run_without_an_application(self):
        self.check_usage(["run"], "APP is required", "kel run")

    def test_check_without_an_application(self):
        self.check_usage(["check"], "APP is required", "kel check")

    def test_two_applications(self):
        self.check_usage(["check", "a", "b"], "The following argument was not expected: b", "kel check")

    def test_extra_words_are_listed_in_their_order(self):
        self.check_usage(["check", "a", "b", "c", "a"], "The following arguments were not expected: b c a", "kel check")

    def test_unknown_option(self):
        self.check_usage(["run", "demo", "--frob"], "The following argument was not expected: --frob", "kel run")

    def test_the_nearest_option_is_named(self):
        for given in ("--scrip", "--scirpt=x"):
            self.check_usage(["run", "demo", given], f"The following argument was not expected: {given}; did you mean "
                             "--script?", "kel run")
        self.check_usage(["--versio"], "The following argument was not expected: --versio; did you mean --version?",
                         "kel")

    def test_an_empty_name_of_a_file(self):
        found = 'expected the name of a file, found ""'
        self.check_usage(["check", ""], f"APP: {found}", "kel check")
        self.check_usage(["run", ""], f"APP: {found}", "kel run")
        self.check_usage(["run", "demo", "--script", ""], f"--script: {found}", "kel run")
        self.check_usage(["run", "demo", "--plugin", ""], f"--plugin: {found}", "kel run")
        self.check_usage(["test", "demo", ""], f"FILES: {found}", "kel test")
        self.check_usage(["test", "demo", "--format", "junit", "--output", ""], f"--output: {found}", "kel test")

    def test_an_option_without_its_value(self):
        self.check_usage(["run", "demo", "--script"], "--script: 1 required FILE missing", "kel run")

    def test_unknown_log_level(self):
        self.check_usage(["run", "demo", "--log-level", "loud"],
                         '--log-level: no log level "loud"; there are always, error, warning, info, event1, action, '
                         "diag1, diag2, event2, trace1, trace2", "kel run")

    def test_an_event_without_a_name(self):
        self.check_usage(["run", "demo", "--event", ":main.ok"],
                         '--event: expected NAME or NAME:TARGET, found ":main.ok"', "kel run")

    def test_an_event_with_a_colon_and_no_target(self):
        self.check_usage(["run", "demo", "--event", "press:"],
                         '--event: expected NAME or NAME:TARGET, found "press:"', "kel run")
