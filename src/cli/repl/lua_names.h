// lua_names.h: the names that a value in the Lua state has to offer.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <kelhost/application.h>

namespace kelhost {

// The names of the fields of the value that a path such as "a.b" leads to, from the globals, which "" stands for; with
// only_functions of those that are functions. What the value has by the __index tables of its metatable counts too; a
// userdata has nothing else. Nothing is called. Names that are no identifiers are left out.
std::vector<std::string> names_within(Application &app, std::string_view path, bool only_functions);

// What the keys of an object's variables begin with, "main.ok." or "" for the application, when the path leads to the
// object's handle.
std::optional<std::string> key_prefix_of(Application &app, std::string_view path);

} // namespace kelhost
