// whole_file.cpp: reads a file, or writes beside it and renames: the system replaces a file by another in one step.
#include "whole_file.h"

#include "link_target.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace kelhost {

namespace {

constexpr mode_t permissions = 0777;

bool write_and_close(std::FILE *stream, const std::string &content) {
    const bool written = std::fwrite(content.data(), 1, content.size(), stream) == content.size();
    const int fault = errno;
    const bool closed = std::fclose(stream) == 0; // writes what is left
    if (!written) errno = fault;
    return written && closed;
}

// A pipe, a device: there is nothing to replace.
std::string write_in_place(const std::string &file, const std::string &content) {
    std::FILE *stream = std::fopen(file.c_str(), "wb");
    if (stream == nullptr || !write_and_close(stream, content)) return std::strerror(errno);
    return {};
}

// The links stay: what they lead to is replaced. The system has followed them before, so they have an end.
std::string behind_links(std::string file) {
    while (const std::optional<std::string> target = link_target(file)) file = *target;
    return file;
}

// mode: the permissions of the file that is there; nothing for those of new files.
std::string replace(const std::string &file, const std::string &content, std::optional<mode_t> mode) {
    const std::string beside = file + "." + std::to_string(getpid()) + ".new";
    std::FILE *stream = std::fopen(beside.c_str(), "wbx"); // never through another's file or link
    if (stream == nullptr) return std::strerror(errno);
    if (mode) static_cast<void>(chmod(beside.c_str(), *mode & permissions)); // some file systems have none
    if (write_and_close(stream, content) && std::rename(beside.c_str(), file.c_str()) == 0) return {};
    std::string reason = std::strerror(errno);
    static_cast<void>(std::remove(beside.c_str()));
    return reason;
}

} // namespace

std::optional<std::string> read_whole_file(const std::string &file, std::string &fault) {
    std::FILE *stream = std::fopen(file.c_str(), "rb");
    if (stream == nullptr) {
        fault = std::strerror(errno);
        return std::nullopt;
    }
    std::string content;
    char part[4096];
    errno = 0;
    while (const std::size_t length = std::fread(part, 1, sizeof part, stream)) content.append(part, length);
    const int reason = std::ferror(stream) != 0 ? errno : 0;
    static_cast<void>(std::fclose(stream)); // nothing was written
    if (reason == 0) return content;
    fault = std::strerror(reason);
    return std::nullopt;
}

std::string write_whole_file(const std::string &file, const std::string &content) {
    struct stat there = {};
    const bool exists = stat(file.c_str(), &there) == 0;
    if (!exists && errno != ENOENT) return std::strerror(errno);
    if (exists && !S_ISREG(there.st_mode)) return write_in_place(file, content);
    return replace(behind_links(file), content, exists ? std::optional(there.st_mode) : std::nullopt);
}

} // namespace kelhost
