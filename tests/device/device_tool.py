# device_tool.py: runs the tool on the emulated board and on the desktop.
#
#     EMULATE=target/cortex-m7/emulate KEL_DEVICE=build/m7/bin/kel KEL_DESKTOP=build/release/bin/kel \
#     KEL_SMALL_HEAP=build/m7/bin/kel_small_heap python3 -m unittest discover -s tests/device

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "tests/support"))
EMULATE = os.path.abspath(os.environ["EMULATE"])
ON_DEVICE = [EMULATE, os.path.abspath(os.environ["KEL_DEVICE"])]
ON_SMALL_HEAP = [EMULATE, os.path.abspath(os.environ["KEL_SMALL_HEAP"])]
ON_DESKTOP = [os.path.abspath(os.environ["KEL_DESKTOP"])]


class DeviceTest(unittest.TestCase):
    """Each test has a folder of its own with the thermostat in it, where the tools work."""

    maxDiff = None

    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="kel-device-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        shutil.copytree(PROJECT / "examples/thermostat", self.folder / "thermostat")

    def run_tool(self, tool, *arguments):
        completed = subprocess.run(
            [*tool, *arguments],
            cwd=self.folder,
            env={"PATH": os.environ["PATH"], "HOME": self.folder},
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=120,
            check=False,
        )
        return completed.returncode, completed.stdout, completed.stderr

    def assertSame(self, status, *arguments):
        """Status and both outputs are the same, byte for byte. Returns them."""
        desktop = self.run_tool(ON_DESKTOP, *arguments)
        device = self.run_tool(ON_DEVICE, *arguments)
        self.assertEqual(desktop[0], status, desktop[2].decode())
        for (found, expected) in zip(device[1:], desktop[1:]):
            self.assertEqual(found.decode(errors="replace"), expected.decode(errors="replace"))
        self.assertEqual(device, desktop)
        return desktop
