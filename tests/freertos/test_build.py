# test_build.py: without the kernel's folder this part is left out; with a wrong one it is said what is missing.

import os
import pathlib
import subprocess
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
KERNEL = pathlib.Path(os.environ["FREERTOS_KERNEL_PATH"])


class Build(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="kel-freertos-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def run_program(self, *arguments):
        environment = {
            name: value for name, value in os.environ.items() if not name.startswith(("FREERTOS", "MAKE", "MFLAGS"))
        }
        completed = subprocess.run(
            arguments, cwd=PROJECT, env=environment, capture_output=True, text=True, timeout=300, check=False
        )
        return completed.returncode, completed.stdout, completed.stderr

    def configure(self, *settings):
        status, _, err = self.run_program(
            "cmake", "-S", PROJECT, "-B", self.folder / "build", "-G", "Ninja", "-DKEL_LUA=source",
            "-DKEL_BUILD_TESTS=OFF", f"-DCMAKE_TOOLCHAIN_FILE={PROJECT}/target/cortex-m7/toolchain.cmake", *settings
        )  # fmt: skip
        return status, " ".join(err.split())

    def test_without_a_kernel_one_line_says_so(self):
        for target in ("demo-freertos", "test-freertos"):
            for setting in ((), ("FREERTOS_KERNEL_PATH=",)):
                with self.subTest(target=target, setting=setting):
                    self.assertEqual(
                        self.run_program("make", target, *setting),
                        (0, "FREERTOS_KERNEL_PATH is not set: what runs on FreeRTOS is left out\n", ""),
                    )

    def test_a_folder_that_is_no_kernel_is_refused(self):
        status, err = self.configure(f"-DFREERTOS_KERNEL_PATH={self.folder}")
        self.assertEqual(status, 1)
        self.assertIn(
            f'FREERTOS_KERNEL_PATH is "{self.folder}", which is no folder of the FreeRTOS kernel: it has no tasks.c', err
        )
        self.assertEqual(err.count("CMake Error"), 1)

    def test_a_relative_folder_starts_at_the_projects(self):
        status, err = self.configure("-DFREERTOS_KERNEL_PATH=docs")
        self.assertEqual(status, 1)
        self.assertIn(f'FREERTOS_KERNEL_PATH is "{PROJECT}/docs", which', err)

    def test_a_kernel_without_the_port_is_refused(self):
        kernel = self.folder / "kernel"
        for file in ("tasks.c", "list.c", "queue.c", "include/FreeRTOS.h", "portable/MemMang/heap_4.c"):
            (kernel / file).parent.mkdir(parents=True, exist_ok=True)
            (kernel / file).touch()
        status, err = self.configure(f"-DFREERTOS_KERNEL_PATH={kernel}")
        self.assertEqual(status, 1)
        self.assertIn("it has no portable/GCC/ARM_CM7/r0p1/port.c", err)

    def test_a_heap_that_the_board_has_no_room_for_is_refused(self):
        status, err = self.configure(f"-DFREERTOS_KERNEL_PATH={KERNEL}", "-DKEL_RTOS_HEAP_BYTES=15728641")
        self.assertEqual(status, 1)
        self.assertIn("KEL_RTOS_HEAP_BYTES is 15728641; the board has room for 15728640", err)


if __name__ == "__main__":
    unittest.main()
