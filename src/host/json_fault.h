// json_fault.h: says in a user's words where a text stops being JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelhost {

struct JsonFault {
    std::size_t offset = 0; // of the first byte of what was found
    std::string message;
};

// bytes_read: how many bytes the library had read; one more than the text has when it met the end. token: what it read
// last. library_message: its own words.
JsonFault describe_json_fault(std::string_view text, std::size_t bytes_read, std::string_view token,
                              std::string_view library_message);

struct TextPosition {
    int line = 1;   // from 1
    int column = 1; // from 1, in bytes
};
TextPosition position_of(std::string_view text, std::size_t offset);

} // namespace kelhost
