# freertos_tool.py: runs an application in a task of FreeRTOS on the emulated board, and reads the figures at its end.
#
#     EMULATE=target/cortex-m7/emulate KEL_FREERTOS=build/freertos/bin/kel_freertos KEL_DESKTOP=build/release/bin/kel \
#     FREERTOS_KERNEL_PATH=... python3 -m unittest discover -s tests/freertos

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "tests/support"))
ON_FREERTOS = [os.path.abspath(os.environ["EMULATE"]), os.path.abspath(os.environ["KEL_FREERTOS"])]
ON_DESKTOP = [os.path.abspath(os.environ["KEL_DESKTOP"]), "run"]

FIGURES = re.compile(
    r"stack: (?P<reading>\d+) bytes used to read the application's file, (?P<scripts>\d+) by its scripts,"
    r" of (?P<stack>\d+)\n"
    r"heap: (?P<heap_used>\d+) bytes used at most, of (?P<heap>\d+); (?P<refused>\d+) requests found no memory\n"
    r"heap: (?P<free_before>\d+) bytes free before, (?P<free_after>\d+) after\n"
    r"kernel: (?P<ticks>\d+) ticks, (?P<beats>\d+) beats of another task\n"
)


class FreertosTest(unittest.TestCase):
    """Each test has a folder of its own with the thermostat in it."""

    maxDiff = None

    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="kel-freertos-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        shutil.copytree(PROJECT / "examples/thermostat", self.folder / "thermostat")
        shutil.copytree(PROJECT / "target/freertos/stack", self.folder / "stack")

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")
        return name

    def run_tool(self, tool, *arguments):
        completed = subprocess.run(
            [*tool, *arguments],
            cwd=self.folder,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=120,
            check=False,
        )
        return completed.returncode, completed.stdout.decode(), completed.stderr.decode()

    def run_task(self, *arguments):
        """Runs to the end. Returns the status, what the application printed, standard error, the figures."""
        status, out, err = self.run_tool(ON_FREERTOS, *arguments)
        found = FIGURES.search(out)
        self.assertIsNotNone(found, out + err)
        self.assertEqual(found.end(), len(out))
        figures = {name: int(value) for name, value in found.groupdict().items()}
        self.assertEqual(figures["free_after"], figures["free_before"], "what was taken is given back")
        return status, out[: found.start()], err, figures
