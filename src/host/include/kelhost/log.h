// log.h: where log lines go.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kelhost {

// One line. level is one of KL_LOG_ALWAYS (-1) to KL_LOG_TRACE2 (9), see <kel/kel.h>; text has no line end, but a
// script error's text holds its traceback on further lines. It is valid during the call alone: a line is handed on
// without asking for memory, so that one that says that there is none gets through.
struct LogEntry {
    int level = 0;
    std::string_view text;
};

// Receives each line that passes the log's level. Must not throw.
using LogSink = std::function<void(const LogEntry &)>;

// "always", "error", "warning", "info", "event1", "action", "diag1", "diag2", "event2", "trace1", "trace2".
// A level outside that range has the name of the nearest.
const char *log_level_name(int level) noexcept;
std::optional<int> log_level_from_name(std::string_view name) noexcept;

// Receives what is logged without an application. Until it is set, such lines go to standard error.
void set_host_log_sink(LogSink sink);

} // namespace kelhost
