// floors.h: for each operation a C function with its result, made of the calls to the host and to Lua alone that nobody
// can do without. They check nothing, look nothing up that a handle knows, and know what kind of object they are given.
#pragma once

#include <lua.hpp>

namespace bench {

void register_floors(lua_State *L); // [-0, +0] what they need in the Lua state

// Names of objects are copied or joined from what is known: none is searched for.
int floor_of_lookup(lua_State *L);
int floor_of_same_handle(lua_State *L);
int floor_of_application(lua_State *L);
int floor_of_children(lua_State *L);
int floor_of_parents(lua_State *L);
int floor_of_layers(lua_State *L);
int floor_of_screens(lua_State *L);
int floor_of_clone(lua_State *L);
int floor_of_delete(lua_State *L);
int floor_of_name(lua_State *L);
int floor_of_type(lua_State *L);
int floor_of_equality(lua_State *L);
int floor_of_collected(lua_State *L); // makes what frees a name when it is collected

int floor_of_variables(lua_State *L);
int floor_of_get_x(lua_State *L);
int floor_of_get_hidden(lua_State *L);
int floor_of_get_position(lua_State *L);
int floor_of_get_bounds(lua_State *L);
int floor_of_set_x(lua_State *L);
int floor_of_set_x_center(lua_State *L);
int floor_of_set_width_center(lua_State *L);
int floor_of_set_position(lua_State *L);
int floor_of_set_bounds(lua_State *L);
int floor_of_hide(lua_State *L);
int floor_of_key(lua_State *L);
int floor_of_cell_key(lua_State *L);
int floor_of_get_value(lua_State *L);
int floor_of_get_data(lua_State *L);
int floor_of_set_value(lua_State *L);
int floor_of_set_data(lua_State *L);

} // namespace bench
