// model_checks.h: what is true of every application's model between two calls into it.
#pragma once

#include "runtime.h"

namespace fuzz {

// Ends the program unless every object is found by its name, cells by their shared one; every list and grid is filled;
// a table's grid is as large as its variables say; every variable belongs to an object; and nothing is held.
void require_whole(kelhost::Runtime &runtime);

} // namespace fuzz
