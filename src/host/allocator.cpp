// allocator.cpp: the heap that the host offers plug-ins: kelal_* over malloc.
// Counts blocks and bytes, and lets a hook make requests fail. Nothing here throws.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <kel/sdk/kelal_alloc.h>
#include <kelhost/memory.h>

namespace {

// Stands before each block, because C has no portable way to ask malloc for a block's size. Its own size is a multiple
// of the strictest alignment, so that what follows is as well aligned as malloc's result.
struct alignas(std::max_align_t) BlockHeader {
    std::size_t nbytes;
};

struct Faults {
    kelhost::FaultHook hook = nullptr;
    void *user_data = nullptr;
    std::size_t asked = 0;
};

kelhost::MemoryCounts counts;
Faults faults;

BlockHeader *header_of(void *block) { return static_cast<BlockHeader *>(block) - 1; }

// Counts the request and asks the hook.
bool may_serve(std::size_t nbytes) {
    ++counts.requests;
    if (faults.hook != nullptr && faults.hook(faults.asked++, nbytes, faults.user_data)) return false;
    return nbytes <= SIZE_MAX - sizeof(BlockHeader);
}

void *resize(void *block, std::size_t nbytes) {
    if (!may_serve(nbytes)) return nullptr;
    BlockHeader *old_header = block != nullptr ? header_of(block) : nullptr;
    const std::size_t old_nbytes = block != nullptr ? old_header->nbytes : 0;
    auto *header = static_cast<BlockHeader *>(std::realloc(old_header, sizeof(BlockHeader) + nbytes));
    if (header == nullptr) return nullptr;
    header->nbytes = nbytes;
    if (block == nullptr) ++counts.live_blocks;
    counts.live_bytes = counts.live_bytes - old_nbytes + nbytes;
    if (counts.live_bytes > counts.peak_bytes) counts.peak_bytes = counts.live_bytes;
    return header + 1;
}

} // namespace

extern "C" char *kelal_strdup(const char *string) {
    const std::size_t nbytes = std::strlen(string) + 1;
    void *copy = resize(nullptr, nbytes);
    if (copy != nullptr) std::memcpy(copy, string, nbytes);
    return static_cast<char *>(copy);
}

extern "C" void *kelal_realloc(void *block, size_t nbytes) { return resize(block, nbytes); }

extern "C" void kelal_free(void *block) {
    if (block == nullptr) return;
    BlockHeader *header = header_of(block);
    --counts.live_blocks;
    counts.live_bytes -= header->nbytes;
    std::free(header);
}

namespace kelhost {

MemoryCounts memory_counts() noexcept { return counts; }

void set_fault_hook(FaultHook hook, void *user_data) noexcept { faults = {hook, user_data, 0}; }

FailingAllocations::FailingAllocations(std::size_t request, bool and_all_after) noexcept
    : request_(request), and_all_after_(and_all_after) {
    set_fault_hook(fails, this);
}

FailingAllocations::~FailingAllocations() { set_fault_hook(nullptr, nullptr); }

bool FailingAllocations::fails(std::size_t request, std::size_t, void *self) noexcept {
    const auto &failing = *static_cast<const FailingAllocations *>(self);
    return request == failing.request_ || (failing.and_all_after_ && request > failing.request_);
}

} // namespace kelhost
