// test_table_grid.cpp: the cells of tables, the names that they share, and how grids grow and shrink.
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "model_fixture.h"
#include "support/machine.h"

namespace {

std::string place_text(const kl_control_t &cell) {
    return std::to_string(cell.rect.left) + "," + std::to_string(cell.rect.top) + " " + std::to_string(cell.size.width)
           + "x" + std::to_string(cell.size.height);
}

kelhost::TemplateDescription sized_template(std::string name, int width, int height) {
    auto made = cell_template(std::move(name));
    made.width = width;
    made.height = height;
    return made;
}

// A table with templates a and b and one cell of the second, to tell rows and columns apart.
ElementDescription two_templates() {
    auto list = table("list", 2, 2, {cell_template("a"), cell_template("b")});
    list.cells = cells({
        {"a", "a"},
        {"a", "b"}
    });
    return list;
}

ElementDescription with_text(int rows, int cols) {
    return table("list", rows, cols,
                 {
                     cell_template("row", {{"text", DataType::string, "new"}}
                      )
    });
}

// Row and column of the cell that a name gives; "none" when it gives nothing.
std::string position(ModelFixture &host, std::string_view name) {
    const auto &grid = host.table_record("main.list");
    for (int row = 0; row < grid.rows; ++row) {
        for (int col = 0; col < grid.cols; ++col) {
            if (&grid.controls[row][col]->object == host.find(name))
                return std::to_string(row) + "." + std::to_string(col);
        }
    }
    return host.find(name) == nullptr ? "none" : "elsewhere";
}

} // namespace

TEST_CASE_FIXTURE(ModelFixture, "a table's record and variables come from its description") {
    auto list = table("list", 2, 3, {cell_template("row"), cell_template("head")});
    list.geometry = {1, 2, 30, 40};
    list.variables = {
        {"title", DataType::string, "List"}
    };
    build({control("ok"), list});

    const auto &record = table_record("main.list");
    CHECK(record.control.object.type == KL_OBJECT_TYPE_TABLE);
    CHECK(std::string(record.control.name) == "list");
    CHECK(record.control.zindex == 1);
    CHECK(record.rows == 2);
    CHECK(record.cols == 3);
    CHECK(record.alloc_rows == 2);
    CHECK(record.alloc_cols == 3);
    CHECK(record.visible_rows == 2);
    CHECK(record.visible_cols == 3);
    CHECK(record.max_template_col == 2);
    CHECK(record.active_control == nullptr);
    CHECK(keys("main.list.")
          == "main.list.kld_cols main.list.kld_height main.list.kld_hidden main.list.kld_rows "
             "main.list.kld_width main.list.kld_x main.list.kld_y main.list.title ");
    CHECK(variable("main.list.kld_rows") == "u16 2");
    CHECK(variable("main.list.kld_cols") == "u16 3");
    CHECK(names_in(record) == "row row row/row row row");
}

TEST_CASE_FIXTURE(ModelFixture, "templates are in no list and have no name of their own") {
    build({table("list", 0, 0, {sized_template("row", 50, 20), cell_template("head")})});
    const auto &record = table_record("main.list");
    REQUIRE(record.template_controls != nullptr);
    const auto &row = *record.template_controls[0];
    CHECK(row.object.type == KL_OBJECT_TYPE_TEMPLATE);
    CHECK(std::string(row.name) == "row");
    CHECK(row.parent == &record.control);
    CHECK(&row.layer->object == find("main"));
    CHECK(row.app == &app);
    CHECK(row.size.width == 50);
    CHECK(std::string(record.template_controls[1]->name) == "head");
    CHECK(record.template_controls[2] == nullptr);
    CHECK(model.qualified_name(&row.object).empty());
    CHECK(find("main.row") == nullptr);
    CHECK(find("main.list.row") == nullptr);
    CHECK(names_in(list_of("main")) == "list ");
}

TEST_CASE_FIXTURE(ModelFixture, "a cell's parent is its table") {
    build({group("bar", {table("list", 1, 1, {cell_template("row")})})});
    const auto &cell = control_record("main.bar.row");
    CHECK(cell.object.type == KL_OBJECT_TYPE_CONTROL);
    CHECK(cell.parent == &table_record("main.bar.list").control);
    CHECK(&cell.layer->object == find("main"));
    CHECK(cell.app == &app);
    CHECK(std::string(cell.name) == "row");
}

