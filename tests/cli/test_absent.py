# test_absent.py: commands that this build of the tool has not.

import os

from kel_tool import BAD_INPUT, ToolTest

# A command line that is right, and what the tool lacks.
COMMANDS = {
    "repl": (["repl", "demo"], "the library libedit, which edits lines"),
    "testing": (["test", "demo"], "a Lua that busted can run on"),
    "snapshot": (["snapshot", "demo", "-o", "home.png"], "the library cairo, which draws pictures"),
}


class Absent(ToolTest):
    def test_each_says_what_is_lacking_and_does_nothing(self):
        self.write_app()
        before = sorted(self.folder.rglob("*"))
        for name in os.environ["KEL_ABSENT"].split():
            with self.subTest(name):
                arguments, lacking = COMMANDS[name]
                message = f"error: this build of kel has no {name}: it was made without {lacking}\n"
                self.assertResult(self.kel(*arguments), BAD_INPUT, err=message)
                self.assertEqual(sorted(self.folder.rglob("*")), before)
