// difference.h: how one text differs from another, line by line.
#pragma once

#include <string>

namespace kelhost {

struct NamedText {
    std::string name;
    std::string text;
};

// A unified diff of two texts that are not the same: with their names, three lines around each change, and without a
// line end after the last line.
std::string difference(const NamedText &before, const NamedText &after);

} // namespace kelhost
