// readable.h: tells in advance whether a file that the user named can be read.
#pragma once

#include <string>

namespace kelhost {

// Empty when the file can be read, else the system's reason, such as "No such file or directory". A folder cannot be
// read.
std::string why_unreadable(const std::string &file);

} // namespace kelhost
