// whole_file.h: reads and writes files in one go.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelhost {

// The file's bytes. Nothing, with the system's reason in `fault`, when it cannot be read.
std::optional<std::string> read_whole_file(const std::string &file, std::string &fault);

// The file holds the text or, with the system's reason as the result, what it held before; never a part.
std::string write_whole_file(const std::string &file, std::string_view text);

} // namespace kelhost
