// test_traversal.cpp: the walks over the model: whose children are visited in which order under which names, how a walk
// is ended, and what the searches built on it find.
#include <cstddef>

#include "../../src/plugins/kel/luakeldom/traversal.h"

#include "plugin_fixture.h"

namespace {

// Contexts lie as other code that fills them expects.
static_assert(offsetof(forwarder_info_t, user_data) < offsetof(forwarder_info_t, work));
static_assert(offsetof(forwarder_info_t, work) < offsetof(forwarder_info_t, found));
static_assert(offsetof(complex_traverse_info_t, stop_on_find) < offsetof(complex_traverse_info_t, user_data));
static_assert(offsetof(complex_traverse_info_t, user_data) < offsetof(complex_traverse_info_t, work));
static_assert(offsetof(complex_traverse_info_t, work) < offsetof(complex_traverse_info_t, result));
static_assert(offsetof(complex_traverse_info_t, result) < offsetof(complex_traverse_info_t, recurse));
static_assert(offsetof(conditional_add_info, darray) < offsetof(conditional_add_info, user_data));

template <typename Record> kl_object_t *object_of(Record *record) { return reinterpret_cast<kl_object_t *>(record); }

// What a predicate saw, and what it is to answer.
struct Visits {
    Lines names;
    std::vector<const void *> objects;
    std::size_t answer_at = 0; // the visit, from 1, that gets the answer; 0 for none
    int answer = 1;
};

int note(const char *name, void *data, void *user_data) {
    auto *visits = static_cast<Visits *>(user_data);
    visits->names.emplace_back(name);
    visits->objects.push_back(data);
    return visits->names.size() == visits->answer_at ? visits->answer : 0;
}

Visits visits_of_children(kl_object_t *object) {
    Visits visits;
    CHECK(keldom_traverse(object, note, &visits) == 0);
    return visits;
}

// A search's predicate: matches the objects in `wanted`, and notes every visit by name.
struct Search {
    std::vector<const void *> wanted;
    Lines names;
};

int matches(const char *name, void *data, void *user_data) {
    auto *search = static_cast<Search *>(user_data);
    search->names.emplace_back(name);
    return std::find(search->wanted.begin(), search->wanted.end(), data) != search->wanted.end() ? 7 : 0;
}

kl_object_t *container_of(void *child) {
    return keldom_find_parent_under(recording_app_object(), keldom_traverse_layers, static_cast<kl_object_t *>(child),
                                    1);
}

kl_object_t *screen_of(void *child) {
    return keldom_find_parent_under(recording_app_object(), keldom_traverse, static_cast<kl_object_t *>(child), 0);
}

// The objects in a list, which is then freed.
std::vector<const void *> contents(kl_darray_t *list) {
    REQUIRE(list != nullptr);
    std::vector<const void *> objects;
    for (int i = 0; i < kl_darray_size(list); ++i) objects.push_back(*static_cast<void **>(kl_darray_item(list, i)));
    kl_darray_free(list);
    return objects;
}

using Objects = std::vector<const void *>;

} // namespace

TEST_CASE("a control and a template have no children") {
    HostFixture host;
    CHECK(visits_of_children(object_of(recording_make_control(KL_OBJECT_TYPE_CONTROL, "ok"))).names == Lines{});
    CHECK(visits_of_children(object_of(recording_make_control(KL_OBJECT_TYPE_TEMPLATE, "row"))).names == Lines{});
}

TEST_CASE("an object of an unknown type has no children, whatever its record") {
    HostFixture host;
    kl_group_t *group = recording_make_group("bar");
    recording_add_control(group, "ok");
    for (int type : {8, 9, 127, 128, 255}) {
        CAPTURE(type);
        group->control.object.type = static_cast<kl_object_type_t>(type);
        CHECK(visits_of_children(object_of(group)).names == Lines{});
    }
}

TEST_CASE("a table's children are its cells, row by row, and never its templates") {
    HostFixture host;
    kl_table_t *table = recording_add_table(recording_add_layer("main"), "list", 2, 3);
    recording_add_template(table, "row");
    Visits visits = visits_of_children(object_of(table));
    CHECK(visits.names == Lines{"cell_0_0", "cell_0_1", "cell_0_2", "cell_1_0", "cell_1_1", "cell_1_2"});
    Objects cells;
    for (int row = 0; row < 2; ++row)
        for (int col = 0; col < 3; ++col) cells.push_back(recording_cell(table, row, col));
    CHECK((visits.objects == cells));
}

TEST_CASE("a table without rows or without columns has no children") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    CHECK(visits_of_children(object_of(recording_add_table(layer, "no_rows", 0, 3))).names == Lines{});
    CHECK(visits_of_children(object_of(recording_add_table(layer, "no_cols", 3, 0))).names == Lines{});
}

