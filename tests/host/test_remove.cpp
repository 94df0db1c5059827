// test_remove.cpp: deleting controls, tables and groups.
#include <string>
#include <utility>

#include <doctest/doctest.h>

#include <kelhost/memory.h>

#include "lifecycle_fixture.h"

TEST_CASE_FIXTURE(Lifecycle, "a deleted control is gone with its variables, and its siblings move up") {
    CHECK(write("main.ok.count", 1.0));
    CHECK(model.remove("main.ok"));
    CHECK(find("main.ok") == nullptr);
    CHECK(keys("main.ok").empty());
    CHECK(names_in(list_of("main")) == "bar other list ");
    CHECK(control_record("main.bar").zindex == 0);
    CHECK(control_record("main.list").zindex == 2);
    CHECK_FALSE(write("main.ok.kld_x", 1.0));
    CHECK(warnings() == "warning: Cannot create main.ok.kld_x: no object \"main.ok\"");
    CHECK_FALSE(model.remove("main.ok"));
    CHECK(warnings() == "warning: Cannot delete main.ok: no such object");
}

TEST_CASE_FIXTURE(Lifecycle, "a deleted group takes along what it contains and nothing else") {
    REQUIRE(clone("main.bar", "bar2", "main") == "main.bar2");
    REQUIRE(clone("main.ok", "ba", "main") == "main.ba");
    const std::string beside = keys("main.bar2.") + keys("main.ba.") + keys("main.list.");
    CHECK(write("main.bar.row.shared", 1.0));
    CHECK(model.remove("main.bar"));
    CHECK(keys("main.bar.").empty());
    CHECK(keys("main.bar2.") + keys("main.ba.") + keys("main.list.") == beside);
    for (const char *name : {"main.bar", "main.bar.ok", "main.bar.inner", "main.bar.inner.leaf", "main.bar.list",
                             "main.bar.row", "main.bar.head"}) {
        INFO(name);
        CHECK(find(name) == nullptr);
    }
    CHECK(find("main.bar2.inner.leaf") != nullptr);
    CHECK(names_in(list_of("main")) == "ok other list bar2 ba ");
}

TEST_CASE_FIXTURE(Lifecycle, "a deleted table takes along its cells, their keys and their names' variables") {
    CHECK(write("main.row.shared", 1.0));
    CHECK(write("main.head.shared", 1.0));
    REQUIRE(clone("main.ok", "row2", "main") == "main.row2");
    CHECK(model.remove("main.list"));
    CHECK(keys("main.list").empty());
    CHECK(keys("main.row.").empty());
    CHECK(keys("main.head").empty());
    CHECK(find("main.row") == nullptr);
    CHECK(variable("main.row2.text") == "string OK");
    REQUIRE(clone("main.bar.list", "list", "main") == "main.list"); // names are free again
    CHECK(names_in(table_record("main.list")) == "head row/row row");
}

TEST_CASE_FIXTURE(Lifecycle, "a child of a group is deleted from the group") {
    CHECK(model.remove("main.bar.inner"));
    CHECK(names_in(list_of("main.bar")) == "ok list ");
    CHECK(control_record("main.bar.list").zindex == 1);
    CHECK(model.remove("main.bar.ok"));
    CHECK(model.remove("main.bar.list"));
    CHECK(names_in(list_of("main.bar")).empty());
    CHECK(kl_darray_size(list_of("main.bar")) == 0);
    CHECK(keys("main.bar.") == "main.bar.kld_hidden main.bar.kld_x main.bar.kld_y main.bar.open ");
}

TEST_CASE_FIXTURE(Lifecycle, "what cannot be deleted is refused with the reason, and nothing changes") {
    const std::pair<const char *, const char *> rows[] = {
        {"main.row9", "main.row9: no such object"                                                         },
        {"",          "\"\": no such object"                                                              },
        {"a b",       "\"a b\": no such object"                                                           },
        {"home",      "home: it is a screen; only controls, tables and groups can be deleted"             },
        {"main",      "main: it is a layer; only controls, tables and groups can be deleted"              },
        {"home.main", "home.main: it is a layer instance; only controls, tables and groups can be deleted"},
        {"main.row",  "main.row: it is a cell; only controls, tables and groups can be deleted"           },
    };
    const std::string before = snapshot();
    for (const auto &[name, warning] : rows) {
        CHECK_FALSE(model.remove(name));
        CHECK(warnings() == std::string("warning: Cannot delete ") + warning);
    }
    CHECK(snapshot() == before);
}

