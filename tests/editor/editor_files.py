# editor_files.py: what the editor tests share: the files under test, their reader, and what is really registered.

import importlib.machinery
import importlib.util
import os
import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parents[1]
THERMOSTAT = PROJECT / "examples/thermostat"
STANDARD = PROJECT / "lua/luacheck_std.lua"
DEFINITIONS = [PROJECT / f"lua/{name}.lua" for name in ("keldom", "kel", "os")]

sys.path.insert(0, str(PROJECT / "tests/cli"))
import kel_tool  # noqa: E402, needs the path above

loader = importlib.machinery.SourceFileLoader("reference", str(PROJECT / "tools/reference"))
reference = importlib.util.module_from_spec(importlib.util.spec_from_loader("reference", loader))
sys.modules["reference"] = reference  # dataclasses ask for it
loader.exec_module(reference)

LIST_GLOBALS = """\
for name, value in pairs(_G) do
  print("global", name, tostring(value))
  if type(value) == "table" and value ~= _G then
    for field, held in pairs(value) do print("field", name, field, tostring(held)) end
  end
end
"""


def rows(text):
    return [line.split("\t") for line in text.splitlines()]


def registered_classes():
    """({class: (parent, methods)}, {function: class of the handle that it gives}), as an application has them."""
    command = [os.environ["UNPROTECTED"], kel_tool.PLUGIN, THERMOSTAT, HERE / "list_metatables.lua"]
    listed = rows(subprocess.run(command, capture_output=True, text=True, check=True).stdout)
    classes = {row[1]: (row[2], set()) for row in listed if row[0] == "class"}
    for row in listed:
        if row[0] == "method":
            classes[row[1]][1].add(row[2])
    return classes, {row[1]: row[2] for row in listed if row[0] == "handle"}


class EditorTest(kel_tool.ToolTest):
    def print_of(self, code):
        """What a piece of Lua prints in an application without scripts."""
        result = self.kel("run", self.write_app(), "--exec", code, "--strict")
        self.assertEqual((result.status, result.err), (0, ""))
        return rows(result.out)

    def registered_globals(self):
        """{global: {field: its value as text}}, as scripts find them."""
        listed = self.print_of(LIST_GLOBALS)
        found = {row[1]: {} for row in listed if row[0] == "global"}
        for row in listed:
            if row[0] == "field":
                found[row[1]][row[2]] = row[3]
        return found
