/* failures.h: what the kernel counted. */
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* How often the heap had no block of the size that was asked for. */
size_t requests_without_memory(void);

#ifdef __cplusplus
}
#endif
