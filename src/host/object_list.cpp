// object_list.cpp: the lists that containers hold their objects in.
#include "object_list.h"

#include <new>

#include "darray.h"

namespace kelhost {

ObjectList::ObjectList() : array_(kl_darray_create(static_cast<int>(sizeof(kl_object_t *)), 0, 0)) {
    if (array_ == nullptr) throw std::bad_alloc();
}

ObjectList::~ObjectList() { kl_darray_free(array_); }

int ObjectList::size() const noexcept { return kl_darray_size(array_); }

kl_object_t *ObjectList::at(int position) const noexcept {
    auto **slot = static_cast<kl_object_t **>(kl_darray_item(array_, position));
    return slot == nullptr ? nullptr : *slot;
}

void ObjectList::add(kl_object_t &object) {
    kl_object_t *const element = &object;
    if (kl_darray_add(array_, &element, -1) < 0) throw std::bad_alloc();
}

int ObjectList::remove(const kl_object_t &object) noexcept {
    const int count = size();
    for (int position = 0; position < count; ++position) {
        if (at(position) != &object) continue;
        darray_remove(array_, position);
        return position;
    }
    return -1;
}

} // namespace kelhost
