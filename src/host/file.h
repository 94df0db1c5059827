// file.h: whole text files, and paths with "/".
#pragma once

#include <optional>
#include <string>

namespace kelhost {

// The file's bytes; nothing, with the system's reason in `why` ("No such file or directory"), when it cannot be read.
// A folder cannot be read.
std::optional<std::string> read_file(const std::string &path, std::string &why);

// "a/b.json" -> "a"; "b.json" -> "".
std::string folder_of(const std::string &path);

// Joins with "/"; an absolute `path` or an empty folder gives `path` itself.
std::string join_path(const std::string &folder, const std::string &path);

} // namespace kelhost
