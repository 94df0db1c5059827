// getters.cpp: the property getters: one body, one line a property, in the manual's order.
#include "checks.h"
#include "entries.h"
#include "values.h"

namespace {

// [-0, +n] Pushes the value of each listed variable, nil for a missing one. Returns how many.
int read(lua_State *L, variable_list_t list) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    int count = 0;
    for (; list; list = rest_of(list)) count += keldom_get_value(L, app, object, variable_name(first_of(list)));
    return count;
}

// [-1, +1] for a count of 1: turns the value on top into whether it is a number other than 0.
int as_boolean(lua_State *L, int count) {
    if (!count) return 0;
    bool value = lua_tointeger(L, -1) != 0;
    lua_settop(L, -2);
    lua_pushboolean(L, value);
    return 1;
}

} // namespace

int keldom_get_hidden_function(lua_State *L) { return as_boolean(L, read(L, variables(kld_hidden))); }
int keldom_get_x_function(lua_State *L) { return read(L, variables(kld_x)); }
int keldom_get_y_function(lua_State *L) { return read(L, variables(kld_y)); }
int keldom_get_width_function(lua_State *L) { return read(L, variables(kld_width)); }
int keldom_get_height_function(lua_State *L) { return read(L, variables(kld_height)); }
int keldom_get_alpha_function(lua_State *L) { return read(L, variables(kld_alpha)); }
int keldom_get_position_function(lua_State *L) { return read(L, variables(kld_x, kld_y)); }
int keldom_get_size_function(lua_State *L) { return read(L, variables(kld_width, kld_height)); }
int keldom_get_bounds_function(lua_State *L) { return read(L, variables(kld_x, kld_y, kld_width, kld_height)); }
int keldom_get_rows_function(lua_State *L) { return read(L, variables(kld_rows)); }
int keldom_get_cols_function(lua_State *L) { return read(L, variables(kld_cols)); }
