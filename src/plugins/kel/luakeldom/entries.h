// entries.h: every Lua entry, declared once, in the manual's order. Each takes its arguments from the Lua stack and
// returns how many results it pushed.
#pragma once

#include <lua.hpp>

// Module functions: lookup.cpp.
int keldom_get_application_function(lua_State *L);
int keldom_get_object_function(lua_State *L);
int keldom_get_control_function(lua_State *L);
int keldom_get_table_function(lua_State *L);
int keldom_get_group_function(lua_State *L);
int keldom_get_layer_instance_function(lua_State *L);
int keldom_get_layer_function(lua_State *L);
int keldom_get_screen_function(lua_State *L);

// Methods of every handle, and the three metamethods: identity.cpp.
int keldom_get_dom_object_name_function(lua_State *L);
int keldom_get_dom_object_type_function(lua_State *L);
int keldom_dom_object_to_string(lua_State *L); // __tostring
int keldom_dom_object_equals(lua_State *L);    // __eq
int keldom_dom_object_free(lua_State *L);      // __gc
