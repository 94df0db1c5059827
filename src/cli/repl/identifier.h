// identifier.h: what may stand in Lua's source without quotes.
#pragma once

#include <string_view>

namespace kelhost {

// Letters, digits and "_", not beginning with a digit, and no word of the language's own.
bool is_identifier(std::string_view text) noexcept;

} // namespace kelhost
