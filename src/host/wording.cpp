// wording.cpp: the parts that the messages about an application are made of.
#include "wording.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "model.h"

namespace kelhost {

namespace {

constexpr std::size_t longest_quotation = 60;

// Bytes of the UTF-8 character at the text's beginning; 0 when there is none, as in a file of another encoding.
std::size_t character_length(std::string_view text) {
    const unsigned first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
    for (const char byte : text.substr(1, length - 1))
        if ((static_cast<unsigned char>(byte) & 0xC0U) != 0x80U) return 0;
    return length;
}

// The character as it stands between quotes.
std::string escaped(std::string_view character, const char *format) {
    char escape[8];
    std::snprintf(escape, sizeof escape, format, static_cast<unsigned>(static_cast<unsigned char>(character.front())));
    return escape;
}

} // namespace

bool is_whole(double number) noexcept { return std::isfinite(number) && std::trunc(number) == number; }

std::string quoted(std::string_view text) {
    std::string quotation = "\"";
    std::string_view rest = text;
    while (!rest.empty() && text.size() - rest.size() < longest_quotation) {
        const std::size_t length = character_length(rest);
        const std::string_view character = rest.substr(0, std::max<std::size_t>(length, 1));
        const char first = character.front();
        if (length == 0)
            quotation += escaped(character, "\\x%02X");
        else if (static_cast<unsigned char>(first) < 0x20 || first == 0x7F)
            quotation += escaped(character, "\\u%04X");
        else if (first == '"' || first == '\\')
            quotation.append(1, '\\').append(character);
        else
            quotation += character;
        rest.remove_prefix(character.size());
    }
    if (!rest.empty()) quotation += "...";
    return quotation + '"';
}

std::string mismatch(std::string_view found, std::string_view expected) {
    return "found " + std::string(found) + ", expected " + std::string(expected);
}

std::string number_text(double number) { return to_text(Value(number)); }

std::string range_text(Range range) {
    return "a whole number from " + std::to_string(range.least) + " to " + std::to_string(range.most);
}

std::string choice_text(const std::vector<std::string_view> &choices) {
    std::string text;
    std::size_t left = choices.size();
    for (const std::string_view choice : choices) {
        text += quoted(choice);
        --left;
        if (left > 0) text += left == 1 ? " or " : ", ";
    }
    return text;
}

std::string type_text(DataType type) {
    std::string text = "a string";
    if (type == DataType::f64)
        text = "a finite number";
    else if (type != DataType::string)
        text = "a whole number from " + number_text(smallest_value(type)) + " to " + number_text(largest_value(type));
    return text + " for type " + quoted(data_type_name(type));
}

std::string too_deep_text() {
    const std::string most = std::to_string(deepest_nesting);
    return mismatch("a group inside " + most + " others", "groups nested at most " + most + " deep");
}

bool type_holds(DataType type, double number) noexcept {
    if (type == DataType::f64) return std::isfinite(number);
    return is_whole(number) && number >= smallest_value(type) && number <= largest_value(type);
}

} // namespace kelhost
