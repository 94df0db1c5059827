// vars.h: the data variables of a running application.
#pragma once

#include <string>

#include <kelhost/application.h>

namespace kelhost {

// Prints variables in the order of their keys, with type and value: a line each, or as one JSON object. With a prefix
// those whose key begins with its components; when there are none, those whose key begins with its letters. False,
// after an error message with the nearest key, when there are none either.
bool print_variables(const Application &app, const std::string &prefix, bool json);

} // namespace kelhost
