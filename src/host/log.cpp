// log.cpp: filters, counts and hands on log lines. Nothing here throws: a line that cannot be written is dropped.
#include "log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

#include <kel/kel.h>

namespace kelhost {

namespace {

constexpr std::array level_names = {"always", "error", "warning", "info",   "event1", "action",
                                    "diag1",  "diag2", "event2",  "trace1", "trace2"};
static_assert(level_names.size() == KL_LOG_TRACE2 - KL_LOG_ALWAYS + 1, "one name a level");

std::string_view without_line_end(std::string_view text) {
    while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
    return text;
}

void write_to_standard_error(int level, std::string_view text) {
    std::fprintf(stderr, "%s: ", log_level_name(level));
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fputc('\n', stderr);
}

} // namespace

const char *log_level_name(int level) noexcept {
    const int nearest = std::clamp<int>(level, KL_LOG_ALWAYS, KL_LOG_TRACE2);
    return level_names[static_cast<std::size_t>(nearest - KL_LOG_ALWAYS)];
}

std::optional<int> log_level_from_name(std::string_view name) noexcept {
    for (int level = KL_LOG_ALWAYS; level <= KL_LOG_TRACE2; ++level)
        if (name == log_level_name(level)) return level;
    return std::nullopt;
}

Log::Log(LogSink sink, int level) : sink_(std::move(sink)), level_(level) {}

bool Log::passes(int level) noexcept {
    if (level == KL_LOG_WARNING || level == KL_LOG_ERROR) ++warnings_;
    return level <= level_;
}

void Log::hand_on(int level, std::string_view text) noexcept {
    try {
        text = without_line_end(text);
        if (sink_)
            sink_({level, text});
        else
            write_to_standard_error(level, text);
    } catch (...) {
        // A sink that fails: there is nobody left to tell.
    }
}

void Log::write(int level, std::string_view text) noexcept {
    if (passes(level)) hand_on(level, text);
}

void Log::format(int level, const char *format, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, format);
    format_list(level, format, arguments);
    va_end(arguments);
}

void Log::format_list(int level, const char *format, std::va_list arguments) noexcept {
    if (!passes(level)) return;
    char line[256];
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof line)
        hand_on(level, {line, static_cast<std::size_t>(length)});
    else if (length >= 0)
        hand_on_long(level, static_cast<std::size_t>(length), format, again);
    va_end(again);
}

void Log::hand_on_long(int level, std::size_t length, const char *format, std::va_list arguments) noexcept {
    try {
        std::vector<char> line(length + 1);
        if (std::vsnprintf(line.data(), line.size(), format, arguments) >= 0) hand_on(level, {line.data(), length});
    } catch (...) {
        // Out of memory.
    }
}

Log &host_log() noexcept {
    static Log log({}, KL_LOG_TRACE2);
    return log;
}

void set_host_log_sink(LogSink sink) { host_log() = Log(std::move(sink), KL_LOG_TRACE2); }

} // namespace kelhost
