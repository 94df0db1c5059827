// lines.cpp: reads lines that nobody types.
#include "lines.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace kelhost {

namespace {

struct Free {
    void operator()(char *block) const noexcept { std::free(block); }
};

} // namespace

Lines::Result PlainLines::read(const char *, std::string &line) {
    char *buffer = nullptr;
    std::size_t capacity = 0;
    const ssize_t length = getline(&buffer, &capacity, stdin);
    const std::unique_ptr<char, Free> owner(buffer);
    if (length < 0) return Result::end;
    line.assign(buffer, static_cast<std::size_t>(length));
    if (line.ends_with('\n')) line.pop_back();
    return Result::line;
}

} // namespace kelhost
