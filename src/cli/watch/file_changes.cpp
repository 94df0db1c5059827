// file_changes.cpp: FileChanges over the kernel's notifications.
#include "file_changes.h"

#include "../link_target.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

namespace kelhost {

namespace {

// A file that is being written has not changed yet; one that was made by a link or a rename has.
constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE;

// More than lead to any file; those that lead in circles end here.
constexpr int most_links = 200;

} // namespace

FileChanges::FileChanges() : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error(std::string("cannot watch files: ") + std::strerror(errno));
}

FileChanges::~FileChanges() { close(descriptor_); }

// A folder that is watched already keeps its number, and what waits there to be read.
void FileChanges::set_files(const std::vector<std::string> &files) {
    const std::map<int, Folder> before = std::exchange(folders_, {});
    for (const std::string &file : files) {
        int links_left = most_links;
        add(file, {}, links_left);
    }
    for (const auto &[watch, folder] : before)
        if (!folders_.contains(watch)) inotify_rm_watch(descriptor_, watch);
}

// Watches for all names in the path, the outermost first: what appears before its folder is watched is found there. A
// change is one of known_as, or, when that is empty, of the path up to the name.
void FileChanges::add(const std::string &path, const std::string &known_as, int &links_left) {
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        const std::string folder = begin == 0 ? "." : path.substr(0, begin);
        const std::string up_to_name = path.substr(0, end);
        const std::string &shown = known_as.empty() ? up_to_name : known_as;
        begin = end + 1;
        if (name.empty()) continue;
        const int watch = inotify_add_watch(descriptor_, folder.c_str(), changes | IN_ONLYDIR);
        if (watch >= 0) folders_[watch].emplace(name, shown);
        const std::optional<std::string> target = links_left > 0 ? link_target(up_to_name) : std::nullopt;
        if (!target) continue;
        --links_left;
        add(*target, shown, links_left);
    }
}

std::set<std::string> FileChanges::take() {
    std::set<std::string> changed;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t bytes = read(descriptor_, buffer.data(), buffer.size());
        if (bytes <= 0) return changed;
        for (const char *next = buffer.data(); next < buffer.data() + bytes;) {
            const auto *const event = reinterpret_cast<const inotify_event *>(next);
            next += sizeof *event + event->len;
            if ((event->mask & IN_Q_OVERFLOW) != 0) changed.insert("more than the system could tell");
            const auto folder = folders_.find(event->wd);
            if (folder == folders_.end() || event->len == 0) continue;
            const auto file = folder->second.find(event->name);
            if (file != folder->second.end()) changed.insert(file->second);
        }
    }
}

} // namespace kelhost
