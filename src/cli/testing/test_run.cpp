// test_run.cpp: starts the application, lets the Lua side run the file, and turns what was logged outside of tests
// into results.
#include "test_run.h"

#include "embedded_lua.h"
#include "private_globals.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelhost {

namespace {

// Warnings fail tests whether the user wants to see them or not.
SessionArguments with_warnings(SessionArguments arguments) {
    const auto level = log_level_from_name(arguments.log_level);
    if (level && *level < KL_LOG_WARNING) arguments.log_level = log_level_name(KL_LOG_WARNING);
    return arguments;
}

std::string folder_of(const std::string &file) {
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? "." : file.substr(0, slash);
}

// Lua's C code must not be left by an exception; a text that finds no memory stays empty.
void assign(std::string &text, const char *value) noexcept {
    try {
        text = value != nullptr ? value : "(no message)";
    } catch (...) {
        text.clear();
    }
}

// [-0, +1] Pushes a piece of the tool's own Lua code. May raise.
void load(lua_State *L, std::string_view code, const char *name) {
    if (luaL_loadbuffer(L, code.data(), code.size(), name) != 0) lua_error(L);
}

} // namespace

TestRun::TestRun(const TestArguments &arguments, const std::string &file, std::function<void(TestResult)> on_result)
    : arguments_(arguments), file_(file), folder_(folder_of(file)), on_result_(std::move(on_result)),
      shown_level_(log_level_from_name(arguments.session.log_level).value_or(KL_LOG_WARNING)),
      snapshots_(file, arguments.update_snapshots),
      session_(with_warnings(arguments.session), {[this](const LogEntry &entry) { take_line(entry); },
                                                  [this](std::string_view text) { printed_ += text; }}) {}

bool TestRun::execute() {
    if (!session_.load() || !session_.start()) return false;
    const bool ran = !report_lines("started") || run_file();
    session_.stop();
    report_lines("stopped");
    if (ran) report_unused_snapshots();
    return ran;
}

// ---- The log ----

void TestRun::take_line(const LogEntry &entry) {
    if (entry.level == KL_LOG_WARNING || entry.level == KL_LOG_ERROR)
        lines_.push_back({entry.level, std::string(entry.text), place_in_test_file()});
    else if (entry.level <= shown_level_)
        report_log(entry);
}

// Of the innermost function that stands there.
std::string TestRun::place_in_test_file() const {
    if (author_ == nullptr) return {};
    lua_Debug frame;
    for (int level = 0; lua_getstack(author_, level, &frame) != 0; ++level) {
        lua_getinfo(author_, "Sl", &frame);
        if (frame.source[0] == '@' && file_ == frame.source + 1)
            return std::string(frame.short_src).append(":").append(std::to_string(frame.currentline));
    }
    return {};
}

// What was logged when the application was started or stopped: an error is a result, a warning is shown. False when
// there was an error.
bool TestRun::report_lines(const std::string &when) {
    const std::vector<LogLine> lines = std::exchange(lines_, {});
    const bool is_clean =
        std::none_of(lines.begin(), lines.end(), [](const LogLine &line) { return line.level == KL_LOG_ERROR; });
    std::string message = "the application failed when it was " + when + ":";
    for (const LogLine &line : lines) {
        message += "\n" + std::string(log_level_name(line.level)) + ": " + line.text;
        if (is_clean && line.level <= shown_level_) report_log({line.level, line.text});
    }
    if (!is_clean) add_error(message);
    printed_.clear();
    return is_clean;
}

// ---- Running the file ----

bool TestRun::run_file() {
    if (lua_cpcall(app().lua(), run_in_state, this) != 0) {
        assign(broken_off_, lua_tostring(app().lua(), -1));
        lua_pop(app().lua(), 1);
    }
    if (!missing_.empty()) {
        const std::string first_line = missing_.substr(0, missing_.find('\n'));
        const std::string reason = first_line.substr(0, first_line.find_last_not_of(':') + 1);
        report_error("busted cannot be loaded: " + reason + "; install the package lua-busted");
        return false;
    }
    if (!broken_off_.empty()) add_error("the run of this file broke off: " + broken_off_);
    return true;
}

// In the application's own thread, which is of no further use here: its globals are the scripts'.
int TestRun::run_in_state(lua_State *L) {
    auto &run = *static_cast<TestRun *>(lua_touserdata(L, 1));
    run.runner_ = push_thread_with_libraries(L);
    if (lua_cpcall(run.runner_, run_in_thread, &run) != 0) assign(run.broken_off_, lua_tostring(run.runner_, -1));
    run.runner_ = nullptr;
    return 0;
}

int TestRun::run_in_thread(lua_State *L) {
    auto &run = *static_cast<TestRun *>(lua_touserdata(L, 1));
    load(L, runner_lua, "=kel test");
    push_host(L, run);
    load(L, kel_test_lua, "=kel_test");
    lua_call(L, 2, 1);
    if (lua_isstring(L, -1)) assign(run.missing_, lua_tostring(L, -1));
    return 0;
}

// ---- Results ----

void TestRun::add_result(TestResult result) {
    result.test_file = file_;
    result.printed = std::exchange(printed_, {});
    if (result.status != TestStatus::success) all_passed_ = false;
    on_result_(std::move(result));
}

void TestRun::add_error(const std::string &message) {
    TestResult result;
    result.status = TestStatus::error;
    result.file = file_;
    result.message = message;
    add_result(std::move(result));
}

// Tests that were left out, or did not come to their end, may compare what others do not.
void TestRun::report_unused_snapshots() const {
    if (!all_passed_ || !arguments_.filter.empty()) return;
    for (const std::string &snapshot : snapshots_.unused())
        report_note("snapshot " + snapshot + ": no test compares it");
}

} // namespace kelhost
