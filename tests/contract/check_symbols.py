#!/usr/bin/python3
"""check_symbols.py: holds a built plug-in against what a device gives it.

Of a shared library and of the object files (or static archives) that it was made from it checks that
  - exactly one symbol is exported, the entry point;
  - nothing is imported but the host's functions, the Lua functions that a device's host exports, six functions of the C
    library, and what the compiler itself adds;
  - no memory is taken statically: the objects have no writable section but constants with addresses (.data.rel.ro) and
    no common symbols, and nothing runs before the entry point (.init_array).
Prints each fault with the file and the name, and ends with 1 when there is one, with 2 when it could not check.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile

ENTRY_POINT = "KEL_PLUGIN_CREATE_FUNC"

HOST = """
    kel_app_log kelal_strdup kelal_realloc kelal_free
    kl_application_find_object
    kl_darray_create kl_darray_add kl_darray_item kl_darray_size kl_darray_free kl_darray_iterator_init
    kl_string_map_get kl_string_map_traverse
    kl_lua_get_app kl_lua_error kl_lua_get_data_value kl_lua_set_data_value kl_lua_clone_object kl_lua_delete_object
""".split()

LUA = """
    lua_gettop lua_settop lua_type lua_isstring lua_isnumber lua_tolstring lua_tointeger lua_touserdata
    lua_pushnil lua_pushboolean lua_pushinteger lua_pushnumber lua_pushstring lua_pushfstring lua_pushvalue
    lua_pushcclosure lua_replace lua_createtable lua_newuserdata lua_getfield lua_setfield lua_gettable lua_settable
    lua_rawseti lua_rawequal lua_next lua_getmetatable lua_setmetatable
    luaL_newmetatable luaL_openlib luaL_register