TEST_CASE("a table can have 65535 rows, or as many columns") {
    HostFixture host;
    kl_control_t cell{};
    char name[] = "cell";
    cell.name = name;
    constexpr std::size_t most = 65535;
    std::vector<kl_control_t *> row;
    std::vector<kl_control_t **> rows;
    kl_table_t table{};
    table.control.object.type = KL_OBJECT_TYPE_TABLE;
    SUBCASE("rows") {
        row.assign(1, &cell);
        rows.assign(most, row.data());
    }
    SUBCASE("columns") {
        row.assign(most, &cell);
        rows.assign(1, row.data());
    }
    table.rows = static_cast<uint16_t>(rows.size());
    table.cols = static_cast<uint16_t>(row.size());
    table.controls = rows.data();
    CHECK(visits_of_children(object_of(&table)).names.size() == most);
}

TEST_CASE("a predicate can change a table's size while it is walked") {
    HostFixture host;
    kl_table_t *table = recording_add_table(recording_add_layer("main"), "list", 2, 2);
    struct Resize {
        kl_table_t *table;
        std::string when;
        int rows;
        int cols;
        Lines names;
    };
    auto resize = [](const char *name, void *, void *user_data) {
        auto *self = static_cast<Resize *>(user_data);
        self->names.emplace_back(name);
        if (self->when == name) recording_resize_table(self->table, self->rows, self->cols);
        return 0;
    };
    Resize plan{table, "", 0, 0, {}};
    Lines expected;
    SUBCASE("more columns are walked from the same row on") {
        plan = {table, "cell_0_1", 2, 4, {}};
        expected = {"cell_0_0", "cell_0_1", "cell_0_2", "cell_0_3", "cell_1_0", "cell_1_1", "cell_1_2", "cell_1_3"};
    }
    SUBCASE("fewer columns end the row") {
        plan = {table, "cell_0_0", 2, 1, {}};
        expected = {"cell_0_0", "cell_1_0"};
    }
    SUBCASE("no columns end every row") {
        plan = {table, "cell_0_0", 2, 0, {}};
        expected = {"cell_0_0"};
    }
    SUBCASE("more rows are walked") {
        plan = {table, "cell_1_1", 4, 2, {}};
        expected = {"cell_0_0", "cell_0_1", "cell_1_0", "cell_1_1", "cell_2_0", "cell_2_1", "cell_3_0", "cell_3_1"};
    }
    SUBCASE("fewer rows end the walk, but not before the row's end") {
        plan = {table, "cell_0_0", 1, 2, {}};
        expected = {"cell_0_0", "cell_0_1"};
    }
    SUBCASE("no rows end the walk at the row's end") {
        plan = {table, "cell_1_0", 0, 2, {}};
        expected = {"cell_0_0", "cell_0_1", "cell_1_0", "cell_1_1"};
    }
    CHECK(keldom_traverse_table(table, resize, &plan) == 0);
    CHECK(plan.names == expected);
}

TEST_CASE("a group's and a layer's children are the entries of their lists, in order, under their own names") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(layer, "ok");
    kl_group_t *bar = recording_add_group(layer, "bar");
    kl_table_t *list = recording_add_table(layer, "list", 1, 1);
    kl_control_t *inner = recording_add_control(bar, "inner");
    kl_group_t *nested = recording_add_group(bar, "nested");

    Visits of_layer = visits_of_children(object_of(layer));
    CHECK(of_layer.names == Lines{"ok", "bar", "list"});
    CHECK((of_layer.objects == Objects{ok, bar, list}));
    Visits of_group = visits_of_children(object_of(bar));
    CHECK(of_group.names == Lines{"inner", "nested"});
    CHECK((of_group.objects == Objects{inner, nested}));
}

TEST_CASE("an empty group, layer and screen have no children") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    CHECK(visits_of_children(object_of(layer)).names == Lines{});
    CHECK(visits_of_children(object_of(recording_add_group(layer, "bar"))).names == Lines{});
    CHECK(visits_of_children(object_of(recording_add_screen("home"))).names == Lines{});
}

TEST_CASE("a list walk tests the children of every type, known or not") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    recording_list_append(layer, recording_make_control(KL_OBJECT_TYPE_TEMPLATE, "row"));
    recording_list_append(layer, recording_make_control(200, "odd"));
    CHECK(visits_of_children(object_of(layer)).names == Lines{"row", "odd"});
}

TEST_CASE("a layer instance has the children of its layer") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    recording_add_control(layer, "ok");
    recording_add_group(layer, "bar");
    kl_layer_instance_t *instance = recording_add_instance(recording_add_screen("home"), layer);
    Visits of_instance = visits_of_children(object_of(instance));
    CHECK(of_instance.names == Lines{"ok", "bar"});
    CHECK((of_instance.objects == visits_of_children(object_of(layer)).objects));
}

