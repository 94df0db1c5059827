// c_border.h: keeps C++ exceptions on this side of a C interface.
#pragma once

namespace kelhost {

// Runs `work` and returns its result, or `on_failure` when it throws: out of memory is the one thing that does.
template <typename Result, typename Work> Result at_c_border(Result on_failure, Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return on_failure;
    }
}

} // namespace kelhost
