// app_file.h: reads an application file into a description.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kelhost/description.h>
#include <kelhost/diagnostic.h>

namespace kelhost {

// Reads the file, or app.json in the folder, at path. What can be read is returned even with faults, so that validate()
// can name the faults of meaning in the same run; nothing when the file cannot be opened or is not JSON at all.
std::optional<ApplicationDescription> read_application_file(const std::string &path, Diagnostics &faults);

// The same from text. file: for messages.
std::optional<ApplicationDescription> parse_application(std::string_view text, const std::string &file,
                                                        Diagnostics &faults);

} // namespace kelhost
