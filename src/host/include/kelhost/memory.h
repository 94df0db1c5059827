// memory.h: accounting of the allocator that the host offers plug-ins (kelal_*), and a way to make it fail.
#pragma once

#include <cstddef>

namespace kelhost {

// Counted over the whole process: the allocator's functions carry no application.
struct MemoryCounts {
    std::size_t live_blocks = 0; // allocated and not freed yet
    std::size_t live_bytes = 0;  // in those blocks
    std::size_t peak_bytes = 0;  // most that live_bytes has been
    std::size_t requests = 0;    // kelal_strdup and kelal_realloc calls so far, failed ones included
};
MemoryCounts memory_counts() noexcept;

// Asked before each request is served; true makes the request fail with null. request counts from 0 since the hook was
// set. Dynamic arrays allocate here too.
using FaultHook = bool (*)(std::size_t request, std::size_t nbytes, void *user_data);

// Sets the hook; null takes it away. user_data stays the caller's.
void set_fault_hook(FaultHook hook, void *user_data) noexcept;

// Makes requests fail for as long as the object lives: the one with this number, counted from 0 at construction, and
// with `and_all_after` every later one too. One at a time: it takes the place of a hook that was set, and leaves none
// behind.
class FailingAllocations {
public:
    explicit FailingAllocations(std::size_t request, bool and_all_after = false) noexcept;
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations &) = delete;
    FailingAllocations &operator=(const FailingAllocations &) = delete;

private:
    static bool fails(std::size_t request, std::size_t nbytes, void *self) noexcept;
    std::size_t request_;
    bool and_all_after_;
};

} // namespace kelhost
