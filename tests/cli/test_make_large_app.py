# test_make_large_app.py: the generator of applications for benchmarks.

import subprocess
import sys

from kel_tool import PROJECT, SUCCEEDED, ToolTest


class MakeLargeApp(ToolTest):
    def generate(self, *arguments):
        command = [sys.executable, PROJECT / "tools/make-large-app", *map(str, arguments)]
        return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout.decode()

    def check(self, *arguments):
        self.write("large/app.json", self.generate(*arguments))
        result = self.kel("check", "large")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        return result.out

    def test_the_same_arguments_give_the_same_bytes(self):
        self.assertEqual(self.generate(500), self.generate(500))

    def test_the_application_has_no_faults_and_as_many_controls_as_wanted(self):
        # 250 controls a layer, 20 a group: 13 chains of 2 groups in each of 4 layers.
        self.assertEqual(self.check(1000, "--layers", 4),
                         "large/app.json: 1 screen, 4 layers, 1104 objects, 6344 variables, 0 scripts: no faults\n")

    def test_controls_need_no_groups(self):
        self.assertEqual(self.check(7, "--layers", 2, "--depth", 0),
                         "large/app.json: 1 screen, 2 layers, 7 objects, 58 variables, 0 scripts: no faults\n")

    def test_the_deepest_nesting_is_no_fault(self):
        self.assertIn("1 screen, 1 layer, 32 objects", self.check(1, "--layers", 1, "--depth", 31))

    def test_controls_can_be_found_by_name(self):
        self.write("large/app.json", self.generate(40, "--layers", 2, "--per-group", 5))
        result = self.kel("run", "large", "--exec", 'print(keldom.get_object("layer1.group3.inner1.control39"))')
        self.assertResult(result, SUCCEEDED, out="layer1.group3.inner1.control39\n")
