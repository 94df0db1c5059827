// remove_objects.h: deletes controls, tables and groups with all that they contain.
#pragma once

#include <string_view>

#include "object_registry.h"

namespace kelhost {

// False after a warning that says why; nothing has changed then, nor when it throws std::bad_alloc.
bool remove_object(ModelContext &context, std::string_view name);

} // namespace kelhost
