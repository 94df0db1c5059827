// key_policy.cpp: which keys a data variable may have.
// The longest object that exists wins: only where no object stands before the last "." is a key read as a cell's.
#include "key_policy.h"

#include "cell_key.h"
#include "validate.h"
#include "wording.h"

namespace kelhost {

namespace {

std::optional<std::string> refuses_variable(std::string_view variable) {
    if (!variable.empty() && is_valid_name(variable)) return std::nullopt;
    return quoted(variable) + R"( is no variable name: letters, digits and "_" only)";
}

std::optional<std::string> refuses_cell_key(const ObjectRegistry &objects, const CellKey &key) {
    NamedNode *const node = objects.named(key.table);
    if (node == nullptr || node->resolved == nullptr) return "no object " + quoted(key.table);

    const std::string cell = std::string(key.row) + "." + std::string(key.col);
    const auto *table = as<TableNode>(node);
    if (table == nullptr) return "no cell " + cell + " in " + quoted(key.table) + ", which is no table";

    const auto row = cell_position(key.row);
    const auto col = cell_position(key.col);
    const kl_table_t &record = table->record;
    if (row && col && *row < record.rows && *col < record.cols) return refuses_variable(key.variable);
    return "no cell " + cell + " in " + quoted(key.table) + " (rows " + std::to_string(record.rows) + ", cols "
           + std::to_string(record.cols) + ")";
}

} // namespace

std::optional<std::string> refuses_key(const ObjectRegistry &objects, std::string_view key) {
    if (objects.named(key) != nullptr) return quoted(key) + " is an object's name";

    const std::size_t dot = key.rfind('.');
    if (dot == std::string_view::npos) return refuses_variable(key);

    const std::string_view owner = key.substr(0, dot);
    const NamedNode *node = objects.named(owner);
    if (node != nullptr && node->resolved != nullptr) return refuses_variable(key.substr(dot + 1));
    if (const auto cell = split_cell_key(key)) return refuses_cell_key(objects, *cell);
    return "no object " + quoted(owner);
}

} // namespace kelhost
