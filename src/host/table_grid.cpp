// table_grid.cpp: the cells of a table: makes them from templates, lets them go.
// Everything that can fail is done before the grid changes, so a table is never half resized.
#include "table_grid.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cell_key.h"
#include "geometry.h"
#include "model.h"

namespace kelhost {

namespace {

GridSize size_of(const TableNode &table) noexcept { return {table.record.rows, table.record.cols}; }

// The first column of a row in which a grid that grows from `old` gets new cells.
int first_new_col(GridSize old, int row) noexcept { return row < old.rows ? old.cols : 0; }

// Rows are as high as the highest template; columns follow each other from the left.
void place_cell(kl_control_t &cell, const TableNode &table, int row, const kl_control_t *left_neighbour) noexcept {
    const std::int16_t left = left_neighbour == nullptr ? std::int16_t{0} : left_neighbour->rect.right;
    cell.rect = make_rect(left, to_coordinate(row * static_cast<double>(table.record.row_height)), cell.size);
}

std::vector<CellNode *> make_cells(Staging &staging, TableNode &table, GridSize size, const TemplateChooser &choose) {
    const GridSize old = size_of(table);
    std::vector<CellNode *> cells;
    for (int row = 0; row < size.rows; ++row) {
        const int first = first_new_col(old, row);
        const kl_control_t *left_neighbour = first == 0 ? nullptr : table.record.controls[row][first - 1];
        for (int col = first; col < size.cols; ++col) {
            auto &cell = staging.make<CellNode>(table, choose(row, col));
            place_cell(cell.record, table, row, left_neighbour);
            left_neighbour = &cell.record;
            cells.push_back(&cell);
        }
    }
    return cells;
}

void create_cell_variables(Staging &staging, TableNode &table, GridSize size, const std::vector<CellNode *> &cells) {
    const GridSize old = size_of(table);
    auto cell = cells.begin();
    for (int row = 0; row < size.rows; ++row) {
        for (int col = first_new_col(old, row); col < size.cols; ++col, ++cell) {
            for (const VariableDescription &variable : *(*cell)->made_from.variables) {
                staging.create_variable(make_cell_key(table.qualified_name, variable.name, row, col), variable.type,
                                        variable.value);
            }
        }
    }
}

// The keys of cell variables that have no cell in a grid of this size.
std::vector<std::string> variables_outside(const ModelContext &context, const TableNode &table, GridSize size) {
    std::vector<std::string> keys;
    if (size.rows >= table.record.rows && size.cols >= table.record.cols) return keys;
    keys = context.data.keys(table.qualified_name + ".");
    std::erase_if(keys, [&](const std::string &key) {
        const auto cell = split_cell_key(key);
        if (!cell || cell->table != table.qualified_name) return true;
        const auto row = cell_position(cell->row);
        const auto col = cell_position(cell->col);
        return !row || !col || (*row < size.rows && *col < size.cols);
    });
    return keys;
}

// Room for `count` elements, growing in strides so that a table that gets row by row longer is not copied each time.
template <typename Element> void make_room(std::vector<Element> &elements, std::size_t count) {
    if (count > elements.capacity()) elements.reserve(std::max(count, elements.capacity() * 2));
}

// Points the record at the rows, which may have moved.
void link_rows(TableNode &table) noexcept {
    for (std::size_t row = 0; row < table.record.rows; ++row) table.row_pointers[row] = table.rows[row].data();
    table.record.controls = table.record.rows == 0 ? nullptr : table.row_pointers.data();
}

void make_room_for(TableNode &table, GridSize size) {
    try {
        make_room(table.rows, size.rows);
        if (size.rows > table.rows.size()) table.rows.resize(size.rows);
        for (std::size_t row = 0; row < size.rows; ++row) make_room(table.rows[row], size.cols);
        make_room(table.row_pointers, size.rows);
        if (size.rows > table.row_pointers.size()) table.row_pointers.resize(size.rows);
    } catch (const std::bad_alloc &) {
        link_rows(table);
        throw;
    }
}

void retire_cell(ModelContext &context, TableNode &table, kl_control_t &cell) noexcept {
    --table.template_of(cell).cells;
    if (table.record.active_control == &cell) table.record.active_control = nullptr;
    if (Node *node = context.objects.node_of(&cell.object)) context.objects.retire(*node);
}

void cut_grid(ModelContext &context, TableNode &table, GridSize size) noexcept {
    const GridSize old = size_of(table);
    for (std::size_t row = 0; row < old.rows; ++row) {
        auto &cells = table.rows[row];
        const std::size_t kept = row < size.rows ? std::min(size.cols, old.cols) : 0;
        for (std::size_t col = kept; col < old.cols; ++col) retire_cell(context, table, *cells[col]);
        cells.erase(cells.begin() + static_cast<std::ptrdiff_t>(kept), cells.end());
    }
}

// make_room_for() has made room.
void append_cells(TableNode &table, GridSize size, const std::vector<CellNode *> &cells) noexcept {
    auto cell = cells.begin();
    for (std::size_t row = 0; row < size.rows; ++row) {
        while (table.rows[row].size() < size.cols) {
            table.rows[row].push_back(&(*cell)->record);
            ++(*cell)->made_from.cells;
            ++cell;
        }
    }
}

void set_record_size(TableNode &table, GridSize size) noexcept {
    kl_table_t &record = table.record;
    record.rows = record.visible_rows = record.alloc_rows = size.rows;
    record.cols = record.visible_cols = record.alloc_cols = size.cols;
    record.row = std::min(record.row, size.rows);
    record.col = std::min(record.col, size.cols);
    link_rows(table);
}

// The name that a template's cells share gives the first of them in row order.
void find_first_cells(TableNode &table) noexcept {
    std::size_t missing = 0;
    for (TemplateNode *one : table.templates) {
        one->resolved = nullptr;
        if (one->cells > 0) ++missing;
    }
    for (std::size_t row = 0; missing > 0; ++row) {
        for (kl_control_t *cell : table.rows[row]) {
            TemplateNode &made_from = table.template_of(*cell);
            if (made_from.resolved != nullptr) continue;
            made_from.resolved = &cell->object;
            if (--missing == 0) return;
        }
    }
}

double number_of(const ModelContext &context, const std::string &key, double otherwise) noexcept {
    const auto *variable = context.data.find(key);
    const double *number = variable == nullptr ? nullptr : std::get_if<double>(&variable->value);
    return number == nullptr ? otherwise : *number;
}

// Why the table cannot have this size; null when it can.
const char *refuses_size(const TableNode &table, GridSize size) noexcept {
    static_assert(most_cells == 65536, "the text below says so");
    const std::size_t cells = std::size_t{size.rows} * size.cols;
    if (cells > most_cells) return "a table has 65536 cells at most";
    if (cells > 0 && table.templates.empty()) return "it has no templates to make cells from";
    return nullptr;
}

// Null when the table has the size now, else why not.
const char *try_to_resize(ModelContext &context, TableNode &table, GridSize size) {
    if (const char *why = refuses_size(table, size)) return why;
    try {
        resize_grid(context, table, size);
        return nullptr;
    } catch (const std::bad_alloc &) {
        return "out of memory";
    }
}

void set_back(ModelContext &context, const std::string &key, double number) noexcept {
    if (number_of(context, key, number) == number) return;
    try {
        context.data.write(key, to_input(Value(number)));
    } catch (const std::bad_alloc &) {
        // The variable keeps what was asked for; its next change is followed again.
    }
}

} // namespace

void set_grid(Staging &staging, TableNode &table, GridSize size, const TemplateChooser &choose,
              CellVariables variables) {
    ModelContext &context = staging.context();
    const std::vector<CellNode *> cells = make_cells(staging, table, size, choose);
    if (variables == CellVariables::created) create_cell_variables(staging, table, size, cells);
    const std::vector<std::string> gone = variables_outside(context, table, size);
    make_room_for(table, size);

    // Nothing fails from here on.
    cut_grid(context, table, size);
    append_cells(table, size, cells);
    set_record_size(table, size);
    find_first_cells(table);
    for (const std::string &key : gone) context.data.erase(key);
}

void resize_grid(ModelContext &context, TableNode &table, GridSize size) {
    const GridSize old = size_of(table);
    const auto repeat = [&](int row, int col) -> TemplateNode & {
        if (old.rows == 0 || old.cols == 0) return *table.templates.front();
        const int like_row = std::min(row, old.rows - 1);
        const int like_col = std::min(col, old.cols - 1);
        return table.template_of(*table.record.controls[like_row][like_col]);
    };
    Staging staging(context);
    set_grid(staging, table, size, repeat, CellVariables::created);
    staging.keep();
}

void follow_size_variables(ModelContext &context, TableNode &table) noexcept {
    const GridSize old = size_of(table);
    const GridSize size{to_field<std::uint16_t>(number_of(context, table.rows_key, old.rows)),
                        to_field<std::uint16_t>(number_of(context, table.cols_key, old.cols))};
    if (size.rows == old.rows && size.cols == old.cols) return;

    const char *why = try_to_resize(context, table, size);
    if (why == nullptr) return;
    context.log.format(KL_LOG_WARNING, "Cannot resize %s to rows %d, cols %d: %s", table.qualified_name.c_str(),
                       size.rows, size.cols, why);
    set_back(context, table.rows_key, old.rows);
    set_back(context, table.cols_key, old.cols);
}

} // namespace kelhost
