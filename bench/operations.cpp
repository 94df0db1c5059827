// operations.cpp: the table of operations, each with its floor.
#include "operations.h"

#include "floors.h"

namespace bench {

namespace {

constexpr bool grows = true;
constexpr bool fixed = false;

constexpr char clone_some[] = "for i = 1, calls do clones[i] = handle:clone(names[i], 'side.few') end";
constexpr char delete_them[] = "for i = 1, calls do keldom.get_object('side.few.' .. names[i]):delete() end";
constexpr char panel_values[] = "panel:get_value('v1', 'v2', 'v10', 'v100')";

// clang-format off
const Operation operations[] = {
    {"get_object, a control", grows, "keldom.get_object", floor_of_lookup, "f(name)"},
    {"get_children, all controls", grows, "handle.get_children", floor_of_children, "f(container)"},
    {"get_children, 3 controls", grows, "handle.get_children", floor_of_children, "f(few)"},
    {"get_parents, a control", grows, "handle.get_parents", floor_of_parents, "f(handle)"},
    {"get_variables, a control", grows, "handle.get_variables", floor_of_variables, "f(handle)"},
    {"get_variables, the container", grows, "handle.get_variables", floor_of_variables, "f(container)"},
    {"clone", grows, "handle.clone", floor_of_clone, "f(handle, names[i], 'side.few')",
     "", delete_them, "#few:get_children()"},

    {"get_object, a layer", fixed, "keldom.get_object", floor_of_lookup, "f('main')"},
    {"get_control, a handle", fixed, "keldom.get_control", floor_of_same_handle, "f(handle)"},
    {"get_application", fixed, "keldom.get_application", floor_of_application, "f()"},
    {"get_layers, 2", fixed, "keldom.get_layers", floor_of_layers, "f()"},
    {"get_screens, 2", fixed, "keldom.get_screens", floor_of_screens, "f()"},
    {"get_name", fixed, "handle.get_name", floor_of_name, "f(handle)"},
    {"get_type", fixed, "handle.get_type", floor_of_type, "f(handle)"},
    {"tostring", fixed, "meta.__tostring", floor_of_name, "f(handle)"},
    {"==", fixed, "meta.__eq", floor_of_equality, "f(handle, few)"},
    {"collection of a handle", fixed, "keldom.get_object", floor_of_collected, nullptr,
     "for i = 1, calls do f('main') end"},
    {"delete", fixed, "handle.delete", floor_of_delete, "f(clones[i])", clone_some, "", "#few:get_children()"},

    {"get_x", fixed, "handle.get_x", floor_of_get_x, "f(handle)"},
    {"get_hidden", fixed, "handle.get_hidden", floor_of_get_hidden, "f(handle)"},
    {"get_position", fixed, "handle.get_position", floor_of_get_position, "f(handle)"},
    {"get_bounds", fixed, "handle.get_bounds", floor_of_get_bounds, "f(handle)"},
    {"set_x", fixed, "handle.set_x", floor_of_set_x, "f(handle, i)"},
    {"set_x, kel.CENTER", fixed, "handle.set_x", floor_of_set_x_center, "f(handle, i, center)"},
    {"set_width, kel.CENTER", fixed, "handle.set_width", floor_of_set_width_center, "f(handle, 60 + i, center)"},
    {"set_position", fixed, "handle.set_position", floor_of_set_position, "f(handle, i, 7)"},
    {"set_bounds", fixed, "handle.set_bounds", floor_of_set_bounds, "f(handle, i, 7, 8, 9)"},
    {"hide", fixed, "handle.hide", floor_of_hide, "f(handle)", "", "", "handle:get_hidden()"},
    {"key", fixed, "handle.key", floor_of_key, "f(handle, 'value')"},
    {"cell_key", fixed, "grid.cell_key", floor_of_cell_key, "f(grid, 2, 3, 'value')"},
    {"get_value, 1 key", fixed, "handle.get_value", floor_of_get_value, "f(panel, $1)"},
    {"get_value, 10 keys", fixed, "handle.get_value", floor_of_get_value, "f(panel, $10)"},
    {"get_value, 100 keys", fixed, "handle.get_value", floor_of_get_value, "f(panel, $100)"},
    {"get_data, 1 key", fixed, "handle.get_data", floor_of_get_data, "f(panel, $1)"},
    {"get_data, 10 keys", fixed, "handle.get_data", floor_of_get_data, "f(panel, $10)"},
    {"get_data, 100 keys", fixed, "handle.get_data", floor_of_get_data, "f(panel, $100)"},
    {"set_value, 1 key", fixed, "handle.set_value", floor_of_set_value, "f(panel, 'v1', i)", "", "", panel_values},
    {"set_data, 1 key", fixed, "handle.set_data", floor_of_set_data, "f(panel, data[1])", "", "", panel_values},
    {"set_data, 10 keys", fixed, "handle.set_data", floor_of_set_data, "f(panel, data[10])", "", "", panel_values},
    {"set_data, 100 keys", fixed, "handle.set_data", floor_of_set_data, "f(panel, data[100])", "", "", panel_values},
    {"get_variables, 100 of them", fixed, "handle.get_variables", floor_of_variables, "f(panel)"},
};
// clang-format on

} // namespace

std::span<const Operation> all_operations() { return operations; }

} // namespace bench
