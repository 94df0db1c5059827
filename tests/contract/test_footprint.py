# test_footprint.py: each check of tools/footprint can fail, and what it cannot account for it refuses.
#
#     python3 -B -m unittest tests/contract/test_footprint.py

import contextlib
import importlib.machinery
import importlib.util
import io
import json
import pathlib
import sys
import tempfile
import unittest
import unittest.mock

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))
loader = importlib.machinery.SourceFileLoader("footprint", str(TOOLS / "footprint"))
footprint = importlib.util.module_from_spec(importlib.util.spec_from_loader("footprint", loader))
loader.exec_module(footprint)

NO_TABLES = footprint.Tables(roots=("entry",), pointers={}, callbacks={}, walks={}, recursions=(), apart=(), tested=())
GOOD_STACK = footprint.Stack(
    entries={"entry": (136, ()), "searching": (136, (footprint.NAMING,))},
    ways={"group": (112, 100), "table": (50, 50)},
    searches=dict.fromkeys(footprint.SEARCHES, 400),
    naming_level=112,
)


def of_kinds(text=0, rodata=0, data=0, bss=0):
    return {"a.cpp": {"text": text, "rodata": rodata, "data": data, "bss": bss}}


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def compile(self, text):
        source = self.folder / "a.cpp"
        source.write_text(text)
        return footprint.compile_objects([source], "-Os", self.folder)

    def graph(self, text, **tables):
        return footprint.CallGraph(self.compile(text), NO_TABLES._replace(**tables))

    def refuses(self, expected):
        return self.assertRaisesRegex(footprint.CannotTell, expected)


class Sizes(InFolder):
    def sizes(self, text):
        return footprint.sizes(self.compile(text)[0])

    def test_a_variable_with_a_value_is_data(self):
        self.assertEqual(self.sizes("int counter = 5;")["data"], 4)

    def test_a_variable_in_a_section_of_its_own_is_data(self):
        self.assertEqual(self.sizes('__attribute__((section(".data.mine"))) int counter = 5;')["data"], 4)

    def test_a_buffer_is_bss(self):
        self.assertEqual(self.sizes("char buffer[100];")["bss"], 100)

    def test_a_table_of_constants_is_rodata(self):
        self.assertEqual(self.sizes("extern const char table[9000]; const char table[9000] = {1};")["rodata"], 9000)

    def test_a_function_is_text(self):
        found = self.sizes("int next(int number) { return number + 1; }")
        self.assertGreater(found["text"], 0)
        self.assertEqual(sum(found.values()), found["text"])

    def test_a_section_of_no_kind_is_refused(self):
        with self.refuses("a.o: section .mine is none of text, rodata, data, bss"):
            self.sizes('__attribute__((section(".mine"))) int counter = 5;')

    def test_unwind_tables_are_refused(self):
        options = ["-mthumb", "-mcpu=cortex-m7", "-fexceptions"]
        with unittest.mock.patch.object(footprint, "target_options", lambda: options):
            with self.refuses(r"section \.ARM\.ex(idx|tab) is none of"):
                self.sizes("void use(); void entry() { try { use(); } catch (int) { } }")

    def test_what_does_not_compile_is_refused(self):
        with self.refuses("arm-none-eabi-g\\+\\+ failed"):
            self.compile("not C++")

    def test_a_missing_compiler_is_named(self):
        with unittest.mock.patch.object(footprint, "COMPILER", "no-such-compiler"):
            with self.refuses("no-such-compiler: No such file"):
                self.compile("")


