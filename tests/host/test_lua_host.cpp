// test_lua_host.cpp: calls from the host into scripts: errors and their tracebacks, limits, holds, handlers.
#include <string>

#include <doctest/doctest.h>

#include <support/lua_flavor.h>

#include "failing_new.h"
#include "scripted_application.h"
#include "temporary_folder.h"

using kelhost::LuaHost;
using kelhost::Options;
using kelhost::Runtime;
using kelhost::StartResult;

namespace {

Options with_limits(std::uint64_t instructions, std::size_t memory_bytes = 0) {
    Options options;
    options.limits = {instructions, memory_bytes};
    return options;
}

kelhost::HandlerDescription handler(std::string event, std::string target, std::string function) {
    return {std::move(event), std::move(target), std::move(function)};
}

kelhost::ApplicationDescription with_handlers(std::vector<kelhost::HandlerDescription> handlers) {
    auto description = small_application();
    description.handlers = std::move(handlers);
    return description;
}

int opens_hold(lua_State *L) {
    kl_data_mgr_t *const data = kl_lua_get_app(L)->linfo->data_mgr;
    data->hold_change_listener(data);
    return 0;
}

int closes_hold(lua_State *L) {
    kl_data_mgr_t *const data = kl_lua_get_app(L)->linfo->data_mgr;
    data->release_change_listener(data);
    return 0;
}

} // namespace

// ---- Errors ----

TEST_CASE("a chunk that runs leaves no trace but its effects") {
    ScriptedApplication app;
    CHECK(app.run("x = 1"));
    CHECK(app.value("x") == "1");
    CHECK(app.runtime.lua.errors().empty());
}

TEST_CASE("an error is logged once with its line and traceback, and remembered") {
    ScriptedApplication app;
    CHECK(!app.run("local function inner()\n  error('too hot')\nend\nfunction outer() inner() end\nouter()"));
    const std::string message = "test:2: too hot";
    const std::string traceback = "stack traceback:\n"
                                  "\t[C]: in function 'error'\n"
                                  "\ttest:2: in function 'inner'\n"
                                  "\ttest:4: in function 'outer'\n"
                                  "\ttest:5: in main chunk";
    CHECK(app.take_log() == "error: " + message + "\n" + traceback);
    REQUIRE(app.runtime.lua.errors().size() == 1);
    CHECK(app.runtime.lua.errors()[0].message == message);
    CHECK(app.runtime.lua.errors()[0].traceback == traceback);
}

TEST_CASE("a chunk that does not compile has a message and no traceback") {
    ScriptedApplication app;
    CHECK(!app.run("x =\n= 1"));
    CHECK(app.take_log() == "error: test:2: unexpected symbol near '='");
    REQUIRE(app.runtime.lua.errors().size() == 1);
    CHECK(app.runtime.lua.errors()[0].message == "test:2: unexpected symbol near '='");
    CHECK(app.runtime.lua.errors()[0].traceback == "");
}

TEST_CASE("what does not compile has no traceback inside another call either") {
    ScriptedApplication app;
    lua_register(app.state(), "nested", [](lua_State *L) {
        CHECK(!Runtime::of(kl_lua_get_app(L)).lua.run_code("x = = 1", "inner"));
        return 0;
    });
    CHECK(app.run("nested()"));
    CHECK(app.take_log() == "error: inner:1: unexpected symbol near '='");
}

TEST_CASE("errors are remembered in the order in which they came") {
    ScriptedApplication app;
    CHECK(app.error_of("error('first', 0)") == "first");
    CHECK(app.error_of("error('second', 0)") == "second");
    CHECK(app.runtime.lua.errors()[0].message == "first");
    CHECK(app.runtime.lua.errors()[1].message == "second");
}

TEST_CASE("an error object that is no string is described") {
    ScriptedApplication app;
    CHECK(app.error_of("error({})") == "(error object is a table value)");
    CHECK(app.error_of("error(nil)") == "(error object is a nil value)");
    CHECK(app.error_of("error()") == "(error object is a nil value)");
    CHECK(app.error_of("error(true)") == "(error object is a boolean value)");
    CHECK(app.error_of("error(print)") == "(error object is a function value)");
    CHECK(app.error_of("error(42, 0)") == "42");
    CHECK(app.error_of("error('', 0)") == "(error message is empty)");
    CHECK(app.runtime.lua.errors()[0].traceback.starts_with("stack traceback:\n\t[C]: in function 'error'\n\ttest:1:"));
}

