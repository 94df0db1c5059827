// app_log.cpp: the log function that plug-ins call: finds the log that a line belongs to.
#include <cstdarg>

#include <kel/kel.h>

#include "log.h"
#include "runtime.h"

extern "C" void kel_app_log(kl_application_t *app, int level, const char *format, ...) {
    kelhost::Log &log = app != nullptr ? kelhost::Runtime::of(app).log : kelhost::host_log();
    std::va_list arguments;
    va_start(arguments, format);
    log.format_list(level, format, arguments);
    va_end(arguments);
}
