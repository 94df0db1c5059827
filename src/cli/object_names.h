// object_names.h: the names that a user can mean.
#pragma once

#include <string>
#include <vector>

#include <kelhost/application.h>

namespace kelhost {

// The qualified names of all objects that exist now, made by scripts or not; sorted.
std::vector<std::string> object_names(const Application &app);

// "; did you mean main.ok?" for the one of the names that is nearest, or else that ends with the wrong one's
// components, or "".
std::string suggest(const std::string &wrong, const std::vector<std::string> &names);

} // namespace kelhost
