// failing_new.h: makes a request for memory from the C++ heap fail. The operator new that obeys stands in
// test_out_of_memory.cpp.
#pragma once

#include <cstddef>

inline std::size_t new_requests = 0;               // of operator new, so far
inline std::size_t new_requests_until_failure = 0; // 0: none fails

// Makes the request with this number, counted from 1, fail while it lives.
class FailingNew {
public:
    explicit FailingNew(std::size_t request) { new_requests_until_failure = request; }
    ~FailingNew() { new_requests_until_failure = 0; }
    FailingNew(const FailingNew &) = delete;
    FailingNew &operator=(const FailingNew &) = delete;
    static bool has_failed() { return new_requests_until_failure == 0; }
};
