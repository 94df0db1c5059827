// fuzz_scripts.cpp: hostile scripts on a running application with the plug-in. After each input the model is whole, the
// application answers a script that it knows, and nothing is left behind.
#include <optional>
#include <string>

#include <lua.hpp>

#include <kelhost/memory.h>

#include "app_file.h"
#include "model_checks.h"
#include "runtime.h"
#include "script_program.h"
#include "validate.h"

namespace {

using fuzz::Metatables;
using fuzz::require;
using fuzz::ScriptProgram;
using fuzz::Step;
using kelhost::Runtime;

constexpr std::uint64_t most_instructions = 2000;
constexpr std::size_t much_memory = 8'000'000;
constexpr std::size_t little_memory = 200'000;
constexpr std::size_t most_events = 10;    // a pump
constexpr std::size_t most_objects = 1500; // no programs that only take long

constexpr char application[] = R"({
    "name": "fuzzed", "size": {"width": 320, "height": 240},
    "variables": {"mode": 1, "title": "Hi", "probe": 0},
    "layers": [
        {"name": "main", "children": [
            {"type": "control", "name": "ok", "x": 10, "y": 20, "width": 100, "height": 40,
             "variables": {"text": "OK", "ratio": 0.5, "level": {"type": "i8", "value": 5}}},
            {"type": "group", "name": "bar", "children": [
                {"type": "control", "name": "ok"},
                {"type": "group", "name": "inner", "children": [{"type": "control", "name": "leaf"}]},
                {"type": "table", "name": "list", "rows": 1, "cols": 3, "templates": [{"name": "row"}]}
            ]},
            {"type": "table", "name": "list", "rows": 2, "cols": 3,
             "templates": [{"name": "row", "variables": {"text": "-"}}, {"name": "head"}],
             "cells": [["head", "head", "row"], ["row", "row", "row"]]}
        ]},
        {"name": "popup", "children": [{"type": "control", "name": "close"}]}
    ],
    "screens": [
        {"name": "home", "layers": [{"layer": "main"}, {"layer": "popup", "hidden": true}]},
        {"name": "settings", "layers": [{"layer": "main", "x": 5, "alpha": 100}]}
    ],
    "handlers": [
        {"event": "press", "function": "on_press"},
        {"event": "kel.changed", "target": "main.ok.kld_x", "function": "on_changed"},
        {"event": "kel.changed", "target": "mode", "function": "on_changed"}
    ]
})";

// What programs are written with. restore() gives handles back their metatables; answer() keeps all that it calls,
// whatever scripts do to the globals.
constexpr char prelude[] = R"(
    G, newproxy = getmetatable, nil
    function on_press() end
    function on_changed() end
    v = {}
    for i, name in ipairs{'main.ok', 'main.bar', 'main.list', 'main', 'home', 'home.main', 'main.row', 'main.bar.ok'} do
        v[i] = keldom.get_object(name)
    end
    v[9] = keldom.get_application()
    h = v[1]
    M = {}
    for name in method_names:gmatch('%S+') do
        for i = 1, 9 do M[name] = M[name] or v[i][name] end
    end

    local next, rawset, setmetatable, kept = next, rawset, setmetatable, {}
    for i = 1, 9 do
        local metatable = G(v[i])
        if metatable then
            local kind = {parent = getmetatable(metatable.__index)}
            for _, name in ipairs{'__index', '__eq', '__tostring', '__newindex', '__call', '__mode'} do
                kind[name] = metatable[name] or false
            end
            kept[metatable] = kind
        end
    end
    local function restore()
        for metatable, kind in next, kept do
            setmetatable(metatable, nil)
            for name, field in next, kind do
                if name ~= 'parent' then rawset(metatable, name, field or nil) end
            end
            setmetatable(kind.__index, kind.parent)
        end
    end

    local get_object, get_layers, get_application = keldom.get_object, keldom.get_layers, keldom.get_application
    local get_name, get_type, set, get, text = M.get_name, M.get_type, M.set_value, kel.get_value, tostring
    return function()
        restore()
        local application, layer = get_application(), get_object('popup')
        set(application, 'probe', 42)
        return get_type(application), get_name(layer), get('probe'), #get_layers(), text(layer)
    end
)";

const kelhost::ApplicationDescription &description() {
    static const kelhost::ApplicationDescription read = [] {
        kelhost::Diagnostics faults;
        auto parsed = kelhost::parse_application(application, "app.json", faults);
        if (parsed) kelhost::validate(*parsed, faults);
        for (const auto &fault : faults) require(false, to_text(fault));
        return *parsed;
    }();
    return read;
}

// When garbage is collected.
enum class Collection : std::uint8_t {
    any_time,
    between_steps,
    never // a handle that is collected while a changed chain hides what it is would lose its name
};

