// tree.h: the objects of a running application, as a tree for readers or for programs.
#pragma once

#include <string>

#include <kelhost/application.h>

namespace kelhost {

// Prints the application's objects, or with a name that object and what it contains: a line each, indented, or as JSON.
// The cells are shown of a table that is named. False, after an error message with the nearest name, when nothing has
// the name.
bool print_tree(const Application &app, const std::string &name, bool json);

} // namespace kelhost
