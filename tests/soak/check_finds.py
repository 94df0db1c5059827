# check_finds.py: whether the soak test finds what grows: runs it with a script that is at fault.
#
#     check_finds.py FIGURES SOAK ARGUMENT...
#
# FIGURES: the names of exactly those figures that are to differ, with ", " between them.

import re
import subprocess
import sys

expected, *command = sys.argv[1:]
result = subprocess.run(command, capture_output=True, text=True, check=False)
print(result.stdout + result.stderr, end="")
found = ", ".join(re.findall(r"^  (.*?) +\d+ +\d+  DIFFERS$", result.stdout, re.MULTILINE))
if (result.returncode, found) != (1, expected):
    sys.exit(f"status {result.returncode}, found: {found}; expected status 1 and: {expected}")
