// harness.h: what a conformance test is written with: a started application, Lua code run in it, and what came of that.
#pragma once

#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "host_under_test.h"
#include "recorder.h"

namespace doctest {
template <> struct StringMaker<std::vector<std::string>> {
    static String convert(const std::vector<std::string> &lines) {
        std::string text;
        for (const std::string &line : lines) text += "\n    " + line;
        return text.c_str();
    }
};

// A captured text shows as itself, not as an address.
template <> struct StringMaker<const char *> {
    static String convert(const char *text) { return text; }
};
} // namespace doctest

namespace conformance {

using Lines = std::vector<std::string>;

// The first line, also where a test that memory does not suffice for has none.
inline std::string first(const Lines &lines) { return lines.empty() ? "(none)" : lines.front(); }

// What a piece of Lua code gave. Values read like code: nil, true, 10, "text"; an array {1, 2}; another table {a=1,
// b=2} with its keys in order; a handle is its metatable's name and its qualified name: <control_object main.ok>.
struct Outcome {
    bool ok = false;
    Lines results;     // one line a result: no result differs from nil
    std::string error; // without the position in front; empty when ok
};

// The application that tests start from; see sample.cpp.
const kc_application_t &sample();

// A host with a started application for the time of one test. At its end it checks that the plug-in left nothing
// behind, kept the interface, and wrote no warning that the test did not ask for.
class Session {
public:
    explicit Session(const kc_application_t &application = sample());
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Runs a chunk. The calls that it makes are calls() until the next run.
    Outcome run(const std::string &code);

    // run() for code that must work; its results.
    Lines results(const std::string &code);

    // run() for code that must raise; the error's text.
    std::string error(const std::string &code);

    // The recorder's lines of the last run, warnings and errors among them. Taking them is asking for their warnings.
    Lines calls();

    // Those of them that are warnings, without "warning: ".
    Lines warnings();

    // Those of them that are errors which returned, without "error: ".
    Lines errors();

    lua_State *lua() { return kc_host_lua(host_); }
    kl_application_t *application() { return kc_host_application(host_); }

    // Lua collects at the test's own word from here on, so that blocks can be counted.
    void hold_collection();

    // Sets a global of the Lua state to a C function, for what only C can do.
    void define(const char *name, int (*function)(lua_State *L));

private:
    void account_for_warnings();

    kc_host_t *host_;
    bool warnings_taken_ = true;
};

// For the time of its life, errors of the plug-in return instead of unwinding.
class ReturningErrors {
public:
    ReturningErrors() { kc_set_error_returns(1); }
    ~ReturningErrors() { kc_set_error_returns(0); }
};

} // namespace conformance
