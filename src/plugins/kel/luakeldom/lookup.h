// lookup.h: from a name or a handle to the host's object.
#pragma once

#include "handle.h"

// [-0, +0] Argument 1 as a string of the characters that names are made of (letters, digits, "." and "_"), else null.
// The string is the Lua value's.
const char *keldom_sanitary_lua_string(lua_State *L);

// Resolves a qualified name; null for a null name.
kl_object_t *keldom_get_object(kl_application_t *app, const char *name);

// [-0, +0] The object that argument 1 names or holds, or null: after a warning when it is neither a name nor a handle,
// silently when there is no such object.
kl_object_t *keldom_get_object_from_stack(lua_State *L, kl_application_t *app);