TEST_CASE("an error object's __tostring gives the message, and may fail") {
    ScriptedApplication app;
    CHECK(app.run("function object(method) return setmetatable({}, {__tostring = method}) end"));
    CHECK(app.error_of("error(object(function() return 'no such page' end))") == "no such page");
    CHECK(app.error_of("error(object(function() return {} end))") == "(error object is a table value)");
    CHECK(app.error_of("error(object(function() error('worse') end))") == "(error object is a table value)");
    CHECK(app.error_of("error(object(function() return nil end))") == "(error object is a table value)");
    CHECK(app.error_of("error(object(7))") == "(error object is a table value)");
}

TEST_CASE("an error message keeps its zeros and its length") {
    ScriptedApplication app;
    CHECK(app.error_of("error('a\\0b', 0)") == std::string("a\0b", 3));
    CHECK(app.error_of("error(string.rep('x', 100000), 0)") == std::string(100000, 'x'));
}

TEST_CASE("a script that recurses without end is an error like any other") {
    ScriptedApplication app;
    CHECK(app.error_of("local function f() return 1 + f() end f()").starts_with("test:1: stack overflow"));
    CHECK(app.runtime.lua.errors()[0].traceback.find("...") != std::string::npos);
    CHECK(app.run("y = 2"));
}

TEST_CASE("a script that nests library calls too deeply is an error like any other") {
    ScriptedApplication app;
    CHECK(app.error_of("local function f() return (('a'):gsub('a', f)) end f()") == "C stack overflow");
    CHECK(app.error_of("local t = {} t.__tostring = function(s) print(s) end print(setmetatable({}, t))")
          == "C stack overflow");
    CHECK(app.error_of("local function f() coroutine.wrap(f)() end f()").ends_with("C stack overflow"));
    CHECK(app.run("y = 2"));
}

TEST_CASE("an error in a coroutine that nobody catches ends the chunk") {
    ScriptedApplication app;
    CHECK(app.error_of("coroutine.wrap(function() error('inside') end)()")
          == "test:1: test:1: inside"); // Lua adds the place where the coroutine was resumed
    CHECK(app.error_of("coroutine.yield()") == lua_flavor::yield_outside);
}

TEST_CASE("a script that catches its error has not failed") {
    ScriptedApplication app;
    CHECK(app.value("pcall(error, 'caught')") == "false\tcaught");
    CHECK(app.value("xpcall(function() error('a', 0) end, function() error('b') end)")
          == "false\terror in error handling");
    CHECK(app.runtime.lua.errors().empty());
}

TEST_CASE("a script cannot spoil tracebacks by changing globals") {
    ScriptedApplication app;
    CHECK(app.run("debug = {traceback = function() error('spoilt') end}"));
    CHECK(app.error_of("error('plain')") == "test:1: plain");
    CHECK(app.runtime.lua.errors()[0].traceback
          == "stack traceback:\n\t[C]: in function 'error'\n\ttest:1: in main chunk");
}

TEST_CASE("syntax_error gives the compiler's message or nothing") {
    CHECK(LuaHost::syntax_error("return 1", "piece") == "");
    CHECK(LuaHost::syntax_error("", "piece") == "");
    CHECK(LuaHost::syntax_error("#!/bin/lua\nx = = 1", "piece") == "piece:2: unexpected symbol near '='");
    CHECK(LuaHost::syntax_error("error('not run')", "piece") == "");
}

// ---- Files ----

TEST_CASE("a file runs under the name that it is given, and may begin with a shell line") {
    TemporaryFolder folder;
    const std::string file = folder.write("home.lua", "#!/usr/bin/env lua\nprint('here')\nerror('there')");
    ScriptedApplication app;
    CHECK(!app.runtime.lua.run_file(file, "scripts/home.lua"));
    CHECK(app.take_output() == "here\n");
    CHECK(app.runtime.lua.errors().at(0).message == "scripts/home.lua:3: there");
    CHECK(app.take_log()
          == "error: scripts/home.lua:3: there\nstack traceback:\n\t[C]: in function 'error'\n"
             "\tscripts/home.lua:3: in main chunk");
}

