// test_clone.cpp: cloning controls, tables and groups.
#include <cstddef>
#include <string>

#include <doctest/doctest.h>

#include <kelhost/memory.h>

#include "lifecycle_fixture.h"

using kelhost::memory_counts;

TEST_CASE_FIXTURE(Lifecycle, "a cloned control is a copy with variables of its own") {
    REQUIRE(clone("main.ok", "ok2", "main") == "main.ok2");
    const auto &made = control_record("main.ok2");
    const auto &source = control_record("main.ok");
    CHECK(&made != &source);
    CHECK(made.object.type == KL_OBJECT_TYPE_CONTROL);
    CHECK(std::string(made.name) == "ok2");
    CHECK(made.flags == 1);
    CHECK(made.rect.left == 10);
    CHECK(made.rect.bottom == 60);
    CHECK(made.size.width == 100);
    CHECK(&made.layer->object == find("main"));
    CHECK(made.parent == nullptr);
    CHECK(made.app == &app);
    CHECK(made.zindex == 4);
    CHECK(names_in(list_of("main")) == "ok bar other list ok2 ");
    CHECK(model.qualified_name(&made.object) == "main.ok2");
    CHECK(model.draw_hints(&made.object)->fill == "#102030");

    CHECK(keys("main.ok2.")
          == "main.ok2.kld_height main.ok2.kld_hidden main.ok2.kld_width main.ok2.kld_x "
             "main.ok2.kld_y main.ok2.ratio main.ok2.text ");
    CHECK(variable("main.ok2.text") == "string OK");
    CHECK(variable("main.ok2.ratio") == "f64 0.5");
    CHECK(variable("main.ok2.kld_x") == "i16 10");
    CHECK(write("main.ok2.kld_x", 77.0));
    CHECK(made.rect.left == 77);
    CHECK(source.rect.left == 10);
    CHECK(variable("main.ok.kld_x") == "i16 10");
}

TEST_CASE_FIXTURE(Lifecycle, "a clone takes values as they are now, and variables that scripts made") {
    CHECK(write("main.ok.text", "Yes"));
    CHECK(write("main.ok.count", 3.0));
    CHECK(write("main.ok.kld_x", 50.0));
    REQUIRE(clone("main.ok", "ok2", "main.other") == "main.other.ok2");
    CHECK(variable("main.other.ok2.text") == "string Yes");
    CHECK(variable("main.other.ok2.count") == "i32 3");
    CHECK(variable("main.other.ok2.kld_x") == "i16 50");
    const auto &made = control_record("main.other.ok2");
    CHECK(made.rect.left == 50);
    CHECK(&made.parent->object == find("main.other"));
    CHECK(names_in(list_of("main.other")) == "ok2 ");
}

TEST_CASE_FIXTURE(Lifecycle, "a clone takes values that are still waiting to be told") {
    data.hold();
    CHECK(write("main.ok.kld_x", 50.0));
    CHECK(write("main.list.kld_rows", 3.0));
    CHECK(write("main.ok.kld_hidden", 0.0));
    CHECK(control_record("main.ok").rect.left == 10);
    REQUIRE(clone("main.ok", "ok2", "main") == "main.ok2");
    REQUIRE(clone("main.list", "list", "main.other") == "main.other.list");
    CHECK(control_record("main.ok2").rect.left == 50);
    CHECK(control_record("main.ok2").flags == 0);
    CHECK(table_record("main.other.list").rows == 3);
    CHECK(variable("main.other.list.text.2.1") == "string -");
    data.release();
    CHECK(control_record("main.ok2").rect.left == 50);
    CHECK(table_record("main.list").rows == 3);
}

TEST_CASE_FIXTURE(Lifecycle, "nobody is told of a clone's variables") {
    std::string told;
    const int number = data.add_listener([&](std::string_view key) { told += std::string(key) + " "; });
    REQUIRE(clone("main.bar", "copy", "main") == "main.copy");
    CHECK(told.empty());
    data.remove_listener(number);
}

