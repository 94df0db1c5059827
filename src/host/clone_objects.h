// clone_objects.h: copies controls, tables and groups with all that they contain.
#pragma once

#include <string_view>

#include "object_registry.h"

namespace kelhost {

// The clone, as the last child of the parent, or null after a warning that says why. Nothing has changed then, nor when
// it throws std::bad_alloc.
const NamedNode *clone_object(ModelContext &context, std::string_view source, std::string_view name,
                              std::string_view parent);

} // namespace kelhost
