// output.h: what the tool writes: results on standard output, messages on standard error, in their true order.
// Colours are used only on a terminal, and not when the environment holds a non-empty NO_COLOR.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <kelhost/diagnostic.h>
#include <kelhost/log.h>

namespace kelhost {

enum class Color : std::uint8_t { red, yellow, green, cyan, magenta, faint };

// Standard output.
void print(std::string_view text);                      // as it is
void print_colored(Color color, std::string_view text); // as it is; no line end of its own
void print_success(std::string_view text);              // green
bool writes_to_terminal();
void show_output();   // what was printed up to now, to whoever watches
bool finish_output(); // false, after an error message, when not everything could be written

// Standard error; each call writes whole lines.
void report_output(std::string_view text); // as it is: what scripts print where standard output is for results
void report_line(std::string_view text);
void report_error(std::string_view text); // "error: text"
void report_note(std::string_view text);  // "note: text"
void report_log(const LogEntry &entry);   // "warning: text"

// Each fault on a line, then how many there are in what the user named.
void report_faults(const Diagnostics &faults, const std::string &where);

// "1 fault", "3 faults".
std::string counted(std::size_t count, const std::string &noun);

} // namespace kelhost