TEST_CASE("a screen's children are its layer instances, in order, under the names of their layers") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_instance_t *second = recording_add_instance(home, menu);
    kl_layer_instance_t *first = recording_add_instance(home, main);
    Visits visits = visits_of_children(object_of(home));
    CHECK(visits.names == Lines{"menu", "main"});
    CHECK((visits.objects == Objects{second, first}));
}

TEST_CASE("the application's children are its screens, in the map's order, under the map's keys; never its layers") {
    HostFixture host;
    recording_add_layer("main");
    kl_screen_t *setup = recording_add_screen("setup");
    kl_screen_t *home = recording_add_screen("home");
    kl_screen_t *other = recording_make_screen("its_own_name");
    recording_put_screen("its_key", other);
    Visits visits = visits_of_children(recording_app_object());
    CHECK(visits.names == Lines{"setup", "home", "its_key"});
    CHECK((visits.objects == Objects{setup, home, other}));
}

TEST_CASE("the layers are reached through the layer walk, in the map's order, under the map's keys") {
    HostFixture host;
    recording_add_screen("home");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_layer_t *main = recording_add_layer("main");
    kl_layer_t *other = recording_make_layer("its_own_name");
    recording_put_layer("its_key", other);
    host.show(RECORDING_SHOW_WALKS);
    Visits visits;
    CHECK(keldom_traverse_layers(recording_app_object(), note, &visits) == 0);
    CHECK(visits.names == Lines{"menu", "main", "its_key"});
    CHECK((visits.objects == Objects{menu, main, other}));
    CHECK(host.take_lines() == Lines{"kl_string_map_traverse(layer_map, 1)"});
}

TEST_CASE("a null entry ends a list walk: what comes after is never visited") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_group_t *group = recording_add_group(layer, "bar");
    kl_screen_t *screen = recording_add_screen("home");
    SUBCASE("in the middle") {
        for (void *owner : {static_cast<void *>(layer), static_cast<void *>(group)}) {
            recording_add_control(owner, "before");
            recording_list_append(owner, nullptr);
            recording_add_control(owner, "after");
        }
        recording_add_instance(screen, layer);
        recording_list_append(screen, nullptr);
        recording_add_instance(screen, recording_add_layer("after"));
        CHECK(visits_of_children(object_of(layer)).names == Lines{"bar", "before"});
        CHECK(visits_of_children(object_of(group)).names == Lines{"before"});
        CHECK(visits_of_children(object_of(screen)).names == Lines{"main"});
    }
    SUBCASE("at the beginning") {
        recording_list_append(group, nullptr);
        recording_add_control(group, "after");
        CHECK(visits_of_children(object_of(group)).names == Lines{});
    }
}

TEST_CASE("a list walk asks the iterator for the first and the next elements, to the end or to a null entry") {
    HostFixture host;
    kl_group_t *group = recording_add_group(recording_add_layer("main"), "bar");
    recording_add_control(group, "a");
    recording_add_control(group, "b");
    const Lines to_the_second = {"kl_darray_iterator_init(list of bar, 0)", "first(list of bar, -1, -1)",
                                 "next(list of bar, -1, -1)", "next(list of bar, -1, -1)"};
    host.show(RECORDING_SHOW_WALKS | RECORDING_SHOW_ARRAYS);
    SUBCASE("the end") {
        visits_of_children(object_of(group));
        CHECK(host.take_lines() == to_the_second);
    }
    SUBCASE("a null entry") {
        recording_list_append(group, nullptr);
        recording_add_control(group, "after");
        visits_of_children(object_of(group));
        CHECK(host.take_lines() == to_the_second);
    }
}

TEST_CASE("a predicate's result other than 0 ends a walk and is the walk's result") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_table_t *table = recording_add_table(layer, "list", 2, 2);
    kl_group_t *group = recording_add_group(layer, "bar");
    recording_add_control(layer, "last");
    for (const char *name : {"a", "b", "c"}) recording_add_control(group, name);
    kl_screen_t *screen = recording_add_screen("home");
    kl_layer_instance_t *instance = recording_add_instance(screen, layer);
    recording_add_instance(screen, recording_add_layer("menu"));
    recording_add_instance(screen, recording_add_layer("foot"));
    recording_add_screen("setup");
    recording_add_screen("about");

    for (kl_object_t *object : {object_of(layer), object_of(table), object_of(group), object_of(screen),
                                object_of(instance), recording_app_object()})
        for (int answer : {1, 42, -7}) {
            CAPTURE(int(object->type));
            CAPTURE(answer);
            Visits visits;
            visits.answer_at = 2;
            visits.answer = answer;
            CHECK(keldom_traverse(object, note, &visits) == answer);
            CHECK(visits.names.size() == 2);
        }
    Visits visits;
    visits.answer_at = 2;
    visits.answer = -7;
    CHECK(keldom_traverse_layers(recording_app_object(), note, &visits) == -7);
    CHECK(visits.names == Lines{"main", "menu"});
}