TEST_CASE_FIXTURE(ModelFixture, "cells lie beside and below each other") {
    auto list = table("list", 2, 3, {sized_template("wide", 50, 10), sized_template("high", 20, 30)});
    list.cells = cells({
        {"wide", "high", "wide"},
        {"high", "high", "wide"}
    });
    build({list});
    const auto &grid = table_record("main.list");
    CHECK(grid.row_height == 30);
    CHECK(place_text(*grid.controls[0][0]) == "0,0 50x10");
    CHECK(place_text(*grid.controls[0][1]) == "50,0 20x30");
    CHECK(place_text(*grid.controls[0][2]) == "70,0 50x10");
    CHECK(place_text(*grid.controls[1][0]) == "0,30 20x30");
    CHECK(place_text(*grid.controls[1][2]) == "40,30 50x10");
    CHECK(write("main.list.kld_cols", 4.0));
    CHECK(place_text(*grid.controls[1][3]) == "90,30 50x10");
}

TEST_CASE_FIXTURE(ModelFixture, "a cell's variables are its own, then its template's") {
    auto list = table("list", 1, 2,
                      {
                          cell_template("row", {{"text", DataType::string, "-"}, {"on", DataType::u8, 1.0}}
                           )
    });
    list.cells = cells({
        {"row", "row"}
    });
    list.cells[0][1].variables = {
        {"text",  DataType::i32, 5.0},
        {"extra", DataType::f64, 0.5}
    };
    build({list});
    CHECK(variable("main.list.text.0.0") == "string -");
    CHECK(variable("main.list.on.0.0") == "u8 1");
    CHECK(variable("main.list.text.0.1") == "i32 5");
    CHECK(variable("main.list.on.0.1") == "u8 1");
    CHECK(variable("main.list.extra.0.1") == "f64 0.5");
    CHECK(keys("main.list.extra") == "main.list.extra.0.1 ");
    CHECK(keys("main.row").empty());
}

TEST_CASE_FIXTURE(ModelFixture, "without cells described, every cell is made from the first template") {
    build({table("list", 1, 2, {cell_template("a"), cell_template("b")})});
    CHECK(names_in(table_record("main.list")) == "a a");
}

TEST_CASE_FIXTURE(ModelFixture, "cells share their template's name, which gives the first of them in row order") {
    auto list = table("list", 2, 2, {cell_template("a"), cell_template("b"), cell_template("c")});
    list.cells = cells({
        {"b", "a"},
        {"a", "b"}
    });
    build({list});
    CHECK(position(*this, "main.a") == "0.1");
    CHECK(position(*this, "main.b") == "0.0");
    CHECK(position(*this, "main.c") == "none");
    const auto &grid = table_record("main.list");
    CHECK(model.qualified_name(&grid.controls[0][1]->object) == "main.a");
    CHECK(model.qualified_name(&grid.controls[1][0]->object) == "main.a");
    CHECK(model.qualified_name(&grid.controls[1][1]->object) == "main.b");
}

TEST_CASE_FIXTURE(ModelFixture, "the name that cells share follows the grid") {
    build({two_templates()});
    CHECK(position(*this, "main.a") == "0.0");
    CHECK(position(*this, "main.b") == "1.1");

    CHECK(write("main.list.kld_rows", 1.0));
    CHECK(position(*this, "main.a") == "0.0");
    CHECK(position(*this, "main.b") == "none");

    CHECK(write("main.list.kld_rows", 0.0));
    CHECK(position(*this, "main.a") == "none");

    CHECK(write("main.list.kld_rows", 2.0));
    CHECK(position(*this, "main.a") == "0.0");
    CHECK(position(*this, "main.b") == "none");
    CHECK(names_in(table_record("main.list")) == "a a/a a");
}

TEST_CASE_FIXTURE(ModelFixture, "a cell that a wider grid puts further ahead becomes the first of its name") {
    auto list = table("list", 2, 1, {cell_template("a"), cell_template("b")});
    list.cells = cells({{"b"}, {"a"}});
    build({list});
    const auto *first = find("main.b");
    CHECK(write("main.list.kld_cols", 2.0));
    CHECK(names_in(table_record("main.list")) == "b b/a a");
    CHECK(find("main.b") == first);
    CHECK(position(*this, "main.a") == "1.0");
}

TEST_CASE_FIXTURE(ModelFixture, "new rows repeat the last row, new columns the last column") {
    build({two_templates()});
    SUBCASE("rows") {
        CHECK(write("main.list.kld_rows", 4.0));
        CHECK(names_in(table_record("main.list")) == "a a/a b/a b/a b");
    }
    SUBCASE("columns") {
        CHECK(write("main.list.kld_cols", 4.0));
        CHECK(names_in(table_record("main.list")) == "a a a a/a b b b");
    }
    SUBCASE("both in one batch") {
        data.hold();
        CHECK(write("main.list.kld_cols", 3.0));
        CHECK(write("main.list.kld_rows", 3.0));
        data.release();
        CHECK(names_in(table_record("main.list")) == "a a a/a b b/a b b");
    }
    SUBCASE("fewer rows and more columns in one batch") {
        data.hold();
        CHECK(write("main.list.kld_cols", 3.0));
        CHECK(write("main.list.kld_rows", 1.0));
        data.release();
        CHECK(names_in(table_record("main.list")) == "a a a");
    }
    SUBCASE("more rows and fewer columns in one batch") {
        data.hold();
        CHECK(write("main.list.kld_rows", 3.0));
        CHECK(write("main.list.kld_cols", 1.0));
        data.release();
        CHECK(names_in(table_record("main.list")) == "a/a/a");
    }
    const auto &grid = table_record("main.list");
    CHECK(grid.rows == grid.alloc_rows);
    CHECK(grid.cols == grid.alloc_cols);
}

