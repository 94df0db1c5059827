// wording.h: how faults of an application are worded: what reading a file and checking a description have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <kelhost/description.h>

namespace kelhost {

// Whole numbers from least to most.
struct Range {
    std::int32_t least;
    std::int32_t most;

    constexpr bool holds(double number) const noexcept { return number >= least && number <= most; }
};
inline constexpr Range coordinates{-32768, 32767};
inline constexpr Range sizes{0, 32767};
inline constexpr Range screen_sizes{1, 32767};
inline constexpr Range alphas{0, 255};
inline constexpr Range font_sizes{1, 1000};
inline constexpr Range table_sides{0, 65535};

bool is_whole(double number) noexcept;

// The text in double quotes, fit for one line: control characters escaped, cut when it is long.
std::string quoted(std::string_view text);

// "found FOUND, expected EXPECTED".
std::string mismatch(std::string_view found, std::string_view expected);

// What is found and what is expected, in words.
std::string number_text(double number);                                // "40000", "1.5"
std::string range_text(Range range);                                   // "a whole number from 0 to 255"
std::string choice_text(const std::vector<std::string_view> &choices); // ""left", "center" or "right""
std::string type_text(DataType type);                                  // "a whole number from 0 to 255 for type "u8""
std::string too_deep_text(); // the message about a group below deepest_nesting

// Whether a variable of the type can hold the number. Not for DataType::string.
bool type_holds(DataType type, double number) noexcept;

} // namespace kelhost
