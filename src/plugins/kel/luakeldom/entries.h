// entries.h: every Lua entry, declared once, in the manual's order. Each takes its arguments from the Lua stack and
// returns how many results it pushed.
#pragma once

#include <lua.hpp>

// Module functions: lookup.cpp, relatives.cpp.
int keldom_get_application_function(lua_State *L);
int keldom_get_object_function(lua_State *L);
int keldom_get_layers_function(lua_State *L);
int keldom_get_screens_function(lua_State *L);
int keldom_get_control_function(lua_State *L);
int keldom_get_table_function(lua_State *L);
int keldom_get_group_function(lua_State *L);
int keldom_get_layer_instance_function(lua_State *L);
int keldom_get_layer_function(lua_State *L);
int keldom_get_screen_function(lua_State *L);

// Every handle: identity.cpp, relatives.cpp, values.cpp.
int keldom_get_dom_object_name_function(lua_State *L);
int keldom_get_dom_object_type_function(lua_State *L);
int keldom_get_parents_function(lua_State *L);
int keldom_get_children_function(lua_State *L);
int keldom_get_variables_function(lua_State *L);
int keldom_get_value_function(lua_State *L);
int keldom_set_value_function(lua_State *L);
int keldom_get_data_function(lua_State *L);
int keldom_set_data_function(lua_State *L);
int keldom_get_key_function(lua_State *L);

// Properties: getters.cpp.
int keldom_get_hidden_function(lua_State *L);
int keldom_get_x_function(lua_State *L);
int keldom_get_y_function(lua_State *L);
int keldom_get_width_function(lua_State *L);
int keldom_get_height_function(lua_State *L);
int keldom_get_alpha_function(lua_State *L);
int keldom_get_position_function(lua_State *L);
int keldom_get_size_function(lua_State *L);
int keldom_get_bounds_function(lua_State *L);
int keldom_get_rows_function(lua_State *L);
int keldom_get_cols_function(lua_State *L);

// Properties: setters.cpp.
int keldom_set_hidden_function(lua_State *L);
int keldom_set_alpha_function(lua_State *L);
int keldom_set_position_function(lua_State *L);
int keldom_set_bounds_function(lua_State *L);
int keldom_set_rows_function(lua_State *L);
int keldom_set_cols_function(lua_State *L);
int keldom_hide_function(lua_State *L);
int keldom_show_function(lua_State *L);

// Properties with anchors: anchors.cpp.
int keldom_set_x_function(lua_State *L);
int keldom_set_y_function(lua_State *L);
int keldom_set_width_function(lua_State *L);
int keldom_set_height_function(lua_State *L);
int keldom_set_size_function(lua_State *L);

// Controls and groups: lifecycle.cpp.
int keldom_clone_function(lua_State *L);
int keldom_delete_function(lua_State *L);

// Tables: values.cpp.
int keldom_get_cell_key_function(lua_State *L);

// Layer instances: relatives.cpp.
int keldom_get_dom_object_layer_function(lua_State *L);

// Metamethods: identity.cpp.
int keldom_dom_object_to_string(lua_State *L); // __tostring
int keldom_dom_object_equals(lua_State *L);    // __eq
int keldom_dom_object_free(lua_State *L);      // __gc
