// plugin_fixture.h: a fresh recording host, a fresh Lua state and the plug-in for one test, and their accounts at its
// end: every line of the log and every raised error was expected, nothing is left alive, no call broke the contract.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <lua.hpp>

#include "handle.h"
#include "lua_memory.h"
#include "recording_host.h"

using Lines = std::vector<std::string>;

namespace doctest {
template <> struct StringMaker<Lines> {
    static String convert(const Lines &lines) {
        std::string text = lines.empty() ? "(nothing)" : "";
        for (const std::string &line : lines) text += "\n    " + line;
        return text.c_str();
    }
};
} // namespace doctest

// What the host's kl_lua_error does after it has noted the text.
enum class Errors { unwind, return_ };

// Runs the test once for each.
inline Errors either_kind_of_error() {
    Errors errors = Errors::unwind;
    SUBCASE("with a kl_lua_error that unwinds") { errors = Errors::unwind; }
    SUBCASE("with a kl_lua_error that returns") { errors = Errors::return_; }
    return errors;
}

// A host and a Lua state without the plug-in.
class HostFixture {
public:
    explicit HostFixture(Errors errors = Errors::unwind) : errors_(errors) {
        recording_begin();
        recording_errors_return(errors == Errors::return_);
        L = lua_newstate(LuaMemory::allocate, &memory);
        if (!L) L = luaL_newstate(); // a Lua that insists on its own allocator
        REQUIRE(L != nullptr);
        lua_atpanic(L, [](lua_State *state) {
            std::fprintf(stderr, "Lua error outside a protected call: %s\n", lua_tostring(state, -1));
            std::abort();
            return 0;
        });
        luaL_openlibs(L);
        collect();
        recording_share_state(L);
    }

    ~HostFixture() {
        close();
        CHECK(recording_live_blocks() == expected_leaks_);
        CHECK(recording_live_arrays() == 0);
        CHECK(recording_open_holds() == 0);
        CHECK(take_violations() == Lines{});
        CHECK(memory.live_bytes() == 0);
        CHECK(memory.overruns() == 0);
        recording_end();
    }

    HostFixture(const HostFixture &) = delete;
    HostFixture &operator=(const HostFixture &) = delete;

    // Runs Lua code; gives its results as text, none for none, or "error: <text>".
    Lines run(const std::string &code) {
        load(code);
        return run_loaded();
    }

    // The same, with the nth request for memory (from 1, that of loading apart) refused.
    Lines run_starved(const std::string &code, unsigned long nth) {
        load(code);
        memory.forget_refusal();
        memory.refuse(nth);
        return run_loaded();
    }

    // Calls a native function with the arguments that a Lua expression list gives.
    Lines call(lua_CFunction function, const std::string &arguments = "") {
        lua_pushcclosure(L, function, 0);
        lua_setfield(L, LUA_GLOBALSINDEX, "native");
        return run("return native(" + arguments + ")");
    }

    // Runs code that raises one error through the host; gives the error's text, or says what else happened. A
    // kl_lua_error that returns lets the entry go on: `results` is what it then gives.
    std::string raises(const std::string &code, const Lines &results = {}) {
        Lines got = run(code);
        Lines raised = take_errors();
        if (raised.size() != 1) return "raised " + std::to_string(raised.size()) + " errors, results:" + joined(got);
        Lines expected = errors_ == Errors::return_ ? results : Lines{"error: " + raised[0]};
        return got == expected ? raised[0] : raised[0] + ", but the results are:" + joined(got);
    }

    // Each gives what has come since it was last asked, which is then accounted for.
    Lines take_lines() { return take(line_mark_, recording_line_count(), recording_line); }
    Lines take_log() { return take(log_mark_, recording_log_count(), recording_log); }
    Lines take_errors() { return take(error_mark_, recording_error_count(), recording_error); }
    Lines take_violations() {
        int mark = 0;
        Lines violations = take(mark, recording_violation_count(), recording_violation);
        recording_forget_violations();
        return violations;
    }

    // Writes kinds of calls down that are not by themselves (RECORDING_SHOW_...), from here on.
    void show(unsigned groups) {
        recording_show(groups);
        line_mark_ = recording_line_count();
    }

    // Collects what is garbage first: without an application that would raise.
    void without_application(bool without = true) {
        recording_fail_always(RECORDING_GET_APP, 0);
        collect();
        recording_fail_always(RECORDING_GET_APP, without);
    }

    // Lua collects here and nowhere else, so that no collection gets among the lines of a test.
    void collect() {
        lua_gc(L, LUA_GCCOLLECT, 0);
        lua_gc(L, LUA_GCCOLLECT, 0);
        lua_gc(L, LUA_GCSTOP, 0);
    }

    // Blocks that the behaviour under test does not free.
    void expect_leaks(int blocks) { expected_leaks_ = blocks; }

