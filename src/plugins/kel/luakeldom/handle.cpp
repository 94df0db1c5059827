// handle.cpp: the userdata that stands for one object in a script: recognising it, and making it.
#include "handle.h"

#include <iterator>
#include <string.h>

#include "qualified_name.h"

inline namespace luakeldom {
const char keldom_object_metatable[] = "keldom_object";
const char control_object_metatable[] = "control_object";
const char table_object_metatable[] = "table_object";
const char group_object_metatable[] = "group_object";
const char layer_instance_object_metatable[] = "layer_instance_object";
const char layer_object_metatable[] = "layer_object";
const char screen_object_metatable[] = "screen_object";
} // namespace luakeldom

namespace {

// By type code. Templates and the application have the common methods alone, as has everything unknown.
constexpr const char *metatable_of_type[] = {
    control_object_metatable, table_object_metatable,          keldom_object_metatable, group_object_metatable,
    layer_object_metatable,   layer_instance_object_metatable, screen_object_metatable, keldom_object_metatable,
};
static_assert(std::size(metatable_of_type) == KL_OBJECT_TYPE_APP + 1, "one metatable a type code");

const char *metatable_for(kl_object_type_t type) {
    return type < std::size(metatable_of_type) ? metatable_of_type[type] : keldom_object_metatable;
}

// [-0, +some, restored by the caller] Whether the metatable on top is the base below it, or climbs to it: to the
// metatable of its __index table, and so on. A script can bend the chain into a circle; no chain that is meant is
// nearly as long as the steps allowed.
bool reaches_base(lua_State *L) {
    for (int steps = 1 << 16; !lua_rawequal(L, -1, -2); --steps) {
        lua_getfield(L, -1, "__index");
        if (!steps || lua_type(L, -1) != LUA_TTABLE || !lua_getmetatable(L, -1)) return false;
        lua_replace(L, -3);
        lua_settop(L, -2);
    }
    return true;
}

// Objects that all stand in one container. Their names are copied from the first one's, whose handle lives as long as
// the array does: nothing is held that an error in Lua would leave behind.
struct siblings_t {
    container_path_t path;
    const char *name; // the first one's; null: none has a name yet
    size_t prefix;    // the length of the container's part of it
};

char *name_of(kl_application_t *app, kl_object_t *object, siblings_t *siblings) {
    if (!siblings || !keldom_is_named_after_container(object)) return keldom_get_qualified_name(app, object);
    const char *own = reinterpret_cast<kl_control_t *>(object)->name;
    if (siblings->name) {
        char *name = kelal_strdup(siblings->name);
        if (name) name[siblings->prefix] = '\0';
        return str_join_ip(name, delimiter, own);
    }
    char *name = keldom_get_name_by_path(app, siblings->path, object);
    siblings->name = name;
    if (name) siblings->prefix = strlen(name) - strlen(own) - 1;
    return name;
}

// [-0, +1] Pushes a new handle and returns 1; or pushes nothing and returns 0 after a warning.
int push_named(lua_State *L, kl_application_t *app, kl_object_t *object, siblings_t *siblings) {
    if (object) {
        dom_object_t *handle = keldom_push_blank(L, object->type);
        handle->name = name_of(app, object, siblings);
        if (handle->name) return 1;
        lua_settop(L, -2);
    }
    kel_app_log(app, KL_LOG_WARNING, "Object has no qualified name");
    return 0;
}

int push_all_named(lua_State *L, kl_application_t *app, kl_darray_t *darray, siblings_t *siblings) {
    int pushed = 1;
    lua_createtable(L, 0, 0);
    for (int i = 0; pushed && i < kl_darray_size(darray); ++i) {
        pushed = push_named(L, app, *static_cast<kl_object_t **>(kl_darray_item(darray, i)), siblings);
        if (pushed) lua_rawseti(L, -2, i + 1);
    }
    kl_darray_free(darray);
    if (!pushed) lua_settop(L, -2);
    return pushed;
}

} // namespace

dom_object_t *keldom_push_blank(lua_State *L, kl_object_type_t type) {
    auto *handle = static_cast<dom_object_t *>(lua_newuserdata(L, sizeof(dom_object_t)));
    handle->name = nullptr; // collection is harmless from here on
    handle->type = type;
    lua_getfield(L, LUA_REGISTRYINDEX, metatable_for(type));
    lua_setmetatable(L, -2);
    return handle;
}

void keldom_disown(lua_State *L, dom_object_t *holder, int index) {
    holder->name = nullptr;
    lua_pushnil(L);
    lua_setmetatable(L, index - 1);
}

// The climb keeps two metatables on the stack, and leaves what it stopped at.
dom_object_t *keldom_check_udata_base(lua_State *L, int index, const char *name) {
    auto *object = static_cast<dom_object_t *>(lua_touserdata(L, index));
    if (!object) return nullptr;
    lua_getfield(L, LUA_REGISTRYINDEX, name);
    int pushed = 1;
    if (lua_getmetatable(L, index)) {
        pushed = 2;
        if (!reaches_base(L)) {
            pushed = 3;
            object = nullptr;
        }
    }
    lua_settop(L, -1 - pushed);
    return object;
}

dom_object_t *handle_at(lua_State *L, int index) { return keldom_check_udata_base(L, index, keldom_object_metatable); }

int keldom_push_as_dom_object(lua_State *L, kl_application_t *app, kl_object_t *object) {
    return push_named(L, app, object, nullptr);
}

int keldom_push_as_dom_objects(lua_State *L, kl_application_t *app, kl_darray_t *darray) {
    return push_all_named(L, app, darray, nullptr);
}

int keldom_push_children(lua_State *L, kl_application_t *app, kl_darray_t *darray, kl_object_t *container) {
    siblings_t siblings;
    siblings.name = nullptr;
    bool known = keldom_find_common_path(app, container, darray, siblings.path);
    return push_all_named(L, app, darray, known ? &siblings : nullptr);
}
