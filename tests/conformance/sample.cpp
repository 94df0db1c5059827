// sample.cpp: the application that conformance tests start from. Small, with one of everything that tests ask about.
//
//     main                    status                  spare (on no screen)    screens: home shows main, status
//       ok  10,20 100x80        clock                   lone                           setup shows status
//       bar (group)                                                                    empty shows nothing
//         ok, inner (group): deep
//       list (table 2x3): templates row, mark; cells row mark mark / row mark mark
//       bare (table 0x0)
#include "harness.h"

#include <iterator>

namespace conformance {

namespace {

template <typename Item, std::size_t Size> constexpr int count_of(const Item (&)[Size]) {
    return static_cast<int>(Size);
}

const kc_variable_t app_variables[] = {
    {"mode",   "string", 0,  "heat" },
    {"target", "i32",    21, nullptr}
};
const kc_variable_t ok_variables[] = {
    {"label", "string", 0, "OK"   },
    {"count", "i32",    7, nullptr}
};
const kc_variable_t main_variables[] = {
    {"title", "string", 0, "Main"}
};

const kc_element_t inner_children[] = {
    {KC_CONTROL, "deep", 1, 2, 3, 4, 0, {}, nullptr, 0, 0, 0, nullptr, 0, nullptr},
};
const kc_element_t bar_children[] = {
    {KC_CONTROL, "ok",    5, 6, 51, 61, 1, {}, nullptr,        0,                        0, 0, nullptr, 0, nullptr},
    {KC_GROUP,   "inner", 7, 8, 0,  0,  0, {}, inner_children, count_of(inner_children), 0, 0, nullptr, 0, nullptr},
};
const char *const list_templates[] = {"row", "mark"};
const char *const list_cells[] = {"row", "mark", "mark", "row", "mark", "mark"};
const char *const bare_templates[] = {"blank"};

const kc_element_t main_children[] = {
    {KC_CONTROL,
     "ok",               10,
     20,                         100,
     80,                                  0,
     {ok_variables, count_of(ok_variables)},
     nullptr,                                                  0,
     0,                                                                                   0,
     nullptr,                                                                                                0,
     nullptr                                                                                                                                     },
    {KC_GROUP,   "bar",  30, 40, 0,   0,  0, {}, bar_children, count_of(bar_children), 0, 0, nullptr,        0,                        nullptr   },
    {KC_TABLE,   "list", 11, 12, 200, 90, 0, {}, nullptr,      0,                      2, 3, list_templates, count_of(list_templates), list_cells},
    {KC_TABLE,   "bare", 0,  0,  10,  10, 0, {}, nullptr,      0,                      0, 0, bare_templates, count_of(bare_templates), nullptr   },
};
const kc_element_t status_children[] = {
    {KC_CONTROL, "clock", 0, 0, 40, 10, 0, {}, nullptr, 0, 0, 0, nullptr, 0, nullptr},
};
const kc_element_t spare_children[] = {
    {KC_CONTROL, "lone", 0, 0, 1, 1, 0, {}, nullptr, 0, 0, 0, nullptr, 0, nullptr},
};
const kc_layer_t layers[] = {
    {"main",   {main_variables, count_of(main_variables)}, main_children,   count_of(main_children)  },
    {"status", {},                                         status_children, count_of(status_children)},
    {"spare",  {},                                         spare_children,  count_of(spare_children) },
};
const kc_instance_t home_layers[] = {
    {"main",   1, 2, 480, 272, 200, 0},
    {"status", 3, 4, 480, 20,  255, 1}
};
const kc_instance_t setup_layers[] = {
    {"status", 5, 6, 480, 20, 128, 0}
};
const kc_screen_t screens[] = {
    {"home",  {}, home_layers,  count_of(home_layers) },
    {"setup", {}, setup_layers, count_of(setup_layers)},
    {"empty", {}, nullptr,      0                     },
};
const kc_application_t application = {
    "sample", {app_variables, count_of(app_variables)},
     layers, count_of(layers), screens, count_of(screens),
};

} // namespace

const kc_application_t &sample() { return application; }

} // namespace conformance