TEST_CASE("a table walk that ends in a row's middle ends the whole walk") {
    HostFixture host;
    kl_table_t *table = recording_add_table(recording_add_layer("main"), "list", 3, 3);
    Visits visits;
    visits.answer_at = 5;
    CHECK(keldom_traverse_table(table, note, &visits) == 1);
    CHECK(visits.names == Lines{"cell_0_0", "cell_0_1", "cell_0_2", "cell_1_0", "cell_1_1"});
}

TEST_CASE("a map walk gives what its predicate returned last") {
    HostFixture host;
    recording_add_screen("home");
    recording_add_screen("setup");
    recording_add_screen("about");
    kl_string_map_t *map = recording_app()->screen_map;
    host.show(RECORDING_SHOW_WALKS);
    Visits visits;
    SUBCASE("0 when it went to the end") { CHECK(keldom_traverse_map(map, note, &visits) == 0); }
    SUBCASE("what ended it") {
        visits.answer_at = 2;
        visits.answer = -9;
        CHECK(keldom_traverse_map(map, note, &visits) == -9);
        CHECK(visits.names == Lines{"home", "setup"});
    }
    SUBCASE("what the last entry got") {
        visits.answer_at = 3;
        visits.answer = 5;
        CHECK(keldom_traverse_map(map, note, &visits) == 5);
    }
    CHECK(host.take_lines() == Lines{"kl_string_map_traverse(screen_map, 1)"});
}

TEST_CASE("a walk over an empty map gives 0") {
    HostFixture host;
    Visits visits;
    visits.answer_at = 1;
    CHECK(keldom_traverse_map(recording_app()->screen_map, note, &visits) == 0);
    CHECK(visits.names == Lines{});
}

TEST_CASE("the forwarder hands key, value and context on, and keeps and returns the latest result") {
    HostFixture host;
    Visits visits;
    visits.answer_at = 1;
    visits.answer = -3;
    forwarder_info_t info{&visits, note, 99};
    int value = 0;
    CHECK(keldom_forwarder("key", &value, &info) == -3);
    CHECK(info.found == -3);
    CHECK(visits.names == Lines{"key"});
    CHECK((visits.objects == Objects{&value}));
    CHECK(keldom_forwarder("next", &value, &info) == 0);
    CHECK(info.found == 0);
}

TEST_CASE("objects are equal by identity, whatever their names") {
    HostFixture host;
    kl_control_t *one = recording_make_control(KL_OBJECT_TYPE_CONTROL, "same");
    kl_control_t *other = recording_make_control(KL_OBJECT_TYPE_CONTROL, "same");
    CHECK(keldom_objects_equal("same", one, one) == 1);
    CHECK(keldom_objects_equal("different", one, one) == 1);
    CHECK(keldom_objects_equal(nullptr, one, one) == 1);
    CHECK(keldom_objects_equal("same", one, other) == 0);
}

TEST_CASE("names are equal by their characters, whatever the objects") {
    char wanted[] = "main";
    int object = 0;
    CHECK(keldom_names_equal(std::string("main").c_str(), &object, wanted) == 1);
    CHECK(keldom_names_equal("main", nullptr, wanted) == 1);
    CHECK(keldom_names_equal("mai", &object, wanted) == 0);
    CHECK(keldom_names_equal("main2", &object, wanted) == 0);
    CHECK(keldom_names_equal("Main", &object, wanted) == 0);
    CHECK(keldom_names_equal("", &object, wanted) == 0);
}

TEST_CASE("adding to a list appends the pointer and gives 0, so that the walk goes on") {
    HostFixture host;
    kl_control_t *a = recording_make_control(KL_OBJECT_TYPE_CONTROL, "a");
    kl_control_t *b = recording_make_control(KL_OBJECT_TYPE_CONTROL, "b");
    kl_darray_t *list = keldom_create_darray(0);
    host.show(RECORDING_SHOW_ARRAYS);
    CHECK(add_to_darray("a", a, list) == 0);
    CHECK(add_to_darray(nullptr, b, list) == 0);
    CHECK(add_to_darray("a", a, list) == 0);
    CHECK(host.take_lines()
          == Lines{"kl_darray_add(array 1, control \"a\", -1)", "kl_darray_add(array 1, control \"b\", -1)",
                   "kl_darray_add(array 1, control \"a\", -1)"});
    recording_fail(RECORDING_DARRAY_ADD, 1);
    CHECK(add_to_darray("b", b, list) == 0);
    CHECK((contents(list) == Objects{a, b, a}));
}

