// key_policy.h: which keys a data variable may have: those of objects that exist.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "object_registry.h"

namespace kelhost {

// Why no variable of this key can be created; nothing when one can.
std::optional<std::string> refuses_key(const ObjectRegistry &objects, std::string_view key);

} // namespace kelhost
