// byte_reader.h: takes decisions from an input's bytes. At the input's end every decision is the first choice.
#pragma once

#include <cstddef>
#include <iterator>

#include "fuzzer.h"

namespace fuzz {

class ByteReader {
public:
    explicit ByteReader(Input input) : rest_(input) {}

    bool at_end() const noexcept { return rest_.empty(); }

    std::size_t byte() noexcept {
        if (rest_.empty()) return 0;
        const std::size_t value = rest_.front();
        rest_ = rest_.subspan(1);
        return value;
    }

    // count: 1 to 256
    std::size_t below(std::size_t count) noexcept { return byte() % count; }

    // One of a list.
    template <typename List> const auto &pick(const List &list) noexcept {
        return *std::next(std::begin(list), static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

private:
    Input rest_;
};

} // namespace fuzz
