# test_failures.py: the warnings and errors that the definitions name are those that misuse brings about, word for word.

import re
import unittest

from editor_files import DEFINITIONS, HERE, THERMOSTAT, EditorTest, reference

# Whose methods are called on which object of the thermostat.
OBJECTS = {
    "keldom_object": "climate",
    "control_object": "climate.mode.cool",
    "table_object": "week.plan",
    "group_object": "alerts.sample",
    "layer_instance_object": "home.alerts",
}

# Of what is written: told in the introduction of `keldom`, not at each method.
OF_VALUES = re.compile("Cannot (write|create|resize) |Value .* is out of range, ")

# These take a host in trouble.
UNPROVOKED = {
    ("keldom_object:get_variables", "Warning", "DOM Object has no qualified name"),
    ("control_object:clone", "Warning", "No such object in DOM"),
    ("group_object:clone", "Warning", "No such object in DOM"),
    ("kel.queue_event", "Error", "not enough memory"),
}


def named(definitions):
    """What the definitions name: {(function, channel, text)}."""
    return {
        (function.full_name, failure.channel, text)
        for each in definitions.classes.values()
        for function in each.functions
        for failure in function.failures
        for text in failure.texts
    }


def is_text_of(real, text):
    return re.fullmatch(".*".join(map(re.escape, re.split(r" ?\.\.\. ?", text))), real) is not None


class Failures(EditorTest):
    def seen(self, definitions):
        """What misuse of each function that is defined brings about."""
        classes = ""
        for name, path in OBJECTS.items():
            methods = ", ".join(f"'{function.name}'" for function in definitions.classes[name].functions)
            classes += f"{{ name = '{name}', object = '{path}', methods = {{ {methods} }} }}, "
        misuse = (HERE / "misuse.lua").read_text(encoding="utf-8")
        script = self.write("misuse.lua", f"CLASSES = {{ {classes} }}\n{misuse}")
        result = self.kel("run", THERMOSTAT, "--script", script, merged=True)
        self.assertEqual(result.status, 0, result.out)
        seen, function = set(), None
        for line in result.out.splitlines():
            if line.startswith("call\t"):
                function = line[5:]
            elif line.startswith("error\t"):
                seen.add((function, "Error", line[6:]))
            elif function and line.startswith("warning: "):
                seen.add((function, "Warning", line[9:]))
        return seen

    def differences(self, definitions):
        """(what is seen and not named, what is named and not seen)"""
        expected, seen = named(definitions), self.seen(definitions)

        def agree(real, told):
            return real[:2] == told[:2] and is_text_of(real[2], told[2])

        return (
            {real for real in seen if not any(agree(real, told) for told in expected)},
            {told for told in expected if not any(agree(real, told) for real in seen)},
        )

    def test_what_misuse_brings_about_is_named_and_nothing_else(self):
        unnamed, unseen = self.differences(reference.read_definitions(DEFINITIONS))
        unnamed = {real for real in unnamed if real[0].startswith("kel.") or not OF_VALUES.match(real[2])}
        self.assertEqual(unnamed, set())
        self.assertEqual(unseen, UNPROVOKED)

    def test_another_text_is_found(self):
        definitions = reference.read_definitions(DEFINITIONS)
        before = self.differences(definitions)
        failure = definitions.classes["control_object"].functions[-1].failures[0]
        failure.texts[0] = failure.texts[0].replace("must", "should")
        unnamed, unseen = self.differences(definitions)
        start = ("control_object:delete", "Warning")
        self.assertEqual(unnamed - before[0], {(*start, "Argument must be a keldom_object")})
        self.assertEqual(unseen - before[1], {(*start, "Argument should be a keldom_object")})


if __name__ == "__main__":
    unittest.main()
