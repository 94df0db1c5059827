// test_application.cpp: the public face: loading, starting, events, stopping, looking inside.
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <kelhost/application.h>

#include "scripted_application.h"
#include "temporary_folder.h"

using kelhost::Application;
using kelhost::ApplicationDescription;
using kelhost::Diagnostics;
using kelhost::Options;
using kelhost::StartResult;
using kelhost::Value;

namespace {

int init(kl_application_t *app, const char *args, void *) {
    kel_app_log(app, KL_LOG_INFO, "plug-in: init, Lua state %s",
                kl_string_map_get(app->shared_data_map, "luastate") != nullptr ? "there" : "missing");
    app->linfo->io_mgr->add_event_listener(
        app->linfo->io_mgr, "kel.internalinit",
        [](kl_io_mgr_t *, kl_event_t *, void *user_data) {
            auto *const application = static_cast<kl_application_t *>(user_data);
            auto *const L = static_cast<lua_State *>(kl_string_map_get(application->shared_data_map, "luastate"));
            REQUIRE(L != nullptr);
            kel_app_log(application, KL_LOG_INFO, "plug-in: kel.internalinit");
            lua_pushstring(L, "set by the plug-in");
            lua_setglobal(L, "from_plugin");
        },
        app);
    return args != nullptr ? 1 : 0;
}
void fini(kl_application_t *app, void *) {
    kel_app_log(app, KL_LOG_INFO, "plug-in: fini, Lua state %s",
                kl_string_map_get(app->shared_data_map, "luastate") != nullptr ? "there" : "missing");
}
int entry(kl_plugin_state_t *state) {
    state->name = kelal_strdup("plug-in");
    state->init = init;
    state->fini = fini;
    state->version.major = 7;
    return 0;
}

// An application of scripts in a folder of its own.
struct Started {
    BlockLedger ledger;
    Capture capture;
    TemporaryFolder folder;
    ApplicationDescription description = small_application();
    Options options;
    std::unique_ptr<Application> app;

    Started() { description.folder = folder.path(); }

    void add_script(const std::string &name, std::string_view code) {
        folder.write(name, code);
        description.scripts.push_back(name);
    }
    Application &create() {
        Diagnostics faults;
        app = Application::create(description, capture.attach(options), faults);
        for (const auto &fault : faults) MESSAGE(kelhost::to_text(fault));
        REQUIRE(faults.empty());
        REQUIRE(app != nullptr);
        return *app;
    }
};

} // namespace

TEST_CASE("an application starts in this order: plug-ins, Lua, internal start-up, scripts, handlers, kel.started") {
    Started world;
    world.options.plugins = {
        {.path = "", .entry = entry, .args = ""}
    };
    world.add_script("one.lua", "kel.log('one: ' .. from_plugin) kel.queue_event('press', 'main.ok')");
    world.add_script("two.lua", "kel.log('two') function on_any(e) kel.log(e.name) end");
    world.description.handlers = {
        {"kel.started",      "", "on_any"},
        {"press",            "", "on_any"},
        {"kel.internalinit", "", "on_any"}
    };
    Application &app = world.create();
    CHECK(app.lua() == nullptr);
    CHECK(app.start() == StartResult::started);
    CHECK(app.start_failure() == "");
    CHECK(app.lua() != nullptr);
    CHECK(world.capture.take_log()
          == "info: plug-in: init, Lua state missing\n"
             "info: plug-in: kel.internalinit\n"
             "info: one: set by the plug-in\n"
             "info: two\n"
             "info: press\n"
             "info: kel.started");
    app.stop();
    CHECK(world.capture.take_log() == "info: plug-in: fini, Lua state there");
    CHECK(app.lua() == nullptr);
    CHECK(kl_string_map_get(app.record()->shared_data_map, "luastate") == nullptr);
}

TEST_CASE("a Lua error in a plug-in's listener is logged, and the other listeners and scripts run") {
    Started world;
    const auto failing = [](kl_plugin_state_t *state) {
        entry(state);
        state->init = [](kl_application_t *app, const char *, void *) {
            const io_listener_t listener = [](kl_io_mgr_t *, kl_event_t *, void *user_data) {
                auto *const application = static_cast<kl_application_t *>(user_data);
                auto *const L = static_cast<lua_State *>(kl_string_map_get(application->shared_data_map, "luastate"));
                lua_pushstring(L, "left on the stack");
                luaL_error(L, "registration went wrong");
            };
            return app->linfo->io_mgr->add_event_listener(app->linfo->io_mgr, "kel.internalinit", listener, app);
        };
        return 0;
    };
    world.options.plugins = {
        {.path = "", .entry = failing, .args = ""},
        {.path = "", .entry = entry,   .args = ""}
    };
    world.add_script("one.lua", "kel.log('one: ' .. from_plugin)");
    Application &app = world.create();
    CHECK(app.start() == StartResult::started);
    CHECK(world.capture.take_log()
          == "info: plug-in: init, Lua state missing\n"
             "error: A listener of event \"kel.internalinit\" failed: registration went wrong\n"
             "info: plug-in: kel.internalinit\n"
             "info: one: set by the plug-in");
    CHECK(lua_gettop(app.lua()) == 0);
    app.stop();
    CHECK(world.capture.take_log() == "info: plug-in: fini, Lua state there\ninfo: plug-in: fini, Lua state there");
}