class Stack(InFolder):
    def deepest(self, text, **tables):
        graph = self.graph(text, **tables)
        return graph.deepest(graph.place("entry"))

    def test_a_large_local_counts(self):
        self.assertGreater(self.deepest("void use(char *); void entry() { char text[200]; use(text); }"), 200)

    def test_frames_of_a_chain_add_up_whether_inlined_or_cloned(self):
        inner = "static {} void inner(int, int a) {{ char text[100]; text[0] = a; use(text); use(text); }} "
        outer = "void use(char *); {}void entry() {{ char text[100]; use(text); inner(1, 2); use(text); inner(2, 2); }}"
        for attribute in ("inline __attribute__((always_inline))", "__attribute__((noinline))"):
            with self.subTest(attribute):
                self.assertGreater(self.deepest(outer.format(inner.format(attribute))), 200)

    def test_only_the_deepest_of_two_calls_counts(self):
        inner = "__attribute__((noinline)) static void {0}() {{ char text[{1}]; use(text); }} "
        text = "void use(char *); " + inner.format("a", 100) + inner.format("b", 200) + "void entry() { a(); b(); }"
        found = self.deepest(text)
        self.assertGreater(found, 200)
        self.assertLess(found, 300)

    def test_a_frame_of_unknown_size_is_refused(self):
        with self.refuses("entry: its stack is dynamic"):
            self.deepest("void use(void *); void entry(unsigned n) { use(__builtin_alloca(n)); }")

    CALL = "struct table_t { int (*call)(int); }; int entry(const table_t *table) { return table->call(1) + 1; } "
    TARGET = "int use(char *); int target(int) { char text[200]; return use(text); } "

    def test_an_unknown_call_through_a_pointer_is_refused(self):
        with self.refuses('a.cpp:1: entry calls "table->call" through a pointer'):
            self.deepest(self.CALL)

    def test_a_call_through_a_pointer_goes_where_the_table_says(self):
        self.assertLess(self.deepest(self.CALL, pointers={"table->call": ()}), 200)
        self.assertGreater(self.deepest(self.CALL + self.TARGET, pointers={"table->call": ("target",)}), 200)

    def test_a_table_with_a_function_that_is_not_there_is_refused(self):
        with self.refuses("gone stands in a table, but there is no such function"):
            self.deepest(self.CALL, pointers={"table->call": ("gone",)})

    CALLED_BACK = TARGET + "void walk(int (*)(int)); void entry() { walk(target); walk(target); }"

    def test_a_function_that_nothing_is_known_to_call_is_refused(self):
        with self.refuses("nothing is known to call target"):
            self.deepest(self.CALLED_BACK)

    def test_what_another_library_calls_back_counts(self):
        text = 'extern "C" void walk(int (*)(int)); ' + self.TARGET + "void entry() { walk(target); walk(target); }"
        self.assertGreater(self.deepest(text, callbacks={"walk": ("target",)}), 200)

    WALK = """
        int use(char *);
        typedef int (*predicate_t)(int);
        int small(int) { return 1; }
        int large(int) { char text[200]; return use(text); }
        int walk(predicate_t work) { return work(1) + work(2); }
        int entry() { return walk(small) + 1; }
        int other() { return walk(large) + 1; }
    """
    WALKS = {"entry": "small", "other": "large"}

    def test_a_walk_calls_the_predicate_that_it_was_given(self):
        graph = self.graph(self.WALK, roots=("entry", "other"), pointers={"work": (footprint.WALK,)}, walks=self.WALKS)
        self.assertLess(graph.deepest(graph.place("entry")), 200)
        self.assertGreater(graph.deepest(graph.place("other")), 200)

    def test_a_walk_whose_predicate_is_not_known_is_refused(self):
        walks = {"other": "large"}
        with self.refuses("walk walks, and it is not known with which predicate"):
            self.graph(self.WALK, roots=("entry", "other"), pointers={"work": (footprint.WALK,)}, walks=walks)

    RECURSION = """
        void use(char *);
        void outer(int n);
        __attribute__((noinline)) static void inner(int n) { char text[100]; use(text); outer(n - 1); use(text); }
        void outer(int n) { char text[100]; use(text); if (n) inner(n); use(text); }
        void entry() { outer(3); use(nullptr); }
    """

    def test_an_unknown_recursion_is_refused(self):
        with self.refuses("a recursion that is not known: .*outer"):
            self.graph(self.RECURSION)

    def test_a_known_recursion_is_counted_once_and_by_the_level(self):
        graph = self.graph(self.RECURSION, recursions=("outer",))
        outer = graph.place("outer")
        self.assertGreater(graph.longest(outer, outer), 200)
        self.assertEqual(graph.longest(outer, outer), graph.deepest(outer))
        self.assertLess(graph.deepest(graph.place("entry")), 100)

    def test_a_recursion_that_is_none_is_refused(self):
        with self.refuses("entry stands in a table as a recursion, and is none"):
            self.graph("void use(); void entry() { use(); use(); }", recursions=("entry",))


