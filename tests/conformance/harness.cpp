// harness.cpp: a started application, Lua code run in it, and what came of that.
#include "harness.h"

#include <cstdio>
#include <map>

#include <lua.hpp>

#include "called_names.h"
#include "observer.h"

extern "C" int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state);

namespace conformance {

namespace {

constexpr const char *metatables[] = {
    "keldom_object",         "control_object", "table_object",  "group_object",
    "layer_instance_object", "layer_object",   "screen_object",
};

Observer no_observer;
Observer *observer = &no_observer;

std::string text_of(lua_State *L, int index);

std::string number_text(lua_Number number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.14g", static_cast<double>(number));
    return text;
}

bool has_metatable(lua_State *L, int index, const char *name) {
    if (!lua_getmetatable(L, index)) return false;
    luaL_getmetatable(L, name);
    bool same = lua_rawequal(L, -1, -2) != 0;
    lua_pop(L, 2);
    return same;
}

std::string handle_text(lua_State *L, int index) {
    for (const char *name : metatables) {
        if (!has_metatable(L, index, name)) continue;
        luaL_callmeta(L, index, "__tostring");
        std::string text = std::string("<") + name + " " + (lua_isstring(L, -1) ? lua_tostring(L, -1) : "nil") + ">";
        lua_pop(L, 1);
        return text;
    }
    return "userdata";
}

std::string table_text(lua_State *L, int index) {
    std::string array;
    std::map<std::string, std::string> fields;
    size_t length = lua_objlen(L, index);
    for (size_t i = 1; i <= length; ++i) {
        lua_rawgeti(L, index, static_cast<int>(i));
        array += (i > 1 ? ", " : "") + text_of(L, lua_gettop(L));
        lua_pop(L, 1);
    }
    for (lua_pushnil(L); lua_next(L, index); lua_pop(L, 1)) {
        bool in_array = lua_type(L, -2) == LUA_TNUMBER && lua_tonumber(L, -2) >= 1
                        && lua_tonumber(L, -2) <= static_cast<lua_Number>(length);
        if (in_array) continue;
        lua_pushvalue(L, -2);
        std::string key = lua_type(L, -1) == LUA_TSTRING ? lua_tostring(L, -1) : "[" + text_of(L, lua_gettop(L)) + "]";
        lua_pop(L, 1);
        fields[key] = text_of(L, lua_gettop(L));
    }
    std::string text = "{" + array;
    for (const auto &[key, value] : fields) text += (text.size() > 1 ? ", " : "") + key + "=" + value;
    return text + "}";
}

std::string text_of(lua_State *L, int index) {
    switch (lua_type(L, index)) {
    case LUA_TNIL:
        return "nil";
    case LUA_TBOOLEAN:
        return lua_toboolean(L, index) ? "true" : "false";
    case LUA_TNUMBER:
        return number_text(lua_tonumber(L, index));
    case LUA_TSTRING:
        return "\"" + std::string(lua_tostring(L, index), lua_objlen(L, index)) + "\"";
    case LUA_TTABLE:
        return table_text(L, index);
    case LUA_TUSERDATA:
        return handle_text(L, index);
    default:
        return luaL_typename(L, index);
    }
}

// "[string "code"]:3: text" -> "text"
std::string without_position(const std::string &message) {
    size_t end = message.rfind("]:");
    size_t colon = end == std::string::npos ? end : message.find(": ", end);
    return colon == std::string::npos ? message : message.substr(colon + 2);
}

Lines lines_that_begin(const char *prefix) {
    Lines found;
    for (int i = 0; i < kc_call_count(); ++i) {
        std::string line = kc_call(i);
        if (line.starts_with(prefix)) found.push_back(line.substr(std::string(prefix).size()));
    }
    return found;
}

} // namespace

void set_observer(Observer *of_sessions) { observer = of_sessions ? of_sessions : &no_observer; }

Session::Session(const kc_application_t &application) : host_(kc_host_start(&application, KEL_PLUGIN_CREATE_FUNC)) {
    REQUIRE(host_ != nullptr);
    lua_settop(lua(), 0);
    watch_called_names(lua());
    kc_recorder_start(this->application());
    observer->session_starts(*this);
}

// A test that ended early may have left its failures and what it hid: collection and the observer need the host whole.
Session::~Session() {
    account_for_warnings();
    kc_mend();
    kc_set_error_returns(0);
    kc_hide_application(0);
    kc_hide_data_manager(0);
    observer->session_ends(*this);
    Remains left;
    left.stack_height = lua_gettop(lua());
    lua_gc(lua(), LUA_GCCOLLECT, 0);
    account_for_warnings();
    left.holds = kc_open_holds();
    kc_close_holds();
    kc_recorder_stop();
    kc_host_stop(host_);
    left.blocks = kc_live_blocks();
    left.lists = kc_live_lists();
    left.violations = kc_violations();
    left.last_violation = kc_last_violation();
    CHECK(left.stack_height == 0);
    CHECK_MESSAGE(left.violations == 0, left.last_violation);
    CHECK(left.blocks == 0);
    CHECK(left.lists == 0);
    CHECK(left.holds == 0);
    observer->session_ended(left);
}

void Session::account_for_warnings() {
    if (warnings_taken_) return;
    warnings_taken_ = true;
    CHECK(lines_that_begin("warning: ") == Lines{});
}

Outcome Session::run(const std::string &code) {
    account_for_warnings();
    kc_forget_calls();
    warnings_taken_ = false;
    lua_State *L = lua();
    Outcome outcome;
    int status = luaL_loadbuffer(L, code.data(), code.size(), "code");
    if (status == 0) {
        observer->call_starts();
        status = lua_pcall(L, 0, LUA_MULTRET, 0);
        observer->call_ends();
    }
    outcome.ok = status == 0;
    if (!outcome.ok) outcome.error = lua_isstring(L, -1) ? without_position(lua_tostring(L, -1)) : text_of(L, 1);
    for (int i = 1; outcome.ok && i <= lua_gettop(L); ++i) outcome.results.push_back(text_of(L, i));
    lua_settop(L, 0);
    observer->run_ends(code, outcome);
    return outcome;
}

Lines Session::results(const std::string &code) {
    Outcome outcome = run(code);
    CHECK_MESSAGE(outcome.ok, outcome.error);
    return outcome.results;
}

std::string Session::error(const std::string &code) {
    Outcome outcome = run(code);
    CHECK_FALSE(outcome.ok);
    return outcome.error;
}

Lines Session::calls() {
    warnings_taken_ = true;
    return lines_that_begin("");
}

Lines Session::warnings() {
    warnings_taken_ = true;
    return lines_that_begin("warning: ");
}

Lines Session::errors() { return lines_that_begin("error: "); }

void Session::hold_collection() {
    lua_gc(lua(), LUA_GCCOLLECT, 0);
    lua_gc(lua(), LUA_GCSTOP, 0);
    observer->collection_held(*this);
}

void Session::define(const char *name, int (*function)(lua_State *L)) { lua_register(lua(), name, function); }

} // namespace conformance
