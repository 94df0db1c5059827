// test_container_search.cpp: names found in one walk are those that the searches of one level a walk give, and a list
// of siblings is named in one walk as well.
#include "container_search.h"

#include "plugin_fixture.h"
#include "qualified_name.h"
#include "traversal.h"

namespace {

// The rule as it stands: the container of the container, one search each.
std::string plain_name(kl_object_t *object) {
    auto own = [](const kl_object_t *named) {
        return std::string(reinterpret_cast<const kl_control_t *>(named)->name);
    };
    if (!object) return "(null)";
    if (object->type == KL_OBJECT_TYPE_LAYER) return reinterpret_cast<kl_layer_t *>(object)->name;
    if (object->type == KL_OBJECT_TYPE_LAYER_INSTANCE) {
        auto *instance = reinterpret_cast<kl_layer_instance_t *>(object);
        return std::string(instance->screen->name) + "." + instance->layer->name;
    }
    kl_object_t *container = keldom_find_parent_under(recording_app_object(), keldom_traverse_layers, object, 1);
    std::string name = plain_name(container);
    if (name == "(null)") return name;
    if (container->type == KL_OBJECT_TYPE_TABLE) name.resize(name.rfind('.'));
    return name + "." + own(object);
}

std::string name_of(void *record) {
    char *name = keldom_get_qualified_name(recording_app(), static_cast<kl_object_t *>(record));
    std::string text = name ? name : "(null)";
    kelal_free(name);
    return text;
}

void check_name(void *record, const std::string &expected) {
    CHECK(plain_name(static_cast<kl_object_t *>(record)) == expected);
    CHECK(name_of(record) == expected);
}

// "main.ok main.cancel", or what else came of it.
std::string children_of(HostFixture &fixture, const std::string &name) {
    Lines result = fixture.run("local names = {} local list = keldom.get_application().get_children('" + name
                               + "') if not list then return end for _, child in ipairs(list) do"
                                 " names[#names + 1] = tostring(child) end return table.concat(names, ' ')");
    return result.empty() ? "(nothing)" : result[0];
}

// So many calls since the last time it was asked.
unsigned long walks() {
    static unsigned long before = 0;
    unsigned long now = recording_calls(RECORDING_MAP_TRAVERSE);
    unsigned long since = now - before;
    before = now;
    return since;
}

// A chain of groups g0, g1, ... in a layer "main", and its innermost one.
kl_group_t *nested_groups(kl_layer_t *main, int depth) {
    kl_group_t *group = recording_add_group(main, "g0");
    for (int level = 1; level < depth; ++level)
        group = recording_add_group(group, ("g" + std::to_string(level)).c_str());
    return group;
}

} // namespace

TEST_CASE("one walk names an object at any depth") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    for (int depth : {1, 2, 6, 11}) {
        CAPTURE(depth);
        kl_control_t *ok = recording_add_control(nested_groups(main, depth), "ok");
        walks();
        std::string name = name_of(ok);
        CHECK(walks() == 1);
        CHECK(name == plain_name(&ok->object));
        recording_list_take_out(main, *static_cast<void **>(kl_darray_item(main->control_list, 0)));
    }
}

TEST_CASE("deeper than the path that is kept, the rest of the name takes one more walk") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(nested_groups(main, 20), "ok");
    walks();
    CHECK(name_of(ok) == "main.g0.g1.g2.g3.g4.g5.g6.g7.g8.g9.g10.g11.g12.g13.g14.g15.g16.g17.g18.g19.ok");
    CHECK(walks() == 2);
    kl_control_t *higher = recording_add_control(nested_groups(main, 12), "higher");
    walks();
    CHECK(name_of(higher) == "main.g0.g1.g2.g3.g4.g5.g6.g7.g8.g9.g10.g11.higher");
    CHECK(walks() == 2);
}

TEST_CASE("a container that is visited before its descendants does not win over them") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_group_t *inner = recording_add_group(bar, "inner");
    kl_control_t *ok = recording_add_control(inner, "ok");
    recording_list_append(bar, ok);
    recording_list_append(main, ok);
    check_name(ok, "main.bar.inner.ok");
}

TEST_CASE("of three containers the one that is visited last wins, also over one that is looked through after it") {
    HostFixture host;
    kl_control_t *ok = recording_add_control(recording_add_layer("main"), "ok");
    kl_layer_t *menu = recording_add_layer("menu");
    recording_list_append(recording_add_group(menu, "bar"), ok);
    recording_list_append(menu, ok);
    check_name(ok, "menu.bar.ok");
}

