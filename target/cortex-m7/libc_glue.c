/* libc_glue.c: what the C library asks of a system and its own semihosting layer answers wrongly for this board. */
#include <errno.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <sys/reent.h>
#include <sys/stat.h>
#include <unistd.h>

#include "semihosting.h"

extern uint8_t heap_start[];
extern uint8_t heap_end[];

void *_sbrk(ptrdiff_t increment);
int _isatty_r(struct _reent *library, int descriptor);
int _open_r(struct _reent *library, const char *path, int flags, int mode);
int _open(const char *path, int flags, int mode); /* the semihosting layer's */

/* The library's own takes the stack pointer for the heap's end, but here the stack lies below the heap. */
void *_sbrk(ptrdiff_t increment) {
    static uint8_t *end = heap_start;
    if (increment > heap_end - end || increment < heap_start - end) {
        errno = ENOMEM;
        return (void *)-1; /* NOLINT: what the library expects */
    }
    uint8_t *const previous = end;
    end += increment;
    return previous;
}

/* Where the emulator's console leads is not known here: no colours then. */
int _isatty_r(struct _reent *library, int descriptor) {
    (void)library;
    (void)descriptor;
    return 0;
}

/* The emulator opens a folder, and then there is nothing to read in it. */
int _open_r(struct _reent *library, const char *path, int flags, int mode) {
    if (semihosting_is_folder(path)) {
        library->_errno = EISDIR;
        return -1;
    }
    errno = 0;
    const int descriptor = _open(path, flags, mode);
    if (descriptor == -1) library->_errno = errno != 0 ? errno : EIO;
    return descriptor;
}

/* There is no call for folders: the shell of the emulator's machine does it. */
static int run_on_path(const char *command, const char *path, int reason) {
    char line[1024];
    if (strchr(path, '\'') != NULL) {
        errno = EINVAL;
        return -1;
    }
    const int length = snprintf(line, sizeof line, "%s '%s' 2>/dev/null", command, path);
    if (length < (int)sizeof line && semihosting_run(line) == 0) return 0;
    errno = reason;
    return -1;
}

int mkdir(const char *path, mode_t mode) {
    (void)mode;
    return run_on_path("mkdir", path, EEXIST);
}

int rmdir(const char *path) { return run_on_path("rmdir", path, ENOTEMPTY); }