kelhost::Options options_for(const ScriptProgram &program, Collection collection) {
    kelhost::Options options;
    options.plugins.emplace_back().entry = KEL_PLUGIN_CREATE_FUNC;
    options.sandbox.newproxy =
        program.metatables != Metatables::closed; // opens getmetatable; the prelude closes newproxy
    options.error_mode = program.errors_return ? kelhost::ErrorMode::returns : kelhost::ErrorMode::unwinds;
    options.limits.instructions = most_instructions;
    options.limits.memory_bytes = program.little_memory ? little_memory : much_memory;
    if (collection != Collection::any_time) options.limits.memory_bytes = 0; // short of memory, the host collects
    options.log = [](const kelhost::LogEntry &) {};
    options.output = [](std::string_view) {};
    return options;
}

class Session {
public:
    Session(const ScriptProgram &program, Collection collection);
    void play();
    void finish();

private:
    void play(const Step &step);
    void collect();
    void require_answer();

    const ScriptProgram &program_;
    Collection collection_;
    Runtime runtime_;
    std::optional<int> failing_request_; // in the next piece of code
    int answer_ = 0;                     // the function, as a reference in the registry
};

Session::Session(const ScriptProgram &program, Collection collection)
    : program_(program), collection_(collection), runtime_(description(), options_for(program, collection)) {
    require(runtime_.start() == kelhost::StartResult::started, "the application does not start");
    lua_State *L = runtime_.lua.state();
    lua_pushstring(L, fuzz::method_names().c_str());
    lua_setglobal(L, "method_names");
    const bool failed = luaL_loadstring(L, prelude) != 0 || lua_pcall(L, 0, 1, 0) != 0;
    require(!failed, std::string("the prelude fails: ") + (failed ? lua_tostring(L, -1) : ""));
    answer_ = luaL_ref(L, LUA_REGISTRYINDEX);
    if (collection == Collection::any_time) return;
    lua_pushnil(L);
    lua_setglobal(L, "collectgarbage");
    lua_gc(L, LUA_GCSTOP, 0);
}

void Session::collect() {
    if (collection_ == Collection::never) return;
    lua_gc(runtime_.lua.state(), LUA_GCCOLLECT, 0);
    if (collection_ == Collection::between_steps) lua_gc(runtime_.lua.state(), LUA_GCSTOP, 0); // it has started again
}

void Session::play() {
    for (const Step &step : program_.steps) {
        if (runtime_.data.keys("").size() > most_objects) return;
        play(step);
        if (collection_ == Collection::between_steps) collect();
        require(runtime_.data.hold_depth() == 0, "a step leaves changes held");
        require(lua_gettop(runtime_.lua.state()) == 0, "a step leaves values on the stack");
    }
}

void Session::play(const Step &step) {
    switch (step.kind) {
    case Step::Kind::code: {
        std::optional<kelhost::FailingAllocations> failing;
        if (failing_request_) failing.emplace(static_cast<std::size_t>(*failing_request_));
        failing_request_.reset();
        runtime_.lua.run_code(step.text, "fuzz");
        return;
    }
    case Step::Kind::pump:
        runtime_.io.pump(most_events);
        return;
    case Step::Kind::queue:
        runtime_.io.queue("press", step.text);
        return;
    case Step::Kind::trigger:
        runtime_.io.trigger("press", step.text);
        return;
    case Step::Kind::write:
        runtime_.data.write(step.text, kelhost::to_input(kelhost::Value(static_cast<double>(step.number))));
        return;
    case Step::Kind::collect:
        collect();
        return;
    case Step::Kind::fail_allocation:
        failing_request_ = step.number;
        return;
    }
}

void Session::require_answer() {
    lua_State *L = runtime_.lua.state();
    lua_rawgeti(L, LUA_REGISTRYINDEX, answer_);
    const bool failed = lua_pcall(L, 0, 5, 0) != 0;
    require(!failed, std::string("the known script fails: ") + (failed ? luaL_optstring(L, -1, "?") : ""));
    std::string answer;
    for (int index = 1; index <= 5; ++index) answer += std::string(luaL_optstring(L, index, "nil")) + " ";
    require(answer == "7 popup 42 2 popup ", "the known script gives " + answer);
    lua_settop(L, 0);
}

void Session::finish() {
    require_answer();
    fuzz::require_whole(runtime_);
    runtime_.stop();
}

// Whether blocks of the host's allocator are left when the application is gone.
bool leaves_blocks(const ScriptProgram &program, Collection collection) {
    const std::size_t blocks = kelhost::memory_counts().live_blocks;
    {
        Session session(program, collection);
        session.play();
        session.finish();
    }
    return kelhost::memory_counts().live_blocks != blocks;
}

} // namespace

// Blocks of the host's allocator are counted here; what else is lost is the sanitizer's to find.
extern "C" const char *__lsan_default_suppressions() { return "leak:kelal_strdup\nleak:kelal_realloc\n"; }

// A finalizer that Lua would call at the very end of its C stack is lost, and with it the name of a handle. That is
// Lua's way, so blocks may be left, unless they are also when nothing is collected but between the calls into Lua.
void fuzz::run(Input input) {
    const ScriptProgram program = decode_script(input);
    const bool writable = program.metatables == Metatables::writable;
    if (!leaves_blocks(program, writable ? Collection::never : Collection::any_time)) return;
    require(!writable && !leaves_blocks(program, Collection::between_steps),
            "blocks are left when the application is gone");
}

std::string fuzz::describe(Input input) { return to_text(decode_script(input)); }
