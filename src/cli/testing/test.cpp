// test.cpp: `kel test`: runs test files, each with a fresh application, and tells of all of them in one report.
#include "../commands.h"
#include "../output.h"
#include "../session.h"
#include "../whole_file.h"
#include "pattern.h"
#include "reports.h"
#include "test_files.h"
#include "test_run.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace kelhost {

namespace {

const Report &report_for(const TestArguments &arguments) {
    if (arguments.list) return list_report;
    if (arguments.format == "tap") return tap_report;
    return arguments.format == "junit" && arguments.output.empty() ? junit_report : terminal_report;
}

bool check_filter(const std::string &filter) {
    const std::string fault = fault_of_pattern(filter);
    if (!fault.empty()) report_error("--filter: \"" + filter + "\" is no Lua pattern: " + fault);
    return fault.empty();
}

// The files to run; empty, after error messages, when the application or a name is at fault.
std::vector<std::string> choose_files(const TestArguments &arguments) {
    Session session(arguments.session);
    if (!session.load()) return {};
    return find_test_files(arguments.files, session.app().description().folder);
}

// Nothing when a file could not be run at all.
std::optional<TestResults> run_files(const TestArguments &arguments, const std::vector<std::string> &files,
                                     const Report &report) {
    TestResults results;
    for (const std::string &file : files) {
        TestRun run(arguments, file, [&](TestResult result) {
            results.push_back(std::move(result));
            report.add(results);
        });
        if (!run.execute()) return std::nullopt;
    }
    return results;
}

bool write_output(const TestArguments &arguments, const TestResults &results, double seconds) {
    if (arguments.output.empty()) return true;
    const std::string fault = write_whole_file(arguments.output, junit_document(results, seconds));
    if (!fault.empty()) report_error("output file " + arguments.output + ": " + fault);
    return fault.empty();
}

ExitStatus verdict(const TestArguments &arguments, const TestResults &results) {
    if (results.empty()) { // a file without tests is an error, unless a filter is at work
        report_error("no test has a name that matches \"" + arguments.filter + "\"");
        return failed;
    }
    return std::any_of(results.begin(), results.end(), is_bad) ? failed : succeeded;
}

} // namespace

ExitStatus test(const TestArguments &arguments) {
    if (!check_filter(arguments.filter)) return bad_input;
    const std::vector<std::string> files = choose_files(arguments);
    if (files.empty()) return bad_input;
    const Report &report = report_for(arguments);
    const auto start = std::chrono::steady_clock::now();
    const std::optional<TestResults> results = run_files(arguments, files, report);
    if (!results) return bad_input;
    const std::chrono::duration<double> duration = std::chrono::steady_clock::now() - start;
    report.finish(*results, duration.count());
    if (!write_output(arguments, *results, duration.count())) return bad_input;
    return verdict(arguments, *results);
}

} // namespace kelhost
