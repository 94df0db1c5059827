// test_interrupt.cpp: ending a script from outside, and C functions that are called as scripts are.
#include <cstdint>
#include <limits>
#include <string>

#include <doctest/doctest.h>

#include "scripted_application.h"

using kelhost::Options;

namespace {

// The most that can be asked for: no script reaches it, but each is checked.
Options watched() {
    Options options;
    options.limits.instructions = std::numeric_limits<std::uint64_t>::max();
    return options;
}

kelhost::LuaHost *interrupted_host = nullptr;

int interrupt(lua_State *) {
    interrupted_host->interrupt();
    return 0;
}

// An application whose scripts can press Ctrl-C themselves.
struct InterruptibleApplication : ScriptedApplication {
    explicit InterruptibleApplication(Options options) : ScriptedApplication(std::move(options)) {
        interrupted_host = &runtime.lua;
        lua_register(state(), "interrupt", interrupt);
    }
};

int count_up(lua_State *L) {
    ++*static_cast<int *>(lua_touserdata(L, 1));
    return 1; // what it returns is nobody's
}

int fails(lua_State *L) { return luaL_error(L, "no such page"); }

} // namespace

TEST_CASE("an interrupted script fails, and the next one runs") {
    InterruptibleApplication app(watched());
    CHECK(app.error_of("interrupt()\nwhile true do end") == "test:2: interrupted");
    CHECK(app.runtime.lua.errors()[0].traceback == "stack traceback:\n\ttest:2: in main chunk");
    CHECK(app.run("for i = 1, 100000 do end"));
}

TEST_CASE("a script that catches the interruption is ended all the same") {
    InterruptibleApplication app(watched());
    CHECK(app.error_of("interrupt() while true do pcall(function() while true do end end) end")
          == "test:1: interrupted");
    CHECK(app.error_of("interrupt() while true do xpcall(function() while true do end end, print) end")
          == "test:1: interrupted");
}

TEST_CASE("a coroutine that was made before can be interrupted") {
    InterruptibleApplication app(watched());
    CHECK(app.run("c = coroutine.wrap(function() coroutine.yield() interrupt() while true do end end) c()"));
    CHECK(app.error_of("c()").ends_with("test:1: interrupted"));
}

TEST_CASE("an interruption while no script runs is forgotten") {
    InterruptibleApplication app(watched());
    app.runtime.lua.interrupt();
    CHECK(app.run("for i = 1, 100000 do end"));
}

TEST_CASE("without a bound on instructions nothing is interrupted") {
    InterruptibleApplication app(Options{});
    CHECK(app.run("interrupt() for i = 1, 100000 do end"));
}

TEST_CASE("a C function is called with its argument, and leaves nothing") {
    ScriptedApplication app;
    int count = 0;
    const int height = lua_gettop(app.state());
    CHECK(app.runtime.lua.call(count_up, &count, "count"));
    CHECK(count == 1);
    CHECK(lua_gettop(app.state()) == height);
}

TEST_CASE("an error of a C function is logged and remembered") {
    ScriptedApplication app;
    CHECK(!app.runtime.lua.call(fails, nullptr, "fails"));
    CHECK(app.take_log() == "error: no such page");
    REQUIRE(app.runtime.lua.errors().size() == 1);
    CHECK(app.runtime.lua.errors()[0].message == "no such page");
    CHECK(app.runtime.lua.errors()[0].traceback == "");
}