TEST_CASE("an object twice in one list has one container") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    recording_list_append(main, ok);
    walks();
    check_name(ok, "main.ok");
    CHECK(walks() == 2); // one of the plain search
}

TEST_CASE("a container in two places is named after the one visited last, by a walk of its own") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *ok = recording_add_control(bar, "ok");
    recording_list_append(menu, bar);
    check_name(ok, "menu.bar.ok");
}

TEST_CASE("a layer under two keys, or shown by an instance in a list, is a container twice") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    recording_put_layer("again", main);
    check_name(ok, "main.ok");
    recording_list_append(recording_add_layer("other"), recording_add_instance(recording_add_screen("home"), main));
    check_name(ok, "home.main.ok");
}

TEST_CASE("a layer in a group names what it holds by itself") {
    HostFixture host;
    kl_group_t *bar = recording_add_group(recording_add_layer("main"), "bar");
    kl_layer_t *lost = recording_make_layer("lost");
    kl_control_t *ok = recording_add_control(lost, "ok");
    check_name(ok, "(null)");
    recording_list_append(bar, lost);
    check_name(ok, "lost.ok");
}

TEST_CASE("a search tells whether one container alone lists the object, and is visited once") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_layer_t *menu = recording_add_layer("menu");
    kl_control_t *ok = recording_add_control(main, "ok");
    container_path_t path;
    CHECK(keldom_find_container_path(recording_app(), &ok->object, path));
    CHECK(path.length == 1);
    CHECK(path.containers[0] == &main->object);
    recording_list_append(menu, ok);
    CHECK_FALSE(keldom_find_container_path(recording_app(), &ok->object, path));
    CHECK(path.length == 1);
    CHECK(path.containers[0] == &menu->object);
    recording_list_take_out(menu, ok);
    recording_put_layer("again", main);
    CHECK_FALSE(keldom_find_container_path(recording_app(), &ok->object, path));
    CHECK(path.length == 1);
    CHECK(path.containers[0] == &main->object);
    recording_list_take_out(main, ok);
    CHECK_FALSE(keldom_find_container_path(recording_app(), &ok->object, path));
    CHECK(path.length == 0);
}

TEST_CASE("children are named in one walk, however many and however deep") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    for (int depth : {1, 6}) {
        kl_group_t *group = nested_groups(main, depth);
        for (int i = 0; i < 50; ++i) recording_add_control(group, ("c" + std::to_string(i)).c_str());
        std::string name = plain_name(reinterpret_cast<kl_object_t *>(group));
        CAPTURE(name);
        walks();
        std::string children = children_of(fixture, name);
        CHECK(walks() == 1);
        CHECK(children.starts_with("\"" + name + ".c0 " + name + ".c1 "));
        CHECK(children.ends_with(" " + name + ".c49\""));
        recording_list_take_out(main, *static_cast<void **>(kl_darray_item(main->control_list, 0)));
    }
}

TEST_CASE("each further child's name takes one copy and one resize, however deep") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    for (int depth : {1, 6}) {
        CAPTURE(depth);
        kl_group_t *group = nested_groups(main, depth);
        std::string name = plain_name(reinterpret_cast<kl_object_t *>(group));
        unsigned long taken[2];
        recording_add_control(group, "first");
        for (unsigned long &calls : taken) {
            recording_add_control(group, "further");
            calls = recording_calls(RECORDING_STRDUP) + recording_calls(RECORDING_REALLOC);
            CHECK(children_of(fixture, name).starts_with("\"" + name + ".first " + name + ".further"));
            calls = recording_calls(RECORDING_STRDUP) + recording_calls(RECORDING_REALLOC) - calls;
        }
        CHECK(taken[1] - taken[0] == 2);
        recording_list_take_out(main, *static_cast<void **>(kl_darray_item(main->control_list, 0)));
    }
}

TEST_CASE("children that are named together take two lists, each made with room for one") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_control(main, "ok");
    recording_add_control(main, "cancel");
    fixture.show(RECORDING_SHOW_ARRAYS);
    CHECK(children_of(fixture, "main") == "\"main.ok main.cancel\"");
    Lines made = fixture.take_lines();
    std::erase_if(made, [](const std::string &line) { return !line.starts_with("kl_darray_create"); });
    CHECK(made == Lines(2, "kl_darray_create(pointer, 1, 0)"));
}

