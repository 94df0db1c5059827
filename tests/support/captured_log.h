// captured_log.h: a log whose lines a test must account for.
#pragma once

#include <string>
#include <utility>

#include <doctest/doctest.h>

#include "log.h"

class CapturedLog {
public:
    CapturedLog() : log([this](const kelhost::LogEntry &entry) { append(entry); }, KL_LOG_TRACE2) {}
    ~CapturedLog() {
        INFO("logged: ", lines_);
        CHECK(lines_.empty());
    }
    CapturedLog(const CapturedLog &) = delete;
    CapturedLog &operator=(const CapturedLog &) = delete;

    // What was logged since this was last asked, "level: text" each, with a line end between two lines.
    std::string take() { return std::exchange(lines_, {}); }

private:
    void append(const kelhost::LogEntry &entry) {
        if (!lines_.empty()) lines_ += '\n';
        lines_ += std::string(kelhost::log_level_name(entry.level)) + ": " + std::string(entry.text);
    }

    std::string lines_;

public:
    kelhost::Log log;
};
