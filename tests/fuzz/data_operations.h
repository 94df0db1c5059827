// data_operations.h: what an input of the data manager's fuzzer stands for: a list of operations.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <kelhost/value.h>

#include "data_manager.h"
#include "fuzzer.h"

namespace fuzz {

// What a listener does beside being told, the first so many times.
struct Reaction {
    enum class Kind : std::uint8_t { nothing, write, erase, remove_listener };
    Kind kind = Kind::nothing;
    std::string key; // write, erase
    int number = 0;  // remove_listener: which one, in the order in which they were added
    int times = 0;
};

struct Operation {
    enum class Kind : std::uint8_t {
        create,
        write,
        set_bytes,
        erase,
        erase_prefix,
        hold,
        release,
        restore_hold_depth,
        force,
        add_listener,
        remove_listener,
        list
    };
    Kind kind = Kind::write;
    std::string key; // add_listener: "" for all
    kelhost::DataType type = kelhost::DataType::f64;
    std::size_t value = 0; // create, write, set_bytes: which of the values
    int number = 0;        // restore_hold_depth: depth; remove_listener: which one
    Reaction reaction;
};

// A value that is written, and what is known of it.
struct KnownValue {
    const char *text; // as a person reads it
    kelhost::Input input;
    bool is_number; // itself, or the number that the text is
    double number;
};
const std::vector<KnownValue> &known_values();

std::vector<Operation> decode_operations(Input input);
std::string to_text(const Operation &operation);

} // namespace fuzz
