// pattern.h: whether a text is a Lua pattern, before anything is matched against it.
#pragma once

#include <string>
#include <string_view>

namespace kelhost {

// What is wrong with the pattern, in Lua's words; "" when it can be used. Lua itself tells of a fault only when
// matching comes as far as it.
std::string fault_of_pattern(std::string_view pattern);

} // namespace kelhost