TEST_CASE("cells, and children of a layer instance, are named in one walk") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_instance(recording_add_screen("home"), main);
    recording_add_table(recording_add_group(main, "bar"), "list", 1, 3);
    recording_add_control(main, "ok");
    walks();
    CHECK(children_of(fixture, "main.bar.list") == "\"main.bar.cell_0_0 main.bar.cell_0_1 main.bar.cell_0_2\"");
    CHECK(walks() == 1);
    CHECK(children_of(fixture, "home.main") == "\"main.bar main.ok\"");
    CHECK(walks() == 1);
}

TEST_CASE("screens and layer instances take no walk for their names") {
    PluginFixture fixture;
    kl_screen_t *home = recording_add_screen("home");
    recording_add_screen("more");
    recording_add_instance(home, recording_add_layer("main"));
    recording_add_instance(home, recording_add_layer("menu"));
    walks();
    CHECK(children_of(fixture, "home") == "\"home.main home.menu\"");
    CHECK(walks() == 0);
    CHECK(fixture.run("return #keldom.get_screens(), #keldom.get_layers()") == Lines{"2", "2"});
    CHECK(walks() == 2); // the maps themselves
}

TEST_CASE("where one child stands elsewhere too, each is named by itself") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    recording_add_control(main, "cancel");
    recording_list_append(recording_add_layer("menu"), ok);
    walks();
    CHECK(children_of(fixture, "main") == "\"menu.ok main.cancel\"");
    CHECK(walks() == 3); // all together, then each
}

TEST_CASE("children of a group that no layer reaches are named after what lists them, if anything does") {
    PluginFixture fixture;
    kl_group_t *lost = recording_make_group("lost");
    recording_resolve("lost", lost);
    kl_control_t *ok = recording_add_control(lost, "ok");
    recording_add_control(lost, "cancel");
    recording_list_append(recording_add_layer("main"), ok);
    CHECK(children_of(fixture, "lost") == "(nothing)");
    CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"}); // of the second
}

TEST_CASE("a child that is not named after its container keeps its own name") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    recording_list_append(main, recording_make_layer("inner"));
    recording_add_control(main, "ok");
    recording_add_control(main, "cancel");
    CHECK(children_of(fixture, "main") == "\"inner main.ok main.cancel\"");
}

TEST_CASE("without memory to name children together each is named by itself") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_control(main, "ok");
    recording_add_control(main, "cancel");
    const std::string expected = "\"main.ok main.cancel\"";
    SUBCASE("no list") {
        recording_fail(RECORDING_DARRAY_CREATE, 2);
        walks();
        CHECK(children_of(fixture, "main") == expected);
        CHECK(walks() == 2);
    }
    SUBCASE("a list that is too short") {
        for (unsigned nth = 3; nth <= 7; ++nth) {
            CAPTURE(nth);
            recording_fail(RECORDING_DARRAY_ADD, nth);
            walks();
            CHECK(children_of(fixture, "main") == expected);
            CHECK(walks() == 2);
        }
        recording_fail(RECORDING_DARRAY_ADD, 8);
        CHECK(children_of(fixture, "main") == expected);
        CHECK(walks() == 1);
        recording_fail(RECORDING_DARRAY_ADD, 0);
    }
}

TEST_CASE("a list that is shorter than what its container lists is named together all the same") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_darray_t *list = keldom_create_darray(1);
    for (const char *name : {"a", "b", "c", "d", "e", "f"}) {
        void *child = recording_add_control(main, name);
        if (kl_darray_size(list) < 2) kl_darray_add(list, &child, -1);
    }
    container_path_t path;
    CHECK(keldom_find_common_path(recording_app(), &main->object, list, path));
    CHECK(path.length == 1);
    CHECK(path.containers[0] == &main->object);
    kl_darray_free(list);
}

TEST_CASE("one child is not named together with others") {
    HostFixture host;
    kl_layer_t *main = recording_add_layer("main");
    kl_darray_t *list = keldom_get_darray_of(&recording_add_control(main, "ok")->object);
    container_path_t path;
    CHECK_FALSE(keldom_find_common_path(recording_app(), &main->object, list, path));
    kl_darray_free(list);
}

TEST_CASE("when a sibling's name, nothing is pushed") {
    PluginFixture fixture;
    kl_layer_t *main = recording_add_layer("main");
    recording_add_control(main, "ok");
    recording_add_control(main, "cancel");
    fixture.run("main = keldom.get_object('main')");
    for (recording_call_t call : {RECORDING_STRDUP, RECORDING_REALLOC})
        for (unsigned nth : {1U, 2U}) {
            CAPTURE(nth);
            recording_fail(call, nth);
            CHECK(fixture.run("return main:get_children()") == Lines{});
            CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
            CHECK(recording_live_arrays() == 0);
        }
}
