// test_lua_out_of_memory.cpp: whichever request Lua's allocator refuses while the plug-in lists something, the script
// gets Lua's error and nothing of the host's is lost.
#include "plugin_fixture.h"

namespace {

struct Model {
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *ok = recording_add_control(bar, "ok");
    kl_control_t *cancel = recording_add_control(bar, "cancel");
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_instance_t *placed = recording_add_instance(home, main);
};

} // namespace

TEST_CASE("a list that is being pushed is not lost") {
    PluginFixture fixture;
    Model model;
    recording_set_number("main.bar.kld_x", 1);
    recording_set_number("main.bar.kld_y", 2);
    fixture.run("app = keldom.get_application()");
    for (std::string call : {"app.get_children('main.bar')", "app.get_children('home')", "app.get_parents('main')",
                             "app.get_parents('main.bar.ok')", "app.get_variables('main.bar')", "keldom.get_screens()",
                             "keldom.get_layers()"}) {
        CAPTURE(call);
        unsigned long refusals = 0;
        for (unsigned long nth = 1;; ++nth) {
            CAPTURE(nth);
            fixture.collect();
            const int before = recording_live_blocks();
            const Lines results = fixture.run_starved("local list = " + call, nth);
            if (!fixture.memory.refused()) break;
            ++refusals;
            CHECK(results == Lines{"error: not enough memory"});
            fixture.collect();
            CHECK(recording_live_arrays() == 0);
            CHECK(recording_live_blocks() == before);
        }
        CHECK(refusals >= 3); // the holder, the table, what is in it
        CHECK(fixture.run("return type(" + call + ")") == Lines{"\"table\""});
    }
}

TEST_CASE("what holds a list leaves nothing behind for the collection") {
    PluginFixture fixture;
    Model model;
    fixture.run("app = keldom.get_application()");
    fixture.collect();
    fixture.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_ARRAYS);
    for (std::string code : {"app.get_children('main.bar.ok')", "app.get_children('nowhere')",
                             "app.get_variables('home')", "app.get_variables('nowhere')"}) {
        CAPTURE(code);
        fixture.run(code);
        fixture.take_log();
        fixture.take_lines();
        fixture.collect();
        CHECK(fixture.take_lines() == Lines{});
    }
}
