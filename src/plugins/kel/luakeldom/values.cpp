// values.cpp: data variables of an object: keys, reads and writes, and the value methods.
// No value is kept and no key is cached: the host's data manager holds them all.
#include "values.h"

#include <string.h>

#include "checks.h"
#include "entries.h"
#include "lookup.h"
#include "qualified_name.h"

namespace {

// The data manager, or null after raising that there is none.
kl_data_mgr_t *require_data_manager(lua_State *L, kl_application_t *app) {
    kl_data_mgr_t *data_mgr = app->linfo->data_mgr;
    if (!data_mgr) raise_error(L, "Invalid argument, cannot access data manager");
    return data_mgr;
}

// [-1, +0] Writes the value at value_index into the variable whose key is on top. There is a data manager.
void write_value(lua_State *L, kl_application_t *app, int value_index) {
    kl_lua_set_data_value(L, app, app->linfo->data_mgr, -1, value_index);
    lua_settop(L, -2);
}

// What stands behind the prefix and its dot has no dot of its own. A key may be shorter than that.
bool is_own_variable(const char *key, size_t prefix_length) {
    return strlen(key) <= prefix_length || !strchr(key + prefix_length + 1, '.');
}

// Keeps the object's own keys, in place and in no particular order. Returns how many are left.
int keep_own_variables(char **keys, int count, size_t prefix_length) {
    for (int i = 0; i < count;) {
        if (is_own_variable(keys[i], prefix_length))
            ++i;
        else
            keys[i] = keys[--count];
    }
    return count;
}

// Kept: a key that begins with the name and goes on without a dot, such as "mainx" for main, is listed too.
// [-0, +0..1] Pushes an array of the keys of the object that argument 1 stands for. The holder on top keeps them from
// being lost when Lua raises.
int push_variables(lua_State *L, kl_application_t *app, dom_object_t *holder) {
    kl_object_t *object = keldom_get_object_from_stack(L, app);
    if (!object) return warn(app, no_such_object);
    char *name = keldom_get_qualified_name(app, object);
    if (!name) return warn(app, "DOM Object has no qualified name");
    int count = 0;
    char **keys = nullptr;
    if (kl_data_mgr_t *data_mgr = app->linfo->data_mgr) keys = data_mgr->find_for_prefix(data_mgr, name, &count);
    count = keys ? keep_own_variables(keys, count, strlen(name)) : 0;
    kelal_free(name);
    if (!require_data_manager(L, app)) return 0;
    holder->name = reinterpret_cast<char *>(keys);
    lua_createtable(L, 0, 0);
    for (int i = 0; i < count; ++i) {
        lua_pushstring(L, keys[i]);
        lua_rawseti(L, -2, i + 1);
    }
    kelal_free(keys);
    return 1;
}

} // namespace

void keldom_push_key(lua_State *L, const dom_object_t *object, const char *variable) {
    if (object->type == KL_OBJECT_TYPE_APP)
        lua_pushstring(L, variable);
    else
        lua_pushfstring(L, "%s.%s", object->name, variable);
}

int keldom_get_value(lua_State *L, kl_application_t *app, const dom_object_t *object, const char *variable) {
    kl_data_mgr_t *data_mgr = require_data_manager(L, app);
    bool readable = data_mgr && variable;
    if (readable) keldom_push_key(L, object, variable);
    if (!readable || !kl_lua_get_data_value(L, app, data_mgr, -1, -1)) lua_pushnil(L);
    return 1;
}

int keldom_set_values_from_list(lua_State *L, kl_application_t *app, const dom_object_t *object, int start,
                                variable_list_t list) {
    kl_data_mgr_t *data_mgr = require_data_manager(L, app);
    if (!data_mgr) return 0;
    data_mgr->hold_change_listener(data_mgr);
    for (int index = start; list; list = rest_of(list), ++index) {
        variable_t variable = first_of(list);
        if (variable == placeholder) continue;
        keldom_push_key(L, object, variable_name(variable));
        kl_lua_set_data_value(L, app, data_mgr, -1, index);
    }
    data_mgr->release_change_listener(data_mgr);
    return 0;
}

