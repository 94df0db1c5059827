// test_relatives.cpp: parents in a model that a well-formed application has not, and the lists that hold relatives.
#include "plugin_fixture.h"
#include "traversal.h"

namespace {

struct Relatives : PluginFixture {
    Relatives() { run("app = keldom.get_application()"); }

    // The calls that made lists while the expression was evaluated.
    Lines lists_of(const std::string &expression) {
        show(RECORDING_SHOW_ARRAYS);
        run("local list = " + expression);
        Lines lines = take_lines();
        std::erase_if(lines, [](const std::string &line) { return !line.starts_with("kl_darray_create"); });
        return lines;
    }

    kl_layer_t *main = recording_add_layer("main");
    kl_screen_t *home = recording_add_screen("home");
    kl_screen_t *setup = recording_add_screen("setup");
};

// Visits a screen, and notes what ends the walk.
int ended_by = 0;
int visit(kl_object_t *screen, predicate_t work, void *user_data) {
    ended_by = work("home", screen, user_data);
    return ended_by;
}

} // namespace

TEST_CASE("a search for a parent ends its walk with 1") {
    Relatives fixture;
    kl_object_t *placed = &recording_add_instance(fixture.home, fixture.main)->object;
    CHECK(keldom_find_parent_under(&fixture.home->object, visit, placed, 0) == &fixture.home->object);
    CHECK(ended_by == 1);
}

TEST_CASE("a layer instance that two screens list has the first of them as its parent") {
    Relatives fixture;
    recording_list_append(fixture.setup, recording_add_instance(fixture.home, fixture.main));
    CHECK(fixture.run("return app.get_parents('home.main')") == Lines{"{screen_object \"home\"}"});
}

TEST_CASE("the application's parents are a list without room, all other relatives one with room for one") {
    Relatives fixture;
    for (kl_screen_t *screen : {fixture.home, fixture.setup}) recording_add_instance(screen, fixture.main);
    recording_add_control(fixture.main, "ok");
    CHECK(fixture.lists_of("app:get_parents()") == Lines{"kl_darray_create(pointer, 0, 0)"});
    for (std::string expression :
         {"keldom.get_layers()", "keldom.get_screens()", "app:get_children()", "app.get_parents('home')",
          "app.get_parents('home.main')", "app.get_parents('main')", "app.get_parents('main.ok')"}) {
        CAPTURE(expression);
        CHECK(fixture.lists_of(expression) == Lines{"kl_darray_create(pointer, 1, 0)"});
    }
}
