// test_values.cpp: what get_variables makes of keys that only a peculiar host gives.
#include "plugin_fixture.h"

namespace {

// What the layer "main" lists when the host answers with these keys, in this order.
Lines listed(PluginFixture &fixture, const std::vector<const char *> &keys) {
    recording_answer_prefix(keys.data(), static_cast<int>(keys.size()));
    Lines values = fixture.run("return unpack(keldom.get_object('main'):get_variables())");
    recording_answer_prefix(nullptr, 0);
    fixture.take_lines();
    return values;
}

} // namespace

TEST_CASE("a key is listed when nothing behind the name and its dot has a dot of its own") {
    PluginFixture fixture;
    recording_add_layer("main");
    CHECK(listed(fixture, {"main.a", "main.b"}) == Lines{"\"main.a\"", "\"main.b\""});
    CHECK(listed(fixture, {"main.ok.x", "main.a.b"}) == Lines{});
    CHECK(listed(fixture, {"mainx", "mainy.x", "main.z"}) == Lines{"\"mainx\"", "\"main.z\""});
}

TEST_CASE("a key that is left out gives its place to the last one, which is looked at in turn") {
    PluginFixture fixture;
    recording_add_layer("main");
    CHECK(listed(fixture, {"main.ok.x", "main.a", "main.b"}) == Lines{"\"main.b\"", "\"main.a\""});
    CHECK(listed(fixture, {"main.ok.x", "main.a", "main.ok.y"}) == Lines{"\"main.a\""});
}

// The recording host's copies are as long as the keys, so that reading past an end is seen.
TEST_CASE("a key that is no longer than the name is not read past its end") {
    PluginFixture fixture;
    recording_add_layer("main");
    CHECK(listed(fixture, {"main", "main.", "m"}) == Lines{"\"main\"", "\"main.\"", "\"m\""});
}

TEST_CASE("a host that counts keys and has no memory to list them lists none") {
    PluginFixture fixture;
    recording_add_layer("main");
    kl_data_mgr_t *data_mgr = recording_app()->linfo->data_mgr;
    auto find_for_prefix = data_mgr->find_for_prefix;
    data_mgr->find_for_prefix = [](kl_data_mgr_t *, const char *, int *count) -> char ** {
        *count = 3;
        return nullptr;
    };
    CHECK(fixture.run("return keldom.get_object('main'):get_variables()") == Lines{"{}"});
    data_mgr->find_for_prefix = find_for_prefix;
}

// Where Lua's stack ends depends on how many arguments there are; a write past its end is seen when the test ends.
TEST_CASE("the application's values take no more of Lua's stack than their keys did") {
    PluginFixture fixture;
    fixture.run("app = keldom.get_application() keys = {}");
    for (int count = 1; count <= 200; ++count) {
        CAPTURE(count);
        Lines results = fixture.run("keys[#keys + 1] = 'k' return coroutine.wrap(function()"
                                    " return select('#', app:get_value(unpack(keys))) end)()");
        CHECK(results == Lines{std::to_string(count)});
    }
}
