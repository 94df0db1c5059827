// value.h: the types that a data variable can have, and the values they hold.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kelhost {

// The type of a data variable. The order is the format index that the data manager's C interface speaks of.
enum class DataType : std::uint8_t { i8, u8, i16, u16, i32, u32, f64, string };
inline constexpr int data_type_count = 8;

// A variable's value. Every number type fits a double exactly; a string variable holds the string alternative.
using Value = std::variant<double, std::string>;

// "i8", "u8", ... "string": the names of the application file and of the C interface.
const char *data_type_name(DataType type) noexcept;
std::optional<DataType> data_type_from_name(std::string_view name) noexcept;

// Smallest and largest value of a number type; for f64 the finite range. Not for DataType::string.
double smallest_value(DataType type) noexcept;
double largest_value(DataType type) noexcept;

// The value as a script would print it: numbers with up to 14 significant digits, strings as they are.
std::string to_text(const Value &value);

} // namespace kelhost
