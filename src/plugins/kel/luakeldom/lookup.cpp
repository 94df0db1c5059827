// lookup.cpp: from a name or a handle to the host's object, and the module's functions that give handles for names.
#include "lookup.h"

#include "checks.h"
#include "entries.h"

namespace {

constexpr char not_a_string[] = "Argument must be a string";

bool may_stand_in_name(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '_';
}

bool keldom_is_sanitary(const char *name, size_t length) {
    for (size_t i = 0; i < length; ++i)
        if (!may_stand_in_name(name[i])) return false;
    return true;
}

// Kept: the six typed getters are one, and none looks at the type of what it found. `type` is for readers.
int keldom_get_type(lua_State *L, [[maybe_unused]] kl_object_type_t type) {
    if (lua_isstring(L, 1)) return keldom_get_object_function(L);
    if (!handle_at(L, 1)) return warn(kl_lua_get_app(L), not_a_handle);
    lua_pushvalue(L, 1);
    return 1;
}

} // namespace

const char *keldom_sanitary_lua_string(lua_State *L) {
    if (!lua_isstring(L, 1)) return nullptr;
    size_t length = 0;
    const char *name = lua_tolstring(L, 1, &length);
    return keldom_is_sanitary(name, length) ? name : nullptr;
}

kl_object_t *keldom_get_object(kl_application_t *app, const char *name) {
    return name ? kl_application_find_object(app, name, 0) : nullptr;
}

kl_object_t *keldom_get_object_from_stack(lua_State *L, kl_application_t *app) {
    if (lua_isstring(L, 1)) {
        const char *name = keldom_sanitary_lua_string(L);
        if (!name) warn(app, "Argument must be a valid fully qualified name");
        return keldom_get_object(app, name);
    }
    dom_object_t *handle = handle_at(L, 1);
    if (!handle) {
        kel_app_log(app, KL_LOG_WARNING, "Argument must be a string or %s", keldom_object_metatable);
        return nullptr;
    }
    // The application's name is empty, which no host resolves.
    return handle->type == KL_OBJECT_TYPE_APP ? &app->object : keldom_get_object(app, handle->name);
}

int keldom_get_object_function(lua_State *L) {
    kl_application_t *app = lua_one_arg_app(L);
    if (!app) return 0;
    const char *name = keldom_sanitary_lua_string(L);
    if (!name) return warn(app, not_a_string);
    kl_object_t *object = keldom_get_object(app, name);
    if (!object) return warn(app, no_such_object);
    return keldom_push_as_dom_object(L, app, object);
}

int keldom_get_control_function(lua_State *L) { return keldom_get_type(L, KL_OBJECT_TYPE_CONTROL); }
int keldom_get_table_function(lua_State *L) { return keldom_get_type(L, KL_OBJECT_TYPE_TABLE); }
int keldom_get_group_function(lua_State *L) { return keldom_get_type(L, KL_OBJECT_TYPE_GROUP); }
int keldom_get_layer_instance_function(lua_State *L) { return keldom_get_type(L, KL_OBJECT_TYPE_LAYER_INSTANCE); }
int keldom_get_layer_function(lua_State *L) { return keldom_get_type(L, KL_OBJECT_TYPE_LAYER); }
int keldom_get_screen_function(lua_State *L) { return keldom_get_type(L, KL_OBJECT_TYPE_SCREEN); }

// Kept: without an application this one logs, where the others raise.
int keldom_get_application_function(lua_State *L) {
    kl_application_t *app = kl_lua_get_app(L);
    if (!app) return warn(app, no_application_for_call);
    return keldom_push_as_dom_object(L, app, &app->object);
}
