// lua_names.cpp: follows a path and climbs a metatable's chain with raw access alone: no script runs.
// Entries that Lua calls hold no object with a destructor: Lua raises errors by longjmp.
#include "lua_names.h"

#include "identifier.h"
#include "value_text.h"

#include <cstddef>
#include <utility>

#include <lua.hpp>

namespace kelhost {

namespace {

// A script can bend the chain into a circle.
constexpr int most_steps = 100;

struct Query {
    std::string_view path;
    bool only_functions;
    std::vector<std::string> names{};
};

// Without a name when there is no memory for it.
void add_name(Query &query, std::string_view name) noexcept {
    try {
        if (is_identifier(name)) query.names.emplace_back(name);
    } catch (...) {
        return;
    }
}

// [-0, +0] The names in the table on top.
void add_fields(lua_State *L, Query &query) {
    for (lua_pushnil(L); lua_next(L, -2) != 0; lua_pop(L, 1)) {
        if (lua_type(L, -2) != LUA_TSTRING) continue; // a number would be made a string, which confuses the walk
        if (query.only_functions && !lua_isfunction(L, -1)) continue;
        std::size_t length = 0;
        const char *const name = lua_tolstring(L, -2, &length);
        add_name(query, {name, length});
    }
}

// [-1, +1] Puts a plain field of the value on top in its place. False when there is none to be had.
bool step(lua_State *L, std::string_view name) {
    if (!lua_istable(L, -1)) return false;
    lua_pushlstring(L, name.data(), name.size());
    lua_rawget(L, -2);
    lua_remove(L, -2);
    return true;
}

// [-0, +1] Pushes the value that the path leads to. False when it leads nowhere.
bool follow(lua_State *L, std::string_view path) {
    lua_pushvalue(L, LUA_GLOBALSINDEX);
    while (!path.empty()) {
        const std::size_t dot = path.find('.');
        if (!step(L, path.substr(0, dot))) return false;
        path = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
    }
    return true;
}

// [-1, +1] Puts the table in which the value on top looks for what it has not itself in its place. False for none.
bool climb(lua_State *L) {
    if (lua_getmetatable(L, -1) == 0) return false;
    lua_remove(L, -2);
    return step(L, "__index") && lua_istable(L, -1);
}

int collect(lua_State *L) {
    auto &query = *static_cast<Query *>(lua_touserdata(L, 1));
    if (!follow(L, query.path)) return 0;
    for (int steps = 0; steps < most_steps; ++steps) {
        if (lua_istable(L, -1)) add_fields(L, query);
        if (!climb(L)) return 0;
    }
    return 0;
}

struct PrefixQuery {
    const Application &app;
    std::string_view path;
    std::optional<std::string> prefix{};
};

void find_prefix(lua_State *L, PrefixQuery &query, int index, int facts) noexcept {
    try {
        query.prefix = handle_key_prefix(query.app, L, index, facts);
    } catch (...) { // no memory: no completions
        return;
    }
}

int look_for_prefix(lua_State *L) {
    auto &query = *static_cast<PrefixQuery *>(lua_touserdata(L, 1));
    if (!follow(L, query.path)) return 0;
    const int index = lua_gettop(L);
    luaL_checkstack(L, value_text_slots, "no room");
    push_handle_facts(L);
    find_prefix(L, query, index, index + 1);
    return 0;
}

} // namespace

std::vector<std::string> names_within(Application &app, std::string_view path, bool only_functions) {
    Query query{.path = path, .only_functions = only_functions};
    if (lua_cpcall(app.lua(), collect, &query) != 0) lua_pop(app.lua(), 1); // no memory: what was found is shown
    return std::move(query.names);
}

std::optional<std::string> key_prefix_of(Application &app, std::string_view path) {
    PrefixQuery query{.app = app, .path = path};
    if (lua_cpcall(app.lua(), look_for_prefix, &query) != 0) lua_pop(app.lua(), 1);
    return std::move(query.prefix);
}

} // namespace kelhost
