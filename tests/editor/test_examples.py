# test_examples.py: each example of the definitions runs in a fresh thermostat without warnings and prints what it says.

import re
import unittest

from editor_files import DEFINITIONS, THERMOSTAT, EditorTest, reference


def examples():
    for each in reference.read_definitions(DEFINITIONS).classes.values():
        for function in each.functions:
            yield function, function.example


def lines_of(text):
    """Without blanks that only align."""
    return [" ".join(line.split()) for line in text.splitlines()]


class Examples(EditorTest):
    def run_thermostat(self, *arguments):
        return self.kel("run", THERMOSTAT, *arguments, "--strict")

    def test_they_print_what_they_say(self):
        before = lines_of(self.run_thermostat().out)
        for function, example in examples():
            with self.subTest(function.full_name):
                result = self.run_thermostat("--exec", example)
                self.assertEqual((result.status, result.err), (0, ""))
                said = "\n".join(re.findall("--> (.*)", example))
                self.assertEqual(lines_of(result.out)[len(before):], lines_of(said))

    def test_each_calls_its_function(self):
        for function, example in examples():
            with self.subTest(function.full_name):
                self.assertRegex(example, rf"[.:]{function.name}\(")

    def test_almost_all_show_what_they_print(self):
        self.assertEqual([function.full_name for function, example in examples() if "--> " not in example], ["kel.log"])

    def test_one_that_warns_fails(self):
        self.assertEqual(self.run_thermostat("--exec", 'keldom.get_object("nosuch")').status, 1)


if __name__ == "__main__":
    unittest.main()
