// test_darray.cpp: the dynamic array and its iterator.
#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <kel/sdk/darray.h>
#include <kelhost/memory.h>

#include "darray.h"
#include "support/block_ledger.h"

using kelhost::FailingAllocations;
using kelhost::memory_counts;

namespace {

struct ArrayFree {
    void operator()(kl_darray_t *array) const { kl_darray_free(array); }
};
using Array = std::unique_ptr<kl_darray_t, ArrayFree>;

Array make_array(int capacity = 0) { return Array(kl_darray_create(sizeof(int), capacity, 0)); }

int add(const Array &array, int number, int position = -1) { return kl_darray_add(array.get(), &number, position); }

Array array_of(std::initializer_list<int> numbers) {
    Array array = make_array();
    for (const int number : numbers) REQUIRE(add(array, number) >= 0);
    return array;
}

// An element as text; "-" for no element.
std::string shown(const void *slot) {
    return slot != nullptr ? std::to_string(*static_cast<const int *>(slot)) : std::string("-");
}

std::string contents(const Array &array) {
    std::string text;
    for (int index = 0; index < kl_darray_size(array.get()); ++index)
        text += shown(kl_darray_item(array.get(), index)) + " ";
    return text;
}

struct Walk {
    kl_darray_iter_t iterator;
    explicit Walk(const Array &array) { kl_darray_iterator_init(&iterator, array.get(), 0); }
    std::string first() { return shown(iterator.first(&iterator, -1, -1)); }
    std::string last() { return shown(iterator.last(&iterator, -1, -1)); }
    std::string next() { return shown(iterator.next(&iterator, -1, -1)); }
    std::string prev() { return shown(iterator.prev(&iterator, -1, -1)); }
    std::string cur() { return shown(iterator.cur(&iterator, -1, -1)); }
    std::string set(int index) { return shown(iterator.set(&iterator, index, -1, -1)); }
};

} // namespace

TEST_CASE("a new array is empty") {
    const BlockLedger ledger;
    const Array array = make_array(8);
    REQUIRE(array);
    CHECK(kl_darray_size(array.get()) == 0);
    CHECK(kl_darray_item(array.get(), 0) == nullptr);
}

TEST_CASE("an array of capacity 0 takes no storage until an element comes") {
    const BlockLedger ledger;
    const std::size_t before = memory_counts().live_blocks;
    const Array array = make_array();
    REQUIRE(array);
    CHECK(memory_counts().live_blocks == before + 1);
    CHECK(add(array, 1) == 0);
    CHECK(memory_counts().live_blocks == before + 2);
}

TEST_CASE("an array takes elements up to its capacity without a request") {
    const BlockLedger ledger;
    const Array array = make_array(3);
    const std::size_t before = memory_counts().requests;
    for (int number = 0; number < 3; ++number) CHECK(add(array, number) == number);
    CHECK(memory_counts().requests == before);
    CHECK(add(array, 3) == 3);
    CHECK(memory_counts().requests == before + 1);
}

TEST_CASE("an element size that is not above 0 and a negative capacity make no array") {
    const BlockLedger ledger;
    CHECK(kl_darray_create(0, 1, 0) == nullptr);
    CHECK(kl_darray_create(-4, 1, 0) == nullptr);
    CHECK(kl_darray_create(4, -1, 0) == nullptr);
}

TEST_CASE("a capacity beyond all memory makes no array, and its size does not wrap round") {
    const BlockLedger ledger;
    // Refuses what a heap would; the sanitizers' heap aborts instead of refusing.
    const auto refuse_gigabytes = [](std::size_t, std::size_t nbytes, void *) { return nbytes >= 1U << 30; };
    kelhost::set_fault_hook(refuse_gigabytes, nullptr);
    for (const int element_size : {INT_MAX, 1 << 16, 1 << 30}) {
        CAPTURE(element_size);
        CHECK(kl_darray_create(element_size, INT_MAX, 0) == nullptr);
        CHECK(kl_darray_create(element_size, 1 << 16, 0) == nullptr);
    }
    kelhost::set_fault_hook(nullptr, nullptr);
}

TEST_CASE("adding copies the element's bytes and gives its position") {
    const BlockLedger ledger;
    struct Odd {
        char bytes[7];
    };
    const Array array(kl_darray_create(sizeof(Odd), 0, 0));
    Odd element{
        {'s', 'e', 'v', 'e', 'n', '!', '\0'}
    };
    CHECK(kl_darray_add(array.get(), &element, -1) == 0);
    CHECK(kl_darray_add(array.get(), &element, -1) == 1);
    element.bytes[0] = 'x';
    CHECK(std::string(static_cast<char *>(kl_darray_item(array.get(), 0))) == "seven!");
    auto *first = static_cast<char *>(kl_darray_item(array.get(), 0));
    CHECK(kl_darray_item(array.get(), 1) == first + 7);
}