// Kept: lighter than its siblings. What is no handle is silently nothing, and the application is needed for the log
// alone.
int keldom_get_key_function(lua_State *L) {
    dom_object_t *object = handle_at(L, 1);
    if (!object) return 0;
    if (!lua_isstring(L, 2)) return warn_argument(kl_lua_get_app(L), 2, "a string");
    keldom_push_key(L, object, lua_tolstring(L, 2, nullptr));
    return 1;
}

int keldom_get_cell_key_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    if (!lua_isnumber(L, 2)) return warn_argument(app, 2, "a number");
    if (!lua_isnumber(L, 3)) return warn_argument(app, 3, "a number");
    if (!lua_isstring(L, 4)) return warn_argument(app, 3, "a string"); // kept: names 3, checks 4
    lua_pushfstring(L, "%s.%s.%d.%d", object->name, lua_tolstring(L, 4, nullptr), static_cast<int>(lua_tointeger(L, 2)),
                    static_cast<int>(lua_tointeger(L, 3)));
    return 1;
}

// Each value takes its key's place: there may be more keys than Lua has free stack slots.
int keldom_get_value_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    int count = lua_gettop(L);
    if (!has_arguments(L, app, at_least(2), "key, ...")) return 0;
    for (int i = 2; i <= count; ++i) {
        keldom_get_value(L, app, object, lua_tolstring(L, i, nullptr));
        lua_replace(L, i);
    }
    return count - 1;
}

int keldom_set_value_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    int count = lua_gettop(L);
    if (!has_arguments(L, app, at_least(3), "k, v, ...")) return 0;
    kl_data_mgr_t *data_mgr = require_data_manager(L, app);
    if (!data_mgr) return 0;
    data_mgr->hold_change_listener(data_mgr);
    for (int i = 2; i < count; i += 2)
        if (lua_isstring(L, i)) {
            keldom_push_key(L, object, lua_tolstring(L, i, nullptr));
            write_value(L, app, i + 1);
        }
    data_mgr->release_change_listener(data_mgr);
    return 0;
}

// The table's key is a copy taken before the argument turns into a string: a number stays a number.
// Kept: the last pass visits the table itself, which stores nothing but asks for the data manager once more.
int keldom_get_data_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    int count = lua_gettop(L);
    if (!has_arguments(L, app, at_least(2), "key, ...")) return 0;
    lua_createtable(L, 0, count - 1);
    int table = count + 1;
    for (int i = 2; i <= table; ++i) {
        lua_pushvalue(L, i);
        keldom_get_value(L, app, object, lua_tolstring(L, i, nullptr));
        lua_settable(L, table);
    }
    lua_settop(L, table);
    return 1;
}

// Kept: the table is the last argument, whichever that is; and without a data manager one nil is returned.
int keldom_set_data_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    kl_data_mgr_t *data_mgr = require_data_manager(L, app);
    if (!data_mgr) {
        lua_pushnil(L);
        return 1;
    }
    int table = lua_gettop(L);
    if (lua_type(L, table) != LUA_TTABLE) return raise_error(L, "Argument must be a table");
    data_mgr->hold_change_listener(data_mgr);
    lua_pushnil(L);
    while (lua_next(L, table)) {
        if (lua_isstring(L, -2)) {
            keldom_push_key(L, object, lua_tolstring(L, -2, nullptr));
            write_value(L, app, -2);
        }
        lua_settop(L, -2);
    }
    data_mgr->release_change_listener(data_mgr);
    return 0;
}

// The holder comes first: a collection that making it starts could take the object away.
int keldom_get_variables_function(lua_State *L) {
    kl_application_t *app = lua_one_arg_app(L);
    if (!app) return 0;
    dom_object_t *holder = keldom_push_blank(L, KL_OBJECT_TYPE_APP);
    int listed = push_variables(L, app, holder);
    keldom_disown(L, holder, -1 - listed);
    return listed;
}
