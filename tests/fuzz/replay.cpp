// replay.cpp: runs every input of a folder once, as a test: replay_NAME FOLDER. Or shows what one input stands for:
// replay_NAME --show FILE.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzzer.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes read(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    fuzz::require(file.is_open(), "cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A file, or those of a folder in the order of their names.
std::vector<std::filesystem::path> files_in(const char *path) {
    if (!std::filesystem::is_directory(path)) return {path};
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(path)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

int show(const char *path) {
    const std::string text = fuzz::describe(read(path));
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

} // namespace

int main(int count, char **arguments) {
    if (count == 3 && std::strcmp(arguments[1], "--show") == 0) return show(arguments[2]);
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER | FILE | --show FILE\n", arguments[0]);
        return 2;
    }
    const auto files = files_in(arguments[1]);
    std::signal(SIGABRT, [](int) { std::_Exit(1); }); // a failed test, not a crash
    for (const auto &path : files) {
        const Bytes input = read(path);
        std::fprintf(stderr, "%s\n", path.filename().c_str()); // the last one is the one that ended the program
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("%zu inputs replayed\n", files.size());
    return files.empty() ? 1 : 0; // nothing was tested
}
