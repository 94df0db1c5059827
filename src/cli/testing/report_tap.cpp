// report_tap.cpp: results for programs that read the Test Anything Protocol.
#include "reports.h"

#include "../output.h"

#include <string_view>

namespace kelhost {

namespace {

// A description is one line; what follows a # in it would be a directive.
std::string description(const TestResult &result) {
    std::string text;
    for (const char character : result.name.empty() ? result.test_file : result.name) {
        if (character == '#') text += '\\';
        text += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
    }
    return text;
}

void print_comment(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        print(std::string("# ").append(line).append("\n"));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
}

void add(const TestResults &results) {
    const TestResult &result = results.back();
    print((is_bad(result) ? "not ok " : "ok ") + std::to_string(results.size()) + " - " + description(result));
    if (result.status == TestStatus::pending) print(" # SKIP " + result.message.substr(0, result.message.find('\n')));
    print("\n");
    if (is_bad(result)) {
        if (result.line > 0) print_comment(result.file + " @ " + std::to_string(result.line));
        print_comment(result.message);
        print_comment(details(result));
    }
    show_output();
}

void finish(const TestResults &results, double) { print("1.." + std::to_string(results.size()) + "\n"); }

} // namespace

const Report tap_report{add, finish};

} // namespace kelhost
