// cell_key.h: keys of the variables of a table's cells: "main.list.text.3.2" is variable text in row 3, column 2.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelhost {

struct CellKey {
    std::string_view table; // qualified name
    std::string_view variable;
    std::string_view row; // digits, possibly after a minus: what a script asked for
    std::string_view col;
};

// Splits a key that has the form of a cell's; nothing when its last two components are no whole numbers.
std::optional<CellKey> split_cell_key(std::string_view key) noexcept;

// A row or column number as keys have it: plain digits without leading zeros. Nothing for others, and for numbers that
// no table reaches.
std::optional<int> cell_position(std::string_view digits) noexcept;

std::string make_cell_key(std::string_view table, std::string_view variable, int row, int col);

} // namespace kelhost
