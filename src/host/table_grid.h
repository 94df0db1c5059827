// table_grid.h: the cells of a table: makes them from templates, lets them go, and tells templates which cell is their
// first.
#pragma once

#include <cstdint>
#include <functional>

#include "object_registry.h"
#include "staging.h"

namespace kelhost {

struct GridSize {
    std::uint16_t rows = 0;
    std::uint16_t cols = 0;
};

// Whether new cells get the variables of their template.
enum class CellVariables : std::uint8_t { created, left_out };

// Names the template of a new cell.
using TemplateChooser = std::function<TemplateNode &(int row, int col)>;

// Makes and lets go cells until the table has this size. Cells that go take their variables along. Throws
// std::bad_alloc, and the table is as it was; otherwise the caller keeps what was staged.
void set_grid(Staging &staging, TableNode &table, GridSize size, const TemplateChooser &choose,
              CellVariables variables);

// As set_grid, repeating templates: a new row has those of the last row, a new column that of the last column, and a
// table without cells the first template.
void resize_grid(ModelContext &context, TableNode &table, GridSize size);

// Gives the table the size that its variables kld_rows and kld_cols ask for. Where that cannot be, a warning says why,
// and the variables are set back.
void follow_size_variables(ModelContext &context, TableNode &table) noexcept;

} // namespace kelhost