class Budgets(InFolder):
    def missed(self, small=None, fast=None, stack=GOOD_STACK, committed=None):
        small = small or of_kinds(text=8000, rodata=500)
        rows = footprint.budgets(small, fast or of_kinds(text=9000, rodata=900), stack, committed)
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            kept = footprint.report(rows)
        lines = printed.getvalue().splitlines()
        self.assertEqual(len(lines), 6 if committed is None else 7)
        missed = [line for line in lines if line.startswith("MISSED")]
        self.assertEqual(kept, not missed)
        return missed

    def test_figures_at_the_limit_are_kept(self):
        self.assertEqual(self.missed(committed=8500), [])

    def test_data_and_bss_are_missed_at_either_optimisation(self):
        for kind in ("data", "bss"):
            for level in ("small", "fast"):
                with self.subTest(kind=kind, level=level):
                    missed = self.missed(**{level: of_kinds(**{kind: 4})})
                    self.assertEqual(missed, ["MISSED data or bss: found 4, allowed 0"])

    def test_flash_is_missed(self):
        missed = self.missed(small=of_kinds(text=8000, rodata=501))
        self.assertEqual(missed, ["MISSED text and rodata at -Os: found 8,501, allowed 8,500"])

    def test_the_deepest_entry_is_missed_whether_it_searches_or_not(self):
        for searches in ((), (footprint.NAMING,)):
            stack = GOOD_STACK._replace(entries={"a": (10, ()), "b": (137, searches)})
            self.assertEqual(
                self.missed(stack=stack), ["MISSED stack of an entry, searches apart (b): found 137, allowed 136"]
            )

    def test_a_search_is_missed(self):
        stack = GOOD_STACK._replace(searches={"a": 10, "b": 401})
        self.assertEqual(
            self.missed(stack=stack), ["MISSED stack of a search, levels apart (b): found 401, allowed 400"]
        )

    def test_a_level_of_a_search_or_of_naming_is_missed(self):
        for ways in ((113, 50), (50, 113)):
            stack = GOOD_STACK._replace(ways={"group": (100, 100), "map": ways})
            self.assertEqual(
                self.missed(stack=stack), ["MISSED stack of a search for a level (map): found 113, allowed 112"]
            )
        self.assertEqual(
            self.missed(stack=GOOD_STACK._replace(naming_level=113)),
            ["MISSED stack of naming for a level: found 113, allowed 112"],
        )

    def test_growth_of_more_than_three_percent_is_missed(self):
        self.assertEqual(self.missed(small=of_kinds(text=8240), committed=8000), [])
        missed = self.missed(small=of_kinds(text=8241), committed=8000)
        self.assertEqual(missed, ["MISSED growth over the page's 8,000: found 8,241, allowed 8,240"])


class Program(InFolder):
    def run_main(self, *arguments, text=8000, error=None):
        page = self.folder / "footprint.md"
        measured = unittest.mock.Mock(return_value=(of_kinds(text=text), of_kinds(), GOOD_STACK), side_effect=error)
        said = io.StringIO()
        with (
            unittest.mock.patch.multiple(footprint, measure=measured, PAGE=page),
            unittest.mock.patch.object(sys, "argv", ["footprint", *arguments]),
            contextlib.redirect_stdout(said),
            contextlib.redirect_stderr(said),
        ):
            status = footprint.main()
        return status, said.getvalue()

    def test_what_was_written_is_kept_until_it_grows(self):
        self.assertEqual(self.run_main("--write")[0], 0)
        self.assertEqual(self.run_main("--check")[0], 0)
        status, said = self.run_main("--check", text=8300)
        self.assertEqual(status, 1)
        self.assertIn("MISSED growth over the page's 8,000: found 8,300, allowed 8,240", said)

    def test_a_page_over_a_budget_is_written_and_fails(self):
        self.assertEqual(self.run_main("--write", text=8501)[0], 1)
        self.assertIn("8,501 bytes", (self.folder / "footprint.md").read_text())

    def test_a_page_without_the_figure_cannot_be_checked(self):
        (self.folder / "footprint.md").write_text("# Footprint\n")
        status, said = self.run_main("--check")
        self.assertEqual((status, said), (2, 'footprint: the page has no line like "Flash at -Os: 0 bytes."\n'))

    def test_what_cannot_be_accounted_for_ends_with_2(self):
        status, said = self.run_main("--check", error=footprint.CannotTell("found something"))
        self.assertEqual((status, said), (2, "footprint: found something\n"))

    def test_figures_from_the_board_are_a_table_of_their_own(self):
        figures = {"lua_heap_without_plugin_bytes": 1234, "lua_heap_after_start_bytes": 9876, "handle_lua_bytes": 32,
                   "handle_name_bytes": 8}
        measured = self.folder / "measured.json"
        measured.write_text(json.dumps(figures))
        self.assertEqual(self.run_main("--write", "--measured", str(measured))[0], 0)
        page = (self.folder / "footprint.md").read_text()
        for figure in figures.values():
            self.assertIn(f"| {figure} |", page)
        self.assertEqual(self.run_main("--write")[0], 0)
        self.assertEqual((self.folder / "footprint.md").read_text(), page) # what was measured before stays


if __name__ == "__main__":
    unittest.main()
