// cell_key.cpp: keys of the variables of a table's cells.
#include "cell_key.h"

#include <algorithm>
#include <charconv>

namespace kelhost {

namespace {

// Takes the last component off the text, which is left without it; nothing when no "." stands before it.
std::optional<std::string_view> take_last(std::string_view &text) noexcept {
    const std::size_t dot = text.rfind('.');
    if (dot == std::string_view::npos) return std::nullopt;
    const std::string_view last = text.substr(dot + 1);
    text = text.substr(0, dot);
    return last;
}

bool is_whole_number(std::string_view text) noexcept {
    if (text.starts_with('-')) text.remove_prefix(1);
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::optional<CellKey> split_cell_key(std::string_view key) noexcept {
    const auto col = take_last(key);
    if (!col || !is_whole_number(*col)) return std::nullopt;
    const auto row = take_last(key);
    if (!row || !is_whole_number(*row)) return std::nullopt;
    const auto variable = take_last(key);
    if (!variable) return std::nullopt;
    return CellKey{key, *variable, *row, *col};
}

std::optional<int> cell_position(std::string_view digits) noexcept {
    if (digits.starts_with('-') || (digits.size() > 1 && digits.starts_with('0'))) return std::nullopt;
    int position = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), position);
    if (fault != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return position;
}

std::string make_cell_key(std::string_view table, std::string_view variable, int row, int col) {
    std::string key;
    key.reserve(table.size() + variable.size() + 16);
    key.append(table).append(1, '.').append(variable);
    key.append(1, '.').append(std::to_string(row)).append(1, '.').append(std::to_string(col));
    return key;
}

} // namespace kelhost