TEST_CASE("a walk with add_to_darray lists the children of one object") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(layer, "ok");
    kl_group_t *bar = recording_add_group(layer, "bar");
    recording_add_control(bar, "inner");
    kl_darray_t *list = keldom_create_darray(1);
    CHECK(keldom_traverse(object_of(layer), add_to_darray, list) == 0);
    CHECK((contents(list) == Objects{ok, bar}));
}

TEST_CASE("a container has an object when it lists the object itself, directly") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(layer, "bar");
    kl_control_t *inner = recording_add_control(bar, "inner");
    kl_table_t *table = recording_add_table(layer, "list", 2, 2);
    kl_control_t *row = recording_add_template(table, "row");
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_instance_t *instance = recording_add_instance(home, layer);
    kl_control_t *namesake = recording_make_control(KL_OBJECT_TYPE_CONTROL, "inner");

    CHECK(keldom_has_object("any", layer, bar) != 0);
    CHECK(keldom_has_object(nullptr, bar, inner) != 0);
    CHECK(keldom_has_object("any", table, recording_cell(table, 0, 0)) != 0);
    CHECK(keldom_has_object("any", table, recording_cell(table, 1, 1)) != 0);
    CHECK(keldom_has_object("any", instance, bar) != 0);
    CHECK(keldom_has_object("any", home, instance) != 0);
    CHECK(keldom_has_object("any", recording_app_object(), home) != 0);

    CHECK(keldom_has_object("any", layer, inner) == 0);
    CHECK(keldom_has_object("any", layer, layer) == 0);
    CHECK(keldom_has_object("any", bar, namesake) == 0);
    CHECK(keldom_has_object("any", table, row) == 0);
    CHECK(keldom_has_object("any", table, recording_cell(table, 2, 0)) == 0);
    CHECK(keldom_has_object("any", home, layer) == 0);
    CHECK(keldom_has_object("any", recording_app_object(), layer) == 0);
    CHECK(keldom_has_object("any", inner, inner) == 0);
}

TEST_CASE("a container has a name when a direct child is reported under it") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(layer, "bar");
    recording_add_control(bar, "inner");
    kl_table_t *table = recording_add_table(layer, "list", 1, 2);
    recording_add_template(table, "row");
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_instance_t *instance = recording_add_instance(home, layer);
    recording_put_screen("alias", recording_make_screen("own"));
    auto has = [](auto *container, std::string name) { return keldom_has_named("any", container, name.data()) != 0; };

    CHECK(has(layer, "bar"));
    CHECK(has(layer, "list"));
    CHECK(has(bar, "inner"));
    CHECK(has(table, "cell_0_1"));
    CHECK(has(instance, "bar"));
    CHECK(has(home, "main"));
    CHECK(has(recording_app_object(), "home"));
    CHECK(has(recording_app_object(), "alias"));

    CHECK_FALSE(has(layer, "inner"));
    CHECK_FALSE(has(layer, "main"));
    CHECK_FALSE(has(layer, "ba"));
    CHECK_FALSE(has(table, "row"));
    CHECK_FALSE(has(home, "home.main"));
    CHECK_FALSE(has(recording_app_object(), "own"));
    CHECK_FALSE(has(recording_app_object(), "main"));
}

TEST_CASE("a container is appended once when it has the name, however often, and not at all when it has not") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_screen_t *twice = recording_add_screen("twice");
    recording_add_instance(twice, layer);
    recording_add_instance(twice, layer);
    kl_screen_t *without = recording_add_screen("without");
    char name[] = "main";
    conditional_add_info info{keldom_create_darray(1), name};
    CHECK(keldom_add_if_has_named("twice", twice, &info) == 1);
    CHECK(keldom_add_if_has_named("without", without, &info) == 0);
    CHECK((contents(info.darray) == Objects{twice}));
}

TEST_CASE("appending a container is done at the list's end, and 1 is given even when the list has no room") {
    HostFixture host;
    kl_screen_t *home = recording_add_screen("home");
    recording_add_instance(home, recording_add_layer("main"));
    char name[] = "main";
    conditional_add_info info{keldom_create_darray(1), name};
    host.show(RECORDING_SHOW_ARRAYS);
    recording_fail(RECORDING_DARRAY_ADD, 1);
    CHECK(keldom_add_if_has_named("home", home, &info) == 1);
    CHECK(host.take_lines() == Lines{"kl_darray_add(array 1, screen \"home\", -1)"});
    CHECK((contents(info.darray) == Objects{}));
}

