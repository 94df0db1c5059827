/* kelal_alloc.h: the host's allocator, the only heap that a plug-in uses. */
#ifndef KEL_SDK_KELAL_ALLOC_H
#define KEL_SDK_KELAL_ALLOC_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Copies a string, its end included.
 *   string  never null; stays the caller's
 * Returns a block that the caller frees with kelal_free, or null when memory is out. */
char *kelal_strdup(const char *string);

/* Resizes a block, moving it where needed; the first bytes, up to the smaller of both sizes, keep their values.
 *   block   from this allocator, or null to make a new block
 *   nbytes  new size in bytes, above 0
 * Returns the resized block in place of the old one, which is then gone; or null when memory is out, and the old block
 * stays as it was and stays the caller's. */
void *kelal_realloc(void *block, size_t nbytes);

/* Frees a block of this allocator. Null is allowed and does nothing. */
void kelal_free(void *block);

#ifdef __cplusplus
}
#endif

#endif
