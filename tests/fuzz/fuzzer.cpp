// fuzzer.cpp: runs one input, and shows what it stands for when it ends the program.
#include "fuzzer.h"

#include <cstdio>
#include <cstdlib>

// The sanitizers', where the program is built with them.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace fuzz {

namespace {

Input current; // the input that is being run

void show_current() {
    const std::string text = describe(current);
    std::fprintf(stderr, "---- the input stands for\n%s----\n", text.c_str());
}

} // namespace

void require(bool holds, const std::string &what) {
    if (holds) return;
    std::fprintf(stderr, "fuzzer: %s\n", what.c_str());
    show_current();
    std::abort();
}

} // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(fuzz::show_current);
    fuzz::current = {data, size};
    fuzz::run(fuzz::current);
    return 0;
}
