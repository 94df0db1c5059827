// follow_variables.h: keeps the records of objects in step with the property variables (kld_x and the like) that
// scripts write.
#pragma once

#include <string_view>

#include "object_registry.h"

namespace kelhost {

// To be told of every change of a variable. Cheap for keys that are no property.
void follow_variable(ModelContext &context, std::string_view key) noexcept;

// Shows a variable's value in the record of its object, but for a table's size.
void show_variable(const ObjectRegistry &objects, std::string_view key, const Value &value) noexcept;

} // namespace kelhost
