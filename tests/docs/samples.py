# samples.py: reads the blocks of code in a page and runs each by the rule of its language, in the order of the page.
#
# Each page has a folder of its own, with copies of the examples; all its blocks work in that folder.
#   lua      runs in the thermostat. It prints what its comments `--> text` say and logs what its comments
#            `-- warning: text` say, in that order and nothing else; blanks that align do not count.
#   console  each line `$ command` is run; what it writes is shown below it, but for lines and parts of lines
#            in whose place `...` stands.
#   json     is an application file without faults.
#   sh       is a script that succeeds.
#   c, cpp   compiles.
# A comment directly above a block, one mark a line, changes that:
#   <!-- file: PATH -->       the block is written to that file; an app.json is checked before the next command
#   <!-- from: PATH -->       the block stands in that file of the project
#   <!-- app: PATH -->        lua: runs in that application
#   <!-- status: N -->        the block, its last command or the application's check, ends with that status
#   <!-- not run: REASON -->  the block is only shown
# Any other block is a fault.

import dataclasses
import json
import os
import pathlib
import re
import shutil
import subprocess

from pages import PROJECT, kel_tool

MARKS = ("file", "from", "app", "status", "not run")
MARK = re.compile(r"<!-- (" + "|".join(MARKS) + r"): (.+) -->")
COPIED = ("examples", "lua", "schema", "docs/examples")
THERMOSTAT = "examples/thermostat"

STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Werror", "-fsyntax-only", f"-I{PROJECT / 'include'}",
          "-isystem", "/usr/include/lua5.1"]
COMPILERS = {"c": ["CC", ["-std=c99"]], "cpp": ["CXX", ["-std=c++20"]]}


@dataclasses.dataclass
class Block:
    line: int  # of its first fence
    language: str
    text: str
    marks: dict


def blocks_of(page):
    """The fenced blocks of a page's text, with the marks above each."""
    blocks, marks, lines = [], {}, page.splitlines()
    number = 0
    while number < len(lines):
        fence = re.fullmatch(r"( *)(```+)([\w-]*)", lines[number])
        mark = MARK.fullmatch(lines[number].strip())
        if not fence:
            marks = {**marks, mark[1]: mark[2]} if mark else {}
            number += 1
            continue
        end = lines.index(fence[1] + fence[2], number + 1)
        text = "".join(line.removeprefix(fence[1]) + "\n" for line in lines[number + 1:end])
        blocks.append(Block(number + 1, fence[3], text, marks))
        marks, number = {}, end + 1
    return blocks


def words(lines):
    """Without blanks that only align."""
    return [" ".join(line.split()) for line in lines]


def stands_in(shown, whole):
    return " ".join(shown.split()) in " ".join(whole.split())


def matches(shown, written):
    """Whether lines are those shown; `...` stands for any number of lines, or for a part of one."""
    pattern = "".join(
        r"(?:.*\n)*?" if line == "..." else ".*".join(map(re.escape, line.split("..."))) + r"\n"
        for line in shown.splitlines())
    return re.fullmatch(pattern, written) is not None


class Runner:
    """Runs the blocks of one page, in a folder that is empty."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.unchecked = {}  # application files, and the status that their check ends with
        self.own_output = {}  # of applications
        tools = self.folder / "bin"
        tools.mkdir()
        (tools / "kel").symlink_to(kel_tool.KEL)
        self.environment = kel_tool.environment(PATH=f"{tools}:{os.environ['PATH']}")
        for name in COPIED:
            if (PROJECT / name).exists():
                shutil.copytree(PROJECT / name, self.folder / name)

    def run_page(self, text):
        """Gives what is not as shown, one fault after the other, each with its line."""
        line = 0
        for block in blocks_of(text):
            line = block.line
            said = self.run_block(block)
            if said:
                yield f"{line}: {said}"
        said = self.check_applications()
        if said:
            yield f"{line}: {said}"

    def run_block(self, block):
        marks = block.marks
        if "not run" in marks:
            return None
        if "from" in marks:
            if not stands_in(block.text, (PROJECT / marks["from"]).read_text(encoding="utf-8")):
                return f"this does not stand in {marks['from']}"
        if "file" in marks:
            return self.write(block)
        if "from" in marks:
            return None
        rule = getattr(self, "run_" + block.language, None)
        if not rule:
            return f'no rule for a block in "{block.language}"; a mark "not run" has to say why it is only shown'
        return self.check_applications() or rule(block)

    def execute(self, command):
        done = subprocess.run(["timeout", "120", *command], cwd=self.folder, env=self.environment, check=False,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout.decode()

    def write(self, block):
        path = self.folder / block.marks["file"]
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(block.text, encoding="utf-8")
        if path.name == "app.json":
            self.unchecked[path] = int(block.marks.get("status", 0))

    def check_applications(self):
        while self.unchecked:
            path, expected = self.unchecked.popitem()
            status, said = self.execute(["kel", "check", path.relative_to(self.folder)])
            if status != expected:
                return f"kel check {path.relative_to(self.folder)}: status {status}, expected {expected}:\n{said}"
        return None

    def run_json(self, block):
        json.loads(block.text)
        return self.write(dataclasses.replace(block, marks={"file": "shown/app.json", **block.marks})) \
            or self.check_applications()

    def run_lua(self, block):
        application = block.marks.get("app", THERMOSTAT)
        if application not in self.own_output:
            self.own_output[application] = self.execute(["kel", "run", application])[1]
        status, said = self.execute(["kel", "run", application, "--exec", block.text])
        shown = re.findall(r"--(?:> ?| (?=warning: ))(.*)", block.text)
        added = said.removeprefix(self.own_output[application])
        if status != int(block.marks.get("status", 0)) or words(added.splitlines()) != words(shown):
            return f"status {status}, and this comes:\n{added}"
        return None

    def run_console(self, block):
        parts = re.split(r"^\$ (.*)\n", block.text, flags=re.MULTILINE)
        if parts[0] or len(parts) < 3:
            return "a console block begins with a command, `$ ...`"
        commands = list(zip(parts[1::2], parts[2::2]))
        for number, (command, shown) in enumerate(commands):
            status, said = self.execute(["sh", "-c", command])
            expected = int(block.marks.get("status", 0)) if number == len(commands) - 1 else 0
            if status != expected or not matches(shown, said):
                return f"{command}: status {status}, expected {expected}, and this comes:\n{said}"
        return None

    def run_sh(self, block):
        status, said = self.execute(["sh", "-ec", block.text])
        return f"status {status}:\n{said}" if status != int(block.marks.get("status", 0)) else None

    def compile(self, block):
        variable, standard = COMPILERS[block.language]
        source = self.folder / f"shown.{block.language}"
        source.write_text(block.text, encoding="utf-8")
        status, said = self.execute([*os.environ[variable].split(), *standard, *STRICT, source.name])
        return said if status else None

    run_c = run_cpp = compile
