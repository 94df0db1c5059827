// link_target.h: follows symbolic links.
#pragma once

#include <optional>
#include <string>

namespace kelhost {

// Where the symbolic link at path leads to, one step far, whether anything is there or not. Nothing when it is no link.
std::optional<std::string> link_target(const std::string &path);

} // namespace kelhost
