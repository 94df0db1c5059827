// whole_file.cpp: reads a file, or writes beside it and renames: the system replaces a file by another in one step.
#include "whole_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace kelhost {

namespace {

bool write_and_close(std::FILE *stream, const std::string &content) {
    const bool written = std::fwrite(content.data(), 1, content.size(), stream) == content.size();
    const int fault = errno;
    const bool closed = std::fclose(stream) == 0; // writes what is left
    if (!written) errno = fault;
    return written && closed;
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
    const std::string beside = file + "." + std::to_string(getpid()) + ".new";
    std::FILE *stream = std::fopen(beside.c_str(), "wbx"); // never through another's file or link
    if (stream == nullptr) return std::strerror(errno);
    if (write_and_close(stream, content) && std::rename(beside.c_str(), file.c_str()) == 0) return {};
    std::string reason = std::strerror(errno);
    static_cast<void>(std::remove(beside.c_str()));
    return reason;
}

} // namespace kelhost