TEST_CASE("a file that is nothing but a shell line runs") {
    TemporaryFolder folder;
    ScriptedApplication app;
    CHECK(app.runtime.lua.run_file(folder.write("a.lua", "#!/usr/bin/env lua"), "a.lua"));
    CHECK(app.runtime.lua.run_file(folder.write("b.lua", ""), "b.lua"));
}

TEST_CASE("a file that is missing is an error that names it") {
    ScriptedApplication app;
    CHECK(!app.runtime.lua.run_file("/nowhere/home.lua", "home.lua"));
    const std::string message = "Cannot read script \"/nowhere/home.lua\": No such file or directory";
    CHECK(app.take_log() == "error: " + message);
    CHECK(app.runtime.lua.errors().at(0).message == message);
}

// ---- Change holds ----

TEST_CASE("holds that a script leaves open are released, with a warning") {
    ScriptedApplication app;
    lua_register(app.state(), "hold", opens_hold);
    std::string changed;
    app.runtime.data.add_listener([&](std::string_view key) { changed += std::string(key) + " "; });
    CHECK(app.run("hold() hold() kel.set_value('mode', 9)"));
    CHECK(app.take_log() == "warning: Script left 2 change hold(s) open, released");
    CHECK(app.runtime.data.hold_depth() == 0);
    CHECK(changed == "mode ");
}

TEST_CASE("holds are released after an error too, and those of the caller stay") {
    ScriptedApplication app;
    lua_register(app.state(), "hold", opens_hold);
    app.runtime.data.hold();
    CHECK(!app.run("hold() error('x', 0)"));
    CHECK(app.take_log().ends_with("\nwarning: Script left 1 change hold(s) open, released"));
    CHECK(app.runtime.data.hold_depth() == 1);
    app.runtime.data.release();
}

TEST_CASE("a script cannot release its caller's hold for good") {
    ScriptedApplication app;
    lua_register(app.state(), "release", closes_hold);
    app.runtime.data.hold();
    CHECK(app.run("release()"));
    CHECK(app.runtime.data.hold_depth() == 1);
    app.runtime.data.release();
}

// ---- Instruction limit ----

TEST_CASE("without a limit a long loop runs to its end") {
    ScriptedApplication app;
    CHECK(app.value("(function() local n = 0 for i = 1, 1e6 do n = n + 1 end return n end)()") == "1000000");
}

TEST_CASE("an endless loop ends at the instruction limit") {
    ScriptedApplication app(with_limits(50000));
    CHECK(app.error_of("local n = 0\nwhile true do n = n + 1 end") == "test:2: instruction limit of 50000 reached");
    CHECK(app.runtime.lua.errors()[0].traceback == "stack traceback:\n\ttest:2: in main chunk");
}

TEST_CASE("each call has the whole limit, and what stays below it is not disturbed") {
    ScriptedApplication app(with_limits(50000));
    for (int call = 0; call < 10; ++call) CHECK(app.run("for i = 1, 20000 do end"));
    CHECK(app.error_of("for i = 1, 60000 do end") == "test:1: instruction limit of 50000 reached");
    CHECK(app.run("for i = 1, 20000 do end"));
}

TEST_CASE("a limit below the checking period holds as well") {
    ScriptedApplication app(with_limits(100));
    CHECK(app.error_of("for i = 1, 500 do end") == "test:1: instruction limit of 100 reached");
    CHECK(app.run("for i = 1, 50 do end"));
}

TEST_CASE("a script that catches the limit's error is ended all the same") {
    ScriptedApplication app(with_limits(20000));
    const std::string message = "test:1: instruction limit of 20000 reached";
    CHECK(app.error_of("while true do pcall(function() while true do end end) end") == message);
    CHECK(app.error_of("local function f() pcall(f) f() end f()") == message);
    CHECK(app.error_of("while true do xpcall(function() while true do end end, function() while true do end end) end")
          == message);
    CHECK(app.run("ok = true"));
}

