// darray.h: what the host can do with a dynamic array beyond the C interface.
#pragma once

#include <kel/sdk/darray.h>

namespace kelhost {

// Takes the element at `position` out, which must exist; those behind it move up. Never fails. An iterator that stands
// there stands on the next element afterwards.
void darray_remove(kl_darray_t *array, int position) noexcept;

} // namespace kelhost
