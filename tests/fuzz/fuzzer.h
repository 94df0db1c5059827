// fuzzer.h: what a fuzzer is made of: one file that takes a harness's inputs apart, and the libFuzzer or replay program
// around it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

using Input = std::span<const std::uint8_t>;

// Each harness gives these two. run() ends the program, through require() or a sanitizer, when something is wrong.
void run(Input input);
std::string describe(Input input); // what the bytes stand for, as a person reads it

// Ends the program unless it holds: says what is wrong and shows the input that is being run.
void require(bool holds, const std::string &what);

} // namespace fuzz

// libFuzzer's, and the replay program's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
