// handle.cpp: the userdata that stands for one object in a script: recognising it, and making it.
#include "handle.h"

#include <iterator>

#include "qualified_name.h"

const char keldom_object_metatable[] = "keldom_object";
const char control_object_metatable[] = "control_object";
const char table_object_metatable[] = "table_object";
const char group_object_metatable[] = "group_object";
const char layer_instance_object_metatable[] = "layer_instance_object";
const char layer_object_metatable[] = "layer_object";
const char screen_object_metatable[] = "screen_object";

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

// [-0, +0] Replaces the metatable on top by the metatable of its __index table; false, and nothing replaced, where the
// chain ends.
bool climb(lua_State *L) {
    lua_getfield(L, -1, "__index");
    bool climbed = lua_type(L, -1) == LUA_TTABLE && lua_getmetatable(L, -1);
    if (climbed) lua_replace(L, -3);
    lua_settop(L, -2);
    return climbed;
}

// [-0, +some, restored by the caller] Whether the metatable on top is the base below it, or climbs to it. A script can
// bend the chain into a circle: a metatable seen before is kept below the current one and moved up in growing strides,
// so a circle meets it (Brent's way), in constant space.
bool reaches_base(lua_State *L) {
    lua_pushvalue(L, -1);
    unsigned steps = 0;
    for (unsigned stride = 1; !lua_rawequal(L, -1, -3);) {
        if (!climb(L) || lua_rawequal(L, -1, -2)) return false;
        if (++steps != stride) continue;
        lua_pushvalue(L, -1);
        lua_replace(L, -3);
        stride *= 2;
        steps = 0;
    }
    return true;
}

} // namespace

dom_object_t *keldom_check_udata_base(lua_State *L, int index, const char *name) {
    auto *object = static_cast<dom_object_t *>(lua_touserdata(L, index));
    if (!object) return nullptr;
    int top = lua_gettop(L);
    lua_getfield(L, LUA_REGISTRYINDEX, name);
    if (lua_getmetatable(L, index) && !reaches_base(L)) object = nullptr;
    lua_settop(L, top);
    return object;
}

dom_object_t *handle_at(lua_State *L, int index) { return keldom_check_udata_base(L, index, keldom_object_metatable); }

int keldom_push_as_dom_object(lua_State *L, kl_application_t *app, kl_object_t *object) {
    if (object) {
        auto *handle = static_cast<dom_object_t *>(lua_newuserdata(L, sizeof(dom_object_t)));
        handle->name = nullptr; // collection is harmless from here on
        handle->type = object->type;
        lua_getfield(L, LUA_REGISTRYINDEX, metatable_for(object->type));
        lua_setmetatable(L, -2);
        handle->name = keldom_get_qualified_name(app, object);
        if (handle->name) return 1;
        lua_settop(L, -2);
    }
    kel_app_log(app, KL_LOG_WARNING, "Object has no qualified name");
    return 0;
}

int keldom_push_as_dom_objects(lua_State *L, kl_application_t *app, kl_darray_t *darray) {
    int pushed = 1;
    lua_createtable(L, 0, 0);
    for (int i = 0; pushed && i < kl_darray_size(darray); ++i) {
        pushed = keldom_push_as_dom_object(L, app, *static_cast<kl_object_t **>(kl_darray_item(darray, i)));
        if (pushed) lua_rawseti(L, -2, i + 1);
    }
    kl_darray_free(darray);
    if (!pushed) lua_settop(L, -2);
    return pushed;
}