TEST_CASE("an array of pointers gives slots that hold the pointers") {
    const BlockLedger ledger;
    kl_object_t *const objects[] = {reinterpret_cast<kl_object_t *>(0x1234), nullptr};
    const Array array(kl_darray_create(sizeof(kl_object_t *), 1, 0));
    kl_darray_add(array.get(), &objects[0], -1);
    kl_darray_add(array.get(), &objects[1], -1);
    CHECK(*static_cast<kl_object_t **>(kl_darray_item(array.get(), 0)) == objects[0]);
    REQUIRE(kl_darray_item(array.get(), 1) != nullptr);
    CHECK(*static_cast<kl_object_t **>(kl_darray_item(array.get(), 1)) == nullptr);
}

TEST_CASE("elements can be inserted at the front, in the middle and at the end") {
    const BlockLedger ledger;
    const Array array = array_of({1, 3});
    CHECK(add(array, 2, 1) == 1);
    CHECK(add(array, 0, 0) == 0);
    CHECK(add(array, 4, 4) == 4);
    CHECK(contents(array) == "0 1 2 3 4 ");
}

TEST_CASE("a position outside the array changes nothing") {
    const BlockLedger ledger;
    const Array array = array_of({1, 2});
    CHECK(add(array, 9, 3) == -1);
    CHECK(add(array, 9, -2) == -1);
    CHECK(add(array, 9, INT_MAX) == -1);
    CHECK(add(array, 9, INT_MIN) == -1);
    CHECK(contents(array) == "1 2 ");
}

TEST_CASE("an index outside the array has no slot") {
    const BlockLedger ledger;
    const Array array = array_of({1, 2});
    CHECK(kl_darray_item(array.get(), -1) == nullptr);
    CHECK(kl_darray_item(array.get(), 2) == nullptr);
    CHECK(kl_darray_item(array.get(), INT_MAX) == nullptr);
    CHECK(kl_darray_item(array.get(), INT_MIN) == nullptr);
}

TEST_CASE("an array grows to many elements and keeps them all, with few requests") {
    const BlockLedger ledger;
    const Array array = make_array(1);
    const std::size_t before = memory_counts().requests;
    for (int number = 0; number < 10000; ++number) REQUIRE(add(array, number) == number);
    CHECK(memory_counts().requests - before < 20);
    CHECK(kl_darray_size(array.get()) == 10000);
    for (int number = 0; number < 10000; ++number)
        REQUIRE(*static_cast<int *>(kl_darray_item(array.get(), number)) == number);
}

TEST_CASE("an element of the array itself can be added, though the array moves meanwhile") {
    const BlockLedger ledger;
    for (int size = 1; size < 9; ++size) {
        for (int position = 0; position <= size; ++position) {
            for (int own = 0; own < size; ++own) {
                CAPTURE(size);
                CAPTURE(position);
                CAPTURE(own);
                const Array array = make_array();
                for (int number = 0; number < size; ++number) add(array, number);
                REQUIRE(kl_darray_add(array.get(), kl_darray_item(array.get(), own), position) == position);
                CHECK(shown(kl_darray_item(array.get(), position)) == std::to_string(own));
                CHECK(kl_darray_size(array.get()) == size + 1);
            }
        }
    }
}

TEST_CASE("creating fails cleanly at each of its requests") {
    const BlockLedger ledger;
    for (std::size_t request = 0; request < 2; ++request) {
        const FailingAllocations failing(request);
        CHECK(kl_darray_create(4, 1, 0) == nullptr);
    }
    const FailingAllocations failing(2);
    const Array array(kl_darray_create(4, 1, 0));
    CHECK(array);
}

TEST_CASE("adding without memory leaves the array as it was") {
    const BlockLedger ledger;
    const Array array = array_of({1, 2, 3, 4});
    {
        const FailingAllocations failing(0, true);
        CHECK(add(array, 5) == -1);
        CHECK(add(array, 5, 0) == -1);
    }
    CHECK(contents(array) == "1 2 3 4 ");
    CHECK(add(array, 5) == 4);
    CHECK(contents(array) == "1 2 3 4 5 ");
}

TEST_CASE("freeing an array gives back all its blocks, and freeing null does nothing") {
    const std::size_t before = memory_counts().live_blocks;
    kl_darray_t *array = kl_darray_create(4, 100, 0);
    CHECK(memory_counts().live_blocks == before + 2);
    kl_darray_free(array);
    CHECK(memory_counts().live_blocks == before);
    kl_darray_free(nullptr);
    CHECK(memory_counts().live_blocks == before);
}

TEST_CASE("removing an element moves up those behind it") {
    const BlockLedger ledger;
    const Array array = array_of({0, 1, 2, 3});
    kelhost::darray_remove(array.get(), 1);
    CHECK(contents(array) == "0 2 3 ");
    kelhost::darray_remove(array.get(), 2);
    CHECK(contents(array) == "0 2 ");
    kelhost::darray_remove(array.get(), 0);
    kelhost::darray_remove(array.get(), 0);
    CHECK(kl_darray_size(array.get()) == 0);
    CHECK(add(array, 7) == 0);
    CHECK(contents(array) == "7 ");
}

