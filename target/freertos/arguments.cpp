// arguments.cpp: reads words; the board's command line has no others.
#include "arguments.h"

#include <cstdlib>

namespace {

constexpr const char *usage =
    "expected: APP [--script FILE]... [--event NAME[:TARGET]]... [--stack BYTES] [--heap BYTES]";

constexpr std::size_t least_stack_bytes = 512; // the kernel puts the first registers there

std::string unexpected(const std::string &words) { return "unexpected \"" + words + "\"; " + usage; }

bool read_bytes(const std::string &text, std::size_t least, std::size_t &bytes) {
    char *end = nullptr;
    bytes = std::strtoul(text.c_str(), &end, 10);
    return !text.empty() && *end == '\0' && text.find('-') == std::string::npos && bytes >= least;
}

bool read_option(const std::string &name, const std::string &value, Arguments &arguments) {
    if (name == "--stack") return read_bytes(value, least_stack_bytes, arguments.stack_bytes);
    if (name == "--heap") return read_bytes(value, 0, arguments.heap_bytes);
    if (name != "--script" && name != "--event") return false;
    (name == "--script" ? arguments.scripts : arguments.events).push_back(value);
    return true;
}

} // namespace

std::string read_arguments(int argc, char **argv, Arguments &arguments) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.rfind("--", 0) != 0) {
            if (!arguments.path.empty()) return unexpected(word);
            arguments.path = word;
            continue;
        }
        if (i + 1 == argc) return unexpected(word);
        const std::string value = argv[++i];
        if (!read_option(word, value, arguments)) return unexpected(word + " " + value);
    }
    return arguments.path.empty() ? std::string("no application is named; ") + usage : std::string();
}
