// readable.cpp: opens a file and reads one byte: only that shows a folder for what it is.
#include "readable.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kelhost {

std::string why_unreadable(const std::string &file) {
    std::FILE *stream = std::fopen(file.c_str(), "rb");
    if (stream == nullptr) return std::strerror(errno);
    errno = 0;
    static_cast<void>(std::fgetc(stream));
    const int fault = std::ferror(stream) != 0 ? errno : 0;
    static_cast<void>(std::fclose(stream)); // nothing was written
    return fault == 0 ? std::string() : std::strerror(fault);
}

} // namespace kelhost
