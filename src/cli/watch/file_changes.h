// file_changes.h: tells which of some files have changed.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace kelhost {

// Watches the folders rather than the files: editors put a new file in the old one's place, and a file may be missing
// for a while. A folder that is missing is not watched until the files are set anew.
class FileChanges {
public:
    FileChanges();
    ~FileChanges();
    FileChanges(const FileChanges &) = delete;
    FileChanges &operator=(const FileChanges &) = delete;

    void set_files(const std::vector<std::string> &files);

    int descriptor() const noexcept { return descriptor_; } // readable when something happened in the folders

    // The files that have changed since it was last asked, as set_files() was told them. Never waits.
    std::set<std::string> take();

private:
    using Folder = std::map<std::string, std::string>; // a name in the folder -> the file

    int descriptor_;
    std::map<int, Folder> folders_; // by the number of their watch
};

} // namespace kelhost
