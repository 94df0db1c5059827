#!/usr/bin/env python3
"""Names every include that points upward or sideways between the rooms that a layers.txt lists, bottom first."""
import pathlib
import re
import sys

status = 0
for layers in map(pathlib.Path, sys.argv[1:]):
    lines = [line.split() for line in layers.read_text().splitlines() if line.strip() and not line.startswith("#")]
    height = {room: level for level, rooms in enumerate(lines) for room in rooms}
    for source in sorted(layers.parent.glob("*.cpp")) + sorted(layers.parent.glob("*.h")):
        if source.stem not in height:
            print(f"{source}: is not in {layers}")
            status = 1
            continue
        for number, line in enumerate(source.read_text().splitlines(), 1):
            system = re.match(r"#include <(.+)>", line)
            if system and not re.fullmatch(r"kel/.+|lua\.hpp|iterator|std(def|int)\.h|string\.h", system[1]):
                print(f"{source}:{number}: <{system[1]}> is neither the contract, nor Lua, nor a header that devices have")
                status = 1
            included = re.match(r'#include "(.+)\.h"', line)
            if included and included[1] != source.stem and height.get(included[1], 99) >= height[source.stem]:
                print(f"{source}:{number}: {source.stem} may not include {included[1]}, which is not below it")
                status = 1
sys.exit(status)