TEST_CASE_FIXTURE(Lifecycle, "a group is cloned with all that it contains") {
    CHECK(write("main.bar.inner.leaf.note", "here"));
    CHECK(write("main.bar.list.text.1.1", "cell"));
    CHECK(write("main.bar.row.shared", 5.0));
    REQUIRE(clone("main.bar", "copy", "popup") == "popup.copy");

    const auto &made = record<kl_group_t>("popup.copy");
    CHECK(made.control.object.type == KL_OBJECT_TYPE_GROUP);
    CHECK(&made.control.layer->object == find("popup"));
    CHECK(made.control.parent == nullptr);
    CHECK(made.control.zindex == 1);
    CHECK(made.control.rect.left == 5);
    CHECK(names_in(list_of("popup")) == "close copy ");
    CHECK(names_in(list_of("popup.copy")) == "ok inner list ");
    CHECK(names_in(list_of("popup.copy.inner")) == "leaf ");
    CHECK(control_record("popup.copy.list").zindex == 2);
    CHECK(control_record("popup.copy.inner.leaf").parent == &record<kl_group_t>("popup.copy.inner").control);
    CHECK(&control_record("popup.copy.inner.leaf").layer->object == find("popup"));
    CHECK(names_in(table_record("popup.copy.list")) == "head row/row row");

    // Every variable below the source has one of the same type and value below the clone.
    const auto sources = data.keys("main.bar.");
    CHECK(sources.size() == data.keys("popup.copy.").size());
    for (const auto &key : sources) {
        INFO(key);
        CHECK(variable("popup.copy." + key.substr(9)) == variable(key));
    }
    CHECK(variable("popup.copy.open") == "u8 1");
    CHECK(variable("popup.copy.inner.leaf.note") == "string here");
    CHECK(variable("popup.copy.list.text.1.1") == "string cell");
    CHECK(variable("popup.copy.row.shared") == "i32 5");
}

TEST_CASE_FIXTURE(Lifecycle, "a table is cloned with its templates, cells and all their variables") {
    CHECK(write("main.list.text.1.0", "changed"));
    CHECK(write("main.list.mine.0.1", 4.0));
    CHECK(write("main.row.shared", 5.0));
    CHECK(write("main.head.shared", 6.0));
    REQUIRE(clone("main.list", "grid", "main.other") == "main.other.grid");

    auto &made = table_record("main.other.grid");
    const auto &source = table_record("main.list");
    CHECK(made.control.object.type == KL_OBJECT_TYPE_TABLE);
    CHECK(names_in(made) == "head row/row row");
    CHECK(made.controls[0][0] != source.controls[0][0]);
    CHECK(made.controls[1][1]->parent == &made.control);
    CHECK(made.controls[1][1]->size.width == 30);
    CHECK(made.controls[1][1]->rect.top == source.controls[1][1]->rect.top);
    CHECK(made.max_template_col == 2);
    CHECK(made.template_controls[0] != source.template_controls[0]);
    CHECK(made.template_controls[0]->object.type == KL_OBJECT_TYPE_TEMPLATE);
    CHECK(made.template_controls[0]->parent == &made.control);
    CHECK(find("main.other.row") == &made.controls[0][1]->object);
    CHECK(find("main.other.head") == &made.controls[0][0]->object);
    CHECK(model.qualified_name(&made.controls[1][0]->object) == "main.other.row");
    CHECK(model.draw_hints(find("main.other.row"))->align == "center");

    CHECK(keys("main.other.")
          == "main.other.grid.kld_cols main.other.grid.kld_height main.other.grid.kld_hidden "
             "main.other.grid.kld_rows main.other.grid.kld_width main.other.grid.kld_x "
             "main.other.grid.kld_y main.other.grid.mine.0.1 main.other.grid.on.0.0 "
             "main.other.grid.text.0.1 main.other.grid.text.1.0 main.other.grid.text.1.1 "
             "main.other.grid.title main.other.head.shared main.other.kld_hidden "
             "main.other.kld_x main.other.kld_y main.other.row.shared ");
    CHECK(variable("main.other.grid.text.1.0") == "string changed");
    CHECK(variable("main.other.grid.mine.0.1") == "i32 4");
    CHECK(variable("main.other.row.shared") == "i32 5");
    CHECK(variable("main.other.head.shared") == "i32 6");
}

TEST_CASE_FIXTURE(Lifecycle, "a cloned table grows from its own templates") {
    REQUIRE(clone("main.list", "list", "main.other") == "main.other.list");
    CHECK(write("main.other.list.kld_rows", 3.0));
    CHECK(names_in(table_record("main.other.list")) == "head row/row row/row row");
    CHECK(variable("main.other.list.text.2.0") == "string -");
    CHECK(table_record("main.list").rows == 2);
    CHECK(variable("main.list.text.2.0") == "none");
    CHECK(model.remove("main.list"));
    model.reclaim();
    CHECK(write("main.other.list.kld_cols", 3.0));
    CHECK(names_in(table_record("main.other.list")) == "head row row/row row row/row row row");
    CHECK(model.draw_hints(find("main.other.row"))->align == "center");
}

