// link_target.cpp: asks the system where a link leads to.
#include "link_target.h"

#include <unistd.h>

#include "../host/file.h"

namespace kelhost {

std::optional<std::string> link_target(const std::string &path) {
    char target[4096]; // the longest that the system takes
    const auto length = readlink(path.c_str(), target, sizeof target);
    if (length <= 0) return std::nullopt;
    return join_path(folder_of(path), std::string(target, static_cast<std::size_t>(length)));
}

} // namespace kelhost
