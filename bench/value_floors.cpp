// value_floors.cpp: floors of what reads and writes variables.
#include <luakeldom/variables.h>

#include "floor_handle.h"
#include "floors.h"

namespace bench {

namespace {

// The plug-in's texts, as their place in memory decides how fast they are read.
const char *const x = variable_name(kld_x);
const char *const y = variable_name(kld_y);
const char *const width = variable_name(kld_width);
const char *const height = variable_name(kld_height);
const char *const hidden = variable_name(kld_hidden);

// What is needed for each variable, taken from the arguments once.
struct Given {
    explicit Given(lua_State *state)
        : L(state), name(handle_given(L, 1).name), app(kl_lua_get_app(L)), data_mgr(app->linfo->data_mgr) {}
    lua_State *L;
    const char *name;
    kl_application_t *app;
    kl_data_mgr_t *data_mgr;
};

// [-0, +1]
void push_value(const Given &given, const char *variable) {
    lua_pushfstring(given.L, "%s.%s", given.name, variable);
    kl_lua_get_data_value(given.L, given.app, given.data_mgr, -1, -1);
}

// [-0, +1] The key stays.
void write_value(const Given &given, const char *variable, int value_index) {
    lua_pushfstring(given.L, "%s.%s", given.name, variable);
    kl_lua_set_data_value(given.L, given.app, given.data_mgr, -1, value_index);
}

// The arguments from value_index on.
template <typename... Variables> int write(const Given &given, int value_index, Variables... variables) {
    given.data_mgr->hold_change_listener(given.data_mgr);
    (write_value(given, variables, value_index++), ...);
    given.data_mgr->release_change_listener(given.data_mgr);
    return 0;
}

template <typename... Variables> int get(lua_State *L, Variables... variables) {
    const Given given(L);
    (push_value(given, variables), ...);
    return sizeof...(variables);
}

template <typename... Variables> int set(lua_State *L, Variables... variables) {
    return write(Given(L), 2, variables...);
}

// [-0, +0] The value of a number variable.
int current(const Given &given, const char *variable) {
    push_value(given, variable);
    const auto value = static_cast<int>(lua_tointeger(given.L, -1));
    lua_settop(given.L, -2);
    return value;
}

bool is_own(const char *key, std::size_t prefix_length) { return std::strchr(key + prefix_length + 1, '.') == nullptr; }

} // namespace

int floor_of_get_x(lua_State *L) { return get(L, x); }
int floor_of_get_position(lua_State *L) { return get(L, x, y); }
int floor_of_get_bounds(lua_State *L) { return get(L, x, y, width, height); }

int floor_of_get_hidden(lua_State *L) {
    lua_pushboolean(L, current(Given(L), hidden) != 0);
    return 1;
}

int floor_of_set_x(lua_State *L) { return set(L, x); }
int floor_of_set_position(lua_State *L) { return set(L, x, y); }
int floor_of_set_bounds(lua_State *L) { return set(L, x, y, width, height); }

int floor_of_hide(lua_State *L) {
    lua_pushboolean(L, 1);
    return set(L, hidden);
}

int floor_of_set_x_center(lua_State *L) {
    const Given given(L);
    const auto wanted = static_cast<int>(lua_tointeger(L, 2));
    lua_pushinteger(L, wanted - current(given, width) / 2);
    lua_replace(L, 2);
    return write(given, 2, x);
}

int floor_of_set_width_center(lua_State *L) {
    const Given given(L);
    const int change = current(given, width) - static_cast<int>(lua_tointeger(L, 2));
    lua_pushinteger(L, current(given, x) + change / 2);
    lua_replace(L, 3);
    return write(given, 2, width, x);
}

int floor_of_key(lua_State *L) {
    lua_pushfstring(L, "%s.%s", handle_given(L, 1).name, lua_tolstring(L, 2, nullptr));
    return 1;
}

int floor_of_cell_key(lua_State *L) {
    lua_pushfstring(L, "%s.%s.%d.%d", handle_given(L, 1).name, lua_tolstring(L, 4, nullptr),
                    static_cast<int>(lua_tointeger(L, 2)), static_cast<int>(lua_tointeger(L, 3)));
    return 1;
}

int floor_of_get_value(lua_State *L) {
    const Given given(L);
    const int count = lua_gettop(L);
    for (int i = 2; i <= count; ++i) {
        push_value(given, lua_tolstring(L, i, nullptr));
        lua_replace(L, i);
    }
    return count - 1;
}

int floor_of_get_data(lua_State *L) {
    const Given given(L);
    const int count = lua_gettop(L);
    lua_createtable(L, 0, count - 1);
    for (int i = 2; i <= count; ++i) {
        lua_pushvalue(L, i);
        push_value(given, lua_tolstring(L, i, nullptr));
        lua_rawset(L, -3);
    }
    return 1;
}

int floor_of_set_value(lua_State *L) { return write(Given(L), 3, lua_tolstring(L, 2, nullptr)); }

int floor_of_set_data(lua_State *L) {
    const Given given(L);
    given.data_mgr->hold_change_listener(given.data_mgr);
    lua_pushnil(L);
    while (lua_next(L, 2) != 0) {
        write_value(given, lua_tolstring(L, -2, nullptr), -2);
        lua_settop(L, -3);
    }
    given.data_mgr->release_change_listener(given.data_mgr);
    return 0;
}

int floor_of_variables(lua_State *L) {
    const Given given(L);
    const std::size_t length = std::strlen(given.name);
    int count = 0;
    char **const keys = given.data_mgr->find_for_prefix(given.data_mgr, given.name, &count);
    lua_createtable(L, 0, 0);
    int listed = 0;
    for (int i = 0; i < count; ++i) {
        if (!is_own(keys[i], length)) continue;
        lua_pushstring(L, keys[i]);
        lua_rawseti(L, -2, ++listed);
    }
    kelal_free(keys);
    return 1;
}

} // namespace bench
