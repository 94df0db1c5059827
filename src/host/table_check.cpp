// table_check.cpp: rows, columns, templates and cells.
#include "table_check.h"

#include <cstddef>
#include <string>

#include "model.h"

namespace kelhost {

void TableCheck::check(const Container &container, const Scope::Use &use) {
    check_size();
    check_templates(container, use);
    check_cells({place_, container.qualify(table_.name), Owner::cell});
}

bool TableCheck::has_sane_size() const noexcept {
    if (!table_sides.holds(table_.rows) || !table_sides.holds(table_.cols)) return false;
    return static_cast<std::uint64_t>(table_.rows) * static_cast<std::uint64_t>(table_.cols) <= most_cells;
}

void TableCheck::check_size() {
    check_range(place_, "rows", table_.rows, table_sides);
    check_range(place_, "cols", table_.cols, table_sides);
    const bool is_in_range = table_sides.holds(table_.rows) && table_sides.holds(table_.cols);
    const bool has_cells = table_.rows > 0 && table_.cols > 0;
    if (is_in_range && !has_sane_size())
        report_.add(place_, mismatch(std::to_string(table_.rows) + " rows of " + std::to_string(table_.cols) + " cells",
                                     "a table of at most " + std::to_string(most_cells) + " cells"));
    if (is_in_range && has_cells && table_.templates.empty())
        report_.add(place_.member("templates"), mismatch("no template", "at least one for the table's cells"));
}

void TableCheck::check_templates(const Container &container, const Scope::Use &use) {
    const Place list = place_.member("templates");
    for (std::size_t index = 0; index < table_.templates.size(); ++index) {
        const TemplateDescription &description = table_.templates[index];
        const Place place = list.item(index);
        check_name(description.name, place.member("name"), container, {use.list, use.item, index});
        check_range(place, "width", description.width, sizes);
        check_range(place, "height", description.height, sizes);
        check_variables(description.variables, {place, container.qualify(table_.name), Owner::table_template});
        check_draw(description.draw, place);
    }
}

void TableCheck::check_cells(const Container &owner) {
    const Place templates = place_.member("templates");
    const Place list = place_.member("cells");
    const Choices choices = choices_of("template", "templates", table_.templates, templates);
    if (!table_.cells.empty())
        check_count(table_.cells.size(), "row of cells", "rows of cells", table_.rows, "rows", list);
    for (std::size_t row = 0; row < table_.cells.size(); ++row) {
        const std::vector<CellDescription> &cells = table_.cells[row];
        const Place row_place = list.item(row);
        check_count(cells.size(), "cell", "cells", table_.cols, "cols", row_place);
        for (std::size_t col = 0; col < cells.size(); ++col)
            check_cell(cells[col], row_place.item(col), choices, owner);
    }
}

void TableCheck::check_count(std::size_t count, const char *thing, const char *things, std::int32_t expected,
                             const char *member, const Place &place) {
    if (!has_sane_size() || count == static_cast<std::size_t>(expected)) return;
    if (report_.is_unreadable(place_.member(member))) return;
    const std::string found = std::to_string(count) + ' ' + (count == 1 ? thing : things);
    report_.add(place, mismatch(found, std::to_string(expected) + " as \"" + member + "\" says"));
}

void TableCheck::check_cell(const CellDescription &cell, const Place &place, const Choices &templates,
                            const Container &owner) {
    // Without any template one fault is enough, not one a cell.
    const bool is_unread = cell.template_name.empty() && report_.is_unreadable(place.member("template"));
    if (!table_.templates.empty() && !is_unread) check_reference(cell.template_name, place, templates);
    if (!cell.variables.empty()) check_variables(cell.variables, {place, owner.name, Owner::cell});
}

} // namespace kelhost