    // One value as text: "a string" in quotes, a handle as control_object "main.ok", an array as {1, 2}.
    std::string text_of(int index) {
        switch (lua_type(L, index)) {
        case LUA_TSTRING:
            return '"' + std::string(lua_tostring(L, index)) + '"';
        case LUA_TNUMBER: {
            char text[64];
            std::snprintf(text, sizeof text, LUA_NUMBER_FMT, lua_tonumber(L, index));
            return text;
        }
        case LUA_TBOOLEAN:
            return lua_toboolean(L, index) ? "true" : "false";
        case LUA_TUSERDATA:
            return handle_text(index);
        case LUA_TTABLE:
            return table_text(index);
        default:
            return luaL_typename(L, index);
        }
    }

    lua_State *L = nullptr;
    LuaMemory memory;

protected:
    // Ends the state, with everything healed so that what the test left can be collected.
    void close() {
        if (!L) return;
        for (int call = 0; call < RECORDING_CALL_COUNT; ++call) {
            recording_fail(static_cast<recording_call_t>(call), 0);
            recording_fail_always(static_cast<recording_call_t>(call), 0);
        }
        memory.refuse(0);
        CHECK(lua_gettop(L) == 0);
        lua_close(L);
        L = nullptr;
        CHECK(take_log() == Lines{});
        CHECK(take_errors() == Lines{});
    }

private:
    static std::string joined(const Lines &lines) { return doctest::StringMaker<Lines>::convert(lines).c_str(); }

    static Lines take(int &mark, int count, const char *(*line)(int)) {
        Lines lines;
        for (; mark < count; ++mark) lines.emplace_back(line(mark));
        return lines;
    }

    void load(const std::string &code) {
        if (luaL_loadbuffer(L, code.data(), code.size(), "=test") == 0) return;
        std::string text = lua_tostring(L, -1);
        lua_settop(L, -2);
        FAIL("the test's own Lua code does not load: " << text);
    }

    // [-1, +0] Calls the function on top.
    Lines run_loaded() {
        int top = lua_gettop(L) - 1;
        bool failed = lua_pcall(L, 0, LUA_MULTRET, 0) != 0;
        memory.refuse(0);
        Lines values;
        for (int i = top + 1; i <= lua_gettop(L); ++i)
            values.push_back(failed ? "error: " + std::string(lua_tostring(L, i)) : text_of(i));
        lua_settop(L, top);
        return values;
    }

    std::string handle_text(int index) {
        int top = lua_gettop(L);
        std::string text = "userdata";
        for (const char *name :
             {keldom_object_metatable, control_object_metatable, table_object_metatable, group_object_metatable,
              layer_instance_object_metatable, layer_object_metatable, screen_object_metatable}) {
            lua_getfield(L, LUA_REGISTRYINDEX, name);
            if (!lua_getmetatable(L, index) || !lua_rawequal(L, -1, -2)) continue;
            auto *handle = static_cast<dom_object_t *>(lua_touserdata(L, index));
            text = std::string(name) + " " + (handle->name ? '"' + std::string(handle->name) + '"' : "null");
            break;
        }
        lua_settop(L, top);
        return text;
    }

    std::string table_text(int index) {
        Lines entries;
        std::size_t length = lua_objlen(L, index);
        for (std::size_t i = 1; i <= length; ++i) {
            lua_rawgeti(L, index, static_cast<int>(i));
            entries.push_back(text_of(lua_gettop(L)));
            lua_settop(L, -2);
        }
        Lines named;
        lua_pushnil(L);
        while (lua_next(L, index)) {
            bool in_array = lua_type(L, -2) == LUA_TNUMBER && lua_tonumber(L, -2) >= 1
                            && lua_tonumber(L, -2) <= static_cast<lua_Number>(length);
            if (!in_array) named.push_back("[" + text_of(lua_gettop(L) - 1) + "] = " + text_of(lua_gettop(L)));
            lua_settop(L, -2);
        }
        std::sort(named.begin(), named.end());
        entries.insert(entries.end(), named.begin(), named.end());
        std::string text;
        for (const std::string &entry : entries) text += (text.empty() ? "" : ", ") + entry;
        return "{" + text + "}";
    }

    Errors errors_;
    int line_mark_ = 0;
    int log_mark_ = 0;
    int error_mark_ = 0;
    int expected_leaks_ = 0;
};

// The same with the plug-in loaded, initialised and registered in the Lua state.
class PluginFixture : public HostFixture {
public:
    explicit PluginFixture(Errors errors = Errors::unwind) : HostFixture(errors) {
        CHECK(recording_load_plugin(&plugin, nullptr) == 0);
        CHECK(recording_deliver("kel.internalinit") == 1);
        take_lines();
    }

    ~PluginFixture() {
        close();
        recording_unload_plugin(&plugin);
    }

    kl_plugin_state_t plugin{};
};
