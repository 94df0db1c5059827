// test_kel_module.cpp: the `kel` module that scripts see.
#include <algorithm>
#include <string>

#include <doctest/doctest.h>

#include "scripted_application.h"

TEST_CASE("kel holds these functions and constants and no other") {
    ScriptedApplication app;
    CHECK(app.run("local names = {} for name, value in pairs(kel) do "
                  "names[#names + 1] = name .. '=' .. (type(value) == 'number' and value or type(value)) end "
                  "table.sort(names) print(table.concat(names, ' '))"));
    CHECK(app.take_output()
          == "BOTTOM=3 CENTER=2 LEFT=1 RIGHT=3 TOP=1 get_value=function log=function "
             "queue_event=function set_value=function\n");
}

TEST_CASE("get_value gives one value a key, nil for what does not exist") {
    ScriptedApplication app;
    CHECK(app.value("kel.get_value('mode')") == "1");
    CHECK(app.value("kel.get_value('title', 'nosuch', 'main.ok.level', 'main.ok.text', 'main.ok.kld_x')")
          == "Hi\tnil\t5\tOK\t10");
    CHECK(app.value("kel.get_value('nosuch')") == "nil");
    CHECK(app.value("select('#', kel.get_value('nosuch', 'mode', 'nosuch'))") == "3");
    CHECK(app.value("type(kel.get_value('mode')), type(kel.get_value('title'))") == "number\tstring");
}

TEST_CASE("get_value reads cells by cell key") {
    ScriptedApplication app;
    CHECK(app.value("kel.get_value('main.list.text.1.0', 'main.list.text.2.0')") == "-\tnil");
}

TEST_CASE("get_value bears two hundred keys") {
    ScriptedApplication app;
    CHECK(app.run("local keys = {} for i = 1, 200 do keys[i] = i % 2 == 0 and 'mode' or 'nosuch' end "
                  "local values = {kel.get_value(unpack(keys))} local sum = 0 "
                  "for i = 2, 200, 2 do sum = sum + values[i] end print(sum, values[1], values[199])"));
    CHECK(app.take_output() == "100\tnil\tnil\n");
}

TEST_CASE("get_value wants strings") {
    ScriptedApplication app;
    CHECK(app.error_of("kel.get_value()") == "test:1: bad argument #1 to 'get_value' (string expected, got no value)");
    CHECK(app.error_of("kel.get_value('mode', {})")
          == "test:1: bad argument #2 to 'get_value' (string expected, got table)");
    CHECK(app.error_of("kel.get_value(nil)") == "test:1: bad argument #1 to 'get_value' (string expected, got nil)");
}

TEST_CASE("set_value writes pairs and converts to the variable's type") {
    ScriptedApplication app;
    CHECK(app.value("kel.set_value('mode', 7, 'title', 12, 'main.ok.level', '33', 'main.ok.kld_hidden', true)") == "");
    CHECK(app.value("kel.get_value('mode', 'title', 'main.ok.level', 'main.ok.kld_hidden')") == "7\t12\t33\t1");
    CHECK(app.value("type(kel.get_value('title'))") == "string");
}

TEST_CASE("set_value writes all pairs as one batch") {
    ScriptedApplication app;
    std::string seen;
    app.runtime.data.add_listener([&](std::string_view key) {
        const auto mode = std::get<double>(app.runtime.data.find("mode")->value);
        seen += std::string(key) + " mode=" + std::to_string(static_cast<int>(mode)) + "; ";
    });
    CHECK(app.run("kel.set_value('title', 'a', 'mode', 2, 'title', 'b', 'mode', 3)"));
    CHECK(seen == "title mode=3; mode mode=3; ");
}

TEST_CASE("set_value warns of what a variable cannot hold and writes the rest") {
    ScriptedApplication app;
    CHECK(app.run("kel.set_value('mode', {}, 'title', 'x', 'mode', 'seven', 'title', nil)"));
    CHECK(app.value("kel.get_value('mode', 'title')") == "1\tx");
    const std::string log = app.take_log();
    CHECK(std::count(log.begin(), log.end(), '\n') == 2);
    CHECK(log.starts_with("warning: Cannot write table to mode (i32)"));
    CHECK(log.find("\nwarning: Cannot write \"seven\" to mode (i32)") != std::string::npos);
    CHECK(log.find("\nwarning: Cannot write nil to title (string)") != std::string::npos);
}

