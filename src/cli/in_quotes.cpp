// in_quotes.cpp: writes texts so that they can be read, and pasted into a script.
#include "in_quotes.h"

#include <cstddef>
#include <cstdio>

namespace kelhost {

namespace {

// The escape of a byte that has a letter of its own; 0 for others.
char escape_letter(char byte) noexcept {
    switch (byte) {
    case '"':
    case '\\':
        return byte;
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

bool is_continuation(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// The bytes of the character of several bytes that the text begins with; 0 when it begins with none in UTF-8.
std::size_t multibyte_length(std::string_view text) noexcept {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead >= 0xF5 ? 0 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length > text.size()) return 0;
    for (std::size_t index = 1; index < length; ++index)
        if (!is_continuation(text[index])) return 0;
    return length;
}

bool is_visible(char byte) noexcept { return byte >= ' ' && byte <= '~'; }

// Three digits, so that a digit may follow.
std::string decimal_escape(char byte) {
    char escape[8] = {};
    static_cast<void>(std::snprintf(escape, sizeof escape, "\\%03d", static_cast<unsigned char>(byte)));
    return escape;
}

} // namespace

std::string in_quotes(std::string_view text) {
    std::string result = "\"";
    while (!text.empty()) {
        const char byte = text.front();
        const std::size_t multibyte = multibyte_length(text);
        if (const char letter = escape_letter(byte); letter != 0)
            result.append({'\\', letter});
        else if (is_visible(byte))
            result += byte;
        else if (multibyte != 0)
            result += text.substr(0, multibyte);
        else
            result += decimal_escape(byte);
        text.remove_prefix(multibyte != 0 ? multibyte : 1);
    }
    return result + '"';
}

} // namespace kelhost