TEST_CASE("with a limit xpcall works as without") {
    ScriptedApplication app(with_limits(100000));
    CHECK(app.value("xpcall(function() return 1, nil, 3 end, print)") == "true\t1\tnil\t3");
    CHECK(app.value("xpcall(function() error('a', 0) end, function(...) return 'got ' .. ..., 2 end)")
          == "false\tgot a");
    CHECK(app.value("xpcall(function() error('a', 0) end, nil)") == "false\terror in error handling");
    CHECK(app.value("xpcall(nil, function(m) return m end)") == "false\tattempt to call a nil value");
    CHECK(app.error_of("xpcall(print)") == "test:1: bad argument #2 to 'xpcall' (value expected)");
}

TEST_CASE("instructions in coroutines count") {
    ScriptedApplication app(with_limits(30000));
    const std::string message = "test:1: instruction limit of 30000 reached";
    CHECK(app.error_of("coroutine.wrap(function() while true do end end)()") == "test:1: " + message);
    CHECK(app.error_of("while true do coroutine.resume(coroutine.create(function() while true do end end)) end")
          == message);
    CHECK(app.error_of(
              "local c = coroutine.wrap(function() while true do coroutine.yield() end end) while true do c() end")
          == message);
}

TEST_CASE("coroutines that end before they are checked count too") {
    ScriptedApplication app(with_limits(100000));
    // Every coroutine runs fewer instructions than lie between two checks, and there is no end of them.
    CHECK(app.error_of("local function f(depth)\n if depth == 0 then return end\n"
                       " for i = 1, 8 do coroutine.wrap(f)(depth - 1) end\nend f(100)")
              .ends_with("test:3: instruction limit of 100000 reached"));
    CHECK(app.run("for i = 1, 100 do coroutine.wrap(function() end)() end"));
}

TEST_CASE("with a limit coroutines work as without") {
    ScriptedApplication app(with_limits(100000));
    CHECK(app.value("coroutine.wrap(function(a) local b = coroutine.yield(a + 1) return b * 2 end)(1)") == "2");
    CHECK(app.run("c = coroutine.create(function(a) local b = coroutine.yield(a) return b end)"));
    CHECK(app.value("coroutine.resume(c, 1)") == "true\t1");
    CHECK(app.value("coroutine.resume(c, 2)") == "true\t2");
    CHECK(app.value("coroutine.status(c)") == "dead");
    CHECK(app.error_of("coroutine.create(5)") == "test:1: bad argument #1 to 'create' (Lua function expected)");
    CHECK(app.error_of("coroutine.wrap(print)") == "test:1: bad argument #1 to 'wrap' (Lua function expected)");
}

TEST_CASE("a coroutine that outlives a call is bounded in the next") {
    ScriptedApplication app(with_limits(30000));
    CHECK(app.run("c = coroutine.wrap(function() coroutine.yield() while true do end end) c()"));
    CHECK(app.error_of("c()") == "test:1: test:1: instruction limit of 30000 reached");
}

TEST_CASE("a slow __tostring of an error object counts against the limit") {
    ScriptedApplication app(with_limits(30000));
    CHECK(app.error_of("error(setmetatable({}, {__tostring = function() while true do end end}))")
          == "(error object is a table value)");
}

// ---- Memory limit ----

TEST_CASE("a script that eats memory ends at the limit") {
    ScriptedApplication app(with_limits(0, 2'000'000));
    const std::string message = "code \"test\": memory limit of 2000000 bytes reached";
    CHECK(app.error_of("local t = {} while true do t[#t + 1] = string.rep('x', 1000) .. #t end") == message);
    CHECK(app.error_of("local s = 'x' while true do s = s .. s end") == message);
    CHECK(app.run("z = string.rep('x', 100000)"));
}

TEST_CASE("the memory limit's error names the handler that went over it") {
    ScriptedApplication app(with_limits(0, 1'000'000),
                            with_handlers({handler("grow", "main.ok", "grow"), handler("grow", "", "grow")}));
    CHECK(app.run("function grow() local t = {} while true do t = {t} end end"));
    app.runtime.io.trigger("grow", "main.ok");
    CHECK(app.take_log()
          == "error: handler \"grow\" for \"grow\" of \"main.ok\": memory limit of 1000000 bytes reached\n"
             "error: handler \"grow\" for \"grow\": memory limit of 1000000 bytes reached");
}