TEST_CASE("a search hands its traverser the object, the helper and a filled record") {
    HostFixture host;
    struct Seen {
        kl_object_t *in;
        predicate_t work;
        complex_traverse_info_t info;
    };
    static Seen seen;
    seen = {};
    auto traverser = [](kl_object_t *object, predicate_t work, void *user_data) {
        auto *info = static_cast<complex_traverse_info_t *>(user_data);
        seen = {object, work, *info};
        info->result = object;
        return 1;
    };
    kl_object_t *in = recording_app_object();
    int context = 0;
    CHECK(keldom_complex_traverse(in, traverser, 3, 4, note, &context) == in);
    CHECK(seen.in == in);
    CHECK((seen.work == keldom_complex_traverse_helper));
    CHECK(seen.info.stop_on_find == 4);
    CHECK(seen.info.user_data == &context);
    CHECK((seen.info.work == note));
    CHECK(seen.info.result == nullptr);
    CHECK(seen.info.recurse == 3);
}

TEST_CASE("a search that stops and does not descend ends at the first match") {
    HostFixture host;
    recording_add_screen("a");
    kl_screen_t *b = recording_add_screen("b");
    kl_screen_t *c = recording_add_screen("c");
    Search search{
        {b,         c},
        {         }
    };
    CHECK(keldom_complex_traverse(recording_app_object(), keldom_traverse, 0, 1, matches, &search) == b);
    CHECK(search.names == Lines{"a", "b"});
}

TEST_CASE("a search that neither stops nor descends tests every child, and its result is the last match") {
    HostFixture host;
    kl_screen_t *a = recording_add_screen("a");
    kl_screen_t *b = recording_add_screen("b");
    recording_add_screen("c");
    Search search{
        {a,         b},
        {         }
    };
    CHECK(keldom_complex_traverse(recording_app_object(), keldom_traverse, 0, 0, matches, &search) == b);
    CHECK(search.names == Lines{"a", "b", "c"});
}

TEST_CASE("a search without a match gives null") {
    HostFixture host;
    recording_add_group(recording_add_layer("main"), "bar");
    for (int recurse : {0, 1})
        for (int stop : {0, 1}) {
            Search search;
            CHECK(
                keldom_complex_traverse(recording_app_object(), keldom_traverse_layers, recurse, stop, matches, &search)
                == nullptr);
        }
}

TEST_CASE("the object that is searched is never tested itself") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    recording_add_control(layer, "ok");
    for (int recurse : {0, 1}) {
        Search search{{layer}, {}};
        CHECK(keldom_complex_traverse(object_of(layer), keldom_traverse, recurse, 1, matches, &search) == nullptr);
        CHECK(search.names == Lines{"ok"});
    }
}

TEST_CASE("a descending search visits everything once, containers before their children, and gives the last match") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_control(main, "first");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *inner = recording_add_control(bar, "inner");
    kl_group_t *nested = recording_add_group(bar, "nested");
    recording_add_control(nested, "deep");
    kl_table_t *list = recording_add_table(main, "list", 1, 2);
    recording_add_template(list, "row");
    kl_group_t *cell_group = recording_make_group("cell_group");
    recording_add_control(cell_group, "in_cell");
    recording_set_cell(list, 0, 1, cell_group);
    recording_add_layer("menu");
    const Lines everything = {"main", "first",    "bar",        "inner",   "nested", "deep",
                              "list", "cell_0_0", "cell_group", "in_cell", "menu"};

    for (int stop : {0, 1}) {
        CAPTURE(stop);
        Search search{
            {main,   bar, inner},
            {     }
        };
        CHECK(keldom_complex_traverse(recording_app_object(), keldom_traverse_layers, 1, stop, matches, &search)
              == inner);
        CHECK(search.names == everything);
    }
}

TEST_CASE("a descending search from the application goes through screens and layer instances") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_control(main, "ok");
    recording_add_instance(recording_add_screen("home"), main);
    recording_add_instance(recording_add_screen("setup"), main);
    Search search;
    keldom_complex_traverse(recording_app_object(), keldom_traverse, 1, 1, matches, &search);
    CHECK(search.names == Lines{"home", "main", "ok", "setup", "main", "ok"});
}

TEST_CASE(
    "one step of a search that does not descend gives the stop value for a match, else 0, and visits no children") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    recording_add_control(layer, "ok");
    for (int stop : {0, 1, 5, -2}) {
        CAPTURE(stop);
        Search search{{layer}, {}};
        complex_traverse_info_t info{stop, &search, matches, nullptr, 0};
        CHECK(keldom_complex_traverse_helper("main", layer, &info) == stop);
        CHECK(info.result == layer);
        CHECK(search.names == Lines{"main"});

        search = {};
        info.result = nullptr;
        CHECK(keldom_complex_traverse_helper("main", layer, &info) == 0);
        CHECK(info.result == nullptr);
    }
}

