/* kel.h: the whole host interface in one include, and the log. */
#ifndef KEL_KEL_H
#define KEL_KEL_H

#include <kel/kel_types.h>
#include <kel/sdk/darray.h>
#include <kel/sdk/data_mgr.h>
#include <kel/sdk/deployment.h>
#include <kel/sdk/io_mgr.h>
#include <kel/sdk/kelal_alloc.h>
#include <kel/sdk/managers.h>
#include <kel/sdk/plugin.h>
#include <kel/sdk/string_map.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Log levels, most important first. */
enum {
    KL_LOG_ALWAYS = -1,
    KL_LOG_ERROR,
    KL_LOG_WARNING,
    KL_LOG_INFO,
    KL_LOG_EVENT1,
    KL_LOG_ACTION,
    KL_LOG_DIAG1,
    KL_LOG_DIAG2,
    KL_LOG_EVENT2,
    KL_LOG_TRACE1,
    KL_LOG_TRACE2
};

/* Writes one line to the application's log.
 *   app     whose log it is; null is allowed and means the log of the host itself
 *   level   KL_LOG_ALWAYS to KL_LOG_TRACE2
 *   format  printf-style, never null, without a line end; it and its arguments stay the caller's
 * Never fails and never raises: a line that cannot be written is dropped. */
#if defined(__GNUC__)
__attribute__((format(printf, 3, 4)))
#endif
void kel_app_log(kl_application_t *app, int level, const char *format, ...);

#ifdef __cplusplus
}
#endif

#endif
