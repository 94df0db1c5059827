// results.h: what became of each test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelhost {

// error: something outside a test's own expectations, such as a set-up, a file that does not load, or a Lua error.
// listed: not run, only named.
enum class TestStatus : std::uint8_t { success, failure, error, pending, listed };

struct TestResult {
    TestStatus status = TestStatus::success;
    std::string test_file; // as the user named it
    std::string name;      // "climate mode can be chosen"; "" for the file as a whole
    std::string file;      // where the test stands
    int line = 0;          // 0 when it is not known
    std::string message;   // of a failure, an error or a pending test
    std::string traceback; // "stack traceback:" and a level a line, or ""
    std::string printed;   // by the application's scripts since the test before
    double seconds = 0;
};

using TestResults = std::vector<TestResult>;

inline bool is_bad(const TestResult &result) {
    return result.status == TestStatus::failure || result.status == TestStatus::error;
}

} // namespace kelhost
