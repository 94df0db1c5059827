// snapshots.cpp: finds, reads and writes a test file's snapshots.
#include "snapshots.h"

#include "../whole_file.h"
#include "difference.h"

#include <algorithm>
#include <filesystem>
#include <optional>

namespace kelhost {

namespace {

namespace fs = std::filesystem;

std::string folder_of(const fs::path &test_file) {
    return (test_file.parent_path() / "snapshots" / test_file.stem()).string();
}

} // namespace

Snapshots::Snapshots(const std::string &test_file, bool update) : folder_(folder_of(test_file)), update_(update) {}

std::string Snapshots::compare(const std::string &name, const std::string &text) {
    const std::string file = folder_ + "/" + name + ".txt";
    const bool is_first = used_.insert(file).second;
    std::string fault;
    const std::optional<std::string> stored = read_whole_file(file, fault);
    if (stored == text) return {};
    if (update_ && is_first) return store(file, text);
    if (!stored && !fs::exists(file)) return "no snapshot " + file + "; kel test --update-snapshots writes it";
    if (!stored) return "snapshot " + file + ": " + fault;
    return "snapshot " + file + " differs:\n" + difference({file, *stored}, {"what is shown", text});
}

std::string Snapshots::store(const std::string &file, const std::string &text) const {
    std::error_code ignored; // what is wrong shows when the file is written
    fs::create_directories(folder_, ignored);
    const std::string fault = write_whole_file(file, text);
    return fault.empty() ? std::string() : "snapshot " + file + ": " + fault;
}

std::vector<std::string> Snapshots::unused() const {
    std::vector<std::string> found;
    std::error_code none; // no folder: nothing is stored
    for (const fs::directory_entry &entry : fs::directory_iterator(folder_, none)) {
        std::string file = folder_ + "/" + entry.path().filename().string();
        if (entry.path().extension() == ".txt" && !used_.contains(file)) found.push_back(std::move(file));
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace kelhost
