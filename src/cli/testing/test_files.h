// test_files.h: which test files the user means.
#pragma once

#include <string>
#include <vector>

namespace kelhost {

// The named files, and the *_spec.lua of the named folders, sorted; those in the application's folder "tests" when none
// is named. Empty, after an error message for each name at fault, when that cannot be.
std::vector<std::string> find_test_files(const std::vector<std::string> &named, const std::string &app_folder);

} // namespace kelhost
