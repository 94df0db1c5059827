// test_allocator.cpp: the allocator for plug-ins: blocks, accounting, and failing on demand.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <kel/sdk/kelal_alloc.h>
#include <kelhost/memory.h>

#include "support/block_ledger.h"

using kelhost::FailingAllocations;
using kelhost::memory_counts;

TEST_CASE("strdup copies a string with its end") {
    const BlockLedger ledger;
    const char original[] = "main.ok";
    char *copy = kelal_strdup(original);
    REQUIRE(copy != nullptr);
    CHECK(copy != original);
    CHECK(std::memcmp(copy, original, sizeof original) == 0);
    kelal_free(copy);
}

TEST_CASE("strdup of an empty string is a block of its own") {
    const BlockLedger ledger;
    char *copy = kelal_strdup("");
    REQUIRE(copy != nullptr);
    CHECK(copy[0] == '\0');
    CHECK(memory_counts().live_blocks > 0);
    kelal_free(copy);
}

TEST_CASE("realloc of null makes a block that is aligned for every type") {
    const BlockLedger ledger;
    for (std::size_t nbytes = 1; nbytes < 70; nbytes += 3) {
        CAPTURE(nbytes);
        void *block = kelal_realloc(nullptr, nbytes);
        REQUIRE(block != nullptr);
        CHECK(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t) == 0);
        std::memset(block, 0xAB, nbytes);
        kelal_free(block);
    }
}

TEST_CASE("realloc keeps the bytes up to the smaller size") {
    const BlockLedger ledger;
    auto *block = static_cast<unsigned char *>(kelal_realloc(nullptr, 16));
    REQUIRE(block != nullptr);
    for (unsigned char index = 0; index < 16; ++index) block[index] = index;

    block = static_cast<unsigned char *>(kelal_realloc(block, 100000));
    REQUIRE(block != nullptr);
    for (unsigned char index = 0; index < 16; ++index) CHECK(block[index] == index);

    block = static_cast<unsigned char *>(kelal_realloc(block, 4));
    REQUIRE(block != nullptr);
    for (unsigned char index = 0; index < 4; ++index) CHECK(block[index] == index);
    kelal_free(block);
}

TEST_CASE("freeing null does nothing") {
    const auto before = memory_counts();
    kelal_free(nullptr);
    CHECK(memory_counts().live_blocks == before.live_blocks);
    CHECK(memory_counts().live_bytes == before.live_bytes);
}

TEST_CASE("live blocks and bytes follow each call") {
    const BlockLedger ledger;
    const auto before = memory_counts();

    void *block = kelal_realloc(nullptr, 100);
    char *string = kelal_strdup("twelve bytes");
    CHECK(memory_counts().live_blocks == before.live_blocks + 2);
    CHECK(memory_counts().live_bytes == before.live_bytes + 113);

    block = kelal_realloc(block, 10);
    CHECK(memory_counts().live_blocks == before.live_blocks + 2);
    CHECK(memory_counts().live_bytes == before.live_bytes + 23);

    kelal_free(string);
    CHECK(memory_counts().live_blocks == before.live_blocks + 1);
    CHECK(memory_counts().live_bytes == before.live_bytes + 10);

    kelal_free(block);
    CHECK(memory_counts().live_bytes == before.live_bytes);
}

TEST_CASE("the peak is the most that was live, and stays") {
    const BlockLedger ledger;
    const std::size_t size = memory_counts().peak_bytes + 1000;
    const std::size_t live_before = memory_counts().live_bytes;
    void *block = kelal_realloc(nullptr, size);
    REQUIRE(block != nullptr);
    CHECK(memory_counts().peak_bytes == live_before + size);
    block = kelal_realloc(block, 1);
    kelal_free(block);
    CHECK(memory_counts().peak_bytes == live_before + size);
}

