// test_run.h: one test file, run by busted in the Lua state of a fresh application.
#pragma once

#include "../commands.h"
#include "../session.h"
#include "results.h"
#include "snapshots.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <lua.hpp>

namespace kelhost {

class TestRun {
public:
    // on_result gets each result as it is there.
    TestRun(const TestArguments &arguments, const std::string &file, std::function<void(TestResult)> on_result);
    TestRun(const TestRun &) = delete;
    TestRun &operator=(const TestRun &) = delete;

    // Loads and starts the application, runs the file, stops the application. False, after an error message, when
    // nothing could be run: the application or the plug-in is at fault, or busted is not there.
    bool execute();

private:
    struct HostFunctions; // what the Lua side asks of the tool

    struct LogLine {
        int level;
        std::string text;
        std::string place; // "tests/climate_spec.lua:12" when the test file's code caused it, or ""
    };

    void take_line(const LogEntry &entry);
    std::string place_in_test_file() const;
    bool run_file();
    static int run_in_state(lua_State *L);
    static int run_in_thread(lua_State *L);
    static void push_host(lua_State *L, TestRun &run);
    bool report_lines(const std::string &when);
    void report_unused_snapshots() const;
    void add_result(TestResult result);
    void add_error(const std::string &message);
    Application &app() { return session_.app(); }

    const TestArguments &arguments_;
    const std::string file_;
    const std::string folder_; // that holds the file
    const std::function<void(TestResult)> on_result_;
    const int shown_level_;

    std::vector<LogLine> lines_;  // warnings and errors that nobody has taken yet
    std::string printed_;         // by the application's scripts since the last result
    lua_State *runner_ = nullptr; // the thread in which busted runs
    lua_State *author_ = nullptr; // and the one in which the author's code does, while it does
    std::string missing_;         // why busted could not be loaded
    std::string broken_off_;      // why the run did not come to its end
    bool all_passed_ = true;
    Snapshots snapshots_;

    // What a function for Lua works with: it may hold no object of its own across a call that can raise.
    std::string text_;
    std::optional<Value> value_;
    std::vector<std::string> names_;
    std::vector<LogLine> taken_;

    Session session_; // last: its application calls back until it is gone
};

} // namespace kelhost
