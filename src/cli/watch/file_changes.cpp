// file_changes.cpp: FileChanges over the kernel's notifications.
#include "file_changes.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <sys/inotify.h>
#include <unistd.h>

namespace kelhost {

namespace {

// A file that is being written has not changed yet; one that was made by a link or a rename has.
constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE;

struct Place {
    std::string folder;
    std::string name;
};

Place place_of(const std::string &file) {
    const std::size_t slash = file.rfind('/');
    if (slash == std::string::npos) return {".", file};
    return {slash == 0 ? "/" : file.substr(0, slash), file.substr(slash + 1)};
}

} // namespace

FileChanges::FileChanges() : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error(std::string("cannot watch files: ") + std::strerror(errno));
}

FileChanges::~FileChanges() { close(descriptor_); }

// A folder that is watched already keeps its number, and what waits there to be read.
void FileChanges::set_files(const std::vector<std::string> &files) {
    folders_.clear();
    for (const std::string &file : files) {
        const Place place = place_of(file);
        const int watch = inotify_add_watch(descriptor_, place.folder.c_str(), changes | IN_ONLYDIR);
        if (watch >= 0) folders_[watch].insert_or_assign(place.name, file);
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
            const auto folder = folders_.find(event->wd);
            if (folder == folders_.end() || event->len == 0) continue;
            const auto file = folder->second.find(event->name);
            if (file != folder->second.end()) changed.insert(file->second);
        }
    }
}

} // namespace kelhost