TEST_CASE("an error that a script raises itself is not blamed on the memory limit") {
    ScriptedApplication app(with_limits(0, 1'000'000));
    CHECK(app.error_of("local grown = pcall(string.rep, 'x', 5000000) error('not enough memory', 0)")
          == "not enough memory");
}

TEST_CASE("memory that was freed can be used again") {
    ScriptedApplication app(with_limits(0, 2'000'000));
    for (int call = 0; call < 20; ++call) CHECK(app.run("local s = string.rep('x', 300000)"));
    CHECK(app.run("for i = 1, 100 do local t = {} for j = 1, 1000 do t[j] = i * j end end"));
}

TEST_CASE("a script that catches the memory error goes on within the limit") {
    ScriptedApplication app(with_limits(0, 1'000'000));
    CHECK(app.value("pcall(string.rep, 'x', 5000000)") == "false\tnot enough memory");
    CHECK(app.value("#string.rep('x', 1000)") == "1000");
}

TEST_CASE("a state that is full does not fail the host's own use of it") {
    ScriptedApplication app(with_limits(0, 1'000'000));
    const std::string message = "code \"test\": memory limit of 1000000 bytes reached";
    CHECK(app.error_of("while true do hoard = {hoard} end") == message); // in small pieces, to the last
    CHECK(app.error_of("x = {}") == message);
    lua_newuserdata(app.state(), 2'000'000);
    lua_setglobal(app.state(), "hoard");
    lua_pushnil(app.state());
    lua_setglobal(app.state(), "hoard");
    CHECK(app.run("local s = string.rep('x', 300000)"));
}

TEST_CASE("a failure is remembered where there is no memory to put its report together") {
    bool memory_failed = true;
    for (std::size_t request = 1; memory_failed; ++request) {
        CAPTURE(request);
        ScriptedApplication app;
        bool ran = true;
        {
            const FailingNew failing(request);
            ran = app.run("error('a message that is too long to be kept without asking for memory')");
            memory_failed = FailingNew::has_failed();
        }
        CHECK_FALSE(ran);
        CHECK(app.runtime.lua.errors().size() == 1);
        app.take_log(); // its own text may have been what found no memory
    }
}

TEST_CASE("an error near the memory limit still has its message and traceback") {
    ScriptedApplication app(with_limits(0, 1'000'000));
    CHECK(app.error_of("hoard = {} pcall(function() while true do hoard[#hoard + 1] = {} end end) error('full', 0)")
          == (lua_flavor::error_takes_memory ? "code \"test\": memory limit of 1000000 bytes reached" : "full"));
    CHECK(app.runtime.lua.errors()[0].traceback
          == (lua_flavor::error_takes_memory
                  ? ""
                  : "stack traceback:\n\t[C]: in function 'error'\n\ttest:1: in main chunk"));
}

TEST_CASE("an error object is described near the memory limit too") {
    ScriptedApplication app(with_limits(0, 1'000'000));
    CHECK(app.error_of("hoard = {} local object = {} pcall(function() while true do hoard[#hoard + 1] = {} end end) "
                       "error(object)")
          == (lua_flavor::error_takes_memory ? "code \"test\": memory limit of 1000000 bytes reached"
                                             : "(error object is a table value)"));
}

TEST_CASE("a finalizer that fails does not keep a script from running") {
    Options options = with_limits(0, 4'000'000);
    options.sandbox.newproxy = true;
    ScriptedApplication app(options);
    CHECK(app.run("collectgarbage('stop') getmetatable(newproxy(true)).__gc = function() error('late', 0) end "
                  "for i = 1, 300 do local s = string.rep('x', 10000) .. i end"));
    CHECK(app.run("ran = true"));
    CHECK(app.take_log() == "warning: A finalizer failed: late");
    CHECK(app.value("ran") == "true");
}

// ---- Activity ----

TEST_CASE("who asks is told what runs, and when nothing does any more") {
    std::string told;
    Options options;
    options.activity = [&told](std::string_view what) { told.append(what).append(";"); };
    ScriptedApplication app(options,
                            with_handlers({handler("outer", "", "outer"), handler("inner", "main.ok", "inner")}));
    CHECK(std::exchange(told, {}) == "the application;;");
    CHECK(app.run("function outer() kel.queue_event('inner', 'main.ok') end function inner() error('x', 0) end"));
    CHECK(std::exchange(told, {}) == "code \"test\";;");
    const Runtime::Use use(app.runtime);
    app.runtime.io.trigger("outer", {});
    app.runtime.io.pump();
    CHECK(std::exchange(told, {})
          == "the application;handler \"outer\" for \"outer\";the application;"
             "handler \"inner\" for \"inner\" of \"main.ok\";the application;");
    app.take_log();
}

