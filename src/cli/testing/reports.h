// reports.h: the forms in which results are told.
#pragma once

#include "results.h"

#include <cstddef>
#include <string>

namespace kelhost {

// A form that goes to standard output: what is written after each test, and at the end.
struct Report {
    void (*add)(const TestResults &results) = nullptr; // the last one is new
    void (*finish)(const TestResults &results, double seconds) = nullptr;
};

extern const Report terminal_report; // a mark a test, then the numbers and what failed; as busted does
extern const Report tap_report;      // the Test Anything Protocol: one stream with its plan at the end
extern const Report junit_report;    // the document at the end
extern const Report list_report;     // "file:line: name" a test

// One XML document: a suite a test file, a case a test. What is wrong in a file as a whole is a case of its own.
std::string junit_document(const TestResults &results, double seconds);

// How many of the results have the status.
std::size_t count(const TestResults &results, TestStatus status);

// What a reader of a bad result needs besides its message: the traceback and what was printed. Lines, the last one
// without an end; "" when there is nothing.
std::string details(const TestResult &result);

} // namespace kelhost
