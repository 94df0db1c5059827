# board_runs.py: what the tests of programs on the board share, with and without an operating system: the demo's events, and
# scripts that use up the heap.

import pathlib
import re

PROJECT = pathlib.Path(__file__).resolve().parents[2]


def demo_events():
    """Those of `make demo`, as options."""
    makefile = (PROJECT / "Makefile").read_text(encoding="utf-8").replace("\\\n", " ")
    events = re.search(r"^DEMO_EVENTS = (.*)$", makefile, re.MULTILINE).group(1).split()
    return [word for event in events for word in ("--event", event)]


# fill() takes all memory in ever smaller pieces and gives it as a list, the smallest pieces first.
FILL = """
local function fill()
    local hoard, count = false, 0
    local function keep(size)
        hoard = {hoard, string.rep(count .. " ", size)}
        count = count + 1
    end
    local function link()
        hoard = {hoard}
        count = count + 1
    end
    for _, size in ipairs({10000, 1000, 100, 1}) do
        while pcall(keep, size) do end
    end
    repeat
        collectgarbage()
        local before = count
        while pcall(link) do end
    until count == before
    return hoard
end
"""

# Repeats CALL(), which the script has before it, until it no longer succeeds, with a little more room each time.
REPEAT = FILL + """
print("begin")
for room = 0, 19 do
    local hoard = fill()
    for _ = 1, room do hoard = hoard[1] end
    collectgarbage()
    local fine, result
    repeat fine, result = pcall(CALL) until not fine or not result
    hoard = nil
    collectgarbage()
    print(fine, result)
end
"""