// ---- Handlers ----

TEST_CASE("a handler gets one table with the event's name and target") {
    ScriptedApplication app({}, with_handlers({handler("press", "", "on_press")}));
    CHECK(app.run("function on_press(...) local e = ... print(select('#', ...), e.name, e.target) "
                  "for key in pairs(e) do print(key) end end"));
    app.runtime.io.trigger("press", "main.ok");
    CHECK(app.take_output().starts_with("1\tpress\tmain.ok\n"));
    app.runtime.io.trigger("press", "");
    CHECK(app.take_output() == "1\tpress\tnil\nname\n");
}

TEST_CASE("every handler of the event with that target or none is called, in the order of the file") {
    ScriptedApplication app({}, with_handlers({
                                    handler("press", "main.ok", "second"),
                                    handler("press", "", "first"),
                                    handler("release", "", "other"),
                                    handler("press", "main.bar", "other"),
                                    handler("press", "main.ok", "ui.third"),
                                }));
    CHECK(app.run("ui = {} function first() print 'first' end function second() print 'second' end "
                  "function ui.third() print 'third' end function other(e) print('other', e.name, e.target) end"));
    app.runtime.io.trigger("press", "main.ok");
    CHECK(app.take_output() == "second\nfirst\nthird\n");
    app.runtime.io.trigger("press", "");
    CHECK(app.take_output() == "first\n");
    app.runtime.io.trigger("press", "main.bar");
    CHECK(app.take_output() == "first\nother\tpress\tmain.bar\n");
    app.runtime.io.trigger("release", "main.go");
    CHECK(app.take_output() == "other\trelease\tmain.go\n");
    app.runtime.io.trigger("unheard", "main.ok");
    CHECK(app.take_output() == "");
}

TEST_CASE("a handler's function is looked up when the event comes") {
    ScriptedApplication app({}, with_handlers({handler("press", "", "ui.on_press")}));
    CHECK(app.run("ui = {on_press = function() print 'old' end}"));
    app.runtime.io.trigger("press", "");
    CHECK(app.run("ui = {on_press = function() print 'new' end}"));
    app.runtime.io.trigger("press", "");
    CHECK(app.take_output() == "old\nnew\n");
}

TEST_CASE("a handler whose function is missing is one error an event that names both") {
    ScriptedApplication app({}, with_handlers({handler("press", "", "ui.on_press"), handler("press", "main.ok", "f")}));
    app.runtime.io.trigger("press", "");
    CHECK(app.take_log() == "error: handler for \"press\": no function \"ui.on_press\", found nil");
    CHECK(app.run("ui = {} f = 5"));
    app.runtime.io.trigger("press", "main.ok");
    CHECK(app.take_log()
          == "error: handler for \"press\": no function \"ui.on_press\", found nil\n"
             "error: handler for \"press\" of \"main.ok\": no function \"f\", found number");
    CHECK(app.run("ui = print"));
    app.runtime.io.trigger("press", "");
    CHECK(app.take_log() == "error: handler for \"press\": no function \"ui.on_press\", found function");
    CHECK(app.runtime.lua.errors().size() == 4);
    CHECK(app.runtime.lua.errors()[0].traceback == "");
}

TEST_CASE("a handler that fails does not keep the others from being called") {
    ScriptedApplication app({}, with_handlers({handler("press", "", "bad"), handler("press", "", "good")}));
    CHECK(app.run("function bad() error('broken') end\nfunction good() print 'called' end"));
    app.runtime.io.trigger("press", "");
    CHECK(app.take_output() == "called\n");
    CHECK(app.take_log()
          == "error: test:1: broken\nstack traceback:\n\t[C]: in function 'error'\n"
             "\ttest:1: in function <test:1>");
}

