// functions.cpp: every function that the plug-in gives to Lua.
#include "functions.h"

static const std::vector<const char *> module{"keldom"};
static const std::vector<const char *> metamethod{""};
static const std::vector<const char *> every_handle{"keldom_object"};
static const std::vector<const char *> tables{"table_object"};
static const std::vector<const char *> instances{"layer_instance_object"};
static const std::vector<const char *> sized{"control_object", "layer_instance_object"};
static const std::vector<const char *> placed{"control_object", "group_object", "layer_instance_object"};
static const std::vector<const char *> clonable{"control_object", "group_object"};

// clang-format off
static const std::vector<Function> functions{
    {"get_object",         module,       navigation | lifecycle,          "n",     0},
    {"get_control",        module,       navigation,                      "e",     0},
    {"get_table",          module,       navigation,                      "e",     0},
    {"get_group",          module,       navigation,                      "e",     0},
    {"get_layer_instance", module,       navigation,                      "e",     0},
    {"get_layer",          module,       navigation,                      "e",     0},
    {"get_screen",         module,       navigation,                      "e",     0},
    {"get_application",    module,       navigation,                      "",      0},
    {"get_screens",        module,       navigation,                      "",      0},
    {"get_layers",         module,       navigation,                      "",      0},
    {"get_children",       every_handle, navigation | lifecycle,          "e",     0},
    {"get_parents",        every_handle, navigation | lifecycle,          "e",     0},
    {"get_layer",          instances,    navigation,                      "h",     0},
    {"get_name",           every_handle, navigation | lifecycle,          "h",     0},
    {"get_type",           every_handle, navigation | lifecycle,          "h",     0},
    {"__tostring",         metamethod,   navigation | lifecycle,          "h",     0},
    {"__eq",               metamethod,   navigation | lifecycle,          "hh",    0},
    {"__gc",               metamethod,   navigation,                      "v",     0},
    {"key",                every_handle, values,                          "hk",    0},
    {"cell_key",           tables,       values,                          "hiik",  0},
    {"get_value",          every_handle, values,                          "hkkk",  2},
    {"get_data",           every_handle, values,                          "hkkk",  2},
    {"set_value",          every_handle, values,                          "hkvkv", 2},
    {"set_data",           every_handle, values,                          "ht",    0},
    {"get_variables",      every_handle, values | lifecycle,              "e",     0},
    {"get_x",              placed,       geometry,                        "h",     0},
    {"get_y",              placed,       geometry,                        "h",     0},
    {"get_width",          sized,        geometry,                        "h",     0},
    {"get_height",         sized,        geometry,                        "h",     0},
    {"get_alpha",          instances,    geometry,                        "h",     0},
    {"get_rows",           tables,       geometry,                        "h",     0},
    {"get_cols",           tables,       geometry,                        "h",     0},
    {"get_hidden",         placed,       geometry,                        "h",     0},
    {"get_position",       sized,        geometry,                        "h",     0},
    {"get_size",           sized,        geometry,                        "h",     0},
    {"get_bounds",         sized,        geometry,                        "h",     0},
    {"set_hidden",         placed,       geometry,                        "hv",    0},
    {"show",               placed,       geometry,                        "hv",    1},
    {"hide",               placed,       geometry,                        "hv",    1},
    {"set_alpha",          instances,    geometry,                        "hi",    0},
    {"set_rows",           tables,       geometry,                        "hi",    0},
    {"set_cols",           tables,       geometry,                        "hi",    0},
    {"set_position",       sized,        geometry,                        "hiiaa", 2},
    {"set_bounds",         sized,        geometry,                        "hiiii", 0},
    {"set_x",              placed,       geometry,                        "hia",   1},
    {"set_y",              placed,       geometry,                        "hia",   1},
    {"set_width",          sized,        geometry,                        "hia",   1},
    {"set_height",         sized,        geometry,                        "hia",   1},
    {"set_size",           sized,        geometry,                        "hiiaa", 2},
    {"clone",              clonable,     lifecycle,                       "hnnt",  1},
    {"delete",             clonable,     lifecycle,                       "hn",    1},
};
// clang-format on

std::span<const Function> all_functions() { return functions; }
