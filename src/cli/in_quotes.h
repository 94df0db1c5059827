// in_quotes.h: texts as Lua's source would have them.
#pragma once

#include <string>
#include <string_view>

namespace kelhost {

// "a \"b\"\n": in quotes, with the escapes of Lua for what is no visible text. Letters beyond ASCII stay as they are,
// when they are UTF-8.
std::string in_quotes(std::string_view text);

} // namespace kelhost
