// build_objects.h: makes all objects and variables of an application from its description.
#pragma once

#include <kelhost/description.h>

#include "object_registry.h"

namespace kelhost {

// Fills the application's record and maps as well. The description must be free of faults. Throws std::bad_alloc.
void build_objects(ModelContext &context, const ApplicationDescription &description);

} // namespace kelhost
