// test_qualified_name.cpp: the name of each kind of object, the joining of its parts, and what is left when memory is
// out.
#include "qualified_name.h"

#include "plugin_fixture.h"

namespace {

template <typename Record> kl_object_t *object_of(Record *record) { return reinterpret_cast<kl_object_t *>(record); }

// The name as text, or "(null)"; the string is freed.
template <typename Record> std::string name_of(Record *record) {
    char *name = keldom_get_qualified_name(recording_app(), object_of(record));
    std::string text = name ? name : "(null)";
    kelal_free(name);
    return text;
}

// The same for a joined string.
std::string joined(const char *pre, char delimiter, const char *post) {
    char *whole = str_join_ip(kelal_strdup(pre), delimiter, post);
    std::string text = whole ? whole : "(null)";
    kelal_free(whole);
    return text;
}

} // namespace

TEST_CASE("the application's name is empty") {
    HostFixture host;
    host.show(RECORDING_SHOW_ALLOCATOR);
    CHECK(name_of(recording_app()) == "");
    CHECK(host.take_lines() == Lines{"kelal_strdup(\"\")", "kelal_free(block of 1)"});
}

TEST_CASE("a screen and a layer are called what they are called, in a copy") {
    HostFixture host;
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_t *main = recording_add_layer("main");
    CHECK(name_of(home) == "home");
    CHECK(name_of(main) == "main");
    char *copy = keldom_get_qualified_name(recording_app(), object_of(home));
    CHECK(copy != home->name);
    kelal_free(copy);
}

TEST_CASE("a screen and a layer keep their names when no map holds them or another holds the same") {
    HostFixture host;
    recording_add_screen("same");
    recording_add_layer("same");
    CHECK(name_of(recording_make_screen("same")) == "same");
    CHECK(name_of(recording_make_layer("same")) == "same");
    CHECK(name_of(recording_make_layer("loose")) == "loose");
}

TEST_CASE("a layer instance is its screen's name, a dot and its layer's name") {
    HostFixture host;
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_t *main = recording_add_layer("main");
    CHECK(name_of(recording_add_instance(home, main)) == "home.main");
    CHECK(name_of(recording_make_instance(home, main)) == "home.main");
}

TEST_CASE("a control, table and group are their container's name, a dot and their own name") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_group_t *inner = recording_add_group(bar, "inner");
    CHECK(name_of(recording_add_control(main, "ok")) == "main.ok");
    CHECK(name_of(bar) == "main.bar");
    CHECK(name_of(recording_add_control(bar, "ok")) == "main.bar.ok");
    CHECK(name_of(inner) == "main.bar.inner");
    CHECK(name_of(recording_add_control(inner, "ok")) == "main.bar.inner.ok");
    CHECK(name_of(recording_add_table(main, "list", 1, 1)) == "main.list");
    CHECK(name_of(recording_add_table(inner, "list", 1, 1)) == "main.bar.inner.list");
}

TEST_CASE("a cell's name leaves its table's own component out, and no other") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_table_t *list = recording_add_table(main, "list", 2, 2);
    kl_table_t *in_bar = recording_add_table(bar, "list", 1, 1);
    CHECK(name_of(recording_cell(list, 0, 0)) == "main.cell_0_0");
    CHECK(name_of(recording_cell(list, 1, 1)) == "main.cell_1_1");
    CHECK(name_of(recording_cell(in_bar, 0, 0)) == "main.bar.cell_0_0");
}

TEST_CASE("a table whose own name has a dot loses what follows its last dot") {
    HostFixture host;
    kl_table_t *list = recording_add_table(recording_add_layer("main"), "big.list", 1, 1);
    CHECK(name_of(recording_cell(list, 0, 0)) == "main.big.cell_0_0");
}

