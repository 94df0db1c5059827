// whole_file.h: reads files in one go, and writes those that are there with their whole content or not at all.
#pragma once

#include <optional>
#include <string>

namespace kelhost {

// The file's bytes. Nothing, with the system's reason in `fault`, when it cannot be read.
std::optional<std::string> read_whole_file(const std::string &file, std::string &fault);

// Writes the file, or replaces it by one with the same permissions; behind a link, the one that the link leads to. A
// pipe or a device is written to. Empty on success, else the system's reason: then a file that was there before is
// unchanged.
std::string write_whole_file(const std::string &file, const std::string &content);

} // namespace kelhost
