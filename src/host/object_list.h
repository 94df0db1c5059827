// object_list.h: the lists that containers hold their objects in: a dynamic array of the C interface with an owner.
#pragma once

#include <kel/kel.h>

namespace kelhost {

class ObjectList {
public:
    ObjectList(); // std::bad_alloc when memory is out
    ~ObjectList();
    ObjectList(const ObjectList &) = delete;
    ObjectList &operator=(const ObjectList &) = delete;

    kl_darray_t *array() noexcept { return array_; } // for a record; stays the list's

    int size() const noexcept;
    kl_object_t *at(int position) const noexcept;

    // Appends; std::bad_alloc when memory is out.
    void add(kl_object_t &object);

    // Takes an object out, in place and without needing memory. Gives the position that it had, or -1 when it was not
    // there.
    int remove(const kl_object_t &object) noexcept;

private:
    kl_darray_t *array_;
};

} // namespace kelhost
