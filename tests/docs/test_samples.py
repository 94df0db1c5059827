# test_samples.py: the code that pages show does what they say.

import tempfile
import unittest

import samples
from pages import PROJECT, kel_tool, manual_pages, read_page

# Manual pages whose samples are tested in another place.
ELSEWHERE = {
    "docs/footprint.md": "made by tools/footprint, held by make check-footprint",
    "docs/integration.md": "tests/contract and tests/freertos",
    "docs/performance.md": "made by tools/performance, held by make check-performance",
    "docs/reference.md": "tests/editor",
}
PAGES = ["README.md", "lua/README.md", "examples/thermostat/README.md"] + manual_pages()

GOOD = """\
<!-- file: made/app.json -->
```json
{ "name": "made", "size": { "width": 9, "height": 9 }, "layers": [], "screens": [], "scripts": ["a.lua"] }
```
<!-- file: made/a.lua -->
```lua
print("from a")
```
```console
$ kel run made --exec 'print("b")'
from a
b
$ kel run made --exec 'print("b") print("c")'
...
c
```
<!-- app: made -->
```lua
print("x") --> x
```
```lua
print(1,  2) --> 1 2
keldom.get_object("nosuch")
-- warning: No such object in DOM
```
<!-- status: 1 -->
```console
$ kel run made --exec 'keldom.get_object("nosuch")' --strict
...
```
```json
{ "name": "shown", "size": { "width": 9, "height": 9 }, "layers": [], "screens": [] }
```
<!-- from: examples/thermostat/scripts/about.lua -->
```lua
function about.report(event)
```
```sh
test -d made
```
```c
#include <kel/kel.h>
int one(void);
int one(void) { return 1; }
```
  <!-- not run: nothing can run it -->
  ```cobol
  x
  ```
"""

# What is changed in the page above, into what, and what is said of it.
BROKEN = (
    ("from a\nb", "from a\nc", "status 0, expected 0, and this comes:\nfrom a\nb\n"),
    ("...\nc", "c", "and this comes:\nfrom a\nb\nc\n"),
    ("--> x", "--> y", "and this comes:\nx\n"),
    ('"scripts": ["a.lua"]', '"scripts": ["b.lua"]', 'kel check made/app.json: status 2, expected 0:'),
    ('"name": "shown"', '"nome": "shown"', 'kel check shown/app.json: status 2, expected 0:'),
    ("-- warning: No such object in DOM\n", "", "and this comes:\n1\t2\nwarning: No such object in DOM\n"),
    ('keldom.get_object("nosuch")\n-- warn', '-- warn', "and this comes:\n1\t2\n"),
    ("<!-- status: 1 -->\n", "", "status 1, expected 0"),
    ("$ kel run made --exec 'print(\"b\")'\n", "", "begins with a command"),
    ("kel run made --exec 'print(\"b\")'\n", "kel walk made\n", "kel walk made: status 2, expected 0"),
    ("about.report(event)", "about.report(events)", "does not stand in examples/thermostat/scripts/about.lua"),
    ("test -d made", "test -d other", "status 1:"),
    ("return 1;", "return one;", "error:"),
    ("<!-- not run: nothing can run it -->", "", 'no rule for a block in "cobol"'),
    ("<!-- not run: nothing can run it -->", "<!-- not ran: nothing can run it -->", 'no rule for a block in "cobol"'),
)


class Pages(kel_tool.ToolTest):
    def faults_of(self, text):
        with tempfile.TemporaryDirectory(prefix="kel-page-") as folder:
            yield from samples.Runner(folder).run_page(text)

    def test_samples_do_what_the_pages_say(self):
        for page in sorted(set(PAGES) - set(ELSEWHERE)):
            with self.subTest(page):
                self.assertEqual([f"{page}:{fault}" for fault in self.faults_of(read_page(page))], [])

    def test_a_right_page_has_no_faults_and_each_wrong_one_is_found(self):
        self.assertEqual(list(self.faults_of(GOOD)), [])
        for old, new, expected in BROKEN:
            with self.subTest(new):
                self.assertEqual(GOOD.count(old), 1)
                self.assertIn(expected, next(self.faults_of(GOOD.replace(old, new)), "no fault"))

    def test_the_readme_shows_what_make_demo_runs_and_all_that_it_prints(self):
        command, shown = samples.re.findall(r"```console\n\$ (kel .*)\n((?:.*\n)*?)```", read_page("README.md"))[-1]
        dry_run = samples.subprocess.run(["make", "--dry-run", "demo"], cwd=PROJECT, capture_output=True, text=True,
                                         check=True)
        self.assertIn(f"bin/{command}\n", dry_run.stdout)
        self.assertNotIn("\n...\n", shown)


if __name__ == "__main__":
    unittest.main()