TEST_CASE("a look-up of a handler's function may run a metamethod, and fail") {
    ScriptedApplication app({}, with_handlers({handler("press", "", "on_press")}));
    CHECK(app.run("setmetatable(_G, {__index = function(_, name) error('undefined ' .. name, 0) end})"));
    app.runtime.io.trigger("press", "");
    CHECK(app.take_log().starts_with("error: undefined on_press\nstack traceback:\n"));
}

TEST_CASE("a change of a watched variable calls its handlers at the next pump, once") {
    ScriptedApplication app(
        {}, with_handlers({handler("kel.changed", "mode", "on_mode"), handler("kel.changed", "", "on_any")}));
    CHECK(app.run("function on_mode(e) print('mode', e.target, kel.get_value('mode')) end "
                  "function on_any(e) print('any', e.target) end"));
    CHECK(
        app.run("kel.set_value('mode', 2) kel.set_value('mode', 3) kel.set_value('title', 'Ho', 'main.ok.level', 5)"));
    CHECK(app.take_output() == "");
    CHECK(app.runtime.io.pump() == 2);
    CHECK(app.take_output() == "mode\tmode\t3\nany\tmode\nany\ttitle\n");
}

TEST_CASE("a variable that no handler watches queues nothing") {
    ScriptedApplication app({}, with_handlers({handler("kel.changed", "mode", "on_mode"), handler("press", "", "p")}));
    CHECK(app.run("kel.set_value('title', 'Ho')"));
    CHECK(app.runtime.io.pump() == 0);
}

TEST_CASE("records of deleted objects stay readable until no script runs any more") {
    ScriptedApplication app;
    static std::size_t blocks_while_running;
    lua_register(app.state(), "delete_bar", [](lua_State *L) {
        Runtime &runtime = Runtime::of(kl_lua_get_app(L));
        const auto *bar = reinterpret_cast<kl_group_t *>(runtime.model.find("main.bar"));
        lua_settop(L, 0);
        lua_pushstring(L, "main.bar");
        CHECK(kl_lua_delete_object(L, &runtime.record, 1) == 1);
        CHECK(runtime.lua.run_code("inner = true", "inner")); // ends, but is not the outermost call
        CHECK(std::string(bar->control.name) == "bar");
        CHECK(kl_darray_size(bar->control_list) == 0);
        blocks_while_running = kelhost::memory_counts().live_blocks;
        return 0;
    });
    CHECK(app.run("delete_bar()"));
    CHECK(kelhost::memory_counts().live_blocks < blocks_while_running);
}

TEST_CASE("a host call inside a host call is known to be running") {
    ScriptedApplication app;
    CHECK(!app.runtime.lua.running());
    lua_register(app.state(), "probe", [](lua_State *L) {
        Runtime &runtime = Runtime::of(kl_lua_get_app(L));
        lua_pushboolean(L, runtime.lua.running());
        CHECK(runtime.lua.run_code("inner = true", "inner"));
        lua_pushboolean(L, runtime.lua.running());
        return 2;
    });
    CHECK(app.value("probe()") == "true\ttrue");
    CHECK(!app.runtime.lua.running());
}

TEST_CASE("a call inside a call shares its instruction limit") {
    ScriptedApplication app(with_limits(50000));
    lua_register(app.state(), "nested", [](lua_State *L) {
        lua_pushboolean(L, Runtime::of(kl_lua_get_app(L)).lua.run_code("for i = 1, 20000 do end", "inner"));
        return 1;
    });
    CHECK(app.value("nested()") == "true");
    CHECK(!app.run("while true do nested() end"));
    REQUIRE(app.runtime.lua.errors().size() == 2);
    CHECK(app.runtime.lua.errors()[0].message == "inner:1: instruction limit of 50000 reached");
    CHECK(app.runtime.lua.errors()[1].message == "test:1: instruction limit of 50000 reached");
    CHECK(app.take_log().starts_with("error: inner:1: instruction limit"));
}

TEST_CASE("the host can be called from inside a coroutine") {
    ScriptedApplication app({}, with_handlers({handler("press", "", "on_press")}));
    lua_register(app.state(), "press", [](lua_State *L) {
        Runtime::of(kl_lua_get_app(L)).io.trigger("press", "");
        return 0;
    });
    CHECK(app.run("function on_press() print 'pressed' end coroutine.wrap(function() press() print 'after' end)()"));
    CHECK(app.take_output() == "pressed\nafter\n");
}
