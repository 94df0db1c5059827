// scripted_application.h: a small application with a Lua state, whose log lines and output a test must account for.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <doctest/doctest.h>

#include <kelhost/log.h>
#include <support/block_ledger.h>

#include "runtime.h"

// Layer "main" with control "ok" (text "OK", level 5), group "bar" with control "go", and table "list" with 2 rows of
// the template "row" (text "-"); screen "home" shows it. Variables: mode = 1, title = "Hi".
inline kelhost::ApplicationDescription small_application() {
    using namespace kelhost;
    const auto control = [](const char *name) {
        ElementDescription element;
        element.name = name;
        element.geometry = {10, 20, 30, 40};
        return element;
    };
    ElementDescription ok = control("ok");
    ok.variables.push_back({"text", DataType::string, std::string("OK")});
    ok.variables.push_back({"level", DataType::i16, 5.0});
    ElementDescription bar = control("bar");
    bar.kind = ElementKind::group;
    bar.geometry = {10, 20, 0, 0};
    bar.children = {control("go")};
    ElementDescription list = control("list");
    list.kind = ElementKind::table;
    list.rows = 2;
    list.cols = 1;
    TemplateDescription row;
    row.name = "row";
    row.variables.push_back({"text", DataType::string, std::string("-")});
    list.templates = {row};

    ApplicationDescription application;
    application.name = "small";
    application.width = 320;
    application.height = 240;
    application.variables.push_back({"mode", DataType::i32, 1.0});
    application.variables.push_back({"title", DataType::string, std::string("Hi")});
    LayerDescription layer;
    layer.name = "main";
    layer.children = {ok, bar, list};
    application.layers.push_back(layer);
    LayerInstanceDescription instance;
    instance.layer = "main";
    ScreenDescription screen;
    screen.name = "home";
    screen.layers.push_back(instance);
    application.screens.push_back(screen);
    return application;
}

// Keeps what is logged and printed. Whoever uses it takes all of it before it goes.
class Capture {
public:
    Capture() = default;
    ~Capture() {
        INFO("logged: ", lines_);
        CHECK(lines_.empty());
        INFO("printed: ", output_);
        CHECK(output_.empty());
    }
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    kelhost::Options attach(kelhost::Options options) {
        options.log_level = KL_LOG_TRACE2;
        options.log = [this](const kelhost::LogEntry &entry) {
            if (!lines_.empty()) lines_ += '\n';
            lines_ += std::string(kelhost::log_level_name(entry.level)) + ": " + std::string(entry.text);
        };
        options.output = [this](std::string_view text) { output_ += text; };
        return options;
    }

    // What came since this was last asked. Log: "level: text" each, with a line end between two lines.
    std::string take_log() { return std::exchange(lines_, {}); }
    std::string take_output() { return std::exchange(output_, {}); }

private:
    std::string lines_;
    std::string output_;
};

// The application above, started. Its state's stack, holds and the plug-ins' allocator must be left as they were.
class ScriptedApplication {
public:
    explicit ScriptedApplication(kelhost::Options options = {},
                                 const kelhost::ApplicationDescription &description = small_application())
        : runtime(description, capture.attach(std::move(options))) {
        result = runtime.start();
    }
    ~ScriptedApplication() {
        CHECK(runtime.data.hold_depth() == 0);
        if (runtime.lua.state() != nullptr) CHECK(lua_gettop(runtime.lua.state()) == 0);
    }
    ScriptedApplication(const ScriptedApplication &) = delete;
    ScriptedApplication &operator=(const ScriptedApplication &) = delete;

    bool run(std::string_view code) { return runtime.lua.run_code(code, "test"); }

    // What a list of expressions gives, as print shows it.
    std::string value(const std::string &expressions) {
        CHECK(run("print(" + expressions + ")"));
        std::string text = take_output();
        REQUIRE(text.ends_with('\n'));
        text.pop_back();
        return text;
    }

    // The message of the error that the code ends in. The error is taken from the log.
    std::string error_of(std::string_view code) {
        const std::size_t before = runtime.lua.errors().size();
        CHECK(!run(code));
        REQUIRE(runtime.lua.errors().size() == before + 1);
        const kelhost::ScriptError &error = runtime.lua.errors().back();
        CHECK(take_log() == "error: " + error.message + (error.traceback.empty() ? "" : "\n" + error.traceback));
        return error.message;
    }

    std::string take_log() { return capture.take_log(); }
    std::string take_output() { return capture.take_output(); }
    lua_State *state() { return runtime.lua.state(); }

private:
    BlockLedger ledger; // goes last
    Capture capture;

public:
    kelhost::Runtime runtime;
    kelhost::StartResult result;
};
