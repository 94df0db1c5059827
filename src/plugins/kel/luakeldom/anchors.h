// anchors.h: turns "x, meant as the centre" into the plain x that the host stores.
#pragma once

#include "checks.h"
#include "variables.h"

// The body of every setter that takes anchors. The values, one a variable of `list` that is no placeholder, stand at
// stack positions 2, 3, ...; their anchors, in the same order, behind all values. Anchors count for controls and tables
// alone. A resize that moves the object too fills the placeholder that stands where its anchor does.
//   minimum  self and the values
//   others   the values' names in the usage warning
// Returns 0.
int keldom_set_anchored(lua_State *L, variable_list_t list, minimum_t minimum, const char *others);
