// ownership.h: tells the analyser who gives back what the host's functions give, as it knows it of malloc.
#pragma once

#include <kel/sdk/darray.h>
#include <kel/sdk/kelal_alloc.h>

extern "C" {
__attribute__((malloc, malloc(kelal_free, 1))) char *kelal_strdup(const char *string);
__attribute__((malloc, malloc(kl_darray_free, 1))) kl_darray_t *kl_darray_create(int element_size, int capacity,
                                                                                 int flags);
}
