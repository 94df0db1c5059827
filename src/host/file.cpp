// file.cpp: reads whole files through C's streams, and takes paths apart. Works where there is no file system library.
#include "file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace kelhost {

namespace {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

std::string system_reason() { return errno != 0 ? std::strerror(errno) : "cannot be read"; }

} // namespace

std::optional<std::string> read_file(const std::string &path, std::string &why) {
    errno = 0;
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        why = system_reason();
        return std::nullopt;
    }
    std::string bytes;
    char chunk[4096];
    // Opening a folder succeeds on some systems; reading from it does not.
    while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, file.get())) bytes.append(chunk, count);
    if (std::ferror(file.get()) != 0) {
        why = system_reason();
        return std::nullopt;
    }
    return bytes;
}

std::string folder_of(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string join_path(const std::string &folder, const std::string &path) {
    if (folder.empty() || path.starts_with('/')) return path;
    return folder.ends_with('/') ? folder + path : folder + '/' + path;
}

} // namespace kelhost
