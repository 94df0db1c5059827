// test_log.cpp: the log: levels and their names, what reaches the sink, what is counted.
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include <kel/kel.h>
#include <kelhost/application.h>
#include <kelhost/log.h>

#include "log.h"

using kelhost::Log;
using kelhost::LogEntry;

namespace {

struct Lines {
    struct Line {
        int level;
        std::string text;
    };
    std::vector<Line> entries;
    kelhost::LogSink sink() {
        return [this](const LogEntry &entry) { entries.push_back({entry.level, std::string(entry.text)}); };
    }
    std::string texts() const {
        std::string joined;
        for (const Line &entry : entries) joined += std::to_string(entry.level) + "=" + entry.text + ";";
        return joined;
    }
};

} // namespace

TEST_CASE("each level has its name, and each name its level") {
    const std::vector<std::string> names = {"always", "error", "warning", "info",   "event1", "action",
                                            "diag1",  "diag2", "event2",  "trace1", "trace2"};
    for (std::size_t index = 0; index < names.size(); ++index) {
        CAPTURE(index);
        const int level = static_cast<int>(index) + KL_LOG_ALWAYS;
        CHECK(kelhost::log_level_name(level) == names[index]);
        CHECK(kelhost::log_level_from_name(names[index]) == level);
    }
}

TEST_CASE("a level out of range has the nearest name, an unknown name no level") {
    CHECK(kelhost::log_level_name(-7) == std::string("always"));
    CHECK(kelhost::log_level_name(10) == std::string("trace2"));
    CHECK_FALSE(kelhost::log_level_from_name("warn").has_value());
    CHECK_FALSE(kelhost::log_level_from_name("Warning").has_value());
    CHECK_FALSE(kelhost::log_level_from_name("").has_value());
}

TEST_CASE("lines up to the log's level reach the sink, in order, with their level") {
    Lines lines;
    Log log(lines.sink(), KL_LOG_INFO);
    log.write(KL_LOG_INFO, "one");
    log.write(KL_LOG_EVENT1, "dropped");
    log.write(KL_LOG_ALWAYS, "two");
    log.write(KL_LOG_ERROR, "three");
    CHECK(lines.texts() == "2=one;-1=two;0=three;");
}

TEST_CASE("a log at level always still lets always through, and nothing else") {
    Lines lines;
    Log log(lines.sink(), KL_LOG_ALWAYS);
    log.write(KL_LOG_ERROR, "dropped");
    log.write(KL_LOG_ALWAYS, "kept");
    CHECK(lines.texts() == "-1=kept;");
}

TEST_CASE("warnings and errors are counted, dropped ones too, and other levels are not") {
    Lines lines;
    Log log(lines.sink(), KL_LOG_ERROR);
    CHECK(log.warnings() == 0);
    log.write(KL_LOG_WARNING, "dropped");
    log.format(KL_LOG_WARNING, "dropped %d", 2);
    log.format(KL_LOG_ERROR, "kept");
    log.write(KL_LOG_ALWAYS, "not a warning");
    log.write(KL_LOG_INFO, "not a warning");
    CHECK(log.warnings() == 3);
    CHECK(lines.texts() == "0=kept;-1=not a warning;");
}

TEST_CASE("format fills in its arguments") {
    Lines lines;
    Log log(lines.sink(), KL_LOG_WARNING);
    log.format(KL_LOG_WARNING, "%s has %d of 100%%", "main.bar", 42);
    CHECK(lines.texts() == "1=main.bar has 42 of 100%;");
}

TEST_CASE("a line of any length is written whole") {
    for (const std::size_t length : {254U, 255U, 256U, 257U, 100000U}) {
        CAPTURE(length);
        Lines lines;
        Log log(lines.sink(), KL_LOG_WARNING);
        const std::string text = std::string(length - 1, 'x') + "!";
        log.format(KL_LOG_WARNING, "%s", text.c_str());
        REQUIRE(lines.entries.size() == 1);
        CHECK(lines.entries[0].text == text);
    }
}

TEST_CASE("line ends at a line's end are cut off, those inside stay") {
    Lines lines;
    Log log(lines.sink(), KL_LOG_WARNING);
    log.write(KL_LOG_WARNING, "failed\nstack traceback\r\n\n");
    log.write(KL_LOG_WARNING, "\n");
    CHECK(lines.texts() == "1=failed\nstack traceback;1=;");
}

TEST_CASE("a sink that throws loses its line and nothing more") {
    int calls = 0;
    Log log(
        [&calls](const LogEntry &) {
            ++calls;
            throw std::runtime_error("full");
        },
        KL_LOG_WARNING);
    log.write(KL_LOG_WARNING, "one");
    log.format(KL_LOG_WARNING, "%s", "two");
    CHECK(calls == 2);
    CHECK(log.warnings() == 2);
}

TEST_CASE("what is logged without an application goes to the host's sink, at every level") {
    Lines lines;
    kelhost::set_host_log_sink(lines.sink());
    kel_app_log(nullptr, KL_LOG_TRACE2, "handle %s", "main.ok");
    kel_app_log(nullptr, KL_LOG_ALWAYS, "%s", "now");
    kelhost::set_host_log_sink({});
    CHECK(lines.texts() == "9=handle main.ok;-1=now;");
}

TEST_CASE("what is logged for an application goes to its own log, up to its level, and not to the host's") {
    Lines lines;
    Lines host_lines;
    kelhost::ApplicationDescription description;
    description.name = "small";
    description.width = 320;
    description.height = 240;
    kelhost::Options options;
    options.log = lines.sink();
    options.log_level = KL_LOG_INFO;
    kelhost::Diagnostics faults;
    const auto app = kelhost::Application::create(description, std::move(options), faults);
    REQUIRE(app);

    kelhost::set_host_log_sink(host_lines.sink());
    kel_app_log(app->record(), KL_LOG_WARNING, "No such object in %s", "DOM");
    kel_app_log(app->record(), KL_LOG_INFO, "%d%%", 50);
    kel_app_log(app->record(), KL_LOG_EVENT1, "dropped");
    kel_app_log(nullptr, KL_LOG_WARNING, "nobody's");
    kelhost::set_host_log_sink({});

    CHECK(lines.texts() == "1=No such object in DOM;2=50%;");
    CHECK(app->warnings() == 1);
    CHECK(host_lines.texts() == "1=nobody's;");
}
