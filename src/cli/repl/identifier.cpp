// identifier.cpp: knows the language's own words.
#include "identifier.h"

#include <algorithm>
#include <iterator>

namespace kelhost {

namespace {

constexpr std::string_view reserved_words[] = {
    "and",   "break", "do",  "else", "elseif", "end",    "false", "for",  "function", "if",    "in",
    "local", "nil",   "not", "or",   "repeat", "return", "then",  "true", "until",    "while",
};

bool is_digit(char letter) noexcept { return letter >= '0' && letter <= '9'; }

bool is_letter(char letter) noexcept {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
}

} // namespace

bool is_identifier(std::string_view text) noexcept {
    if (text.empty() || is_digit(text.front())) return false;
    if (std::find(std::begin(reserved_words), std::end(reserved_words), text) != std::end(reserved_words)) return false;
    return std::all_of(text.begin(), text.end(), [](char letter) { return is_letter(letter) || is_digit(letter); });
}

} // namespace kelhost