TEST_CASE_FIXTURE(ModelFixture, "a table without cells grows from its first template") {
    auto list = two_templates();
    SUBCASE("no rows") { list.cols = 2, list.rows = 0; }
    SUBCASE("no columns") { list.rows = 2, list.cols = 0; }
    SUBCASE("neither") { list.rows = list.cols = 0; }
    list.cells = cells(std::vector<std::vector<std::string>>(static_cast<std::size_t>(list.rows)));
    build({list});
    CHECK(table_record("main.list").rows == list.rows);
    CHECK(table_record("main.list").cols == list.cols);
    CHECK(position(*this, "main.a") == "none");
    CHECK(write("main.list.kld_rows", 2.0));
    CHECK(write("main.list.kld_cols", 2.0));
    CHECK(names_in(table_record("main.list")) == "a a/a a");
    CHECK(position(*this, "main.a") == "0.0");
}

TEST_CASE_FIXTURE(ModelFixture, "cells that stay are the same records") {
    build({with_text(2, 2)});
    const auto &grid = table_record("main.list");
    const auto *corner = grid.controls[1][1];
    const auto *edge = grid.controls[0][1];
    CHECK(write("main.list.kld_rows", 40.0));
    CHECK(write("main.list.kld_cols", 40.0));
    CHECK(grid.controls[1][1] == corner);
    CHECK(write("main.list.kld_rows", 1.0));
    CHECK(write("main.list.kld_cols", 2.0));
    CHECK(grid.controls[0][1] == edge);
}

TEST_CASE_FIXTURE(ModelFixture, "cells that come get their template's variables, cells that go lose theirs") {
    build({with_text(2, 2)});
    CHECK(write("main.list.text.0.0", "kept"));
    CHECK(write("main.list.text.1.1", "lost"));
    CHECK(write("main.list.mine.1.0", 7.0));
    CHECK(write("main.list.mine.0.0", 8.0));
    CHECK(write("main.row.shared", 9.0));
    CHECK(write("main.list.kld_rows", 1.0));
    CHECK(keys("main.list.text") == "main.list.text.0.0 main.list.text.0.1 ");
    CHECK(keys("main.list.mine") == "main.list.mine.0.0 ");

    CHECK(write("main.list.kld_rows", 2.0));
    CHECK(variable("main.list.text.0.0") == "string kept");
    CHECK(variable("main.list.text.1.1") == "string new");
    CHECK(variable("main.list.mine.1.0") == "none");

    CHECK(write("main.list.kld_cols", 1.0));
    CHECK(keys("main.list.text") == "main.list.text.0.0 main.list.text.1.0 ");
    CHECK(write("main.list.kld_cols", 0.0));
    CHECK(keys("main.list.text").empty());
    CHECK(keys("main.list.mine").empty());
    CHECK(variable("main.row.shared") == "i32 9");
    CHECK(variable("main.list.kld_rows") == "u16 2");
}

TEST_CASE_FIXTURE(ModelFixture, "a grid that shrinks leaves what is no cell's variable alone") {
    auto list = with_text(12, 12);
    build({list, group("list2", {control("text")}), control("lis")});
    CHECK(write("main.list.note", "table"));
    CHECK(write("main.list.11", "table"));
    CHECK(write("main.list2.text.note", "other"));
    CHECK(write("main.list.kld_rows", 2.0));
    CHECK(write("main.list.kld_cols", 2.0));
    CHECK(keys("main.list.text") == "main.list.text.0.0 main.list.text.0.1 main.list.text.1.0 main.list.text.1.1 ");
    CHECK(variable("main.list.note") == "string table");
    CHECK(variable("main.list.11") == "string table");
    CHECK(variable("main.list2.text.note") == "string other");
    CHECK(variable("main.list.kld_x") == "i16 0");
}

TEST_CASE_FIXTURE(ModelFixture, "cells that went stay readable until they are reclaimed") {
    build({with_text(2, 1)});
    auto &grid = table_record("main.list");
    kl_control_t *gone = grid.controls[1][0];
    app.pressed_control = gone;
    grid.active_control = gone;
    CHECK(write("main.list.kld_rows", 1.0));
    CHECK(std::string(gone->name) == "row");
    CHECK(gone->object.type == KL_OBJECT_TYPE_CONTROL);
    CHECK(model.qualified_name(&gone->object).empty());
    CHECK(model.draw_hints(&gone->object) == nullptr);
    CHECK(app.pressed_control == nullptr);
    CHECK(grid.active_control == nullptr);
    model.reclaim();
    CHECK(position(*this, "main.row") == "0.0");
}