TEST_CASE("an iterator is filled with its array, all operations, and stands before the first element") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11});
    kl_darray_iter_t iterator;
    kl_darray_iterator_init(&iterator, array.get(), 0);
    CHECK(iterator.da == array.get());
    CHECK(bool(iterator.first));
    CHECK(bool(iterator.last));
    CHECK(bool(iterator.next));
    CHECK(bool(iterator.prev));
    CHECK(bool(iterator.cur));
    CHECK(bool(iterator.set));
    CHECK(iterator.reserved == nullptr);
    CHECK(iterator.cur(&iterator, -1, -1) == nullptr);
    CHECK(iterator.first(&iterator, -1, -1) == kl_darray_item(array.get(), 0));
    CHECK(iterator.next(&iterator, -1, -1) == kl_darray_item(array.get(), 1));
}

TEST_CASE("first and next walk to the end, and next stays there") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11, 12});
    Walk walk(array);
    CHECK(walk.first() == "10");
    CHECK(walk.next() == "11");
    CHECK(walk.next() == "12");
    CHECK(walk.next() == "-");
    CHECK(walk.next() == "-");
    CHECK(walk.cur() == "-");
}

TEST_CASE("next without first begins at the first element") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11});
    Walk walk(array);
    CHECK(walk.next() == "10");
    CHECK(walk.next() == "11");
}

TEST_CASE("last and prev walk to the front, and prev stays there") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11, 12});
    Walk walk(array);
    CHECK(walk.last() == "12");
    CHECK(walk.prev() == "11");
    CHECK(walk.prev() == "10");
    CHECK(walk.prev() == "-");
    CHECK(walk.prev() == "-");
    CHECK(walk.cur() == "-");
    CHECK(walk.next() == "10");
}

TEST_CASE("prev from past the end gives the last element") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11});
    Walk walk(array);
    walk.last();
    CHECK(walk.next() == "-");
    CHECK(walk.prev() == "11");
    CHECK(walk.cur() == "11");
}

TEST_CASE("cur gives the element that the last step reached, without moving") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11});
    Walk walk(array);
    walk.first();
    CHECK(walk.cur() == "10");
    CHECK(walk.cur() == "10");
    CHECK(walk.next() == "11");
    CHECK(walk.cur() == "11");
}

TEST_CASE("set stands on the element with that index") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11, 12});
    Walk walk(array);
    CHECK(walk.set(1) == "11");
    CHECK(walk.cur() == "11");
    CHECK(walk.next() == "12");
    CHECK(walk.set(0) == "10");
    CHECK(walk.prev() == "-");
}

TEST_CASE("set outside the array stands before the first or past the end") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11});
    Walk walk(array);
    CHECK(walk.set(-1) == "-");
    CHECK(walk.next() == "10");
    CHECK(walk.set(INT_MIN) == "-");
    CHECK(walk.next() == "10");
    CHECK(walk.set(2) == "-");
    CHECK(walk.prev() == "11");
    CHECK(walk.set(INT_MAX) == "-");
    CHECK(walk.next() == "-");
}

TEST_CASE("an iterator over an empty array finds nothing in any direction") {
    const BlockLedger ledger;
    const Array array = make_array();
    Walk walk(array);
    CHECK(walk.next() == "-");
    CHECK(walk.first() == "-");
    CHECK(walk.last() == "-");
    CHECK(walk.prev() == "-");
    CHECK(walk.cur() == "-");
    CHECK(walk.set(0) == "-");
}

TEST_CASE("a walk meets the elements that are appended while it is under way") {
    const BlockLedger ledger;
    const Array array = array_of({0});
    Walk walk(array);
    std::string seen;
    for (std::string element = walk.first(); element != "-"; element = walk.next()) {
        seen += element + " ";
        if (kl_darray_size(array.get()) < 100) add(array, kl_darray_size(array.get()));
    }
    std::string expected;
    for (int number = 0; number < 100; ++number) expected += std::to_string(number) + " ";
    CHECK(seen == expected);
}

TEST_CASE("a walk that has ended stays at its end when elements are appended afterwards") {
    const BlockLedger ledger;
    const Array array = array_of({10});
    Walk walk(array);
    walk.first();
    CHECK(walk.next() == "-");
    add(array, 11);
    CHECK(walk.next() == "-");
    CHECK(walk.cur() == "-");
    CHECK(walk.prev() == "11");
}

TEST_CASE("a walk stands on the next element when its own is removed, and ends when there is none") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11, 12});
    Walk walk(array);
    walk.set(1);
    kelhost::darray_remove(array.get(), 1);
    CHECK(walk.cur() == "12");
    kelhost::darray_remove(array.get(), 1);
    CHECK(walk.cur() == "-");
    CHECK(walk.next() == "-");
}

TEST_CASE("prev gives the last element when those that it stood on are gone") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11, 12, 13});
    Walk walk(array);
    walk.last();
    for (int removed = 0; removed < 3; ++removed) kelhost::darray_remove(array.get(), 1);
    CHECK(walk.prev() == "10");
}

TEST_CASE("two walks over one array do not disturb each other") {
    const BlockLedger ledger;
    const Array array = array_of({10, 11});
    Walk outer(array);
    Walk inner(array);
    outer.first();
    inner.last();
    CHECK(outer.next() == "11");
    CHECK(inner.prev() == "10");
}
