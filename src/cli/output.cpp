// output.cpp: writes to the two standard streams. Nothing else in the tool touches them, but for the parser's help
// text, which goes through std::cout and so into stdout's buffer.
#include "output.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include <kel/kel.h>

namespace kelhost {

namespace {

// In the order of Color.
constexpr const char *color_codes[] = {"\033[1;31m", "\033[33m", "\033[32m", "\033[36m", "\033[35m", "\033[2m"};

bool wants_colors(std::FILE *stream) {
    const char *no_color = std::getenv("NO_COLOR");
    const char *terminal = std::getenv("TERM");
    if (no_color != nullptr && *no_color != '\0') return false;
    if (terminal != nullptr && std::strcmp(terminal, "dumb") == 0) return false;
    return isatty(fileno(stream)) != 0;
}

// A failure stays in the stream's error indicator, which finish_output() reads.
void write(std::FILE *stream, std::string_view text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
}

// Standard output goes first, so that both streams, sent to one place, keep the order in which things happened.
void begin_report() { show_output(); }

void end_report() {
    write(stderr, "\n");
    static_cast<void>(std::fflush(stderr));
}

void write_colored(std::FILE *stream, Color color, std::string_view text) {
    if (!wants_colors(stream)) return write(stream, text);
    write(stream, color_codes[static_cast<std::size_t>(color)]);
    write(stream, text);
    write(stream, "\033[0m");
}

void report_labelled(Color color, std::string_view label, std::string_view text) {
    begin_report();
    write_colored(stderr, color, label);
    write(stderr, ": ");
    write(stderr, text);
    end_report();
}

Color color_of(int level) {
    if (level == KL_LOG_ERROR) return Color::red;
    return level == KL_LOG_WARNING ? Color::yellow : Color::cyan;
}

} // namespace

void print(std::string_view text) { write(stdout, text); }

void print_colored(Color color, std::string_view text) { write_colored(stdout, color, text); }

void print_success(std::string_view text) { print_colored(Color::green, text); }

bool writes_to_terminal() { return isatty(fileno(stdout)) != 0; }

void show_output() { static_cast<void>(std::fflush(stdout)); }

bool finish_output() {
    const std::string reason = std::fflush(stdout) == 0 ? std::string() : std::string(": ") + std::strerror(errno);
    if (reason.empty() && std::ferror(stdout) == 0) return true;
    report_error("standard output cannot be written" + reason);
    return false;
}

void report_output(std::string_view text) {
    begin_report();
    write(stderr, text);
}

void report_line(std::string_view text) {
    begin_report();
    write(stderr, text);
    end_report();
}

void report_error(std::string_view text) { report_labelled(Color::red, "error", text); }

void report_note(std::string_view text) { report_labelled(Color::cyan, "note", text); }

void report_log(const LogEntry &entry) {
    report_labelled(color_of(entry.level), log_level_name(entry.level), entry.text);
}

void report_faults(const Diagnostics &faults, const std::string &where) {
    for (const Diagnostic &fault : faults) report_line(to_text(fault));
    report_line(counted(faults.size(), "fault") + " in " + where);
}

std::string counted(std::size_t count, const std::string &noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace kelhost
