// registration.cpp: which Lua name calls which entry, in which metatable; and the making of both.
#include "registration.h"

#include <stdint.h>

#include <kel/kel.h>

#include "entries.h"
#include "handle.h"

namespace {

struct metatable_row {
    const char *name;
    int8_t parent_index; // from the top of a stack that holds the rows above
    int8_t method_count; // or all
    const luaL_Reg *methods;
};
constexpr int8_t all = -1;

extern const luaL_Reg keldomlib[];
extern const metatable_row metatables[7];
extern const char *const type_names[KL_OBJECT_TYPE_APP + 1];

// [-0, +0] Sets a field of the table on top. The closure is made anew for each metatable, so that handles of different
// kinds do not share __eq and Lua finds them unequal by itself.
void set_method(lua_State *L, const char *name, lua_CFunction function) {
    lua_pushcclosure(L, function, 0);
    lua_setfield(L, -2, name);
}

} // namespace

void create_metatable(lua_State *L, const char *name, int parent_index, const luaL_Reg *methods, int method_count) {
    luaL_newmetatable(L, name);
    set_method(L, "__tostring", keldom_dom_object_to_string);
    set_method(L, "__gc", keldom_dom_object_free);
    set_method(L, "__eq", keldom_dom_object_equals);
    lua_createtable(L, 0, 0);
    for (; method_count && methods->name; ++methods, --method_count) set_method(L, methods->name, methods->func);
    if (parent_index) {
        lua_pushvalue(L, parent_index - 2); // the metatable and the method table have come on top
        lua_setmetatable(L, -2);
    }
    lua_setfield(L, -2, "__index");
}

void keldom_register(lua_State *L) {
    for (const metatable_row &row : metatables)
        create_metatable(L, row.name, row.parent_index, row.methods, row.method_count);
    lua_settop(L, -8);
    luaL_register(L, "keldom", keldomlib);
    for (int type = KL_OBJECT_TYPE_CONTROL; type <= KL_OBJECT_TYPE_APP; ++type) {
        lua_pushnumber(L, type);
        lua_setfield(L, -2, type_names[type]);
    }
    lua_settop(L, -2);
}

// clang-format off
namespace {

const luaL_Reg keldomlib[] = {
    {"get_application",    keldom_get_application_function},
    {"get_object",         keldom_get_object_function},
    {"get_layers",         keldom_get_layers_function},
    {"get_screens",        keldom_get_screens_function},
    {"get_control",        keldom_get_control_function},
    {"get_table",          keldom_get_table_function},
    {"get_group",          keldom_get_group_function},
    {"get_layer_instance", keldom_get_layer_instance_function},
    {"get_layer",          keldom_get_layer_function},
    {"get_screen",         keldom_get_screen_function},
    {nullptr,              nullptr},
};

const luaL_Reg keldom_obj_methods[] = {
    {"get_name",      keldom_get_dom_object_name_function},
    {"get_type",      keldom_get_dom_object_type_function},
    {"get_parents",   keldom_get_parents_function},
    {"get_children",  keldom_get_children_function},
    {"get_variables", keldom_get_variables_function},
    {"get_value",     keldom_get_value_function},
    {"set_value",     keldom_set_value_function},
    {"get_data",      keldom_get_data_function},
    {"set_data",      keldom_set_data_function},
    {"key",           keldom_get_key_function},
    {nullptr,         nullptr},
};

// What controls, groups and layer instances can do, in an order in which the methods of each kind stand together. Kept: a
// group is a control to the host, but its handle has not all of a control's methods.
const luaL_Reg element_methods[] = {
    {"get_layer",    keldom_get_dom_object_layer_function}, // a layer instance's methods begin here
    {"get_alpha",    keldom_get_alpha_function},
    {"set_alpha",    keldom_set_alpha_function},
    {"get_width",    keldom_get_width_function}, // a control's
    {"get_height",   keldom_get_height_function},
    {"get_position", keldom_get_position_function},
    {"get_size",     keldom_get_size_function},
    {"get_bounds",   keldom_get_bounds_function},
    {"set_width",    keldom_set_width_function},
    {"set_height",   keldom_set_height_function},
    {"set_position", keldom_set_position_function},
    {"set_size",     keldom_set_size_function},
    {"set_bounds",   keldom_set_bounds_function},
    {"get_hidden",   keldom_get_hidden_function}, // a group's
    {"get_x",        keldom_get_x_function},
    {"get_y",        keldom_get_y_function},
    {"set_hidden",   keldom_set_hidden_function},
    {"set_x",        keldom_set_x_function},
    {"set_y",        keldom_set_y_function},
    {"hide",         keldom_hide_function},
    {"show",         keldom_show_function}, // a layer instance's end here
    {"clone",        keldom_clone_function},
    {"delete",       keldom_delete_function},
    {nullptr,        nullptr},
};
constexpr const luaL_Reg *layer_instance_obj_methods = &element_methods[0];
constexpr const luaL_Reg *control_obj_methods = &element_methods[3];
constexpr const luaL_Reg *group_obj_methods = &element_methods[13];
constexpr int layer_instance_obj_method_count = 21;

const luaL_Reg table_obj_methods[] = {
    {"get_rows", keldom_get_rows_function},
    {"get_cols", keldom_get_cols_function},
    {"set_rows", keldom_set_rows_function},
    {"set_cols", keldom_set_cols_function},
    {"cell_key", keldom_get_cell_key_function},
    {nullptr,    nullptr},
};

// Parents: none, keldom_object, control_object, then keldom_object each time, one deeper a row. Layers and screens have the
// common methods alone.
const metatable_row metatables[7] = {
    {keldom_object_metatable,          0, all, keldom_obj_methods},
    {control_object_metatable,        -1, all, control_obj_methods},
    {table_object_metatable,          -1, all, table_obj_methods},
    {group_object_metatable,          -3, all, group_obj_methods},
    {layer_instance_object_metatable, -4, layer_instance_obj_method_count, layer_instance_obj_methods},
    {layer_object_metatable,          -5, 0,   nullptr},
    {screen_object_metatable,         -6, 0,   nullptr},
};

const char *const type_names[KL_OBJECT_TYPE_APP + 1] = {
    "CONTROL", "TABLE", "TEMPLATE", "GROUP", "LAYER", "LAYER_INSTANCE", "SCREEN", "APP",
};

} // namespace
// clang-format on
