// variables.cpp: the names of the property variables.
#include "variables.h"

// Fixed width, so that there are no pointers to relocate.
const char *variable_name(variable_t variable) {
    static constexpr char names[][sizeof "kld_height"] = {
        "", "kld_x", "kld_y", "kld_width", "kld_height", "kld_alpha", "kld_hidden", "kld_rows", "kld_cols", "",
    };
    static_assert(sizeof names / sizeof *names == placeholder + 1, "one name a variable");
    return names[variable];
}
