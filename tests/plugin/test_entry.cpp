// test_entry.cpp: the entry point, init and fini, and the listener that waits for the host's start-up event.
#include <cstring>

#include "plugin_fixture.h"

namespace {

const char start_up[] = "kel.internalinit";

// The record as the entry point leaves it, made over bytes that are not zero.
kl_plugin_state_t created() {
    kl_plugin_state_t state;
    std::memset(&state, 0xFF, sizeof state);
    CHECK(KEL_PLUGIN_CREATE_FUNC(&state) == 0);
    return state;
}

bool is_registered(HostFixture &host) { return host.run("return type(keldom)") == Lines{"\"table\""}; }

} // namespace

TEST_CASE("the entry point gives 0 and fills the record") {
    HostFixture host;
    kl_plugin_state_t state = created();
    CHECK(std::string(state.name) == "luakeldom");
    CHECK(state.plugin_data == nullptr);
    CHECK((state.init != nullptr));
    CHECK((state.fini != nullptr));
    CHECK(state.version.major == 7);
    CHECK(state.version.minor == 0);
    CHECK(state.version.service == 0);
    CHECK(state.version.build == 39538);
    CHECK(state.service_number == 0);
    kelal_free(state.name);
}

TEST_CASE("the entry point clears the whole record, the room between the fields included") {
    HostFixture host;
    kl_plugin_state_t state;
    std::memset(&state, 0xFF, sizeof state);
    KEL_PLUGIN_CREATE_FUNC(&state);

    kl_plugin_state_t expected;
    std::memset(&expected, 0, sizeof expected);
    std::memcpy(&expected.name, &state.name, sizeof state.name);
    std::memcpy(&expected.init, &state.init, sizeof state.init);
    std::memcpy(&expected.fini, &state.fini, sizeof state.fini);
    expected.version.major = 7;
    expected.version.build = 39538;
    CHECK(std::memcmp(&state, &expected, sizeof state) == 0);
    kelal_free(state.name);
}

TEST_CASE("the plug-in's name is a copy from the host's allocator, a new one each time") {
    HostFixture host;
    host.show(RECORDING_SHOW_ALLOCATOR);
    kl_plugin_state_t first = created();
    kl_plugin_state_t second = created();
    CHECK(host.take_lines() == Lines{"kelal_strdup(\"luakeldom\")", "kelal_strdup(\"luakeldom\")"});
    CHECK(first.name != second.name);
    CHECK(recording_live_blocks() == 2);
    kelal_free(first.name);
    kelal_free(second.name);
}

TEST_CASE("the entry point without memory gives 0 and leaves the name null and the rest filled") {
    HostFixture host;
    recording_fail(RECORDING_STRDUP, 1);
    kl_plugin_state_t state = created();
    CHECK(state.name == nullptr);
    CHECK((state.init != nullptr));
    CHECK((state.fini != nullptr));
    CHECK(state.version.build == 39538);
}

TEST_CASE("the entry point calls nothing of the host but the allocator") {
    HostFixture host;
    host.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ARRAYS | RECORDING_SHOW_WALKS);
    kl_plugin_state_t state = created();
    CHECK(host.take_lines() == Lines{});
    kelal_free(state.name);
}

TEST_CASE("init subscribes to the start-up event with the application, and does nothing else") {
    HostFixture host;
    kl_plugin_state_t state = created();
    host.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ARRAYS | RECORDING_SHOW_WALKS | RECORDING_SHOW_ALLOCATOR);
    CHECK(state.init(recording_app(), nullptr, nullptr) == 0);
    CHECK(host.take_lines() == Lines{"add_event_listener(\"kel.internalinit\", listener 1, app)"});
    CHECK(recording_subscriptions() == 1);
    CHECK_FALSE(is_registered(host));
    kelal_free(state.name);
}

TEST_CASE("init heeds neither its argument string nor its data") {
    HostFixture host;
    kl_plugin_state_t state = created();
    int data = 0;
    CHECK(state.init(recording_app(), "-v off", &data) == 0);
    CHECK(host.take_lines() == Lines{"add_event_listener(\"kel.internalinit\", listener 1, app)"});
    kelal_free(state.name);
}

TEST_CASE("init gives 0 even when the host refuses the subscription") {
    HostFixture host;
    kl_plugin_state_t state = created();
    recording_fail(RECORDING_ADD_EVENT_LISTENER, 1);
    CHECK(state.init(recording_app(), nullptr, nullptr) == 0);
    CHECK(recording_subscriptions() == 0);
    kelal_free(state.name);
}

