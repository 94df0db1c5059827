// conversion.h: from what a caller writes to what a variable of a given type can hold.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kelhost/value.h>

#include "data_manager.h"

namespace kelhost {

// The number that a text is as a whole, read as Lua 5.1 reads it: blanks around it, hexadecimal and exponents are
// allowed.
std::optional<double> number_from_text(std::string_view text);

// The nearest value of a number type: fractions are cut toward zero for integers, then the type's range holds. Nothing
// for a NaN that an integer would have to hold.
struct FittedNumber {
    double number;
    bool clamped; // the value was out of the type's range
};
std::optional<FittedNumber> fit_number(double number, DataType type) noexcept;

// The type of a variable that is made from an input; nothing for Input::Kind::other.
std::optional<DataType> type_for(const Input &input) noexcept;

// The input as a message shows it: true, 40000, "text" (shortened when it is long), nil.
std::string describe(const Input &input);

} // namespace kelhost