TEST_CASE_FIXTURE(Lifecycle, "a clone does not bring back variables that its source has lost") {
    CHECK(data.erase("main.list.text.1.0"));
    CHECK(data.erase("main.ok.text"));
    CHECK(data.erase("main.ok.kld_x"));
    CHECK(data.erase("main.ok.kld_hidden"));
    REQUIRE(clone("main.list", "list", "main.other") == "main.other.list");
    REQUIRE(clone("main.ok", "ok", "main.other") == "main.other.ok");
    CHECK(variable("main.other.list.text.1.0") == "none");
    CHECK(variable("main.other.ok.text") == "none");
    CHECK(variable("main.other.ok.kld_x") == "none");
    CHECK(control_record("main.other.ok").rect.left == 10); // as the source's record says
    CHECK(control_record("main.other.ok").flags == 1);
}

TEST_CASE_FIXTURE(Lifecycle, "a table without cells is cloned with its templates") {
    CHECK(write("main.list.kld_rows", 0.0));
    REQUIRE(clone("main.list", "list", "main.other") == "main.other.list");
    CHECK(table_record("main.other.list").rows == 0);
    CHECK(find("main.other.row") == nullptr);
    CHECK(write("main.other.list.kld_rows", 1.0));
    CHECK(names_in(table_record("main.other.list")) == "row row");
}

TEST_CASE_FIXTURE(Lifecycle, "a group is cloned beside itself, and the clone again") {
    REQUIRE(clone("main.bar", "bar2", "main") == "main.bar2");
    REQUIRE(clone("main.bar2", "bar3", "main.other") == "main.other.bar3");
    CHECK(names_in(list_of("main.other.bar3")) == "ok inner list ");
    CHECK(find("main.other.bar3.inner.leaf") != nullptr);
}

namespace {

// Nothing has changed in the end, whatever was tried.
struct Refusals : Lifecycle {
    Refusals() {
        CHECK(write("main.note", "a variable of the layer"));
        CHECK(write("main.other.mode", 1.0));
        CHECK(write("main.other.head", 1.0));
        CHECK(write("popup.list", 1.0));
        before_ = snapshot();
        blocks_ = memory_counts().live_blocks;
    }
    ~Refusals() {
        CHECK(snapshot() == before_);
        CHECK(memory_counts().live_blocks == blocks_);
    }
    Refusals(const Refusals &) = delete;
    Refusals &operator=(const Refusals &) = delete;

    void refuses(const char *source, const char *name, const char *parent, const std::string &warning) {
        CHECK(clone(source, name, parent) == "refused");
        CHECK(warnings() == "warning: Cannot clone " + warning);
    }

private:
    std::string before_;
    std::size_t blocks_ = 0;
};

} // namespace

TEST_CASE_FIXTURE(Refusals, "what does not exist cannot be cloned") {
    refuses("main.row9", "a", "main", "main.row9: no such object");
    refuses("", "a", "main", "\"\": no such object");
    refuses("main ok", "a", "main", "\"main ok\": no such object");
    refuses("main.ok.text", "a", "main", "main.ok.text: no such object");
}

TEST_CASE_FIXTURE(Refusals, "only controls, tables and groups can be cloned") {
    const std::string only = "; only controls, tables and groups can be cloned";
    refuses("home", "a", "main", "home: it is a screen" + only);
    refuses("main", "a", "main", "main: it is a layer" + only);
    refuses("home.main", "a", "main", "home.main: it is a layer instance" + only);
    refuses("main.row", "a", "main", "main.row: it is a cell" + only);
}

TEST_CASE_FIXTURE(Refusals, "a clone's name has letters, digits and underscores only") {
    refuses("main.ok", "a-b", "main", R"(main.ok as "a-b": a name has letters, digits and "_" only)");
    refuses("main.ok", "", "main", R"(main.ok as "": a name has letters, digits and "_" only)");
    refuses("main.ok", "a.b", "main", R"(main.ok as "a.b": a name has letters, digits and "_" only)");
}

TEST_CASE_FIXTURE(Refusals, "only layers and groups can be a clone's parent") {
    refuses("main.ok", "a", "nosuch", R"(main.ok as "a" into nosuch: no such parent)");
    refuses("main.ok", "a", "", R"(main.ok as "a" into "": no such parent)");
    const std::string only = "; only layers and groups hold controls";
    refuses("main.ok", "a", "home", R"(main.ok as "a" into home: the parent is a screen)" + only);
    refuses("main.ok", "a", "home.main", R"(main.ok as "a" into home.main: the parent is a layer instance)" + only);
    refuses("main.ok", "a", "main.ok", R"(main.ok as "a" into main.ok: the parent is a control)" + only);
    refuses("main.ok", "a", "main.list", R"(main.ok as "a" into main.list: the parent is a table)" + only);
    refuses("main.ok", "a", "main.row", R"(main.ok as "a" into main.row: the parent is a cell)" + only);
}

