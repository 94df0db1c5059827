// variables.cpp: the names of the property variables.
#include "variables.h"

inline namespace luakeldom {
const char variable_names[placeholder + 1][sizeof "kld_height"] = {
    "", "kld_x", "kld_y", "kld_width", "kld_height", "kld_alpha", "kld_hidden", "kld_rows", "kld_cols", "",
};
}
