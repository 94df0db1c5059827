// file_changes.h: tells which of some files have changed.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace kelhost {

// Watches the folders rather than the files: editors put a new file in the old one's place, and a file may be missing
// for a while. So may its folder, or be exchanged for another: the folders above are watched for that. A folder that is
// missing is not watched itself until the files are set anew.
class FileChanges {
public:
    FileChanges();
    ~FileChanges();
    FileChanges(const FileChanges &) = delete;
    FileChanges &operator=(const FileChanges &) = delete;

    // Where a file or a folder on the way to it is a symbolic link, what it leads to counts as the link does.
    void set_files(const std::vector<std::string> &files);

    int descriptor() const noexcept { return descriptor_; } // readable when something happened in the folders

    // What has changed since it was last asked: files as set_files() was told them, or folders on the way to them; or
    // words that say that nobody knows. Never waits.
    std::set<std::string> take();

private:
    using Folder = std::map<std::string, std::string>; // a name in the folder -> what a change of it is a change of

    void add(const std::string &path, const std::string &known_as, int &links_left);

    int descriptor_;
    std::map<int, Folder> folders_; // by the number of their watch
};

} // namespace kelhost