TEST_CASE_FIXTURE(Refusals, "a group cannot be cloned into itself") {
    refuses("main.bar", "a", "main.bar", "main.bar as main.bar.a: a group cannot hold its own clone");
    refuses("main.bar", "a", "main.bar.inner", "main.bar as main.bar.inner.a: a group cannot hold its own clone");
}

TEST_CASE_FIXTURE(Refusals, "a clone's name must be free") {
    refuses("main.ok", "ok", "main", "main.ok as main.ok: the name is taken");
    refuses("main.ok", "bar", "main", "main.ok as main.bar: the name is taken");
    refuses("main.ok", "row", "main", "main.ok as main.row: the name is taken");
    refuses("main.ok", "note", "main", "main.ok as main.note: the name is a variable's key");
    refuses("main.bar", "mode", "main.other", "main.bar as main.other.mode: the name is a variable's key");
    refuses("main.list", "list", "popup", "main.list as popup.list: the name is a variable's key");
}

TEST_CASE_FIXTURE(Refusals, "the names of a cloned table's cells must be free") {
    refuses("main.list", "list2", "main", "main.list as main.list2: its cells' name main.row is taken");
    refuses("main.list", "row", "main.bar.inner",
            "main.list as main.bar.inner.row: its cells' name main.bar.inner.row is the table's");
    refuses("main.list", "list", "main.other",
            "main.list as main.other.list: its cells' name main.other.head is a variable's key");
}

TEST_CASE_FIXTURE(Lifecycle, "the name of a template without cells is taken all the same") {
    CHECK(write("main.list.kld_rows", 0.0));
    CHECK(find("main.row") == nullptr);
    CHECK(clone("main.ok", "row", "main") == "refused");
    CHECK(warnings() == "warning: Cannot clone main.ok as main.row: the name is taken");
    CHECK(clone("main.row", "a", "main") == "refused");
    CHECK(warnings() == "warning: Cannot clone main.row: no such object");
    CHECK(clone("main.ok", "a", "main.row") == "refused");
    CHECK(warnings() == R"(warning: Cannot clone main.ok as "a" into main.row: no such parent)");
}

TEST_CASE_FIXTURE(Lifecycle, "variables that nobody owns are not taken over by a clone") {
    CHECK(data.create("main.ghost.kld_x", DataType::i16, 5.0));
    CHECK(clone("main.ok", "ghost", "main") == "refused");
    CHECK(warnings() == "warning: Cannot clone main.ok as main.ghost: the name has variables already");
}

TEST_CASE_FIXTURE(Lifecycle, "groups nest 32 deep and no deeper") {
    std::string parent = "popup";
    for (int depth = 1; depth <= 30; ++depth) {
        REQUIRE(clone("main.other", "g", parent) == parent + ".g");
        parent += ".g";
    }
    CHECK(clone("main.bar", "two", parent) == parent + ".two"); // bar holds inner: 32 deep
    CHECK(clone("main.bar.ok", "leaf", parent + ".two.inner") == "refused");
    CHECK(warnings() == "warning: Cannot clone main.bar.ok as " + parent + ".two.inner.leaf: the name is taken");
    CHECK(clone("main.bar.ok", "ok", parent + ".two.inner") == parent + ".two.inner.ok");
    REQUIRE(clone("main.other", "g", parent) == parent + ".g");
    parent += ".g";
    CHECK(clone("main.bar", "two", parent) == "refused");
    CHECK(warnings()
          == "warning: Cannot clone main.bar as " + parent + ".two: groups would nest 33 deep, 32 is the most");
}

TEST_CASE_FIXTURE(Lifecycle, "a clone whose list cannot grow leaves everything as it was") {
    REQUIRE(clone("main.ok", "fourth", "main") == "main.fourth"); // fills what the list has room for
    const std::string before = snapshot();
    const auto blocks = memory_counts().live_blocks;
    std::size_t request = 0;
    for (;; ++request) {
        std::string made;
        {
            const kelhost::FailingAllocations failing(request);
            made = clone("main.bar", "copy", "main");
        }
        if (made != "refused") break;
        CHECK(warnings() == R"(warning: Cannot clone main.bar as "copy" into main: out of memory)");
        CHECK(snapshot() == before);
        CHECK(memory_counts().live_blocks == blocks);
        CHECK(find("main.copy") == nullptr);
        CHECK(find("main.copy.inner.leaf") == nullptr);
    }
    CHECK(request >= 3); // two groups' lists at least, and room in them
    CHECK(find("main.copy.inner.leaf") != nullptr);
}