TEST_CASE("groups and tables in cells name what they hold from the cell on") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_table_t *list = recording_add_table(main, "list", 1, 2);
    kl_group_t *box = recording_make_group("box");
    kl_control_t *in_box = recording_add_control(box, "in_box");
    recording_set_cell(list, 0, 0, box);
    CHECK(name_of(box) == "main.box");
    CHECK(name_of(in_box) == "main.box.in_box");

    kl_table_t *small = recording_add_table(main, "small", 1, 1);
    recording_list_take_out(main, small);
    recording_set_cell(list, 0, 1, small);
    CHECK(name_of(small) == "main.small");
    CHECK(name_of(recording_cell(small, 0, 0)) == "main.cell_0_0");
}

TEST_CASE("a template has a name only where a layer or group lists it") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *row = recording_add_template(recording_add_table(main, "list", 1, 1), "row");
    CHECK(name_of(row) == "(null)");
    recording_list_append(main, row);
    CHECK(name_of(row) == "main.row");
}

TEST_CASE("a control in no container has no name, and no memory is taken for it") {
    HostFixture host;
    recording_add_layer("main");
    host.show(RECORDING_SHOW_ALLOCATOR);
    for (int type : {KL_OBJECT_TYPE_CONTROL, KL_OBJECT_TYPE_TEMPLATE}) {
        kl_control_t *loose = recording_make_control(static_cast<kl_object_type_t>(type), "loose");
        CHECK(keldom_get_qualified_name(recording_app(), object_of(loose)) == nullptr);
    }
    CHECK(keldom_get_qualified_name(recording_app(), object_of(recording_make_group("loose"))) == nullptr);
    CHECK(host.take_lines() == Lines{});
}

TEST_CASE("a control in a group that no layer reaches has no name") {
    HostFixture host;
    recording_add_layer("main");
    CHECK(name_of(recording_add_control(recording_make_group("loose"), "ok")) == "(null)");
}

TEST_CASE("no object and an object of an unknown type have no name") {
    HostFixture host;
    CHECK(keldom_get_qualified_name(recording_app(), nullptr) == nullptr);
    kl_control_t *odd = recording_add_control(recording_add_layer("main"), "odd");
    for (int type : {8, 9, 127, 128, 255}) {
        CAPTURE(type);
        odd->object.type = static_cast<kl_object_type_t>(type);
        CHECK(name_of(odd) == "(null)");
    }
}

TEST_CASE("a name follows the model: what is renamed or moved is called anew") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *ok = recording_add_control(main, "ok");
    CHECK(name_of(ok) == "main.ok");
    recording_rename(ok, "yes");
    recording_rename(main, "front");
    CHECK(name_of(ok) == "front.yes");
    recording_list_take_out(main, ok);
    recording_list_append(bar, ok);
    CHECK(name_of(ok) == "front.bar.yes");
}

TEST_CASE("a layer's name counts, not the key under which the map holds it") {
    HostFixture host;
    kl_layer_t *layer = recording_make_layer("own");
    recording_put_layer("key", layer);
    CHECK(name_of(recording_add_control(layer, "ok")) == "own.ok");
}

TEST_CASE("of several containers the one visited last gives the name") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_control_t *ok = recording_add_control(main, "ok");
    CHECK(name_of(ok) == "main.ok");
    recording_list_append(menu, ok);
    CHECK(name_of(ok) == "menu.ok");
}

TEST_CASE("the containers are found by one walk over the layers, not by name") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_group_t *inner = recording_add_group(bar, "inner");
    kl_control_t *ok = recording_add_control(inner, "ok");
    CHECK(name_of(ok) == "main.bar.inner.ok");
    CHECK(recording_calls(RECORDING_MAP_TRAVERSE) == 1);
    CHECK(recording_calls(RECORDING_FIND_OBJECT) == 0);
}

