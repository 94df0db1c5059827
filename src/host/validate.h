// validate.h: whether a description makes sense as a whole.
#pragma once

#include <string_view>

#include <kelhost/description.h>
#include <kelhost/diagnostic.h>

namespace kelhost {

// Appends every fault of meaning: names (characters, empty, duplicate qualified names), references (a screen's layer,
// the default screen, a cell's template, a handler's target), ranges, tables whose cells do not fit, nesting. Script
// files are looked for on disk.
void validate(const ApplicationDescription &description, Diagnostics &faults);

// Whether every character may stand in an object's own name: letters, digits and "_".
bool is_valid_name(std::string_view name) noexcept;

} // namespace kelhost