TEST_CASE_FIXTURE(ModelFixture, "a table without templates cannot have cells") {
    build({table("list", 0, 0, {})});
    CHECK(write("main.list.kld_rows", 3.0)); // no cells yet
    CHECK(table_record("main.list").rows == 3);
    CHECK(write("main.list.kld_cols", 2.0));
    CHECK(warnings() == "warning: Cannot resize main.list to rows 3, cols 2: it has no templates to make cells from");
    CHECK(variable("main.list.kld_rows") == "u16 3");
    CHECK(variable("main.list.kld_cols") == "u16 0");
    CHECK(table_record("main.list").rows == 3);
    CHECK(table_record("main.list").cols == 0);
}

TEST_CASE_FIXTURE(ModelFixture, "a table has 65536 cells at most") {
    build({table("list", 2, 2, {cell_template("row")})});
    CHECK(write("main.list.kld_rows", 32769.0));
    CHECK(warnings() == "warning: Cannot resize main.list to rows 32769, cols 2: a table has 65536 cells at most");
    CHECK(variable("main.list.kld_rows") == "u16 2");
    CHECK(names_in(table_record("main.list")) == "row row/row row");

    data.hold();
    CHECK(write("main.list.kld_rows", 60000.0));
    CHECK(write("main.list.kld_cols", 60000.0));
    data.release();
    CHECK(warnings() == "warning: Cannot resize main.list to rows 60000, cols 60000: a table has 65536 cells at most");
    CHECK(variable("main.list.kld_rows") == "u16 2");
    CHECK(variable("main.list.kld_cols") == "u16 2");

    CHECK(write("main.list.kld_rows", 32768.0));
    CHECK(table_record("main.list").rows == 32768);
    CHECK(find("main.row") == &table_record("main.list").controls[0][0]->object);
}

TEST_CASE_FIXTURE(ModelFixture, "a batch may turn a long table into a wide one") {
    const int cells = many(60000);
    build({table("list", cells, 1, {cell_template("row")})});
    data.hold();
    CHECK(write("main.list.kld_cols", static_cast<double>(cells)));
    CHECK(write("main.list.kld_rows", 1.0));
    data.release();
    CHECK(table_record("main.list").rows == 1);
    CHECK(table_record("main.list").cols == cells);
}

TEST_CASE_FIXTURE(ModelFixture, "a count that is set back is told to those who listen") {
    build({table("list", 0, 0, {})});
    CHECK(write("main.list.kld_rows", 1.0));
    std::string told;
    const int number =
        data.add_listener("main.list.kld_cols", [&](std::string_view key) { told += variable(key) + " "; });
    CHECK(write("main.list.kld_cols", 9.0));
    data.remove_listener(number);
    CHECK(told == "u16 0 u16 0 ");
    CHECK(warnings() == "warning: Cannot resize main.list to rows 1, cols 9: it has no templates to make cells from");
}

TEST_CASE_FIXTURE(ModelFixture, "cell keys are accepted inside the grid as it is now") {
    build({with_text(1, 1)});
    CHECK_FALSE(write("main.list.mine.1.0", 1.0));
    CHECK(warnings() == "warning: Cannot create main.list.mine.1.0: no cell 1.0 in \"main.list\" (rows 1, cols 1)");
    CHECK(write("main.list.kld_rows", 2.0));
    CHECK(write("main.list.mine.1.0", 1.0));
    CHECK(write("main.list.kld_rows", 1.0));
    CHECK_FALSE(write("main.list.mine.1.0", 1.0));
    CHECK(warnings() == "warning: Cannot create main.list.mine.1.0: no cell 1.0 in \"main.list\" (rows 1, cols 1)");
    CHECK(write("main.list.kld_rows", 0.0));
    CHECK_FALSE(write("main.row.x", 1.0));
    CHECK(warnings() == "warning: Cannot create main.row.x: no object \"main.row\"");
}

TEST_CASE_FIXTURE(ModelFixture, "a table that grows row by row is not copied each time") {
    build({table("list", 0, 1, {cell_template("row")})});
    const auto &grid = table_record("main.list");
    int moves = 0;
    kl_control_t ***before = nullptr;
    for (int rows = 1; rows <= 4096; ++rows) {
        CHECK(write("main.list.kld_rows", static_cast<double>(rows)));
        if (grid.controls != before) ++moves;
        before = grid.controls;
    }
    CHECK(grid.rows == 4096);
    CHECK(moves <= 13); // it doubles
}
