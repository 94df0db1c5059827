// test_files.cpp: looks into folders for test files.
#include "test_files.h"

#include "../output.h"
#include "../readable.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace kelhost {

namespace {

namespace fs = std::filesystem;

constexpr const char *test_file_ending = "_spec.lua";

std::vector<std::string> files_in(const fs::path &folder) {
    std::vector<std::string> files;
    std::error_code none; // a folder that cannot be read holds nothing to run
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, none))
        if (entry.path().string().ends_with(test_file_ending)) files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    if (files.empty()) report_error("no test files in " + folder.string() + ": expected names like main_spec.lua");
    return files;
}

// Empty, after an error message, when there is nothing.
std::vector<std::string> files_of(const std::string &name) {
    if (fs::is_directory(name)) return files_in(name);
    const std::string fault = why_unreadable(name);
    if (fault.empty()) return {name};
    report_error(std::string("test file ").append(name).append(": ").append(fault));
    return {};
}

} // namespace

std::vector<std::string> find_test_files(const std::vector<std::string> &named, const std::string &app_folder) {
    if (named.empty()) return files_in(fs::path(app_folder) / "tests");
    std::vector<std::string> files;
    bool all_found = true;
    for (const std::string &name : named) {
        std::vector<std::string> found = files_of(name);
        all_found = all_found && !found.empty();
        std::move(found.begin(), found.end(), std::back_inserter(files));
    }
    return all_found ? files : std::vector<std::string>();
}

} // namespace kelhost
