# test_other_plugins.py: plug-ins that misbehave or talk to the host's own log; small C files that the test compiles.

import os
import shlex
import signal
import subprocess
import unittest.mock

from kel_tool import BAD_INPUT, FAILED, PROJECT, SUCCEEDED, ToolTest

PLUGIN = """\
#include <kel/kel.h>

static int start(kl_application_t *app, const char *args, void *plugin_data) {
    (void)app;
    (void)args;
    (void)plugin_data;
    %s
}

int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state) {
    state->name = kelal_strdup("small");
    state->init = start;
    state->version.major = 7;
    return 0;
}
"""


class OtherPlugins(ToolTest):
    def run_with_plugin(self, body, *options):
        self.write("small.c", PLUGIN % body)
        compiler = shlex.split(os.environ.get("CC", "cc")) # with the flags that make the tool's kind of object
        subprocess.run([*compiler, "-shared", "-fPIC", "-I", PROJECT / "include", "small.c", "-o", "small.so"],
                       cwd=self.folder, check=True)
        app = self.write_app({"a.lua": 'print("ran")\n'})
        return self.kel("run", app, "--plugin", "small.so", *options)

    def test_a_plugin_that_refuses_to_start(self):
        self.assertResult(self.run_with_plugin("return 1;"), BAD_INPUT,
                          err='error: Cannot load plug-in "./small.so": init returned 1, expected 0\n')

    def test_a_plugin_that_crashes_is_not_taken_for_a_script_that_overflows_the_stack(self):
        with unittest.mock.patch.dict(os.environ, ASAN_OPTIONS="handle_segv=0"): # no report that takes its place
            result = self.run_with_plugin("volatile int *nowhere = NULL; return *nowhere;")
        self.assertResult(result, -signal.SIGSEGV)

    LOG = 'kel_app_log(NULL, KL_LOG_WARNING, "w"); kel_app_log(NULL, KL_LOG_INFO, "i"); return 0;'

    def test_lines_without_an_application_pass_the_same_level(self):
        self.assertResult(self.run_with_plugin(self.LOG), SUCCEEDED, out="ran\n", err="warning: w\n")
        self.assertResult(self.run_with_plugin(self.LOG, "--log-level", "error"), SUCCEEDED, out="ran\n")
        self.assertResult(self.run_with_plugin(self.LOG, "--log-level", "info"), SUCCEEDED, out="ran\n",
                          err="warning: w\ninfo: i\n")

    def test_warnings_without_an_application_count(self):
        self.assertResult(self.run_with_plugin(self.LOG, "--strict"), FAILED, out="ran\n",
                          err="warning: w\nerror: 1 warning logged, and --strict allows none\n")