TEST_CASE("init needs no Lua state yet") {
    HostFixture host;
    recording_share_state(nullptr);
    kl_plugin_state_t plugin;
    CHECK(recording_load_plugin(&plugin, nullptr) == 0);
    recording_share_state(host.L);
    CHECK(recording_deliver(start_up) == 1);
    CHECK(is_registered(host));
    recording_unload_plugin(&plugin);
}

TEST_CASE("the start-up event ends the subscription before anything else, then finds the state and registers") {
    HostFixture host;
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    host.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ARRAYS | RECORDING_SHOW_WALKS | RECORDING_SHOW_ALLOCATOR);
    CHECK(recording_deliver(start_up) == 1);
    CHECK(host.take_lines()
          == Lines{"rem_event_listener(listener 1, app)", "kl_string_map_get(shared_data_map, \"luastate\")"});
    CHECK(recording_subscriptions() == 0);
    recording_show(0);
    CHECK(is_registered(host));
    recording_unload_plugin(&plugin);
}

TEST_CASE("no other event registers anything") {
    HostFixture host;
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    CHECK(recording_deliver("kel.started") == 0);
    CHECK_FALSE(is_registered(host));
    CHECK(recording_subscriptions() == 1);
    recording_unload_plugin(&plugin);
}

TEST_CASE("the listener looks at nothing in the event") {
    HostFixture host;
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    recording_listener(0)(recording_app()->linfo->io_mgr, nullptr, recording_app());
    CHECK(is_registered(host));
    recording_unload_plugin(&plugin);
}

TEST_CASE("a second start-up event finds no subscription") {
    HostFixture host;
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    CHECK(recording_deliver(start_up) == 1);
    host.run("before = keldom.get_object");
    host.take_lines();
    CHECK(recording_deliver(start_up) == 0);
    CHECK(host.take_lines() == Lines{});
    CHECK(host.run("return before == keldom.get_object") == Lines{"true"});
    recording_unload_plugin(&plugin);
}

TEST_CASE("a host that keeps the subscription gets a working module from each event") {
    HostFixture host;
    recording_add_layer("main");
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    recording_fail(RECORDING_REM_EVENT_LISTENER, 1);
    CHECK(recording_deliver(start_up) == 1);
    CHECK(host.run("old = keldom.get_object('main') return old:get_name()") == Lines{"\"main\""});
    CHECK(recording_deliver(start_up) == 1);
    CHECK(recording_subscriptions() == 0);
    CHECK(host.run("return old:get_name(), old:get_type(), keldom.get_object('main'):get_name()")
          == Lines{"\"main\"", "4", "\"main\""});
    recording_unload_plugin(&plugin);
}

TEST_CASE("without a Lua state the start-up event leaves one warning and nothing else") {
    HostFixture host;
    recording_share_state(nullptr);
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    host.take_lines();
    CHECK(recording_deliver(start_up) == 1);
    CHECK(host.take_lines()
          == Lines{"rem_event_listener(listener 1, app)", "kl_string_map_get(shared_data_map, \"luastate\")",
                   "kel_app_log(app, 1, \"Canvas: Failed to get Lua state\")"});
    CHECK(host.take_log() == Lines{"1: Canvas: Failed to get Lua state"});
    CHECK_FALSE(is_registered(host));

    SUBCASE("and a later event does not try again, although the state is there") {
        recording_share_state(host.L);
        CHECK(recording_deliver(start_up) == 0);
        CHECK_FALSE(is_registered(host));
    }
    recording_unload_plugin(&plugin);
}

TEST_CASE("registration leaves the Lua stack as the host had it") {
    HostFixture host;
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    lua_pushstring(host.L, "below");
    lua_pushnumber(host.L, 42);
    recording_deliver(start_up);
    REQUIRE(lua_gettop(host.L) == 2);
    CHECK(host.text_of(1) == "\"below\"");
    CHECK(host.text_of(2) == "42");
    lua_settop(host.L, 0);
    recording_unload_plugin(&plugin);
}

TEST_CASE("fini does nothing: module and handles live on") {
    PluginFixture fixture;
    recording_add_layer("main");
    CHECK(fixture.run("h = keldom.get_object('main')") == Lines{});
    fixture.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ARRAYS | RECORDING_SHOW_WALKS | RECORDING_SHOW_ALLOCATOR);
    fixture.plugin.fini(recording_app(), fixture.plugin.plugin_data);
    CHECK(fixture.take_lines() == Lines{});
    CHECK(fixture.run("return h:get_name(), keldom.get_object('main') == h") == Lines{"\"main\"", "true"});
}
