// history_file.cpp: finds the file's place and makes it, as far as that goes.
#include "history_file.h"

#include "../whole_file.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <sys/stat.h>

namespace kelhost {

namespace {

namespace fs = std::filesystem;

// As the base directory convention has it: a relative path counts as none.
fs::path state_folder() {
    if (const char *const state = std::getenv("XDG_STATE_HOME"); state != nullptr && fs::path(state).is_absolute())
        return state;
    const char *const home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? fs::path(home) / ".local" / "state" : fs::path();
}

// Files and folders that are made while it lives are the user's alone.
class PrivateFiles {
public:
    PrivateFiles() : before_(umask(S_IRWXG | S_IRWXO)) {}
    ~PrivateFiles() { umask(before_); }
    PrivateFiles(const PrivateFiles &) = delete;
    PrivateFiles &operator=(const PrivateFiles &) = delete;

private:
    const mode_t before_;
};

// A file that cannot be replaced stays as it is.
void replace_lines(const std::string &path, const std::vector<std::string> &lines) {
    const PrivateFiles only_mine;
    std::string content;
    for (const std::string &line : lines) content += line + '\n';
    static_cast<void>(write_whole_file(path, content));
}

// A device or a pipe could keep its reader for ever.
bool can_be_history(const fs::path &path) {
    std::error_code ignored;
    const fs::file_type type = fs::status(path, ignored).type();
    return type == fs::file_type::regular || type == fs::file_type::not_found;
}

} // namespace

HistoryFile::HistoryFile() {
    const fs::path state = state_folder();
    if (state.empty()) return;
    const PrivateFiles only_mine;
    std::error_code ignored;
    fs::create_directories(state / "kel", ignored);
    const fs::path file = state / "kel" / "history";
    if (can_be_history(file) && std::ofstream(file, std::ios::app)) path_ = file;
}

std::vector<std::string> HistoryFile::lines() const {
    std::vector<std::string> lines;
    std::ifstream file(path_);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    const std::size_t count = lines.size();
    if (count > most_lines) lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(most_lines));
    if (count >= 2 * most_lines && !file.bad()) replace_lines(path_, lines);
    return lines;
}

void HistoryFile::append(const std::string &line) const {
    if (!path_.empty()) std::ofstream(path_, std::ios::app) << line << '\n';
}

} // namespace kelhost
