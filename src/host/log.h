// log.h: the log of one application.
#pragma once

#include <cstdarg>
#include <cstddef>

#include <kelhost/log.h>

namespace kelhost {

class Log {
public:
    // An empty sink writes "warning: text" to standard error.
    Log(LogSink sink, int level);

    // Writes a line unless its level lies above the log's. A line end at its end is cut off. Never throws: what cannot
    // be written is dropped.
    void write(int level, std::string_view text) noexcept;

#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    void
    format(int level, const char *format, ...) noexcept;
    void format_list(int level, const char *format, std::va_list arguments) noexcept;

    // Lines written at KL_LOG_WARNING and KL_LOG_ERROR, dropped ones included.
    std::size_t warnings() const noexcept { return warnings_; }

private:
    bool passes(int level) noexcept; // and counts warnings
    void hand_on(int level, std::string_view text) noexcept;
    void hand_on_long(int level, std::size_t length, const char *format, std::va_list arguments) noexcept;

    LogSink sink_;
    int level_;
    std::size_t warnings_ = 0;
};

// The log of what is said without an application: every level, to the sink of set_host_log_sink().
Log &host_log() noexcept;

} // namespace kelhost
