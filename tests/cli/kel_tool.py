# kel_tool.py: what the tool's tests share: running it, and small applications in a folder that goes away again.
#
#     KEL=build/dev/bin/kel KEL_PLUGIN=build/dev/lib/luakeldom.so python3 -m unittest discover -s tests/cli

import json
import os
import pathlib
import pty
import subprocess
import tempfile
import unittest

KEL = os.path.abspath(os.environ["KEL"])
PLUGIN = os.path.abspath(os.environ["KEL_PLUGIN"])
PROJECT = pathlib.Path(__file__).resolve().parents[2]
ON_LUAJIT = os.environ.get("KEL_LUA") == "luajit"

SUCCEEDED, FAILED, BAD_INPUT = 0, 1, 2


def environment(**changes):
    """The tests' own, without what would change the tool's behaviour; a change to None takes a variable away."""
    variables = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "TERM")}
    variables["KEL_PLUGIN"] = PLUGIN
    variables["TERM"] = "xterm"
    for name, value in changes.items():
        if value is None:
            variables.pop(name, None)
        else:
            variables[name] = value
    return variables


class Result:
    def __init__(self, completed):
        self.status = completed.returncode
        self.out = completed.stdout.decode()
        self.err = completed.stderr.decode() if completed.stderr is not None else ""


class ToolTest(unittest.TestCase):
    """Each test has an empty folder as the tool's working folder."""

    maxDiff = None

    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="kel-test-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name).resolve()

    def kel(self, *arguments, program=KEL, merged=False, **changes):
        """Runs the tool; merged sends both streams to one place, as a terminal or `2>&1` does."""
        completed = subprocess.run(
            [program, *map(str, arguments)],
            cwd=self.folder,
            env=environment(**changes),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT if merged else subprocess.PIPE,
            timeout=120,
            check=False,
        )
        return Result(completed)

    def on_terminal(self, *arguments, **changes):
        """Runs the tool on a terminal of its own. Returns its exit status and what the terminal received."""
        controller, terminal = pty.openpty()
        try:
            process = subprocess.Popen([KEL, *arguments], cwd=self.folder, env=environment(**changes),
                                       stdin=subprocess.DEVNULL, stdout=terminal, stderr=terminal)
        finally:
            os.close(terminal)
        received = b""
        try:
            while chunk := os.read(controller, 4096):
                received += chunk
        except OSError:
            pass  # how Linux tells that the last one has left the terminal
        finally:
            os.close(controller)
        return process.wait(timeout=60), received.decode().replace("\r\n", "\n")

    def write(self, path, text):
        target = self.folder / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text, encoding="utf-8")
        return path

    def write_app(self, scripts=None, folder="demo", **members):
        """Writes demo/app.json and its scripts, {path: text}; `members` stand instead of the usual ones."""
        app = {
            "name": "demo",
            "size": {"width": 100, "height": 80},
            "layers": [{"name": "main", "children": [
                {"type": "control", "name": "ok", "width": 20, "height": 10},
                {"type": "control", "name": "cancel", "width": 20, "height": 10},
            ]}],
            "screens": [{"name": "home", "layers": [{"layer": "main"}]}],
        }
        if scripts:
            app["scripts"] = list(scripts)
        app.update(members)
        for path, text in (scripts or {}).items():
            self.write(f"{folder}/{path}", text)
        self.write(f"{folder}/app.json", json.dumps(app, indent=2))
        return folder

    def assertResult(self, result, status, out="", err=""):
        """Compares everything at once, so that a failure shows what the tool said."""
        self.assertEqual((result.status, result.out, result.err), (status, out, err))
