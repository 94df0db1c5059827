/* darray.h: a growable array of elements of one size, and an iterator over it. */
#ifndef KEL_SDK_DARRAY_H
#define KEL_SDK_DARRAY_H

#include <kel/kel_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A walk over an array. The caller owns the record, usually on its stack; the host fills it and owns nothing in it.
 * Every operation returns the address of an element slot (for an array of pointers: a kl_object_t **), good until the
 * array changes, or null when there is no such element. The two or three ints are the host's; callers pass -1. */
struct _kl_darray_iter {
    kl_darray_t *da;
    int32_t current; /* host state */
    int32_t loop;    /* host state */
    void *(*first)(kl_darray_iter_t *, int, int);
    void *(*last)(kl_darray_iter_t *, int, int);
    void *(*next)(kl_darray_iter_t *, int, int);
    void *(*prev)(kl_darray_iter_t *, int, int);
    void *(*cur)(kl_darray_iter_t *, int, int);
    void *(*set)(kl_darray_iter_t *, int, int, int);
    void *reserved; /* room for a host that fills seven operations */
};

/* Makes an empty array.
 *   element_size  bytes of one element, above 0; for object lists sizeof(kl_object_t *)
 *   capacity      how many elements to make room for, 0 or more; the array grows past it by itself
 *   flags         0
 * Returns an array that the caller frees with kl_darray_free, or null when memory is out. */
kl_darray_t *kl_darray_create(int element_size, int capacity, int flags);

/* Copies one element into the array.
 *   array     never null
 *   element   the bytes to copy, element_size of them; stays the caller's
 *   position  where to insert, from 0 to the size; -1 appends
 * Returns the element's position, or -1 when memory is out or the position is not in the array, which is then
 * unchanged. */
int kl_darray_add(kl_darray_t *array, const void *element, int position);

/* Returns the address of the slot at index (from 0), good until the array changes, or null when the index is outside.
 */
void *kl_darray_item(kl_darray_t *array, int index);

/* Returns the number of elements. array: never null. */
int kl_darray_size(kl_darray_t *array);

/* Frees the array, not what its elements point to. Null is allowed and does nothing. */
void kl_darray_free(kl_darray_t *array);

/* Fills an iterator that stands before the first element. iterator, array: never null. flags: 0. */
void kl_darray_iterator_init(kl_darray_iter_t *iterator, kl_darray_t *array, int flags);

#ifdef __cplusplus
}
#endif

#endif