TEST_CASE_FIXTURE(Lifecycle, "deleted records stay readable, empty and found by nobody, until they are reclaimed") {
    auto &bar = record<kl_group_t>("main.bar");
    auto &inner = record<kl_group_t>("main.bar.inner");
    auto &leaf = control_record("main.bar.inner.leaf");
    auto &list = table_record("main.bar.list");
    kl_control_t *cell = list.controls[1][1];
    kl_control_t *made_from = list.template_controls[0];
    REQUIRE(model.remove("main.bar"));

    CHECK(std::string(bar.control.name) == "bar");
    CHECK(bar.control.object.type == KL_OBJECT_TYPE_GROUP);
    CHECK(names_in(bar.control_list).empty());
    CHECK(names_in(inner.control_list).empty());
    CHECK(std::string(leaf.name) == "leaf");
    CHECK(list.rows == 0);
    CHECK(list.cols == 0);
    CHECK(list.control.object.type == KL_OBJECT_TYPE_TABLE);
    CHECK(std::string(cell->name) == "row");
    CHECK(std::string(made_from->name) == "row");
    for (const kl_object_t *object : {&bar.control.object, &leaf.object, &list.control.object, &cell->object}) {
        CHECK(model.qualified_name(object).empty());
        CHECK(model.draw_hints(object) == nullptr);
    }
    model.reclaim();
    model.reclaim();
    CHECK(names_in(list_of("main")) == "ok other list ");
}

TEST_CASE_FIXTURE(Lifecycle, "records that were never reclaimed go with the model") {
    CHECK(model.remove("main.bar"));
    CHECK(model.remove("main.ok"));
}

TEST_CASE_FIXTURE(Lifecycle, "a list that is being walked is left in order by a deletion") {
    kl_darray_iter_t walk;
    kl_darray_iterator_init(&walk, list_of("main"), 0);
    walk.first(&walk, -1, -1);
    walk.next(&walk, -1, -1); // on bar
    CHECK(model.remove("main.ok"));
    model.reclaim();
    std::string rest;
    for (void *slot = walk.cur(&walk, -1, -1); slot != nullptr; slot = walk.next(&walk, -1, -1)) {
        rest += (*static_cast<kl_control_t **>(slot))->name;
        rest += ' ';
    }
    CHECK(rest == "other list ");
}

TEST_CASE_FIXTURE(Lifecycle, "the pressed control is forgotten when it is deleted, itself or with its container") {
    SUBCASE("itself") {
        app.pressed_control = &control_record("main.ok");
        CHECK(model.remove("main.bar"));
        CHECK(app.pressed_control == &control_record("main.ok"));
        CHECK(model.remove("main.ok"));
    }
    SUBCASE("in a group") {
        app.pressed_control = &control_record("main.bar.inner.leaf");
        CHECK(model.remove("main.bar"));
    }
    SUBCASE("a cell") {
        app.pressed_control = table_record("main.list").controls[1][0];
        CHECK(model.remove("main.list"));
    }
    CHECK(app.pressed_control == nullptr);
}

TEST_CASE_FIXTURE(Lifecycle, "a deleted object's name can be another kind's") {
    CHECK(model.remove("main.ok"));
    REQUIRE(clone("main.bar", "ok", "main") == "main.ok");
    CHECK(find("main.ok")->type == KL_OBJECT_TYPE_GROUP);
    CHECK(variable("main.ok.text") == "none");
    CHECK(variable("main.ok.open") == "u8 1");
    CHECK(model.remove("main.ok"));
    REQUIRE(clone("popup.close", "ok", "main") == "main.ok");
    CHECK(find("main.ok")->type == KL_OBJECT_TYPE_CONTROL);
    CHECK(model.remove("main.ok"));
    model.reclaim();
    CHECK(model.remove("main.list"));
    REQUIRE(clone("popup.close", "row", "main") == "main.row"); // what was a cell's name
    CHECK(find("main.row")->type == KL_OBJECT_TYPE_CONTROL);
    CHECK(model.qualified_name(find("main.row")) == "main.row");
}

TEST_CASE_FIXTURE(Lifecycle, "changes that wait for a deleted object are not told") {
    std::string told;
    const int number = data.add_listener([&](std::string_view key) { told += std::string(key) + " "; });
    data.hold();
    CHECK(write("main.ok.kld_x", 1.0));
    CHECK(write("main.list.kld_rows", 5.0));
    CHECK(write("popup.close.kld_x", 1.0));
    CHECK(model.remove("main.ok"));
    CHECK(model.remove("main.list"));
    data.release();
    CHECK(told == "popup.close.kld_x ");
    data.remove_listener(number);
}

TEST_CASE_FIXTURE(Lifecycle, "needing no memory, a deletion does not fail for want of lists") {
    const kelhost::FailingAllocations failing(0, true);
    CHECK(model.remove("main.bar"));
    CHECK(names_in(list_of("main")) == "ok other list ");
}
