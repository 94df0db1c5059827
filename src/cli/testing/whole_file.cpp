// whole_file.cpp: a file that is written appears under its name when it is complete.
#include "whole_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kelhost {

namespace {

bool write_part(const std::string &file, std::string_view text) {
    std::FILE *stream = std::fopen(file.c_str(), "wb");
    if (stream == nullptr) return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    const int reason = errno;
    if (std::fclose(stream) == 0) {
        errno = reason;
        return written;
    }
    return false;
}

} // namespace

std::optional<std::string> read_whole_file(const std::string &file, std::string &fault) {
    std::FILE *stream = std::fopen(file.c_str(), "rb");
    if (stream == nullptr) {
        fault = std::strerror(errno);
        return std::nullopt;
    }
    std::string text;
    char part[4096];
    errno = 0;
    while (const std::size_t length = std::fread(part, 1, sizeof part, stream)) text.append(part, length);
    const int reason = std::ferror(stream) != 0 ? errno : 0;
    static_cast<void>(std::fclose(stream)); // nothing was written
    if (reason == 0) return text;
    fault = std::strerror(reason);
    return std::nullopt;
}

std::string write_whole_file(const std::string &file, std::string_view text) {
    const std::string part = file + ".part";
    if (write_part(part, text) && std::rename(part.c_str(), file.c_str()) == 0) return {};
    std::string reason = std::strerror(errno);
    static_cast<void>(std::remove(part.c_str())); // may not exist
    return reason;
}

} // namespace kelhost
