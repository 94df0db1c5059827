# test_mutations.py: which changes tools/mutants makes of a text, and what it says of the list of equivalent mutants.
#
#     python3 -B -m unittest tests/mutants/test_mutations.py

import contextlib
import importlib.machinery
import importlib.util
import io
import pathlib
import sys
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))
loader = importlib.machinery.SourceFileLoader("mutants", str(TOOLS / "mutants"))
mutants = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutants", loader))
loader.exec_module(mutants)


def changes(text, operator=None):
    """What becomes of the text, by operator, in the order of the places."""
    found = [(mutant.operator, mutant.apply(text)) for mutant in mutants.mutants_of("file.cpp", text)]
    return found if operator is None else [new for of, new in found if of == operator]


class WhatIsChanged(unittest.TestCase):
    def test_a_relation_becomes_its_neighbours_and_a_sum_a_difference(self):
        self.assertEqual(changes(" a < b ", "relational"), [" a <= b ", " a >= b "])
        self.assertEqual(changes(" a == b ", "relational"), [" a != b "])
        self.assertEqual(changes(" a == 1 ", "relational"), [" a != 1 ", " a <= 1 ", " a >= 1 "])
        self.assertEqual(changes(" a + b ", "arithmetic"), [" a - b "])
        self.assertEqual(changes(" ++a;", "arithmetic"), [" --a;"])
        self.assertEqual(changes(" a & b ", "bitwise"), [" a | b "])

    def test_a_condition_loses_its_not_or_gets_one(self):
        self.assertEqual(changes("if (!a && b) {}", "logical"), ["if (a && b) {}", "if (!a || b) {}"])
        self.assertEqual(changes("if (f(a)) {}", "condition"), ["if (!(f(a))) {}"])
        self.assertEqual(changes("if (a < b) {}", "condition"), [])
        self.assertEqual(changes("x(a ? b : c)", "condition"), ["x(a && false ? b : c)", "x(a || true ? b : c)"])

    def test_a_constant_becomes_one_more_and_one_less_and_0_only_more(self):
        self.assertEqual(changes("x = 0;", "constant"), ["x = 1;"])
        self.assertEqual(changes("x = 7U;", "constant"), ["x = 6U;", "x = 8U;"])
        self.assertEqual(changes("f(-1)", "constant"), ["f(-2)", "f(0)"])
        self.assertEqual(changes("f(0x100)", "constant"), ["f(255)", "f(257)"])
        self.assertEqual(changes("c == 'b'", "constant"), ["c == '\\x61'", "c == '\\x63'"])

    def test_a_text_changes_in_a_letter_that_is_no_directive_of_a_format(self):
        self.assertEqual(changes('f("%s.%d a")', "text"), ['f("%s.%d A")'])
        self.assertEqual(changes('f("%s")', "text"), ['f("%s~")'])
        self.assertEqual(changes('f("")', "text"), ['f("~")'])

    def test_a_name_of_a_family_becomes_the_next(self):
        self.assertEqual(changes("f(kld_x)", "name"), ["f(kld_y)"])
        self.assertEqual(changes("f(placeholder)", "name"), ["f(kld_x)"])
        self.assertEqual(changes("return true;", "name"), ["return false;"])
        self.assertEqual(changes("minimum_t exactly(int count);", "name"), [])

    def test_statements_go_calls_assignments_and_returns_before_the_end(self):
        body = "int f(int a) { if (a) return g(a); b->c(a); d[1] = a; return 1; }"
        self.assertEqual(
            [new for of, new in changes(body) if "removed" in of],
            [
                body.replace("return g(a);", ";"),
                body.replace("return g(a);", "g(a);"),
                body.replace("b->c(a);", ";"),
                body.replace("d[1] = a;", ";"),
            ],
        )

    def test_neighbouring_arguments_and_the_ends_of_neighbouring_rows_are_swapped(self):
        self.assertEqual(changes("f(L, a, b);", "arguments swapped"), ["f(L, b, a);"])
        self.assertEqual(changes("f(a, a);", "arguments swapped"), [])
        self.assertEqual(changes("x[] = {{a, 1, b}, {c, 2, d}};", "rows swapped"), ["x[] = {{a, 1, d}, {c, 2, b}};"])

    def test_comments_includes_declarations_and_templates_stay(self):
        for text in (
            '// f(1 + 2, "text")\n/* a == b */\n',
            '#include "a.h"\n#if A == 32\n#endif\n',
            "int f(lua_State *L, kl_object_t *object);",
            "template <typename T> using list = T *;",
            "static_assert(sizeof(a) == 8 && b == 1);",
            "extern const row rows[7];",
            "[[gnu::noinline]] int f(const char *, void *data);",
            '__attribute__((visibility("default")))',
        ):
            self.assertEqual(changes(text), [], text)

    def test_a_mutant_knows_its_function_and_its_line_in_one(self):
        text = "// a\nint f(lua_State *L) {\n    return g(a +\n        b);\n}\n"
        mutant = next(mutant for mutant in mutants.mutants_of("file.cpp", text) if mutant.operator == "arithmetic")
        self.assertEqual(mutant.line, 3)
        self.assertEqual(mutant.key, ("file.cpp", "f", "return g(a +", "return g(a -"))


ENTRY = "file.cpp: f\n- return a + b;\n+ return a - b;\n= b is 0,\n  always\n"
TEXT = "int f() {\n    return a + b;\n}\n"


class TheListOfEquivalentMutants(unittest.TestCase):
    def setUp(self):
        self.mutants = mutants.mutants_of("file.cpp", TEXT)
        self.reasons = mutants.read_equivalent(f"# Why.\n\n{ENTRY}")

    def fates(self, end):
        return [mutants.Fate(mutant, end) for mutant in self.mutants]

    def faults(self, end):
        return [fault for _, fault in mutants.faults_of_list(self.reasons, self.mutants, self.fates(end))]

    def test_an_entry_has_a_reason_and_stands_there_once(self):
        self.assertEqual(list(self.reasons.values()), ["b is 0,\n  always"])
        for text in (ENTRY[: ENTRY.index("=")], f"{ENTRY}\n{ENTRY}"):
            with self.assertRaises(mutants.CannotTell):
                mutants.read_equivalent(text)

    def test_an_entry_needs_a_mutant_that_survives(self):
        self.assertEqual(self.faults("survived"), [])
        self.assertEqual(self.faults("killed"), ["killed"])
        self.mutants = []
        self.assertEqual(self.faults("survived"), ["no such mutant"])

    def test_only_survivors_that_are_not_listed_count(self):
        for end, reasons, expected in (
            ("survived", self.reasons, 0),
            ("survived", {}, 1),
            ("killed", {}, 0),
            ("stillborn", {}, 0),
        ):
            with contextlib.redirect_stdout(io.StringIO()):
                self.assertEqual(mutants.report(self.fates(end), reasons), expected)

    def test_the_score_is_of_those_that_compile_and_are_not_listed(self):
        fates = self.fates("survived") + self.fates("stillborn") + 3 * self.fates("killed")
        for reasons, score in (({}, "75.0 % = 3 of 4"), (self.reasons, "100.0 % = 3 of 3")):
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                mutants.report(fates, reasons)
            self.assertIn(f"score: {score} ", said.getvalue())


if __name__ == "__main__":
    unittest.main()
