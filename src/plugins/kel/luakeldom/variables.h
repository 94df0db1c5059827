// variables.h: the property variables, and lists of them packed into one constant, so that a list costs no memory.
#pragma once

// A property variable, or a place in a list that consumes its argument and writes nothing.
enum variable_t : unsigned {
    end_of_list,
    kld_x,
    kld_y,
    kld_width,
    kld_height,
    kld_alpha,
    kld_hidden,
    kld_rows,
    kld_cols,
    placeholder,
};

// Up to seven variables, four bits each, the first in the lowest bits; zero bits end the list.
using variable_list_t = unsigned;
inline constexpr unsigned bits_per_variable = 4;

template <typename... Variables> constexpr variable_list_t variables(Variables... each) {
    variable_list_t list = 0;
    unsigned shift = 0;
    ((list |= each << shift, shift += bits_per_variable), ...);
    return list;
}

constexpr variable_t first_of(variable_list_t list) {
    return static_cast<variable_t>(list & ((1U << bits_per_variable) - 1));
}
constexpr variable_list_t rest_of(variable_list_t list) { return list >> bits_per_variable; }

// The list with the placeholder at `slot` (from 0) replaced.
constexpr variable_list_t with_slot(variable_list_t list, unsigned slot, variable_t variable) {
    return list ^ ((placeholder ^ variable) << (slot * bits_per_variable));
}

// Fixed width, so that there are no pointers to relocate.
inline namespace luakeldom {
extern const char variable_names[placeholder + 1][sizeof "kld_height"];
}

// The variable's name in the data manager, such as "kld_x"; "" for a placeholder.
inline const char *variable_name(variable_t variable) { return variable_names[variable]; }