""".split()

C_LIBRARY = "strcmp strchr strrchr strlen memcpy memset".split()

# What compilers and the C start-up files refer to by themselves. Exceptions and the C++ runtime are none of it.
COMPILER = re.compile(
    r"__stack_chk_(fail|fail_local|guard)|_GLOBAL_OFFSET_TABLE_|__cxa_finalize|__dso_handle|__gmon_start__"
    r"|_ITM_(de)?registerTMCloneTable|__x86\.get_pc_thunk\.\w+|__aeabi_\w+"
)
SANITIZERS = re.compile(r"__(asan|ubsan|lsan|tsan|msan|sanitizer)_\w+")

# Constants that hold addresses: writable until the loader has filled them in, in flash on a device.
RELOCATED_CONSTANTS = re.compile(r"\.data\.rel\.ro(\.|$)")


class CannotCheck(Exception):
    pass


class Tools:
    def __init__(self, readelf):
        self._readelf = readelf

    def read(self, option, path):
        try:
            done = subprocess.run(
                [self._readelf, "--wide", option, path], capture_output=True, text=True, check=False, errors="replace"
            )
        except OSError as error:
            raise CannotCheck(f"{self._readelf}: {error.strerror}") from error
        # readelf says "Error:" and still ends with 0 for what is no ELF file.
        if done.returncode or "Error:" in done.stderr:
            raise CannotCheck(f"{path}: {done.stderr.strip() or 'readelf failed'}")
        return done.stdout.splitlines()


class Symbol:
    # "     6: 0000000000001139    35 FUNC    GLOBAL DEFAULT   12 name@VERSION (2)"
    LINE = re.compile(
        r"\s*\d+:\s+[0-9a-fA-F]+\s+\S+\s+(?P<type>\S+)\s+(?P<bind>\S+)\s+(?P<visibility>\S+)\s+"
        r"(?:\[.*\]\s+)?(?P<section>\S+)\s+(?P<name>[^\s@]+)"
    )

    def __init__(self, match):
        self.name = match["name"]
        self.is_undefined = match["section"] == "UND"
        self.is_common = match["section"] == "COM" or match["type"] == "COMMON"
        self.is_global = match["bind"] in ("GLOBAL", "WEAK", "UNIQUE", "GNU_UNIQUE")
        self.is_visible = match["visibility"] in ("DEFAULT", "PROTECTED")

    @property
    def is_exported(self):
        return self.is_global and self.is_visible and not self.is_undefined


def symbols(tools, path, option):
    matches = (Symbol.LINE.match(line) for line in tools.read(option, path))
    return [Symbol(match) for match in matches if match]


class Section:
    # "  [ 3] .data  PROGBITS  0000000000000000 000040 000004 00  WA  0   0  4"
    LINE = re.compile(
        r"\s*\[\s*\d+\]\s+(?P<name>\S+)\s+(?P<type>[A-Z_]+\S*)\s+[0-9a-f]+\s+[0-9a-f]+\s+(?P<size>[0-9a-f]+)\s+"
        r"[0-9a-f]+\s+(?P<flags>[A-Za-z]*)\s"
    )

    def __init__(self, match):
        self.name = match["name"]
        self.size = int(match["size"], 16)
        self.is_writable = "W" in match["flags"] and "A" in match["flags"]


def sections(tools, path):
    matches = (Section.LINE.match(line) for line in tools.read("--section-headers", path))
    return [Section(match) for match in matches if match]


def is_shared_library(tools, path):
    lines = tools.read("--file-header", path)
    return any(re.match(r"\s*Type:\s+DYN\b", line) for line in lines)


def check_exports(path, found):
    exported = sorted({symbol.name for symbol in found if symbol.is_exported})
    faults = [f"{path}: exports {name}, which is not the entry point" for name in exported if name != ENTRY_POINT]
    if ENTRY_POINT not in exported:
        faults.append(f"{path}: does not export {ENTRY_POINT}")
    return faults


def is_allowed_import(name, with_sanitizers):
    if name in HOST or name in LUA or name in C_LIBRARY or COMPILER.fullmatch(name):
        return True
    return with_sanitizers and bool(SANITIZERS.fullmatch(name))


def check_imports(path, imported, with_sanitizers):
    return [
        f"{path}: imports {name}, which a device does not have"
        for name in sorted(imported)
        if not is_allowed_import(name, with_sanitizers)
    ]


def check_memory(tools, path, found):
    faults = [
        f"{path}: section {section.name} takes {section.size} bytes of static memory"
        for section in sections(tools, path)
        if section.is_writable and section.size and not RELOCATED_CONSTANTS.match(section.name)
    ]
    return faults + [
        f"{path}: common symbol {symbol.name} takes static memory" for symbol in found if symbol.is_common
    ]


def check_library(tools, path, with_sanitizers):
    found = symbols(tools, path, "--dyn-syms")
    imported = {symbol.name for symbol in found if symbol.is_undefined}
    return check_exports(path, found) + check_imports(path, imported, with_sanitizers)


def check_objects(tools, paths, with_sanitizers):
    of_path = {path: symbols(tools, path, "--symbols") for path in paths}
    everything = [symbol for found in of_path.values() for symbol in found]
    defined = {symbol.name for symbol in everything if symbol.is_global and not symbol.is_undefined}
    faults = check_exports("the objects", everything)
    for path, found in of_path.items():
        imported = {symbol.name for symbol in found if symbol.is_undefined} - defined
        faults += check_imports(path, imported, with_sanitizers) + check_memory(tools, path, found)
    return faults


def check(tools, paths, with_sanitizers=False):
    """Returns the faults, one text each."""
    libraries = [path for path in paths if is_shared_library(tools, path)]
    objects = [path for path in paths if path not in libraries]
    if not objects:
        # The C start-up files put bytes of their own into a linked library.
        raise CannotCheck("no object files given: the memory of a linked library is not the plug-in's alone")
    faults = [fault for path in libraries for fault in check_library(tools, path, with_sanitizers)]
    return faults + check_objects(tools, objects, with_sanitizers)


# ---- Self-test: each check fails where it must ----

GOOD = """
extern "C" void kelal_free(void *);
extern "C" int lua_gettop(struct lua_State *);
extern "C" unsigned long strlen(const char *);
int shared_between_objects(const char *text);
static const char *const names[] = {"a", "b"};
extern "C" __attribute__((visibility("default"))) int KEL_PLUGIN_CREATE_FUNC(struct lua_State *L) {
    const char *const volatile *name = names;
    kelal_free(nullptr);
    return lua_gettop(L) + shared_between_objects(*name);
}
"""
OTHER = """
extern "C" unsigned long strlen(const char *);
int shared_between_objects(const char *text) { return static_cast<int>(strlen(text)); }
"""
VISIBLE = '__attribute__((visibility("default"))) '
# What is added to GOOD, and what must then be found (parts of faults, each in a fault of its own).
BAD = [
    ("a second export", VISIBLE + "int second() { return 1; }", ["exports _Z6secondv"] * 2),
    ("a weak export", VISIBLE + "inline int weak() { return 1; } int (*use())() { return weak; }",
     ["exports _Z4weakv"] * 2),
    ("exported data", VISIBLE + "extern const int data; const int data = 1;", ["exports data"] * 2),
    ("a Lua function that devices lack", 'extern "C" int lua_checkstack(); int f() { return lua_checkstack(); }',
     ["imports lua_checkstack"] * 2),
    ("a C function that devices lack", 'extern "C" int puts(const char *); int f() { return puts("x"); }',
     ["imports puts"] * 2),
    ("heap of the C++ runtime", "int *f() { return new int; }", ["imports _Znwm"] * 2),
    ("an exception", "void f() { throw 1; }", ["imports __cxa_throw"] * 2),
    ("run-time type information", "struct A { virtual ~A(); }; A::~A() {} void f(A *a) { delete a; }",
     ["imports _ZTVN10__cxxabiv117__class_type_infoE"] * 2),
    ("initialised data", "int counter = 5; int f() { return ++counter; }", ["section .data takes 4 bytes"]),
    ("zeroed data", "int counter; int f() { return ++counter; }", ["section .bss takes 4 bytes"]),
    ("a local static", "int f() { static int counter; return ++counter; }", ["section .bss takes 4 bytes"]),
    ("data in a section of its own", '__attribute__((section(".data.mine"))) int mine = 1; int f() { return ++mine; }',
     ["section .data.mine takes 4 bytes"]),
    ("data with an address", "int f(); int (*pointer)() = f; int f() { return pointer() + 1; }",
     ["section .data.rel.local takes"]),
    ("thread-local data", "thread_local int counter; int f() { return ++counter; }", ["section .tbss takes 4 bytes"]),
    ("a constructor that runs at load", "__attribute__((constructor)) void g() { asm volatile(\"\"); }",
     ["section .init_array takes"]),
]  # fmt: skip


class SelfTest:
    def __init__(self, tools, compiler, folder):
        self._tools = tools
        self._compiler = compiler
        self._folder = folder
        self._failures = 0

    def _path(self, name):
        return os.path.join(self._folder, name)

    def _run(self, *arguments):
        subprocess.run([self._compiler, "-fPIC", "-fvisibility=hidden", "-O1", *arguments], check=True)

    def _compile(self, name, text, *flags):
        source = self._path(name + ".cpp")
        with open(source, "w", encoding="utf-8") as file:
            file.write(text)
        self._run(*flags, "-c", source, "-o", self._path(name + ".o"))
        return self._path(name + ".o")

    def _link(self, name, *objects):
        self._run("-shared", "-nodefaultlibs", *objects, "-o", self._path(name + ".so"))
        return self._path(name + ".so")

    def expect(self, what, faults, expected):
        missing = list(expected)
        unexpected = []
        for fault in faults:
            part = next((part for part in missing if part in fault), None)
            if part is None:
                unexpected.append(fault)
            else:
                missing.remove(part)
        for text in missing:
            print(f"self-test: {what}: not found: {text}")
        if not expected:
            for text in unexpected:
                print(f"self-test: {what}: found, although there is no fault: {text}")
        if missing or (unexpected and not expected):
            self._failures += 1

    def expect_cannot(self, what, paths, expected, tools=None):
        try:
            check(tools or self._tools, paths)
        except CannotCheck as error:
            if expected in str(error):
                return
            print(f"self-test: {what}: cannot check, but: {error}")
        else:
            print(f"self-test: {what}: was checked, although it cannot be")
        self._failures += 1

    def run(self):
        other = self._compile("other", OTHER)
        good = self._compile("good", GOOD)
        library = self._link("good", good, other)
        archive = self._path("good.a")
        subprocess.run(["ar", "rcs", archive, good, other], check=True)
        self.expect("a good plug-in", check(self._tools, [library, good, other]), [])
        self.expect("a good plug-in's archive", check(self._tools, [library, archive]), [])
        self.expect("good objects alone", check(self._tools, [good, other]), [])
        self.expect(
            "an object that is missing",
            check(self._tools, [library, good]),
            ["imports _Z22shared_between_objectsPKc"],
        )
        for number, (what, text, expected) in enumerate(BAD):
            name = f"bad{number}"
            bad = self._compile(name, GOOD + text)
            self.expect(what, check(self._tools, [self._link(name, bad, other), bad, other]), expected)
        common = self._compile("common", "int common; int hidden_use(void) { return ++common; }", "-xc", "-fcommon")
        self.expect("a common symbol", check(self._tools, [good, other, common]), ["common symbol common"])
        self.expect("no entry point", check(self._tools, [self._link("none", other), other]), ["does not export"] * 2)
        bad_archive = self._path("bad.a")
        data = self._compile("data", "int counter = 5; int f() { return ++counter; }")
        subprocess.run(["ar", "rcs", bad_archive, good, other, data], check=True)
        self.expect("an archive with data", check(self._tools, [bad_archive]), ["section .data takes 4 bytes"])

        sanitized = self._compile("sanitized", 'extern "C" void __ubsan_handle_x(); void f() { __ubsan_handle_x(); }')
        files = [good, other, sanitized]
        self.expect("a sanitizer", check(self._tools, files), ["imports __ubsan_handle_x"])
        self.expect("a sanitizer, allowed", check(self._tools, files, with_sanitizers=True), [])

        text = self._path("text")
        with open(text, "w", encoding="utf-8") as file:
            file.write("no ELF file\n")
        self.expect_cannot("a library alone", [library], "no object files given")
        self.expect_cannot("no ELF file", [library, text], "text")
        self.expect_cannot("a file that is not there", [self._path("nosuch.o")], "nosuch.o")
        self.expect_cannot("no readelf", [library, good], "nosuch-readelf", Tools("nosuch-readelf"))
        print(f"self-test: {'failed' if self._failures else 'passed'}")
        return 1 if self._failures else 0


def main():
    parser = argparse.ArgumentParser(description="Holds a built plug-in against what a device gives it.")
    parser.add_argument("files", nargs="*", help="the shared library, and its object files or static archives")
    parser.add_argument("--allow-sanitizers", action="store_true", help="accept imports of the sanitizers")
    parser.add_argument("--readelf", default="readelf", help="which readelf to use (default: %(default)s)")
    parser.add_argument("--self-test", action="store_true", help="prove with small plug-ins that each check can fail")
    parser.add_argument("--compiler", default="g++", help="for --self-test (default: %(default)s)")
    arguments = parser.parse_args()
    tools = Tools(arguments.readelf)
    if arguments.self_test:
        with tempfile.TemporaryDirectory() as folder:
            return SelfTest(tools, arguments.compiler, folder).run()
    if not arguments.files:
        parser.error("no files given")
    try:
        faults = check(tools, arguments.files, arguments.allow_sanitizers)
    except CannotCheck as error:
        print(f"cannot check: {error}", file=sys.stderr)
        return 2
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