TEST_CASE("an exception in a listener is logged and does not pass through Lua") {
    Started world;
    Application &app = world.create();
    CHECK(app.start() == StartResult::started);
    const io_listener_t throwing = [](kl_io_mgr_t *, kl_event_t *, void *) { throw std::bad_alloc(); };
    kl_io_mgr_t *const io_mgr = app.record()->linfo->io_mgr;
    CHECK(io_mgr->add_event_listener(io_mgr, "press", throwing, nullptr) == 0);
    app.trigger_event("press");
    CHECK(world.capture.take_log() == "error: A listener of event \"press\" failed: an exception");
    CHECK(app.run_code("kel.log('scripts still run')", "test"));
    CHECK(world.capture.take_log() == "info: scripts still run");
}

TEST_CASE("a plug-in that cannot be started keeps everything from running") {
    Started world;
    world.options.plugins = {
        {.path = "", .entry = entry, .args = ""    },
        {.path = "", .entry = entry, .args = "fail"}
    };
    world.add_script("one.lua", "kel.log('ran')");
    Application &app = world.create();
    CHECK(app.start() == StartResult::plugin_failed);
    CHECK(app.start_failure() == "Cannot load plug-in that is linked in: init returned 1, expected 0");
    CHECK(app.lua() == nullptr);
    CHECK(world.capture.take_log()
          == "info: plug-in: init, Lua state missing\ninfo: plug-in: init, Lua state missing\n"
             "info: plug-in: fini, Lua state missing");
    CHECK(!app.run_code("x = 1", "test"));
    CHECK(app.pump() == 0);
}

TEST_CASE("a script that fails does not keep the others from running") {
    Started world;
    world.add_script("one.lua", "error('one', 0)");
    world.add_script("two.lua", "x = = 1");
    world.add_script("three.lua", "print('three')");
    world.description.handlers = {
        {"kel.started", "", "print"}
    };
    Application &app = world.create();
    CHECK(app.start() == StartResult::script_failed);
    REQUIRE(app.script_errors().size() == 2);
    CHECK(app.script_errors()[0].message == "one");
    CHECK(app.script_errors()[1].message == "two.lua:1: unexpected symbol near '='");
    CHECK(world.capture.take_output().starts_with("three\ntable: "));
    CHECK(world.capture.take_log()
          == "error: one\nstack traceback:\n\t[C]: in function 'error'\n"
             "\tone.lua:1: in main chunk\nerror: two.lua:1: unexpected symbol near '='");
    CHECK(app.warnings() == 2);
}

TEST_CASE("a script that is gone when the application starts is an error that names it") {
    Started world;
    world.add_script("one.lua", "");
    Application &app = world.create();
    std::remove((world.folder.path() + "/one.lua").c_str());
    CHECK(app.start() == StartResult::script_failed);
    CHECK(app.script_errors().at(0).message
          == "Cannot read script \"" + world.folder.path() + "/one.lua\": No such file or directory");
    world.capture.take_log();
}

TEST_CASE("an application can be started once only") {
    Started world;
    Application &app = world.create();
    CHECK(app.start() == StartResult::started);
    CHECK(app.start() == StartResult::plugin_failed);
    CHECK(app.start_failure() == "An application can be started once only");
    CHECK(app.run_code("x = 1", "test")); // the first start holds
    app.stop();
    CHECK(app.start() == StartResult::plugin_failed);
    CHECK(app.lua() == nullptr);
}

TEST_CASE("an application that was never started cannot be started after a stop") {
    Started world;
    Application &app = world.create();
    app.stop();
    CHECK(app.start() == StartResult::plugin_failed);
    CHECK(app.start_failure() == "An application can be started once only");
}

TEST_CASE("after a stop calls do nothing") {
    Started world;
    world.description.handlers = {
        {"press", "", "print"}
    };
    Application &app = world.create();
    app.start();
    app.queue_event("press");
    app.stop();
    app.stop();
    CHECK(!app.run_code("print('x')", "test"));
    CHECK(!app.run_script("nosuch.lua"));
    app.queue_event("press");
    app.trigger_event("press");
    CHECK(app.pump() == 0);
    CHECK(!app.set_variable("mode", 5.0));
    CHECK(app.variable("mode") == Value(1.0)); // looking inside still works
    CHECK(app.find("main.ok") != nullptr);
    CHECK(world.capture.take_output() == "");
}

