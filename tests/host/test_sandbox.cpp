// test_sandbox.cpp: what scripts can reach, closed and opened: each way in and each way out.
#include <initializer_list>
#include <string>
#include <utility>

#include <doctest/doctest.h>

#include <support/lua_flavor.h>
#include <support/machine.h>

#include "scripted_application.h"
#include "temporary_folder.h"

using kelhost::Options;
using kelhost::Sandbox;

namespace {

Options with(const Sandbox &sandbox) {
    Options options;
    options.sandbox = sandbox;
    return options;
}

// The names in a table, sorted; subtables as names too.
std::string names_in(ScriptedApplication &app, const std::string &table) {
    CHECK(app.run("local names = {} for name in pairs(" + table
                  + ") do names[#names + 1] = name end "
                    "table.sort(names) print(table.concat(names, ' '))"));
    std::string names = app.take_output();
    names.pop_back();
    return names;
}

// string.dump is closed, so a test makes its bytecode in a state of its own.
int append(lua_State *, const void *piece, std::size_t size, void *text) {
    static_cast<std::string *>(text)->append(static_cast<const char *>(piece), size);
    return 0;
}

std::string bytecode_of(const char *code) {
    lua_State *const L = luaL_newstate();
    REQUIRE(luaL_loadstring(L, code) == 0);
    std::string bytecode;
    CHECK(lua_dump(L, append, &bytecode) == 0);
    lua_close(L);
    return bytecode;
}

std::string as_lua_string(const std::string &bytes) {
    std::string literal = "'";
    for (const char byte : bytes) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\%03u", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        literal += escape;
    }
    return literal + "'";
}

} // namespace

TEST_CASE("a closed sandbox offers these globals and no other") {
    ScriptedApplication app;
    CHECK(names_in(app, "_G")
          == "_G _VERSION assert collectgarbage coroutine error gcinfo getfenv getmetatable ipairs kel "
             "load loadstring math next os pairs pcall print rawequal rawget rawset select setfenv "
             "setmetatable string table tonumber tostring type unpack xpcall");
}

TEST_CASE("a closed sandbox keeps the harmless part of the os library") {
    ScriptedApplication app;
    CHECK(names_in(app, "os") == "clock date difftime time");
    CHECK(app.value("type(os.time()), type(os.clock()), os.date('!%Y', 0), os.difftime(5, 3)")
          == "number\tnumber\t1970\t2");
}

TEST_CASE("a closed sandbox has no string.dump, through the methods of strings either") {
    ScriptedApplication app;
    CHECK(app.value("string.dump, ('').dump, string.rep('ab', 2), ('x'):upper()") == "nil\tnil\tabab\tX");
}

TEST_CASE("a closed sandbox leaves table, math, string and coroutine whole") {
    ScriptedApplication app;
    CHECK(names_in(app, "coroutine") == lua_flavor::coroutine_functions);
    CHECK(app.value("table.concat({1, 2}, '-'), math.floor(1.5), ('a,b'):find(','), select('#', unpack({1, 2, 3}))")
          == "1-2\t1\t2\t3");
}

TEST_CASE("the environment of the host's functions is the scripts' own, and cannot be set") {
    ScriptedApplication app;
    CHECK(app.value("getfenv(print) == _G, getfenv(kel.get_value) == _G, getfenv(string.rep) == _G, getfenv(0) == _G")
          == "true\ttrue\ttrue\ttrue");
    CHECK(app.error_of("setfenv(print, {})") == "test:1: 'setfenv' cannot change environment of given object");
    CHECK(app.error_of("setfenv(kel.log, {})") == "test:1: 'setfenv' cannot change environment of given object");
}

