// floor_handle.h: what floors share: the handle that they are given, and the making of one.
#pragma once

#include <cstring>

#include <luakeldom/handle.h>

namespace bench {

inline const dom_object_t &handle_given(lua_State *L, int index) {
    return *static_cast<const dom_object_t *>(lua_touserdata(L, index));
}

// [-0, +1] A handle that has no metatable yet. name: owned by the handle from then on; never null.
inline void push_handle(lua_State *L, kl_object_type_t type, char *name) {
    auto *handle = static_cast<dom_object_t *>(lua_newuserdata(L, sizeof(dom_object_t)));
    handle->type = type;
    handle->name = name;
}

} // namespace bench