TEST_CASE("set_value creates a variable of an object that exists") {
    ScriptedApplication app;
    CHECK(app.run("kel.set_value('main.ok.hint', 'press me')"));
    CHECK(app.value("kel.get_value('main.ok.hint')") == "press me");
    CHECK(app.run("kel.set_value('main.nosuch.hint', 1)"));
    CHECK(app.take_log() == "warning: Cannot create main.nosuch.hint: no object \"main.nosuch\"");
}

TEST_CASE("set_value reports a key without value and a wrong key before it writes anything") {
    ScriptedApplication app;
    CHECK(app.error_of("kel.set_value('mode', 5, 'title')")
          == "test:1: bad argument #3 to 'set_value' (no value for key \"title\")");
    CHECK(app.error_of("kel.set_value('mode')")
          == "test:1: bad argument #1 to 'set_value' (no value for key \"mode\")");
    CHECK(app.error_of("kel.set_value()") == "test:1: bad argument #1 to 'set_value' (string expected, got no value)");
    CHECK(app.error_of("kel.set_value('mode', 5, {}, 6)")
          == "test:1: bad argument #3 to 'set_value' (string expected, got table)");
    CHECK(app.value("kel.get_value('mode')") == "1");
    CHECK(app.runtime.data.hold_depth() == 0);
}

TEST_CASE("log writes at info or the level that is named") {
    ScriptedApplication app;
    CHECK(app.run("kel.log('a') kel.log('b', 'info') kel.log('c', 'warning') kel.log('d', 'error') kel.log(5, nil)"));
    CHECK(app.take_log() == "info: a\ninfo: b\nwarning: c\nerror: d\ninfo: 5");
    CHECK(app.run("kel.log('100%s')"));
    CHECK(app.take_log() == "info: 100%s");
    CHECK(app.runtime.log.warnings() == 2);
}

TEST_CASE("log wants a text and a level that exists") {
    ScriptedApplication app;
    CHECK(app.error_of("kel.log()") == "test:1: bad argument #1 to 'log' (string expected, got no value)");
    CHECK(app.error_of("kel.log('a', 'loud')")
          == "test:1: bad argument #2 to 'log' (invalid level \"loud\", expected "
             "\"error\", \"warning\" or \"info\")");
    CHECK(app.error_of("kel.log('a', {})") == "test:1: bad argument #2 to 'log' (string expected, got table)");
}

TEST_CASE("queue_event queues an event that the next pump delivers") {
    auto description = small_application();
    description.handlers = {
        {"go", "", "on_go"}
    };
    ScriptedApplication app({}, description);
    CHECK(app.run("function on_go(event) print(event.name, event.target) end kel.queue_event('go') "
                  "kel.queue_event('go', 'main.ok') kel.queue_event('go', nil)"));
    CHECK(app.take_output() == "");
    CHECK(app.runtime.io.pump() == 3);
    CHECK(app.take_output() == "go\tnil\ngo\tmain.ok\ngo\tnil\n");
}

TEST_CASE("queue_event wants a name that is not empty") {
    ScriptedApplication app;
    CHECK(app.error_of("kel.queue_event()")
          == "test:1: bad argument #1 to 'queue_event' (string expected, got no value)");
    CHECK(app.error_of("kel.queue_event('')")
          == "test:1: bad argument #1 to 'queue_event' (the event's name is empty)");
    CHECK(app.error_of("kel.queue_event('go', true)")
          == "test:1: bad argument #2 to 'queue_event' (string expected, got boolean)");
    CHECK(app.error_of("kel.queue_event('go\\0away')")
          == "test:1: bad argument #1 to 'queue_event' (the event's name has a zero byte)");
    CHECK(app.error_of("kel.queue_event('go', 'main\\0.ok')")
          == "test:1: bad argument #2 to 'queue_event' (the target has a zero byte)");
    CHECK(app.runtime.io.pump() == 0);
}

TEST_CASE("the module's functions work in coroutines") {
    ScriptedApplication app;
    CHECK(app.value("coroutine.wrap(function() kel.set_value('mode', 4) return kel.get_value('mode') end)()") == "4");
}

TEST_CASE("in a state that belongs to nobody the module's functions raise") {
    kelhost::Options options;
    options.sandbox.debug = true;
    ScriptedApplication app(options);
    // Which of the host's keys is the application's is not known: one of them is.
    CHECK(app.run("local registry, get, refused = debug.getregistry(), kel.get_value, {} "
                  "for key, value in pairs(registry) do if type(key) == 'userdata' and type(value) == 'userdata' then "
                  "registry[key] = nil local ok, why = pcall(get, 'mode') registry[key] = value "
                  "if not ok then refused[#refused + 1] = why end end end print(unpack(refused))"));
    CHECK(app.take_output() == "no application owns this Lua state\n");
}
