"""call_graph.py: how much stack the functions of some objects take, from what GCC writes with -fcallgraph-info=su.

GCC knows the frames and the direct calls. Calls through pointers, and what other libraries call back, are looked up in
tables; what no table knows is refused, so that nothing is left out in silence.
"""

import pathlib
import re
from typing import NamedTuple

WALK = "the predicate of the walk"


class CannotTell(Exception):
    """Something that the tables do not know, or a tool that failed."""


class Tables(NamedTuple):
    roots: tuple  # what is called first, from outside
    pointers: dict  # a call through a pointer, as the source writes it: what it calls of these objects; () for nothing
    callbacks: dict  # a function of another library: what it calls back
    walks: dict  # who starts a walk: the predicate that the walk calls on every child
    recursions: tuple  # functions that may come to call themselves; every cycle must pass one of them
    apart: tuple  # functions whose frames are counted by themselves, not as their callers'
    tested: tuple  # called by tests alone


class CallGraph:
    """The functions of some objects and their calls.

    Which predicate a walk calls depends on who started it. So a place in the graph is a function together with the
    predicate of the walk that it is in.
    """

    NODE = re.compile(r'node: \{ title: "([^"]+)" label: "([^"]+)"')
    EDGE = re.compile(r'edge: \{ sourcename: "([^"]+)" targetname: "([^"]+)" label: "([^"]+)"')

    def __init__(self, objects, tables):
        self._tables = tables
        self._name = {}  # by title, which is unique; a function's clones share its name
        self._frame = {}
        self._calls = {}
        self._known = {}  # results of deepest and longest
        for made in objects:
            self._read(made.with_suffix(".ci").read_text())
        self._check()

    def _read(self, text):
        for title, label in self.NODE.findall(text):
            frame = re.search(r"\\n(\d+) bytes \((.+?)\)", label)
            if not frame:
                continue  # the host's, Lua's or the C library's
            self._name[title] = re.search(r"(\w+)\(", label)[1]
            self._frame[title] = int(frame[1])
            if frame[2] != "static":
                raise CannotTell(f"{self._name[title]}: its stack is {frame[2]}, expected static")
        for title, target, place in self.EDGE.findall(text):
            self._calls.setdefault(title, []).append((target, place))

    def _check(self):
        tables = self._tables
        named = {*tables.roots, *tables.recursions, *tables.apart, *tables.tested, *tables.walks, *tables.walks.values()}
        named.update(*tables.pointers.values(), *tables.callbacks.values())
        for name in sorted(named - {WALK} - set(self._name.values())):
            raise CannotTell(f"{name} stands in a table, but there is no such function")
        self._reached = self.reached_from(tables.roots)
        missing = set(self._name.values()) - {self.name(place) for place in self._reached} - {*tables.tested}
        for name in sorted(missing):
            raise CannotTell(f"nothing is known to call {name}")
        for place in self._reached:
            self.deepest(place)
        for head in self._reached:
            if self.name(head) in tables.recursions and self.longest(head, head) is None:
                raise CannotTell(f"{self.name(head)} stands in a table as a recursion, and is none")

    def name(self, place):
        return self._name[place[0]]

    def places(self, name, predicate=None):
        return [(title, predicate) for title, known in self._name.items() if known == name]

    def place(self, name, predicate=None):
        """The one function of a name."""
        places = self.places(name, predicate)
        if len(places) != 1:
            raise CannotTell(f"{len(places)} functions are called {name}, expected one")
        return places[0]

    def _pointed_to(self, caller, where, predicate):
        path, line, column = where.rsplit(":", 2)
        source = pathlib.Path(path).read_text().splitlines()[int(line) - 1]
        called = re.search(r"[\w.>-]*$", source[: int(column) - 1])[0]
        where = f"{pathlib.Path(path).name}:{line}: {self._name[caller]}"
        if called not in self._tables.pointers:
            raise CannotTell(f'{where} calls "{called}" through a pointer, and it is not known what that is')
        pointed_to = self._tables.pointers[called]
        if WALK not in pointed_to:
            return pointed_to
        if not predicate:
            raise CannotTell(f"{where} walks, and it is not known with which predicate")
        return (predicate,)

    def _called(self, place):
        title, predicate = place
        predicate = self._tables.walks.get(self._name[title], predicate)
        for target, where in self._calls.get(title, ()):
            if target in self._frame:
                yield target, predicate
                continue
            if target == "__indirect_call":
                names = self._pointed_to(title, where, predicate)
            else:
                names = self._tables.callbacks.get(target, ())
            for name in names:
                yield from self.places(name, predicate)

    def _called_once(self, place, apart=()):
        left_out = (*self._tables.recursions, *apart)
        return [called for called in self._called(place) if self.name(called) not in left_out]

    def reached_from(self, names):
        reached = {place for name in names for place in self.places(name)}
        waiting = list(reached)
        while waiting:
            new = set(self._called(waiting.pop())) - reached
            reached |= new
            waiting += new
        return reached

    def own(self, place):
        """Bytes of the deepest chain of calls down to recursions and what is counted apart."""
        return self.deepest(place, apart=self._tables.apart)

    def deepest(self, place, path=(), apart=()):
        """Bytes of the deepest chain of calls that repeats no recursion."""
        if place in path:
            chain = [self.name(step) for step in (*path[path.index(place) :], place)]
            raise CannotTell(f"a recursion that is not known: {' -> '.join(chain)}")
        if (place, apart) not in self._known:
            below = [self.deepest(called, (*path, place), apart) for called in self._called_once(place, apart)]
            self._known[place, apart] = self._frame[place[0]] + max(below, default=0)
        return self._known[place, apart]

    def longest(self, place, goal):
        """Bytes from a place up to its deepest call of the goal, or None when it does not come to that."""
        if (place, goal) not in self._known:
            below = [self.longest(called, goal) for called in self._called_once(place) if called != goal]
            below += [0 for called in self._called(place) if called == goal]
            found = [length for length in below if length is not None]
            self._known[place, goal] = self._frame[place[0]] + max(found) if found else None
        return self._known[place, goal]
