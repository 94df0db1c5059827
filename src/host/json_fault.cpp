// json_fault.cpp: turns what the JSON library says of a fault into what was found and what was expected.
// The library names its tokens, not what a user typed, and counts to the last byte that it read.
#include "json_fault.h"

#include <algorithm>
#include <cstdio>

#include "wording.h"

namespace kelhost {

namespace {

struct Phrase {
    std::string_view original;
    std::string_view ours;
};

// How the library's message ends, and what that means to a user.
constexpr Phrase expectations[] = {
    {"; expected string literal", "a member name in double quotes"},
    {"; expected ':'",            "\":\""                         },
    {"; expected ']'",            "\",\" or \"]\""                },
    {"; expected '}'",            "\",\" or \"}\""                },
    {"; expected end of input",   "the end of the file"           },
};

// Tokens that always look the same.
constexpr Phrase fixed_tokens[] = {
    {"unexpected true literal",  "true" },
    {"unexpected false literal", "false"},
    {"unexpected null literal",  "null" },
    {"unexpected '['",           "["    },
    {"unexpected ']'",           "]"    },
    {"unexpected '{'",           "{"    },
    {"unexpected '}'",           "}"    },
    {"unexpected ':'",           ":"    },
    {"unexpected ','",           ","    },
};

constexpr Phrase string_faults[] = {
    {"forbidden character after backslash", "found an unknown escape, expected \\\\ for a backslash"    },
    {"must be followed by 4 hex digits",    "found \\u, expected four hexadecimal digits after it"      },
    {"surrogate",                           "found half of a character, expected both as \\uXXXX\\uXXXX"},
};

std::string_view expected_of(std::string_view library_message) {
    for (const Phrase &expectation : expectations)
        if (library_message.ends_with(expectation.original)) return expectation.ours;
    return "a value";
}

// "syntax error while parsing value - invalid literal; last read: 'x'" -> "invalid literal; last read: 'x'"
std::string_view detail_of(std::string_view library_message) {
    const std::size_t dash = library_message.find(" - ");
    return dash == std::string_view::npos ? library_message : library_message.substr(dash + 3);
}

bool is_word_character(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
           || (character >= '0' && character <= '9') || character == '_' || character == '+' || character == '-'
           || character == '.';
}

// Where the word begins and ends that a reader sees at the offset: "tru" where a literal broke off at its end.
std::size_t word_begin(std::string_view text, std::size_t offset) {
    while (offset > 0 && is_word_character(text[offset - 1])) --offset;
    return offset;
}

std::string_view word_at(std::string_view text, std::size_t begin) {
    std::size_t end = begin;
    while (end < text.size() && is_word_character(text[end])) ++end;
    if (end == begin && end < text.size()) ++end;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) ++end;
    return text.substr(begin, end - begin);
}

JsonFault word_fault(std::string_view text, std::size_t offset, std::string_view expected) {
    const std::size_t begin = word_begin(text, offset);
    if (text.substr(begin).starts_with("//") || text.substr(begin).starts_with("/*"))
        return {begin, mismatch("a comment", expected) + "; JSON has no comments"};
    return {begin, mismatch(quoted(word_at(text, begin)), expected)};
}

std::string control_character_message(unsigned code) {
    if (code == '\n' || code == '\r') return "found the end of the line in a string, expected a closing quote";
    char message[96];
    std::snprintf(message, sizeof message, "found the control character U+%04X in a string, expected \\u%04X%s", code,
                  code, code == '\t' ? " or \\t" : "");
    return message;
}

// The library notices broken UTF-8 at the first byte that does not fit what stands before it.
JsonFault encoding_fault(std::string_view text, std::size_t offset) {
    const auto byte_at = [text](std::size_t index) -> unsigned {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
    };
    if (byte_at(offset) < 0x80 && offset > 0) --offset;
    char message[64];
    std::snprintf(message, sizeof message, "found the byte 0x%02X, expected text in UTF-8", byte_at(offset));
    return {offset, message};
}

JsonFault string_fault(std::string_view text, std::size_t offset, std::string_view detail) {
    if (offset >= text.size()) return {text.size(), "found the end of the file in a string, expected a closing quote"};
    if (detail.find("control character") != std::string_view::npos)
        return {offset, control_character_message(static_cast<unsigned char>(text[offset]))};
    for (const Phrase &fault : string_faults)
        if (detail.find(fault.original) != std::string_view::npos) return {offset, std::string(fault.ours)};
    return encoding_fault(text, offset);
}

std::string number_in_words(std::string_view token) {
    const std::string quotation = quoted(token);
    return "the number " + quotation.substr(1, quotation.size() - 2);
}

// A token that is right in itself but stands in the wrong place; it ends where the library stopped.
JsonFault token_fault(std::size_t bytes_read, std::string_view token, std::string_view detail,
                      std::string_view expected) {
    for (const Phrase &fixed : fixed_tokens)
        if (detail.starts_with(fixed.original))
            return {bytes_read - fixed.ours.size(), mismatch(quoted(fixed.ours), expected)};
    const std::size_t begin = bytes_read - std::min(bytes_read, token.size());
    if (detail.starts_with("unexpected string"))
        return {begin, mismatch("the string " + quoted(token.substr(1, token.size() - 2)), expected)};
    return {begin, mismatch(number_in_words(token), expected)};
}

} // namespace

JsonFault describe_json_fault(std::string_view text, std::size_t bytes_read, std::string_view token,
                              std::string_view library_message) {
    const std::string_view detail = detail_of(library_message);
    const std::string_view expected = expected_of(library_message);
    const std::size_t last = std::min(bytes_read > 0 ? bytes_read - 1 : 0, text.size());
    if (detail.starts_with("unexpected end of input")) return {text.size(), mismatch("the end of the file", expected)};
    if (detail.starts_with("unexpected ")) return token_fault(bytes_read, token, detail, expected);
    if (detail.starts_with("invalid string")) return string_fault(text, last, detail);
    if (detail.starts_with("invalid number")) return word_fault(text, last, "a number such as 12, -0.5 or 1e3");
    if (library_message.find("number overflow") != std::string_view::npos)
        return {bytes_read - std::min(bytes_read, token.size()),
                mismatch(number_in_words(token), "one that a 64-bit float can hold")};
    return word_fault(text, last, expected);
}

TextPosition position_of(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::size_t line_end = before.rfind('\n');
    const std::size_t line_begin = line_end == std::string_view::npos ? 0 : line_end + 1;
    return {static_cast<int>(lines) + 1, static_cast<int>(offset - line_begin) + 1};
}

} // namespace kelhost