TEST_CASE("requests count allocating calls, failed ones too, and not freeing ones") {
    const BlockLedger ledger;
    const std::size_t before = memory_counts().requests;
    void *block = kelal_realloc(nullptr, 8);
    block = kelal_realloc(block, 9);
    char *string = kelal_strdup("x");
    {
        const FailingAllocations failing(0);
        CHECK(kelal_strdup("y") == nullptr);
    }
    CHECK(memory_counts().requests == before + 4);
    kelal_free(block);
    kelal_free(string);
    CHECK(memory_counts().requests == before + 4);
}

TEST_CASE("a request that fails leaves the old block and the counts as they were") {
    const BlockLedger ledger;
    char *block = kelal_strdup("kept");
    const auto before = memory_counts();
    {
        const FailingAllocations failing(0);
        CHECK(kelal_realloc(block, 1000) == nullptr);
    }
    CHECK(std::string(block) == "kept");
    CHECK(memory_counts().live_blocks == before.live_blocks);
    CHECK(memory_counts().live_bytes == before.live_bytes);
    CHECK(memory_counts().peak_bytes == before.peak_bytes);
    kelal_free(block);
}

TEST_CASE("a size that no memory could hold fails without wrapping round") {
    const BlockLedger ledger;
    char *block = kelal_strdup("kept");
    volatile std::size_t largest = SIZE_MAX; // volatile: the compiler would object to a size it can see
    CHECK(kelal_realloc(nullptr, largest) == nullptr);
    CHECK(kelal_realloc(block, largest - 8) == nullptr);
    CHECK(std::string(block) == "kept");
    kelal_free(block);
}

namespace {

struct AskedRequests {
    std::vector<std::size_t> numbers;
    std::vector<std::size_t> sizes;
};

bool remember_and_refuse_second(std::size_t request, std::size_t nbytes, void *user_data) {
    auto &asked = *static_cast<AskedRequests *>(user_data);
    asked.numbers.push_back(request);
    asked.sizes.push_back(nbytes);
    return request == 1;
}

} // namespace

TEST_CASE("the fault hook is asked before each request, with its number and size, and decides") {
    const BlockLedger ledger;
    AskedRequests asked;
    kelhost::set_fault_hook(remember_and_refuse_second, &asked);
    void *first = kelal_realloc(nullptr, 24);
    char *second = kelal_strdup("four");
    void *third = kelal_realloc(first, 48);
    kelhost::set_fault_hook(nullptr, nullptr);
    char *unasked = kelal_strdup("after the hook is gone");

    CHECK(first != nullptr);
    CHECK(second == nullptr);
    CHECK(third != nullptr);
    CHECK(unasked != nullptr);
    CHECK(asked.numbers == std::vector<std::size_t>{0, 1, 2});
    CHECK(asked.sizes == std::vector<std::size_t>{24, 5, 48});
    kelal_free(third);
    kelal_free(unasked);
}

TEST_CASE("setting a hook begins to count at 0 again") {
    const BlockLedger ledger;
    AskedRequests asked;
    kelhost::set_fault_hook(remember_and_refuse_second, &asked);
    kelal_free(kelal_strdup("a"));
    kelhost::set_fault_hook(remember_and_refuse_second, &asked);
    kelal_free(kelal_strdup("b"));
    kelhost::set_fault_hook(nullptr, nullptr);
    CHECK(asked.numbers == std::vector<std::size_t>{0, 0});
}

TEST_CASE("failing allocations fail the one request that is named") {
    const BlockLedger ledger;
    const FailingAllocations failing(1);
    char *first = kelal_strdup("first");
    char *second = kelal_strdup("second");
    char *third = kelal_strdup("third");
    CHECK(first != nullptr);
    CHECK(second == nullptr);
    CHECK(third != nullptr);
    kelal_free(first);
    kelal_free(third);
}

TEST_CASE("failing allocations can fail every later request too, until they go") {
    const BlockLedger ledger;
    {
        const FailingAllocations failing(1, true);
        char *first = kelal_strdup("first");
        CHECK(first != nullptr);
        CHECK(kelal_strdup("second") == nullptr);
        CHECK(kelal_realloc(first, 100) == nullptr);
        kelal_free(first);
    }
    char *after = kelal_strdup("after");
    CHECK(after != nullptr);
    kelal_free(after);
}
