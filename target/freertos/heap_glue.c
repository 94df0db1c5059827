/* heap_glue.c: the C library's allocator, which C++ and Lua use too, over the kernel's.
 * The kernel's functions keep the other tasks out, so the library's own locks around its allocator are not needed; and
 * they must not be called from interrupts. */
#include <errno.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <FreeRTOS.h>

#include <sys/reent.h>

/* Stands before each block, because the kernel does not tell a block's size, and it has no realloc(). */
typedef union {
    size_t size;
    uint8_t alignment[portBYTE_ALIGNMENT];
} header_t;

static header_t *header_of(void *block) { return (header_t *)block - 1; }

/* The library reaches its allocator by these names. */
void *_malloc_r(struct _reent *library, size_t size);
void *_calloc_r(struct _reent *library, size_t count, size_t size);
void *_realloc_r(struct _reent *library, void *block, size_t size);
void _free_r(struct _reent *library, void *block);

void *_malloc_r(struct _reent *library, size_t size) {
    header_t *const header = size <= SIZE_MAX - sizeof(header_t) ? pvPortMalloc(sizeof(header_t) + size) : NULL;
    if (header == NULL) {
        library->_errno = ENOMEM;
        return NULL;
    }
    header->size = size;
    return header + 1;
}

void _free_r(struct _reent *library, void *block) {
    (void)library;
    if (block != NULL) vPortFree(header_of(block));
}

void *_calloc_r(struct _reent *library, size_t count, size_t size) {
    size_t total = 0;
    if (__builtin_mul_overflow(count, size, &total)) total = SIZE_MAX;
    void *const block = _malloc_r(library, total);
    return block != NULL ? memset(block, 0, total) : NULL;
}

/* A smaller block is always to be had: Lua relies on it. Where there is no memory for it, it is the old one. */
void *_realloc_r(struct _reent *library, void *block, size_t size) {
    if (block == NULL) return _malloc_r(library, size);
    if (size == 0) {
        _free_r(library, block);
        return NULL;
    }
    const size_t old_size = header_of(block)->size;
    void *const moved = _malloc_r(library, size);
    if (moved == NULL) return size <= old_size ? block : NULL;
    memcpy(moved, block, size < old_size ? size : old_size);
    _free_r(library, block);
    return moved;
}

void *malloc(size_t size) { return _malloc_r(_REENT, size); }
void *calloc(size_t count, size_t size) { return _calloc_r(_REENT, count, size); }
void *realloc(void *block, size_t size) { return _realloc_r(_REENT, block, size); }
void free(void *block) { _free_r(_REENT, block); }