TEST_CASE("before its start an application runs nothing and keeps what is queued") {
    Started world;
    world.description.handlers = {
        {"press", "", "on_press"}
    };
    world.add_script("one.lua", "function on_press(e) print(e.target) end");
    Application &app = world.create();
    CHECK(!app.run_code("print('x')", "test"));
    app.trigger_event("press", "early");
    app.queue_event("press", "main.ok");
    CHECK(app.pump() == 0);
    app.start();
    CHECK(world.capture.take_output() == "main.ok\n");
}

TEST_CASE("what runs in an application cannot stop it") {
    Started world;
    Diagnostics faults;
    Options options = world.capture.attach({});
    options.output = [&](std::string_view) { world.app->stop(); };
    world.app = Application::create(world.description, options, faults);
    REQUIRE(world.app != nullptr);
    world.app->start();
    CHECK(world.app->run_code("print('stop') kel.log('still here')", "test"));
    CHECK(world.capture.take_log() == "error: The application cannot be stopped by what runs in it\ninfo: still here");
    world.app->stop();
    CHECK(world.app->lua() == nullptr);
}

TEST_CASE("events are triggered at once or queued for the pump, which counts them") {
    Started world;
    world.description.handlers = {
        {"press", "", "on_press"}
    };
    world.add_script("one.lua", "function on_press(e) print(e.name, e.target) end");
    Application &app = world.create();
    app.start();
    app.queue_event("press", "main.ok");
    app.queue_event("press");
    app.queue_event("unheard");
    CHECK(world.capture.take_output() == "");
    app.trigger_event("press", "main.bar");
    CHECK(world.capture.take_output() == "press\tmain.bar\n");
    CHECK(app.pump() == 3);
    CHECK(world.capture.take_output() == "press\tmain.ok\npress\tnil\n");
    CHECK(app.pump() == 0);
}

TEST_CASE("scripts are run by path, and code by name") {
    Started world;
    const std::string file = world.folder.write("extra.lua", "extra = true\nerror('here')");
    Application &app = world.create();
    app.start();
    CHECK(app.run_code("print(extra)", "console"));
    CHECK(!app.run_script(file));
    CHECK(app.run_code("print(extra)", "console"));
    CHECK(world.capture.take_output() == "nil\ntrue\n");
    CHECK(!app.run_code("error('there')", "console"));
    REQUIRE(app.script_errors().size() == 2);
    CHECK(app.script_errors()[0].message == file + ":2: here");
    CHECK(app.script_errors()[1].message == "console:1: there");
    CHECK(!app.run_script(world.folder.path() + "/nosuch.lua"));
    CHECK(app.script_errors().at(2).message
          == "Cannot read script \"" + world.folder.path() + "/nosuch.lua\": No such file or directory");
    world.capture.take_log();
}

TEST_CASE("scripts are checked without being run, started or not") {
    Started world;
    world.add_script("good.lua", "#!/usr/bin/lua\nprint('not run')");
    world.add_script("bad.lua", "local x = 1\nlocal y = = 2\n");
    world.add_script("open.lua", "if true then\n\n");
    world.add_script("code.luac", "\033Lua");
    world.add_script("gone.lua", "");
    const Application &app = world.create();
    std::remove((world.folder.path() + "/gone.lua").c_str());
    const Diagnostics found = app.check_scripts();
    REQUIRE(found.size() == 4);
    CHECK(kelhost::to_text(found[0]) == world.folder.path() + "/bad.lua:2: unexpected symbol near '='");
    CHECK(found[0].line == 2);
    CHECK(found[0].message == "unexpected symbol near '='");
    CHECK(found[1].file == world.folder.path() + "/open.lua");
    CHECK(found[1].line == 3);
    CHECK(found[1].message == "'end' expected (to close 'if' at line 1) near '<eof>'");
    CHECK(kelhost::to_text(found[2]) == world.folder.path() + "/code.luac: bytecode is not allowed");
    CHECK(kelhost::to_text(found[3])
          == world.folder.path() + "/gone.lua: Cannot read script: No such file or directory");
}

