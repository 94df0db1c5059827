// table_check.h: whether a table's rows, columns, templates and cells fit each other.
#pragma once

#include <kelhost/description.h>

#include "description_checks.h"

namespace kelhost {

class TableCheck : private DescriptionChecks {
public:
    // place: the table's. All must outlive the object.
    TableCheck(FaultReport &report, const ElementDescription &table, const Place &place)
        : DescriptionChecks(report), table_(table), place_(place) {}

    // container: what holds the table, and with it the names of its cells. use: the table in it.
    void check(const Container &container, const Scope::Use &use);

private:
    bool has_sane_size() const noexcept;
    void check_size();
    void check_templates(const Container &container, const Scope::Use &use);
    void check_cells(const Container &owner);
    void check_count(std::size_t count, const char *thing, const char *things, std::int32_t expected,
                     const char *member, const Place &place);
    void check_cell(const CellDescription &cell, const Place &place, const Choices &templates, const Container &owner);

    const ElementDescription &table_;
    const Place &place_;
};

} // namespace kelhost