TEST_CASE("a step without a match keeps the result of an earlier one") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    int earlier = 0;
    Search search;
    complex_traverse_info_t info{1, &search, matches, &earlier, 0};
    keldom_complex_traverse_helper("main", layer, &info);
    CHECK(info.result == &earlier);
}

TEST_CASE("one step of a descending search gives 0 for a match, and goes on to the children") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(layer, "ok");
    Search search{
        {layer,     ok},
        {         }
    };
    complex_traverse_info_t info{5, &search, matches, nullptr, 1};
    CHECK(keldom_complex_traverse_helper("main", layer, &info) == 0);
    CHECK(info.result == ok);
    CHECK(search.names == Lines{"main", "ok"});
}

TEST_CASE("one step of a descending search gives the stop value when the walk below was ended") {
    HostFixture host;
    kl_layer_t *layer = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(layer, "bar");
    recording_add_control(bar, "inner");
    recording_add_control(bar, "after");
    recording_add_control(layer, "last");
    // A match that ends the walk comes from a predicate that has switched descending off.
    struct Switching {
        complex_traverse_info_t info;
        Lines names;
    };
    auto switch_off_at_inner = [](const char *name, void *, void *user_data) {
        auto *self = static_cast<Switching *>(user_data);
        self->names.emplace_back(name);
        if (self->names.back() != "inner") return 0;
        self->info.recurse = 0;
        return 1;
    };
    Switching switching{
        {5,                    nullptr, switch_off_at_inner, nullptr, 1},
        {                  }
    };
    switching.info.user_data = &switching;
    CHECK(keldom_complex_traverse_helper("main", layer, &switching.info) == 5);
    CHECK(switching.names == Lines{"main", "bar", "inner"});
}

TEST_CASE("an object's container is the layer, group or table that lists it directly") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *in_bar = recording_add_control(bar, "in_bar");
    kl_group_t *nested = recording_add_group(bar, "nested");
    kl_control_t *deep = recording_add_control(nested, "deep");
    kl_table_t *list = recording_add_table(nested, "list", 2, 2);
    kl_layer_t *menu = recording_add_layer("menu");
    kl_control_t *in_menu = recording_add_control(menu, "in_menu");

    CHECK(container_of(ok) == object_of(main));
    CHECK(container_of(bar) == object_of(main));
    CHECK(container_of(in_bar) == object_of(bar));
    CHECK(container_of(nested) == object_of(bar));
    CHECK(container_of(deep) == object_of(nested));
    CHECK(container_of(list) == object_of(nested));
    CHECK(container_of(recording_cell(list, 0, 0)) == object_of(list));
    CHECK(container_of(recording_cell(list, 1, 1)) == object_of(list));
    CHECK(container_of(in_menu) == object_of(menu));
}

TEST_CASE("what no layer reaches has no container") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_table_t *list = recording_add_table(main, "list", 1, 1);
    CHECK(container_of(recording_make_control(KL_OBJECT_TYPE_CONTROL, "loose")) == nullptr);
    CHECK(container_of(recording_add_control(recording_make_layer("unlisted"), "ok")) == nullptr);
    CHECK(container_of(recording_add_template(list, "row")) == nullptr);
    CHECK(container_of(recording_cell(list, 1, 0)) == nullptr);
    CHECK(container_of(main) == nullptr);
    recording_list_append(main, nullptr);
    CHECK(container_of(recording_add_control(main, "after_null")) == nullptr);
}

TEST_CASE("a template that a layer or a group lists directly has that container") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_table_t *list = recording_add_table(main, "list", 1, 1);
    kl_control_t *row = recording_add_template(list, "row");
    recording_list_append(bar, row);
    CHECK(container_of(row) == object_of(bar));
    recording_list_take_out(bar, row);
    recording_list_append(main, row);
    CHECK(container_of(row) == object_of(main));
}

TEST_CASE("of several containers the one visited last counts") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_group_t *foot = recording_add_group(main, "foot");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_control_t *ok = recording_make_control(KL_OBJECT_TYPE_CONTROL, "ok");
    recording_list_append(bar, ok);
    recording_list_append(main, ok);
    CHECK(container_of(ok) == object_of(bar));
    recording_list_append(foot, ok);
    CHECK(container_of(ok) == object_of(foot));
    recording_list_append(menu, ok);
    CHECK(container_of(ok) == object_of(menu));
}

TEST_CASE(
    "a layer instance's screen is the one that lists it; the search tests the screens alone, up to the first match") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    kl_screen_t *home = recording_add_screen("home");
    kl_screen_t *setup = recording_add_screen("setup");
    kl_layer_instance_t *on_home = recording_add_instance(home, main);
    kl_layer_instance_t *on_setup = recording_add_instance(setup, main);
    kl_layer_instance_t *loose = recording_make_instance(home, main);
    CHECK(screen_of(on_home) == object_of(home));
    CHECK(screen_of(on_setup) == object_of(setup));
    CHECK(screen_of(loose) == nullptr);
    CHECK(screen_of(ok) == nullptr);
    recording_list_append(setup, on_home);
    host.show(RECORDING_SHOW_WALKS);
    CHECK(screen_of(on_home) == object_of(home));
    CHECK(host.take_lines()
          == Lines{"kl_string_map_traverse(screen_map, 1)", "kl_darray_iterator_init(list of home, 0)",
                   "first(list of home, -1, -1)"});
}