TEST_CASE("a name grows from its first part by one resizing a part, to exactly the size it needs") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *ok = recording_add_control(bar, "ok");
    kl_layer_instance_t *instance = recording_add_instance(recording_add_screen("home"), main);
    kl_control_t *cell = recording_cell(recording_add_table(bar, "list", 1, 1), 0, 0);
    host.show(RECORDING_SHOW_ALLOCATOR);
    SUBCASE("a control in a group") {
        CHECK(name_of(ok) == "main.bar.ok");
        CHECK(host.take_lines()
              == Lines{"kelal_strdup(\"main\")", "kelal_realloc(block of 5, 9)", "kelal_realloc(block of 9, 12)",
                       "kelal_free(block of 12)"});
    }
    SUBCASE("a layer instance") {
        CHECK(name_of(instance) == "home.main");
        CHECK(host.take_lines()
              == Lines{"kelal_strdup(\"home\")", "kelal_realloc(block of 5, 10)", "kelal_free(block of 10)"});
    }
    SUBCASE("a cell") {
        CHECK(name_of(cell) == "main.bar.cell_0_0");
        CHECK(host.take_lines()
              == Lines{"kelal_strdup(\"main\")", "kelal_realloc(block of 5, 9)", "kelal_realloc(block of 9, 14)",
                       "kelal_realloc(block of 14, 18)", "kelal_free(block of 18)"});
    }
}

TEST_CASE("without memory a name is null and nothing is left, wherever memory ran out") {
    HostFixture host;
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    std::vector<kl_object_t *> objects = {recording_app_object(),
                                          object_of(home),
                                          object_of(main),
                                          object_of(recording_add_instance(home, main)),
                                          object_of(bar),
                                          object_of(recording_add_control(bar, "ok")),
                                          object_of(recording_cell(recording_add_table(bar, "list", 1, 1), 0, 0))};
    const unsigned resizings[] = {0, 0, 0, 1, 1, 2, 3};
    for (std::size_t i = 0; i < objects.size(); ++i) {
        CAPTURE(i);
        unsigned long asked_before = recording_calls(RECORDING_REALLOC);
        recording_fail(RECORDING_STRDUP, 1);
        CHECK(keldom_get_qualified_name(recording_app(), objects[i]) == nullptr);
        CHECK(recording_calls(RECORDING_REALLOC) == asked_before);
        CHECK(recording_live_blocks() == 0);
        for (unsigned nth = 1; nth <= resizings[i]; ++nth) {
            CAPTURE(nth);
            recording_fail(RECORDING_REALLOC, nth);
            CHECK(keldom_get_qualified_name(recording_app(), objects[i]) == nullptr);
            CHECK(recording_live_blocks() == 0);
        }
        CHECK(name_of(objects[i]) != "(null)");
    }
}

TEST_CASE("joining puts the delimiter between both parts") {
    HostFixture host;
    CHECK(joined("main", '.', "ok") == "main.ok");
    CHECK(joined("main", '/', "ok") == "main/ok");
    CHECK(joined("", '.', "ok") == ".ok");
    CHECK(joined("main", '.', "") == "main.");
    CHECK(joined("", '.', "") == ".");
}

TEST_CASE("joining resizes the first part to both lengths, the delimiter and the end") {
    HostFixture host;
    char *pre = kelal_strdup("main");
    host.show(RECORDING_SHOW_ALLOCATOR);
    char *whole = str_join_ip(pre, '.', "control");
    CHECK(host.take_lines() == Lines{"kelal_realloc(block of 5, 13)"});
    CHECK(std::string(whole) == "main.control");
    CHECK(recording_live_blocks() == 1);
    kelal_free(whole);
}

TEST_CASE("joining without memory frees the first part and gives null") {
    HostFixture host;
    char *pre = kelal_strdup("main");
    host.show(RECORDING_SHOW_ALLOCATOR);
    recording_fail(RECORDING_REALLOC, 1);
    CHECK(str_join_ip(pre, '.', "ok") == nullptr);
    CHECK(host.take_lines() == Lines{"kelal_realloc(block of 5, 8)", "kelal_free(block of 5)"});
}

TEST_CASE("joining to nothing gives nothing") {
    HostFixture host;
    host.show(RECORDING_SHOW_ALLOCATOR);
    CHECK(str_join_ip(nullptr, '.', "ok") == nullptr);
    CHECK(host.take_lines() == Lines{});
}
