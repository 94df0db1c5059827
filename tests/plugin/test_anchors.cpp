// test_anchors.cpp: anchored moves on a host whose variables are wider than its 16-bit coordinates.
#include "plugin_fixture.h"

namespace {

struct Wide : PluginFixture {
    Wide() {
        recording_add_control(layer, "ok");
        recording_set_number("main.ok.kld_x", 10);
        run("ok = keldom.get_object('main.ok')");
        take_lines();
    }

    kl_layer_t *layer = recording_add_layer("main");

    // What a call leaves in the variable.
    std::string left_in(const std::string &variable, const std::string &call) {
        CHECK(run(call) == Lines{});
        take_lines();
        return recording_variable(("main.ok." + variable).c_str());
    }
};

} // namespace

TEST_CASE("the current extent is cut to 16 bits before it is halved") {
    Wide fixture;
    recording_set_number("main.ok.kld_width", 65536 + 100);
    CHECK(fixture.left_in("kld_x", "ok:set_x(100, 2)") == "50");
    recording_set_number("main.ok.kld_height", 32768);
    CHECK(fixture.left_in("kld_y", "ok:set_y(0, 2)") == "16384");
}

TEST_CASE("a change of the extent is cut to 16 bits before it is halved") {
    Wide fixture;
    recording_set_number("main.ok.kld_width", 65536 + 100);
    CHECK(fixture.left_in("kld_x", "ok:set_width(60, 2)") == "30");
    recording_set_number("main.ok.kld_width", 32767);
    CHECK(fixture.left_in("kld_x", "ok:set_width(-3, 2)") == "-16353"); // 32770 wraps to -32766
}

TEST_CASE("a template that a script hands to a control's method is written without regard to anchors") {
    Wide fixture;
    kl_control_t *mark = recording_make_control(KL_OBJECT_TYPE_TEMPLATE, "mark");
    recording_list_append(fixture.layer, mark);
    recording_resolve("main.mark", mark);
    CHECK(fixture.run("mark = keldom.get_object('main.mark') return mark") == Lines{"keldom_object \"main.mark\""});
    fixture.take_lines();
    CHECK(fixture.run("ok.set_width(mark, 60, 2) ok.set_x(mark, 7, 99)") == Lines{});
    CHECK(fixture.take_lines()
          == Lines{"hold_change_listener()", "kl_lua_set_data_value(\"main.mark.kld_width\", 60)",
                   "release_change_listener()", "hold_change_listener()",
                   "kl_lua_set_data_value(\"main.mark.kld_x\", 7)", "release_change_listener()"});
}