TEST_CASE("a container is found at any depth") {
    HostFixture host;
    void *owner = recording_add_layer("main");
    for (int depth = 0; depth < 60; ++depth) owner = recording_add_group(owner, "nested");
    kl_control_t *deep = recording_add_control(owner, "deep");
    CHECK(container_of(deep) == owner);
}

TEST_CASE("a layer's parents are the screens that show a layer of its name, each once, in the map's order") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_screen_t *setup = recording_add_screen("setup");
    kl_screen_t *home = recording_add_screen("home");
    kl_screen_t *about = recording_add_screen("about");
    recording_add_instance(home, menu);
    recording_add_instance(home, main);
    recording_add_instance(home, main);
    recording_add_instance(setup, main);
    recording_add_instance(about, recording_make_layer("main"));
    kl_object_t *app = recording_app_object();

    CHECK((contents(keldom_find_layer_parents(app, object_of(main))) == Objects{setup, home, about}));
    CHECK((contents(keldom_find_layer_parents(app, object_of(menu))) == Objects{home}));
    CHECK((contents(keldom_find_layer_parents(app, object_of(recording_add_layer("unseen")))) == Objects{}));
}

TEST_CASE("the search for a layer's parents makes one list and walks the screens once") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_instance(recording_add_screen("home"), main);
    recording_add_screen("setup");
    host.show(RECORDING_SHOW_WALKS | RECORDING_SHOW_ARRAYS);
    kl_darray_t *list = keldom_find_layer_parents(recording_app_object(), object_of(main));
    CHECK(host.take_lines()
          == Lines{"kl_darray_create(pointer, 1, 0)", "kl_string_map_traverse(screen_map, 1)",
                   "kl_darray_iterator_init(list of home, 0)", "first(list of home, -1, -1)",
                   "kl_darray_add(array 1, screen \"home\", -1)", "kl_darray_iterator_init(list of setup, 0)",
                   "first(list of setup, -1, -1)"});
    contents(list);
}

TEST_CASE("without memory for its list the search for a layer's parents gives null") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_instance(recording_add_screen("home"), main);
    recording_fail(RECORDING_DARRAY_CREATE, 1);
    CHECK(keldom_find_layer_parents(recording_app_object(), object_of(main)) == nullptr);
    CHECK(recording_calls(RECORDING_DARRAY_ADD) == 0);
}

TEST_CASE("a list of one object holds it alone, and of none nothing") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    host.show(RECORDING_SHOW_ARRAYS);
    kl_darray_t *one = keldom_get_darray_of(object_of(main));
    kl_darray_t *none = keldom_get_darray_of(nullptr);
    CHECK(host.take_lines()
          == Lines{"kl_darray_create(pointer, 1, 0)", "kl_darray_add(array 1, layer \"main\", -1)",
                   "kl_darray_create(pointer, 1, 0)"});
    CHECK((contents(one) == Objects{main}));
    CHECK((contents(none) == Objects{}));
}

TEST_CASE("without memory for its list a list of one object is null, and nothing is added") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    recording_fail(RECORDING_DARRAY_CREATE, 1);
    CHECK(keldom_get_darray_of(object_of(main)) == nullptr);
    recording_fail(RECORDING_DARRAY_CREATE, 1);
    CHECK(keldom_get_darray_of(nullptr) == nullptr);
    CHECK(recording_calls(RECORDING_DARRAY_ADD) == 0);
}

TEST_CASE("a list of objects is made with the capacity that is asked for") {
    HostFixture host;
    host.show(RECORDING_SHOW_ARRAYS);
    kl_darray_free(keldom_create_darray(0));
    kl_darray_free(keldom_create_darray(1));
    CHECK(host.take_lines()
          == Lines{"kl_darray_create(pointer, 0, 0)", "kl_darray_free(array 1)", "kl_darray_create(pointer, 1, 0)",
                   "kl_darray_free(array 2)"});
}

TEST_CASE("walks take no memory, look no name up and say nothing") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *ok = recording_add_control(bar, "ok");
    recording_add_table(bar, "list", 2, 2);
    host.show(RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_GET_APP | RECORDING_SHOW_ARRAYS);
    CHECK(container_of(ok) == object_of(bar));
    CHECK(host.take_lines() == Lines{});
}
