// report_terminal.cpp: results for somebody who watches: the look of busted's own terminal output.
#include "reports.h"

#include "../output.h"

#include <algorithm>
#include <cstdio>

namespace kelhost {

namespace {

struct Look {
    TestStatus status;
    Color color;
    const char *mark;       // on a terminal
    const char *plain_mark; // elsewhere
    const char *heading;    // of a description
};

constexpr Look looks[] = {
    {TestStatus::success, Color::green,   "●", "+", ""       },
    {TestStatus::failure, Color::red,     "◼", "-", "Failure"},
    {TestStatus::error,   Color::magenta, "✱", "*", "Error"  },
    {TestStatus::pending, Color::yellow,  "◌", ".", "Pending"},
};

const Look &look_of(TestStatus status) {
    return *std::find_if(std::begin(looks), std::end(looks), [status](const Look &l) { return l.status == status; });
}

void add(const TestResults &results) {
    const Look &look = look_of(results.back().status);
    print_colored(look.color, writes_to_terminal() ? look.mark : look.plain_mark);
    show_output();
}

void print_count(const TestResults &results, TestStatus status, const char *one, const char *many) {
    const std::size_t number = count(results, status);
    print_colored(look_of(status).color, std::to_string(number));
    print(std::string(" ") + (number == 1 ? one : many));
}

void print_counts(const TestResults &results, double seconds) {
    char time[32];
    static_cast<void>(std::snprintf(time, sizeof time, "%.3f", seconds));
    print_count(results, TestStatus::success, "success", "successes");
    print(" / ");
    print_count(results, TestStatus::failure, "failure", "failures");
    print(" / ");
    print_count(results, TestStatus::error, "error", "errors");
    print(" / ");
    print_count(results, TestStatus::pending, "pending", "pending");
    print(std::string(" : ") + time + " seconds\n");
}

void print_line(const std::string &text) {
    if (!text.empty()) print(text + "\n");
}

void describe(const TestResult &result) {
    const Look &look = look_of(result.status);
    print("\n");
    print_colored(look.color, look.heading);
    print(writes_to_terminal() ? " → " : " -> ");
    print_colored(Color::cyan, result.file);
    if (result.line > 0) {
        print(" @ ");
        print_colored(Color::cyan, std::to_string(result.line));
    }
    print("\n");
    print_line(result.name);
    print_line(result.message);
    if (is_bad(result)) print_line(details(result));
}

void finish(const TestResults &results, double seconds) {
    if (!results.empty()) print("\n");
    print_counts(results, seconds);
    for (const TestStatus status : {TestStatus::pending, TestStatus::failure, TestStatus::error})
        for (const TestResult &result : results)
            if (result.status == status) describe(result);
}

void add_listed(const TestResults &results) {
    const TestResult &result = results.back();
    if (is_bad(result)) return report_error(result.message);
    print(result.file + ":" + std::to_string(result.line) + ": " + result.name + "\n");
}

void finish_list(const TestResults &, double) {}

} // namespace

const Report terminal_report{add, finish};
const Report list_report{add_listed, finish_list};

std::size_t count(const TestResults &results, TestStatus status) {
    return static_cast<std::size_t>(std::count_if(
        results.begin(), results.end(), [status](const TestResult &result) { return result.status == status; }));
}

std::string details(const TestResult &result) {
    std::string text = result.traceback;
    if (result.printed.empty()) return text;
    if (!text.empty()) text += "\n";
    text += "printed:\n" + result.printed;
    if (text.ends_with('\n')) text.pop_back();
    return text;
}

} // namespace kelhost
