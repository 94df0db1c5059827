// handle.h: the userdata that stands for one object in a script: recognising it, and making it.
#pragma once

#include <kel/kel.h>

#include <lua.hpp>

// What the userdata holds. The name is fixed when the handle is made; every use resolves it anew. It is null before the
// handle is complete and after its collection, and every use bears that.
struct dom_object_t {
    char *name; // qualified name, owned
    kl_object_type_t type;
};

// The metatables' names in the Lua registry. Declared only: of an inline constant each object file has a copy. In a
// namespace, as a firmware links the plug-in with the code of others.
inline namespace luakeldom {
extern const char keldom_object_metatable[];
extern const char control_object_metatable[];
extern const char table_object_metatable[];
extern const char group_object_metatable[];
extern const char layer_instance_object_metatable[];
extern const char layer_object_metatable[];
extern const char screen_object_metatable[];
} // namespace luakeldom

// [-0, +1] Pushes a handle without a name.
dom_object_t *keldom_push_blank(lua_State *L, kl_object_type_t type);

// The type code of a handle whose `name` is a list of objects. Handles of it and of other blocks are never a script's:
// they free what an entry holds should Lua raise an error in the midst, and are disowned when the entry is done.
constexpr kl_object_type_t list_holder = 0xFF;
void keldom_disown(lua_State *L, dom_object_t *holder, int index); // [-0, +0] index: the holder's, from the top

// [-0, +0] The handle at an absolute stack position, or null when the value is none: a userdata is a handle when its
// metatable is `name`'s, or reaches it along the metatables' __index tables. Kept: so is a userdata without a
// metatable.
dom_object_t *keldom_check_udata_base(lua_State *L, int index, const char *name);

// [-0, +0] The handle of any kind at an absolute stack position, or null.
dom_object_t *handle_at(lua_State *L, int index);

// [-0, +1] Pushes a new handle and returns 1; or pushes nothing and returns 0 after a warning when the object has no
// name.
int keldom_push_as_dom_object(lua_State *L, kl_application_t *app, kl_object_t *object);

// [-0, +1] Pushes an array of handles for the objects of a list and returns 1; or pushes nothing and returns 0 when one
// of them has no name. Frees the list in both cases.
int keldom_push_as_dom_objects(lua_State *L, kl_application_t *app, kl_darray_t *darray);

// [-0, +1] The same for the children of a container, whose names are found together where they can be.
int keldom_push_children(lua_State *L, kl_application_t *app, kl_darray_t *darray, kl_object_t *container);
