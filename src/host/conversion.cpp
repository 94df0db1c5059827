// conversion.cpp: the rules by which booleans, numbers and texts become values of a variable's type.
// Pure functions; nothing here logs or stores.
#include "conversion.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "wording.h"

namespace kelhost {

namespace {

bool is_blank(char character) { return std::strchr(" \t\n\v\f\r", character) != nullptr && character != '\0'; }

// The number that a whole C string of this length is.
std::optional<double> parse_number(const char *text, std::size_t length) {
    char *end = nullptr;
    const double number = std::strtod(text, &end);
    if (end == text) return std::nullopt;
    while (is_blank(*end)) ++end;
    if (end != text + length) return std::nullopt;
    return number;
}

} // namespace

std::optional<double> number_from_text(std::string_view text) {
    char buffer[64];
    if (text.size() >= sizeof buffer) return parse_number(std::string(text).c_str(), text.size());
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return parse_number(buffer, text.size());
}

std::optional<FittedNumber> fit_number(double number, DataType type) noexcept {
    if (type == DataType::f64) return FittedNumber{number, false};
    if (std::isnan(number)) return std::nullopt;
    const double whole = std::trunc(number) + 0.0; // so that -0 becomes 0
    if (whole < smallest_value(type)) return FittedNumber{smallest_value(type), true};
    if (whole > largest_value(type)) return FittedNumber{largest_value(type), true};
    return FittedNumber{whole, false};
}

std::optional<DataType> type_for(const Input &input) noexcept {
    switch (input.kind) {
    case Input::Kind::boolean:
        return DataType::u8;
    case Input::Kind::number: {
        const auto fitted = fit_number(input.number, DataType::i32);
        return fitted && fitted->number == input.number ? DataType::i32 : DataType::f64;
    }
    case Input::Kind::text:
        return DataType::string;
    case Input::Kind::other:
        break;
    }
    return std::nullopt;
}

std::string describe(const Input &input) {
    switch (input.kind) {
    case Input::Kind::boolean:
        return input.boolean ? "true" : "false";
    case Input::Kind::number:
        return to_text(Value(input.number));
    case Input::Kind::text:
        return quoted(input.text);
    case Input::Kind::other:
        break;
    }
    return std::string(input.text);
}

Input to_input(const Value &value) noexcept {
    Input input;
    if (const auto *text = std::get_if<std::string>(&value)) {
        input.kind = Input::Kind::text;
        input.text = *text;
    } else if (const auto *number = std::get_if<double>(&value)) {
        input.kind = Input::Kind::number;
        input.number = *number;
    }
    return input;
}

} // namespace kelhost
