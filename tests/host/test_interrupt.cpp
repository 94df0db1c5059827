// test_interrupt.cpp: ending a script from outside, and C functions that are called as scripts are.
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>

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

int press_ctrl_c(lua_State *L) {
    static_cast<kelhost::Application *>(lua_touserdata(L, lua_upvalueindex(1)))->interrupt();
    return 0;
}

// An application with a handler "go" for "go", whose log is kept.
struct InterruptedApplication {
    explicit InterruptedApplication(Options options) {
        kelhost::ApplicationDescription description = small_application();
        description.handlers.push_back({.event = "go", .target = {}, .function = "go"});
        kelhost::Diagnostics faults;
        app = kelhost::Application::create(description, capture.attach(std::move(options)), faults);
        REQUIRE(app != nullptr);
        REQUIRE(app->start() == kelhost::StartResult::started);
        lua_pushlightuserdata(app->lua(), app.get());
        lua_pushcclosure(app->lua(), press_ctrl_c, 1);
        lua_setglobal(app->lua(), "interrupt");
    }

    Capture capture;
    std::unique_ptr<kelhost::Application> app;
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

TEST_CASE("an interruption ends handlers that queue each other, and drops the events that wait") {
    // Short handlers notice nothing themselves.
    for (const Options &options : {watched(), Options{}}) {
        InterruptedApplication test(options);
        kelhost::Application &app = *test.app;
        REQUIRE(app.run_code("n = 0 function go() n = n + 1 kel.queue_event('go') kel.queue_event('go') "
                             "if n == 3 then interrupt() end end",
                             "test"));
        app.queue_event("go");
        CHECK(app.pump() == 3);
        CHECK(test.capture.take_log() == "warning: Interrupted: events that waited are dropped, 4");
        CHECK(app.script_errors().empty());
        REQUIRE(app.run_code("print(n)", "test"));
        CHECK(test.capture.take_output() == "3\n");
        CHECK(app.pump() == 0); // nothing is left to go on with
        app.queue_event("go");
        REQUIRE(app.run_code("function go() print('again') end", "test"));
        CHECK(app.pump() == 1); // and it is forgotten
        CHECK(test.capture.take_output() == "again\n");
    }
}

TEST_CASE("an interruption lasts until the host's call ends, whatever runs next in it") {
    InterruptedApplication test(watched());
    kelhost::Application &app = *test.app;
    REQUIRE(app.run_code("function go() interrupt() for i = 1, 10000 do end end", "test"));
    app.trigger_event("go");
    CHECK(test.capture.take_log().starts_with("error: test:1: interrupted\n"));
    app.queue_event("go");
    app.queue_event("go");
    CHECK(app.pump() == 1);
    const std::string log = test.capture.take_log();
    CHECK(log.starts_with("error: test:1: interrupted\n"));
    CHECK(log.ends_with("\nwarning: Interrupted: events that waited are dropped, 1"));
    REQUIRE(app.run_code("for i = 1, 10000 do end", "test"));
}

TEST_CASE("an interruption between the host's calls is forgotten") {
    InterruptedApplication test(watched());
    kelhost::Application &app = *test.app;
    app.interrupt();
    REQUIRE(app.run_code("function go() for i = 1, 10000 do end print('gone') end", "test"));
    app.interrupt();
    app.queue_event("go");
    CHECK(app.pump() == 1);
    CHECK(test.capture.take_output() == "gone\n");
}

TEST_CASE("a callback that waits outlives an interruption") {
    InterruptedApplication test(watched());
    kelhost::Application &app = *test.app;
    REQUIRE(app.run_code("function go() interrupt() end", "test"));
    app.queue_event("go");
    int calls = 0;
    kl_io_mgr_t *const io = app.record()->linfo->io_mgr;
    const auto count = [](kl_io_mgr_t *, void *number) { ++*static_cast<int *>(number); };
    CHECK(io->queue_callback(io, count, &calls) == 0);
    CHECK(app.pump() == 1);
    CHECK(calls == 0);
    CHECK(app.pump() == 1);
    CHECK(calls == 1);
}

TEST_CASE("without a bound on instructions no script is interrupted") {
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
