// report_junit.cpp: results for programs that read JUnit's XML.
#include "reports.h"

#include "../output.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace kelhost {

namespace {

// The length of the UTF-8 character that XML allows at the beginning of the text; 0 when there is none.
std::size_t allowed_character(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(text[i])); };
    const unsigned first = byte(0);
    if (first < 0x80) return first >= 0x20 || first == '\t' || first == '\n' ? 1 : 0;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    unsigned code = first & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0U) != 0x80) return 0;
        code = code << 6U | (byte(i) & 0x3fU);
    }
    constexpr unsigned smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
    const bool is_no_character = code == 0xfffe || code == 0xffff || code > 0x10ffff;
    return code < smallest[length] || is_surrogate || is_no_character ? 0 : length;
}

// For attributes too. What XML cannot hold becomes a question mark.
std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = allowed_character(text);
        if (text.front() == '<')
            result += "&lt;";
        else if (text.front() == '>')
            result += "&gt;";
        else if (text.front() == '&')
            result += "&amp;";
        else if (text.front() == '"')
            result += "&quot;";
        else if (length == 0)
            result += '?';
        else
            result += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

std::string attribute(const char *name, std::string_view value) {
    std::string text = escaped(value);
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end))
        text.replace(end, 1, "&#10;");
    return std::string(" ") + name + "=\"" + text + "\"";
}

std::string attribute(const char *name, double seconds) {
    char text[32];
    static_cast<void>(std::snprintf(text, sizeof text, "%.3f", seconds));
    return attribute(name, std::string_view(text));
}

std::string counts(const TestResults &results) {
    return attribute("tests", std::to_string(results.size()))
           + attribute("failures", std::to_string(count(results, TestStatus::failure)))
           + attribute("errors", std::to_string(count(results, TestStatus::error)))
           + attribute("skipped", std::to_string(count(results, TestStatus::pending)));
}

// What stands in a case that was not a success.
std::string outcome(const TestResult &result) {
    if (result.status == TestStatus::pending) return "<skipped" + attribute("message", result.message) + "/>";
    const std::string element = result.status == TestStatus::failure ? "failure" : "error";
    const std::string text = result.traceback.empty() ? result.message : result.message + "\n" + result.traceback;
    return "<" + element + attribute("message", result.message.substr(0, result.message.find('\n'))) + ">"
           + escaped(text) + "</" + element + ">";
}

std::string test_case(const TestResult &result) {
    std::string text = "    <testcase" + attribute("classname", result.test_file)
                       + attribute("name", result.name.empty() ? result.test_file : result.name)
                       + attribute("file", result.file);
    if (result.line > 0) text += attribute("line", std::to_string(result.line));
    text += attribute("time", result.seconds);
    if (result.status == TestStatus::success) return text + "/>\n";
    text += ">" + outcome(result);
    if (is_bad(result) && !result.printed.empty()) text += "<system-out>" + escaped(result.printed) + "</system-out>";
    return text + "</testcase>\n";
}

std::string test_suite(const TestResults &results) {
    double seconds = 0;
    std::string cases;
    for (const TestResult &result : results) {
        seconds += result.seconds;
        cases += test_case(result);
    }
    return "  <testsuite" + attribute("name", results.front().test_file) + counts(results) + attribute("time", seconds)
           + ">\n" + cases + "  </testsuite>\n";
}

void add(const TestResults &) {}

void finish(const TestResults &results, double seconds) { print(junit_document(results, seconds)); }

} // namespace

std::string junit_document(const TestResults &results, double seconds) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts(results)
                       + attribute("time", seconds) + ">\n";
    for (auto begin = results.begin(); begin != results.end();) {
        const auto end = std::find_if(
            begin, results.end(), [begin](const TestResult &result) { return result.test_file != begin->test_file; });
        text += test_suite({begin, end});
        begin = end;
    }
    return text + "</testsuites>\n";
}

const Report junit_report{add, finish};

} // namespace kelhost