TEST_CASE("nothing that a script can reach is the registry or holds the debug or foreign function library") {
    ScriptedApplication app;
    // LuaJIT loads that library when it first meets such a number.
    CHECK(app.value("(loadstring('number = 1LL return true') or print)()")
          == (lua_flavor::has_wide_integers ? "true" : "\n"));
    CHECK(app.run(R"(
        local seen, found = {}, {}
        local function search(value, path)
            if type(value) == 'table' and not seen[value] then
                seen[value] = true
                if rawget(value, '_LOADED') or rawget(value, 'getregistry') or rawget(value, 'cdef') then
                    found[#found + 1] = path
                end
                for key, item in pairs(value) do
                    search(key, path .. '.key')
                    search(item, path .. '.' .. tostring(key))
                end
            end
            local metatable = getmetatable(value)
            if metatable then search(metatable, path .. '.metatable') end
            if type(value) == 'function' then search(getfenv(value), path .. '.environment') end
        end
        search(_G, '_G')
        search('', 'string')
        print(#found, table.concat(found, ' '))
    )"));
    CHECK(app.take_output() == "0\t\n");
}

TEST_CASE("loadstring compiles text and refuses bytecode") {
    ScriptedApplication app;
    CHECK(app.value("loadstring('return 1 + 1')()") == "2");
    CHECK(app.value("loadstring('return +', 'piece')") == "nil\t[string \"piece\"]:1: unexpected symbol near '+'");
    CHECK(app.value("loadstring('x =')") == "nil\t[string \"x =\"]:1: unexpected symbol near '<eof>'");
    CHECK(app.value("loadstring(" + as_lua_string(bytecode_of("return 7")) + ")") == "nil\tbytecode is not allowed");
    CHECK(app.value("loadstring('\\27Lua')") == "nil\tbytecode is not allowed");
    CHECK(app.error_of("loadstring({})") == "test:1: bad argument #1 to 'loadstring' (string expected, got table)");
}

TEST_CASE("loadstring gives an empty function for an empty text") {
    ScriptedApplication app;
    CHECK(app.value("loadstring('')()") == "");
}

TEST_CASE("load reads pieces until nil or an empty one, and refuses bytecode") {
    ScriptedApplication app;
    CHECK(app.run("function pieces(...) local list, at = {...}, 0 "
                  "return function() at = at + 1 return list[at] end end"));
    CHECK(app.value("load(pieces('return ', '40', '+2'))()") == "42");
    CHECK(app.value("load(pieces('return 1', '', 'garbage garbage'))()") == "1");
    CHECK(app.value("load(pieces('return +'), '=piece')") == "nil\tpiece:1: unexpected symbol near '+'");
    CHECK(app.value("load(pieces('\\27', 'Lua'))") == "nil\tbytecode is not allowed");
    CHECK(app.value("load(pieces(" + as_lua_string(bytecode_of("return 7")) + "))") == "nil\tbytecode is not allowed");
    if (lua_flavor::empty_first_piece_is_the_end)
        CHECK(app.value("load(pieces('', 'garbage garbage'))()") == "");
    else
        CHECK(app.value("load(pieces('', '\\27Lua'))") == "nil\tbytecode is not allowed");
    CHECK(app.value("load(pieces({}))") == "nil\ttest:1: reader function must return a string");
    CHECK(app.value("load(function() error('no more', 0) end)") == "nil\tno more");
    CHECK(app.error_of("load('return 1')") == "test:1: bad argument #1 to 'load' (function expected, got string)");
}

TEST_CASE("bytecode is refused behind a shell line or a byte-order mark too") {
    TemporaryFolder folder;
    const std::string bytecode = bytecode_of("print('ran')");
    ScriptedApplication app;
    for (const char *const before : {"#\n", "\xEF\xBB\xBF", "\xEF\xBB\xBF#\n"}) {
        CHECK(app.value("(loadstring(" + as_lua_string(before + bytecode) + "))") == "nil");
        const std::string file = folder.write("script.luac", before + bytecode);
        CHECK(!app.runtime.lua.run_file(file, "script.luac"));
        CHECK(app.take_log().starts_with("error: "));
    }
}

TEST_CASE("a script file or a piece of code that is bytecode is refused") {
    TemporaryFolder folder;
    const std::string bytecode = bytecode_of("print('ran')");
    const std::string file = folder.write("script.luac", bytecode);
    ScriptedApplication app;
    CHECK(!app.run(bytecode));
    CHECK(app.take_log() == "error: test: bytecode is not allowed");
    CHECK(!app.runtime.lua.run_file(file, "script.luac"));
    CHECK(app.take_log() == "error: script.luac: bytecode is not allowed");
    CHECK(app.runtime.lua.errors().size() == 2);
}

TEST_CASE("the bytecode option opens string.dump and every loader that is open") {
    TemporaryFolder folder;
    const std::string bytecode = bytecode_of("print('ran') return 7");
    const std::string file = folder.write("script.luac", bytecode);
    ScriptedApplication app(with({.bytecode = true, .load_files = true}));
    CHECK(app.value("loadstring(string.dump(function() return 5 end))()") == "5");
    CHECK(app.run("code = string.dump(function() return 6 end)"));
    CHECK(app.value("load(function() local piece = code code = nil return piece end)()") == "6");
    CHECK(app.run(bytecode));
    CHECK(app.runtime.lua.run_file(file, "script.luac"));
    CHECK(app.run("loadfile('" + file + "')() dofile('" + file + "')"));
    CHECK(app.take_output() == "ran\nran\nran\nran\n");
}

TEST_CASE("the load_files option opens loadfile and dofile, for text alone") {
    TemporaryFolder folder;
    const std::string text = folder.write("text.lua", "#!/usr/bin/lua\nlocal a, b = ...\nreturn 'from file', a");
    const std::string shell_line_alone = folder.write("shell.lua", "#!/usr/bin/lua");
    const std::string wrong = folder.write("wrong.lua", "# first\nx = = 1");
    const std::string bytecode = folder.write("code.luac", bytecode_of("return 7"));
    const std::string hidden = folder.write("hidden.luac", "#!/bin/lua\n" + bytecode_of("return 7"));
    ScriptedApplication app(with({.load_files = true}));
    CHECK(app.value("loadfile('" + text + "')(3)") == "from file\t3");
    CHECK(app.value("dofile('" + text + "')") == "from file\tnil");
    CHECK(app.value("dofile('" + shell_line_alone + "')") == "");
    CHECK(app.value("select(2, loadfile('" + wrong + "'))") == wrong + ":2: unexpected symbol near '='");
    CHECK(app.value("loadfile('" + bytecode + "')") == "nil\tbytecode is not allowed");
    CHECK(app.value("type(loadfile('" + hidden + "'))") == "nil");
    CHECK(app.error_of("dofile('" + bytecode + "')") == "bytecode is not allowed");
    const std::string missing = folder.path() + "/missing.lua";
    CHECK(app.value("loadfile('" + missing + "')") == "nil\tcannot open " + missing + ": No such file or directory");
    const std::string fault =
        folders_can_be_opened ? "read " + folder.path() : "open " + folder.path() + ": Is a directory";
    CHECK(app.value("loadfile('" + folder.path() + "')") == "nil\tcannot " + fault);
}

TEST_CASE("the io option opens the io library") {
    TemporaryFolder folder;
    const std::string file = folder.write("data.txt", "content");
    ScriptedApplication app(with({.io = true}));
    CHECK(app.value("io.open('" + file + "'):read('*a')") == "content");
    CHECK(names_in(app, "os") == "clock date difftime time");
}

TEST_CASE("the os option opens the whole os library") {
    ScriptedApplication app(with({.os = true}));
    CHECK(names_in(app, "os") == "clock date difftime execute exit getenv remove rename setlocale time tmpname");
    CHECK(app.value("io") == "nil");
}

TEST_CASE("the modules option opens require and the package library, with what is open loaded") {
    ScriptedApplication app(with({.modules = true}));
    CHECK(app.value("type(require), type(package.loadlib), type(module)") == "function\tfunction\tfunction");
    CHECK(app.value("require('string') == string, require('kel') == kel, require('os') == os") == "true\ttrue\ttrue");
    CHECK(app.value("package.loaded.debug, package.loaded.io, package.loaded.os.execute") == "nil\tnil\tnil");
}

TEST_CASE("the debug option opens the debug library") {
    ScriptedApplication app(with({.debug = true}));
    CHECK(app.value("type(debug.getregistry), type(debug.sethook)") == "function\tfunction");
}

TEST_CASE("a userdata's metatable is out of reach unless debug or newproxy is open; others are as ever") {
    for (const Sandbox &sandbox : {Sandbox{}, Sandbox{.debug = true}, Sandbox{.newproxy = true}}) {
        ScriptedApplication app(with(sandbox));
        lua_newuserdata(app.state(), 1);
        lua_createtable(app.state(), 0, 0);
        lua_setmetatable(app.state(), -2);
        lua_setglobal(app.state(), "thing");
        CHECK(app.value("type(getmetatable(thing))") == (sandbox.debug || sandbox.newproxy ? "table" : "nil"));
        CHECK(app.value("getmetatable(setmetatable({}, {__metatable = 'kept'}))") == "kept");
        CHECK(app.value("(function(t) return getmetatable(setmetatable({}, t)) == t end)({})") == "true");
        CHECK(app.value("getmetatable(1), getmetatable({}), getmetatable('').__index == string") == "nil\tnil\ttrue");
        CHECK(app.error_of("getmetatable()") == "test:1: bad argument #1 to 'getmetatable' (value expected)");
    }
}

TEST_CASE("a userdata offers scripts nothing but what its metatable's __index holds") {
    ScriptedApplication app;
    lua_State *const L = app.state();
    lua_newuserdata(L, 1);
    CHECK(luaL_loadstring(L, "local base = {__index = {name = function() return 'base' end}, __gc = print} "
                             "return {__index = setmetatable({own = 1}, base), __gc = print, __metatable = base}")
          == 0);
    lua_call(L, 0, 1);
    lua_setmetatable(L, -2);
    lua_setglobal(L, "thing"); // made as plug-ins make handles: a method table inherits from another metatable
    CHECK(app.value("thing.own, thing.name(), getmetatable(thing)") == "1\tbase\tnil");
    CHECK(app.value("thing.__index, thing.__gc, thing.__metatable, thing._LOADED") == "nil\tnil\tnil\tnil");
    for (const char *const attempt : {"setmetatable(thing, {})",
                                      "setmetatable(thing, nil)",
                                      "rawget(thing, '__gc')",
                                      "rawset(thing, 'own', 2)",
                                      "thing.own = 2",
                                      "next(thing)",
                                      "pairs(thing)",
                                      "ipairs(thing)",
                                      "unpack(thing)",
                                      "table.insert(thing, 1)",
                                      "table.sort(thing)",
                                      "setfenv(thing, {})",
                                      "getfenv(thing)",
                                      "coroutine.create(thing)",
                                      "coroutine.wrap(thing)",
                                      "load(thing)",
                                      "string.rep(thing, 2)",
                                      "kel.set_value(thing, 1)",
                                      "thing()",
                                      "return #thing",
                                      "return thing .. ''"}) {
        CAPTURE(std::string(attempt));
        CHECK(app.value(std::string("(pcall(loadstring[[") + attempt + "]]))") == "false");
    }
    CHECK(app.value("thing.own") == "1");
    CHECK(app.run("thing = nil collectgarbage()")); // its finalizer is as it was
    CHECK(app.take_output().starts_with("userdata: "));
}

TEST_CASE("no function of a closed sandbox gives a userdata, as a result or as an error") {
    ScriptedApplication app;
    CHECK(app.run(R"(
        local given = {nil, true, -1, 99, 'x', '%a', {}, {1, 2}, type, function() end, coroutine.create(function() end)}
        local found = {}
        local function look(name, ...)
            for i = 1, select('#', ...) do
                if type((select(i, ...))) == 'userdata' then found[#found + 1] = name end
            end
        end
        local libraries = {_G = _G, string = string, table = table, math = math, os = os, coroutine = coroutine, kel = kel}
        local calls = 0
        for library, functions in pairs(libraries) do
            for name, called in pairs(functions) do
                if type(called) == 'function' and called ~= print then
                    for a = 1, 11 do
                        for b = 1, 11 do
                            calls = calls + 1
                            look(library .. '.' .. name, pcall(called, given[a], given[b]))
                        end
                    end
                end
            end
        end
        print(#found, table.concat(found, ' '), calls > 5000)
    )"));
    CHECK(app.take_output() == "0\t\ttrue\n");
    CHECK(app.take_log().find("error: test") == std::string::npos); // the rest is what keys and values were refused
}

TEST_CASE("a script that spoils the metatable of strings, or what it found there, spoils it for itself alone") {
    auto description = small_application();
    description.handlers.push_back({"press", "", "on_press"});
    for (const char *const spoilt :
         {"getmetatable('').__index = nil", "getmetatable('').__index = function() error('spoilt') end",
          "for name in pairs(string) do string[name] = nil end", "getmetatable('').__metatable = 'gone'",
          "getmetatable('').__concat = error", "getmetatable('').__call = error",
          "setmetatable(string, {__index = error})", "table.concat = nil"}) {
        CAPTURE(std::string(spoilt));
        ScriptedApplication app({}, description);
        CHECK(app.run(std::string(spoilt) + " function on_press(e) print(e.target) end"));
        app.runtime.io.trigger("press", "main.ok");
        CHECK(app.take_output() == "main.ok\n");
        CHECK(app.error_of("error('plain')") == "test:1: plain");
        CHECK(app.value("kel.get_value('title')") == "Hi");
    }
}

TEST_CASE("a script that takes all globals away ends the scripts' work, not the host's") {
    auto description = small_application();
    description.handlers.push_back({"press", "", "on_press"});
    for (const auto &[code, complaint] : std::initializer_list<std::pair<const char *, std::string>>{
             {"setfenv(0, {})",                                                                        "no function \"on_press\", found nil"},
             {"local clear, globals = next, _G for name in clear, globals do globals[name] = nil end",
              "no function \"on_press\", found nil"                                                                                         },
             {"setfenv(0, setmetatable({}, {__index = function() return 5 end}))",
              "no function \"on_press\", found number"                                                                                      },
    }) {
        CAPTURE(std::string(code));
        ScriptedApplication app({}, description);
        CHECK(app.run("function on_press() end"));
        CHECK(app.run(code));
        app.runtime.io.trigger("press", "");
        CHECK(app.take_log() == "error: handler for \"press\": " + complaint);
        CHECK(app.error_of("nosuch()").starts_with("test:1: attempt to call global 'nosuch'"));
        CHECK(kelhost::to_text(app.runtime.data.find("title")->value) == "Hi");
    }
}

TEST_CASE("a coroutine gives a script nothing that the main chunk has not") {
    ScriptedApplication app;
    CHECK(app.value("coroutine.wrap(function() return getfenv(0) == _G, getfenv(1) == _G end)()") == "true\ttrue");
    CHECK(app.value("coroutine.wrap(function() return loadstring('\\27Lua') end)()") == "nil\tbytecode is not allowed");
    CHECK(app.value("coroutine.wrap(function() return string.dump, debug, newproxy, io end)()")
          == "nil\tnil\tnil\tnil");
    CHECK(app.run("coroutine.wrap(function() setfenv(0, {}) end)()")); // its own globals, not the main chunk's
    CHECK(app.value("type(kel)") == "table");
    CHECK(app.value("(pcall(setfenv, coroutine.create(function() end), {}))") == "false");
}

TEST_CASE("the metatable of files is out of reach when io is open, so nobody replaces their finalizer") {
    TemporaryFolder folder;
    const std::string file = folder.write("data.txt", "one\ntwo\n");
    ScriptedApplication app(with({.io = true}));
    CHECK(app.run("file = io.open('" + file + "')"));
    CHECK(app.value("getmetatable(file), file.__index, file.__gc, file.__tostring") == "nil\tnil\tnil\tnil");
    CHECK(app.value("(pcall(setmetatable, file, {})), (pcall(rawset, file, '__gc', print))") == "false\tfalse");
    CHECK(app.value("file:read(), file:seek('cur'), file:lines()()") == "one\t4\ttwo");
    CHECK(app.value("io.type(file), file:close(), io.type(file), tostring(file)")
          == "file\ttrue\tclosed file\tfile (closed)");
}

TEST_CASE("the newproxy option opens newproxy") {
    ScriptedApplication app(with({.newproxy = true}));
    CHECK(app.value("type(newproxy(true))") == "userdata");
}

TEST_CASE("print goes to the application's output, a line at a time, with the rules of tostring") {
    ScriptedApplication app;
    CHECK(app.run(
        "print() print(1, 'two', nil, true, 2.5) print(setmetatable({}, {__tostring = function() return 'T' end}))"));
    CHECK(app.take_output() == "\n1\ttwo\tnil\ttrue\t2.5\nT\n");
    CHECK(app.run("local long = string.rep('x', 5000) print(long, long, long)"));
    const std::string line(5000, 'x');
    CHECK(app.take_output() == line + "\t" + line + "\t" + line + "\n");
    CHECK(app.run("local many = {} for i = 1, 200 do many[i] = i end print(unpack(many))"));
    CHECK(app.take_output().ends_with("\t199\t200\n"));
    CHECK(app.run("print('a\\0b')"));
    CHECK(app.take_output() == std::string("a\0b\n", 4));
    CHECK(app.error_of("print(setmetatable({}, {__tostring = function() return {} end}))")
          == "test:1: 'tostring' must return a string to 'print'");
}

TEST_CASE("print uses the script's own tostring, as Lua's does") {
    ScriptedApplication app;
    CHECK(app.run("local original = tostring function tostring(v) return '<' .. original(v) .. '>' end print(1, nil)"));
    CHECK(app.take_output() == "<1>\t<nil>\n");
}

TEST_CASE("an output that throws is an error of the script that printed") {
    BlockLedger ledger;
    Capture capture;
    Options options = capture.attach({});
    options.output = [](std::string_view) { throw 1; };
    kelhost::Runtime runtime(small_application(), options);
    REQUIRE(runtime.start() == kelhost::StartResult::started);
    CHECK(!runtime.lua.run_code("print('x')", "test"));
    CHECK(runtime.lua.errors().at(0).message == "test:1: cannot write what 'print' was given");
    CHECK(capture.take_log().starts_with("error: test:1: cannot write what 'print' was given\n"));
}
