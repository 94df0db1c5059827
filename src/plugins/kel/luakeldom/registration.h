// registration.h: makes the module and the metatables known to a Lua state.
#pragma once

#include <lua.hpp>

// [-0, +0] Creates the seven metatables, the global module `keldom` and its constants. Raises when memory is out.
void keldom_register(lua_State *L);

// [-0, +1] Creates a metatable in the registry, or fills the one that is there, with the three metamethods and a method
// table as __index. parent_index: stack index, as before the call, of the metatable to inherit from; 0 for none.
// method_count: how many of the methods; -1 for all.
void create_metatable(lua_State *L, const char *name, int parent_index, const luaL_Reg *methods, int method_count = -1);
