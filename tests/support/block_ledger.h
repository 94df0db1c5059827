// block_ledger.h: fails a test that leaves blocks of the host's allocator behind.
#pragma once

#include <doctest/doctest.h>

#include <kelhost/memory.h>

// Declare first in a test (or a fixture), so that it is destroyed last.
class BlockLedger {
public:
    BlockLedger() : at_start_(kelhost::memory_counts().live_blocks) {}
    ~BlockLedger() { CHECK(kelhost::memory_counts().live_blocks == at_start_); }
    BlockLedger(const BlockLedger &) = delete;
    BlockLedger &operator=(const BlockLedger &) = delete;

private:
    std::size_t at_start_;
};
