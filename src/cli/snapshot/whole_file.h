// whole_file.h: files that are there with their whole content or not at all.
#pragma once

#include <string>

namespace kelhost {

// Writes the file, or replaces it. Empty on success, else the system's reason: then a file that was there before is
// unchanged.
std::string write_whole_file(const std::string &file, const std::string &content);

} // namespace kelhost