TEST_CASE("two applications in one process know nothing of each other") {
    Started one;
    one.create().start();
    Started two;
    two.description.variables.push_back({"only_here", kelhost::DataType::u8, 1.0});
    two.create().start();
    CHECK(one.app->run_code("x = 1 kel.set_value('mode', 11)", "test"));
    CHECK(two.app->run_code("print(x, kel.get_value('mode', 'only_here'))", "test"));
    CHECK(one.app->run_code("print(x, kel.get_value('mode', 'only_here'))", "test"));
    CHECK(two.capture.take_output() == "nil\t1\t1\n");
    CHECK(one.capture.take_output() == "1\t11\tnil\n");
    one.app->stop();
    CHECK(two.app->run_code("print(kel.get_value('mode'))", "test"));
    CHECK(two.capture.take_output() == "1\n");
}

TEST_CASE("variables and objects can be looked at and written from outside") {
    Started world;
    Application &app = world.create();
    CHECK(app.variable("mode") == Value(1.0));
    CHECK(app.variable("main.ok.text") == Value(std::string("OK")));
    CHECK(app.variable("nosuch") == std::nullopt);
    CHECK(app.variable_type("main.ok.level") == kelhost::DataType::i16);
    CHECK(app.variable_type("nosuch") == std::nullopt);
    CHECK(app.keys("main.bar.go.kld_h")
          == std::vector<std::string>{"main.bar.go.kld_height", "main.bar.go.kld_hidden"});
    CHECK(app.keys().size() > 10);
    CHECK(app.set_variable("mode", 8.0));
    CHECK(app.set_variable("mode", 8.0)); // the same again
    CHECK(app.variable("mode") == Value(8.0));
    CHECK(!app.set_variable("mode", std::string("eight")));
    CHECK(app.warnings() == 1);
    CHECK(world.capture.take_log().starts_with("warning: Cannot write \"eight\" to mode (i32)"));
    REQUIRE(app.find("main.ok") != nullptr);
    CHECK(app.find("main.ok")->type == KL_OBJECT_TYPE_CONTROL);
    CHECK(app.find("main.nosuch") == nullptr);
    CHECK(app.draw_hints(app.find("main.ok")) != nullptr);
    CHECK(app.draw_hints(nullptr) == nullptr);
    CHECK(app.description().name == "small");
    CHECK(app.record()->object.type == KL_OBJECT_TYPE_APP);
    CHECK(std::string(app.record()->name) == "small");
    CHECK(std::string(app.record()->path) == world.folder.path());
    CHECK(app.record()->size.width == 320);
    CHECK(app.hold_depth() == 0);
}

TEST_CASE("warnings are counted although the log drops them") {
    Started world;
    Options options = world.capture.attach({});
    options.log_level = KL_LOG_ALWAYS;
    Diagnostics faults;
    world.app = Application::create(world.description, options, faults);
    REQUIRE(world.app != nullptr);
    world.app->start();
    world.app->run_code("kel.log('a', 'warning') kel.log('b', 'error') kel.log('c', 'info')", "test");
    CHECK(world.app->warnings() == 2);
}

TEST_CASE("a description with faults makes no application") {
    ApplicationDescription description = small_application();
    description.name = "";
    description.default_screen = "nosuch";
    Diagnostics faults;
    CHECK(Application::create(description, {}, faults) == nullptr);
    CHECK(faults.size() == 2);
}

TEST_CASE("an application file is loaded by its path or its folder's") {
    BlockLedger ledger;
    TemporaryFolder folder;
    const std::string file = folder.write("app.json", R"({"name": "tiny", "size": {"width": 10, "height": 20},
        "layers": [{"name": "main"}], "screens": [{"name": "home", "layers": [{"layer": "main"}]}],
        "scripts": ["main.lua"]})");
    folder.write("main.lua", "print(kel.get_value('main.kld_width'))\nerror('x')");
    for (const std::string &path : {file, folder.path()}) {
        Capture capture;
        Diagnostics faults;
        const auto app = Application::load(path, capture.attach({}), faults);
        for (const auto &fault : faults) MESSAGE(kelhost::to_text(fault));
        REQUIRE(app != nullptr);
        CHECK(app->description().name == "tiny");
        CHECK(app->start() == StartResult::script_failed);
        CHECK(capture.take_output() == "10\n");
        CHECK(app->script_errors().at(0).message == "main.lua:2: x");
        capture.take_log();
    }
}

TEST_CASE("an application file that is missing or has faults gives them all and no application") {
    TemporaryFolder folder;
    Diagnostics faults;
    CHECK(Application::load(folder.path() + "/nosuch.json", {}, faults) == nullptr);
    CHECK(faults.size() == 1);
    const std::string file = folder.write("app.json", R"({"name": "", "size": {"width": 10, "height": 20}, "extra": 1,
        "layers": [], "screens": []})");
    faults.clear();
    CHECK(Application::load(file, {}, faults) == nullptr);
    CHECK(faults.size() >= 2);
}
