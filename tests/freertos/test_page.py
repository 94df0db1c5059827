# test_page.py: what docs/integration.md shows is what happens: its commands, its samples, its check.

import os
import pathlib
import subprocess
import sys
import unittest

from freertos_tool import PROJECT, FreertosTest

sys.path.append(str(PROJECT / "tests/contract"))
from page_samples import read_page, samples  # noqa: E402

KERNEL = pathlib.Path(os.environ["FREERTOS_KERNEL_PATH"])
PROCESSOR = ["-mcpu=cortex-m7", "-mthumb", "-mfloat-abi=hard", "-mfpu=fpv5-d16"]


class Page(FreertosTest):
    def test_the_commands_build_the_plug_in(self):
        compile_all, show_one_symbol, _ = samples(read_page(), "sh")
        done = subprocess.run(
            ["sh", "-eu", "-c", compile_all + show_one_symbol],
            cwd=PROJECT,
            env={"PATH": os.environ["PATH"], "TMPDIR": str(self.folder)},
            capture_output=True,
            text=True,
            check=False,
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        # Two lines, so the check of the symbols found nothing: text, data, bss, the sum twice; the entry point.
        self.assertRegex(
            done.stdout,
            r"\A\s*\d{4}\s+0\s+0\s+\d+\s+[0-9a-f]+\s+\(TOTALS\)\n[0-9a-f]{8} T KEL_PLUGIN_CREATE_FUNC\n\Z",
        )

    def test_the_allocators_compile(self):
        (text,) = [text for text in samples(read_page(), "c") if "FreeRTOS.h" in text]
        source = self.write("sample.c", text)
        folders = [KERNEL / "include", KERNEL / "portable/GCC/ARM_CM7/r0p1", PROJECT / "target/freertos"]
        done = subprocess.run(
            ["arm-none-eabi-gcc", "-std=gnu99", *PROCESSOR, "-Wall", "-Wextra", "-Wconversion", "-Werror", "-c",
             "-DKEL_RTOS_HEAP_BYTES=65536", "-DKEL_RTOS_STACK_BYTES=65536", f"-I{PROJECT}/include",
             *[f"-isystem{folder}" for folder in folders], source, "-o", os.devnull],
            cwd=self.folder, capture_output=True, text=True, check=False,
        )  # fmt: skip
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_the_check_prints_what_the_page_shows(self):
        (script,) = samples(read_page(), "lua")
        printed, logged, _ = samples(read_page(), "text")
        self.write("check.lua", script)
        _, before, _, _ = self.run_task("thermostat")
        status, out, err, _ = self.run_task("thermostat", "--script", "check.lua")
        self.assertEqual((status, out, err), (0, before + printed, logged))


if __name__ == "__main__":
    unittest.main()
