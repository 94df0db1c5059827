// nearest_name.h: guesses which existing name a user meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelhost {

// The name that takes the fewest added, dropped or changed characters to get from `wanted`; the first of equals. Empty
// when none is near: when more than a third of the characters would have to change.
std::string nearest_name(std::string_view wanted, const std::vector<std::string> &names);

} // namespace kelhost
