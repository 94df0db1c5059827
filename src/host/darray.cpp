// darray.cpp: the growable array of the host interface and its iterator.
// Record and storage come from kelal_*, so that a leaked list and a failing request are seen like a plug-in's own.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>

#include <kel/sdk/darray.h>
#include <kel/sdk/kelal_alloc.h>

#include "darray.h"

struct _kl_darray {
    int element_size;
    int size;
    int capacity;
    unsigned char *storage; // null while capacity is 0
};

namespace {

constexpr int smallest_growth = 4;

// Positions of an iterator that stands on no element.
constexpr std::int32_t before_the_first = -1;
constexpr std::int32_t past_the_end = INT32_MAX;

std::size_t bytes_of(const kl_darray_t &array, int elements) {
    return static_cast<std::size_t>(array.element_size) * static_cast<std::size_t>(elements);
}

// Whether that many elements can be counted in bytes at all.
bool fits_memory(const kl_darray_t &array, int elements) {
    return static_cast<std::size_t>(elements) <= PTRDIFF_MAX / static_cast<std::size_t>(array.element_size);
}

bool set_capacity(kl_darray_t &array, int capacity) {
    if (!fits_memory(array, capacity)) return false;
    void *storage = kelal_realloc(array.storage, bytes_of(array, capacity));
    if (storage == nullptr) return false;
    array.storage = static_cast<unsigned char *>(storage);
    array.capacity = capacity;
    return true;
}

bool make_room_for_one(kl_darray_t &array) {
    if (array.size < array.capacity) return true;
    if (array.size == INT_MAX) return false;
    if (array.capacity < smallest_growth) return set_capacity(array, smallest_growth);
    return set_capacity(array, array.capacity > INT_MAX / 2 ? INT_MAX : array.capacity * 2);
}

bool is_inside(const kl_darray_t &array, const unsigned char *address) {
    const std::less<const unsigned char *> before;
    return array.storage != nullptr && !before(address, array.storage)
           && before(address, array.storage + bytes_of(array, array.size));
}

// Moves an iterator and returns the slot that it stands on then.
void *stand_on(kl_darray_iter_t *iterator, std::int32_t index) {
    iterator->current = index;
    return kl_darray_item(iterator->da, index);
}

// Iterator operations. Each reads the array's size anew, so that a walk meets elements appended while it is under way.
// The further ints are there for hosts that walk with a step or a bound; this one has neither.

// Stands on the first element; past the end when there is none.
void *iterator_first(kl_darray_iter_t *iterator, int, int) {
    return stand_on(iterator, kl_darray_size(iterator->da) > 0 ? 0 : past_the_end);
}

// Stands on the last element; before the first when there is none.
void *iterator_last(kl_darray_iter_t *iterator, int, int) {
    return stand_on(iterator, kl_darray_size(iterator->da) - 1);
}

// Steps on; from before the first to the first. Past the end it stays there, even when elements are appended
// afterwards.
void *iterator_next(kl_darray_iter_t *iterator, int, int) {
    if (iterator->current == past_the_end) return nullptr;
    const std::int32_t following = iterator->current + 1;
    return stand_on(iterator, following < kl_darray_size(iterator->da) ? following : past_the_end);
}

// Steps back; from past the end to the last, also when elements that it stood on are gone. Before the first it stays
// there.
void *iterator_prev(kl_darray_iter_t *iterator, int, int) {
    if (iterator->current == before_the_first) return nullptr;
    return stand_on(iterator, std::min<std::int32_t>(iterator->current, kl_darray_size(iterator->da)) - 1);
}

// The element that the iterator stands on.
void *iterator_cur(kl_darray_iter_t *iterator, int, int) { return kl_darray_item(iterator->da, iterator->current); }

// Stands on the element with that index; an index below 0 is before the first, one above the last is past the end.
void *iterator_set(kl_darray_iter_t *iterator, int index, int, int) {
    if (index < 0) return stand_on(iterator, before_the_first);
    return stand_on(iterator, index < kl_darray_size(iterator->da) ? index : past_the_end);
}

} // namespace

extern "C" kl_darray_t *kl_darray_create(int element_size, int capacity, int) {
    if (element_size <= 0 || capacity < 0) return nullptr;
    auto *array = static_cast<kl_darray_t *>(kelal_realloc(nullptr, sizeof(kl_darray_t)));
    if (array == nullptr) return nullptr;
    *array = {element_size, 0, 0, nullptr};
    if (capacity > 0 && !set_capacity(*array, capacity)) {
        kelal_free(array);
        return nullptr;
    }
    return array;
}

extern "C" int kl_darray_add(kl_darray_t *array, const void *element, int position) {
    const int index = position == -1 ? array->size : position;
    if (index < 0 || index > array->size) return -1;

    // The element may lie in this array, which moves when it grows and shifts when the element is inserted.
    const auto *source = static_cast<const unsigned char *>(element);
    const bool is_own = is_inside(*array, source);
    std::size_t own_offset = is_own ? static_cast<std::size_t>(source - array->storage) : 0;

    if (!make_room_for_one(*array)) return -1;
    const std::size_t element_size = bytes_of(*array, 1);
    unsigned char *slot = array->storage + bytes_of(*array, index);
    std::memmove(slot + element_size, slot, bytes_of(*array, array->size - index));
    if (is_own && own_offset >= bytes_of(*array, index)) own_offset += element_size;
    std::memcpy(slot, is_own ? array->storage + own_offset : source, element_size);
    ++array->size;
    return index;
}

extern "C" void *kl_darray_item(kl_darray_t *array, int index) {
    if (index < 0 || index >= array->size) return nullptr;
    return array->storage + bytes_of(*array, index);
}

extern "C" int kl_darray_size(kl_darray_t *array) { return array->size; }

extern "C" void kl_darray_free(kl_darray_t *array) {
    if (array == nullptr) return;
    kelal_free(array->storage);
    kelal_free(array);
}

extern "C" void kl_darray_iterator_init(kl_darray_iter_t *iterator, kl_darray_t *array, int) {
    iterator->da = array;
    iterator->current = before_the_first;
    iterator->loop = 0;
    iterator->first = iterator_first;
    iterator->last = iterator_last;
    iterator->next = iterator_next;
    iterator->prev = iterator_prev;
    iterator->cur = iterator_cur;
    iterator->set = iterator_set;
    iterator->reserved = nullptr;
}

void kelhost::darray_remove(kl_darray_t *array, int position) noexcept {
    unsigned char *slot = array->storage + bytes_of(*array, position);
    std::memmove(slot, slot + bytes_of(*array, 1), bytes_of(*array, array->size - position - 1));
    --array->size;
}
