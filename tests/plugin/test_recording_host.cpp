// test_recording_host.cpp: the host of these tests itself: that it notices each breach of the contract, fails where a
// test wants it to, and does what the contract says where it does not.
#include "plugin_fixture.h"

namespace {

using Violations = Lines;

kl_data_mgr_t *data_mgr() { return recording_app()->linfo->data_mgr; }
kl_io_mgr_t *io_mgr() { return recording_app()->linfo->io_mgr; }

// Reads the variable whose key is argument 1; results: what the call returned, by how much the stack grew, what it
// left.
int read_variable(lua_State *L) {
    lua_settop(L, 1);
    int result = kl_lua_get_data_value(L, recording_app(), data_mgr(), -1, -1);
    int left = lua_gettop(L);
    lua_pushinteger(L, result);
    lua_insert(L, 1);
    lua_pushinteger(L, left - 1);
    lua_insert(L, 2);
    return left + 2;
}

// Writes argument 2 into the variable whose key is argument 1, in a batch; results as above.
int write_variable(lua_State *L) {
    lua_settop(L, 2);
    data_mgr()->hold_change_listener(data_mgr());
    lua_pushvalue(L, 1);
    int result = kl_lua_set_data_value(L, recording_app(), data_mgr(), -1, 2);
    data_mgr()->release_change_listener(data_mgr());
    lua_pushinteger(L, result);
    lua_pushboolean(L, lua_gettop(L) == 4);
    return 2;
}

// Keys of a find_for_prefix; the array is freed.
Lines keys_of(const char *prefix) {
    int count = -1;
    char **keys = data_mgr()->find_for_prefix(data_mgr(), prefix, &count);
    Lines lines(keys, keys + count);
    kelal_free(keys);
    return lines;
}

void ignore(kl_io_mgr_t *, kl_event_t *, void *) {}

} // namespace

TEST_CASE("the allocator's blocks are counted, and resizing moves them") {
    HostFixture host;
    char *block = kelal_strdup("main");
    CHECK(recording_live_blocks() == 1);
    auto *larger = static_cast<char *>(kelal_realloc(block, 100));
    CHECK(larger != block);
    CHECK(std::string(larger) == "main");
    CHECK(recording_live_blocks() == 1);
    kelal_free(nullptr);
    kelal_free(larger);
    CHECK(recording_live_blocks() == 0);
    CHECK(recording_calls(RECORDING_STRDUP) == 1);
    CHECK(recording_calls(RECORDING_REALLOC) == 1);
    CHECK(recording_calls(RECORDING_FREE) == 2);
}

TEST_CASE("misuse of the allocator is noticed") {
    HostFixture host;
    char foreign[4] = "x";
    char *block = kelal_strdup("main");
    CHECK(kelal_strdup(nullptr) == nullptr);
    void *made = kelal_realloc(nullptr, 8);
    CHECK(kelal_realloc(block, 0) == nullptr);
    CHECK(kelal_realloc(foreign, 8) == nullptr);
    kelal_free(foreign);
    kelal_free(made);
    kelal_free(block);
    kelal_free(block);
    CHECK(host.take_violations()
          == Violations{"kelal_strdup of null", "kelal_realloc of a null block", "kelal_realloc to 0 bytes",
                        "kelal_realloc of a block that is not live", "kelal_free of a block that is not live",
                        "kelal_free of a block that is not live"});
}

TEST_CASE("the nth call of a function fails once, or every call until further notice") {
    HostFixture host;
    recording_fail(RECORDING_STRDUP, 2);
    char *first = kelal_strdup("a");
    char *second = kelal_strdup("b");
    char *third = kelal_strdup("c");
    CHECK(first != nullptr);
    CHECK(second == nullptr);
    CHECK(third != nullptr);
    recording_fail(RECORDING_REALLOC, 1);
    CHECK(kelal_realloc(first, 100) == nullptr);
    CHECK(std::string(first) == "a");
    kelal_free(first);
    kelal_free(third);
    recording_fail_always(RECORDING_STRDUP, 1);
    CHECK(kelal_strdup("a") == nullptr);
    CHECK(kelal_strdup("a") == nullptr);
    recording_fail_always(RECORDING_STRDUP, 0);
    char *last = kelal_strdup("a");
    CHECK(last != nullptr);
    kelal_free(last);
}

TEST_CASE("an array holds what is added, in order, and adding moves its slots") {
    HostFixture host;
    kl_control_t *a = recording_make_control(KL_OBJECT_TYPE_CONTROL, "a");
    kl_control_t *b = recording_make_control(KL_OBJECT_TYPE_CONTROL, "b");
    kl_darray_t *array = kl_darray_create(sizeof(kl_object_t *), 1, 0);
    CHECK(recording_live_arrays() == 1);
    CHECK(kl_darray_add(array, &a, -1) == 0);
    void *slot = kl_darray_item(array, 0);
    CHECK(kl_darray_add(array, &b, -1) == 1);
    CHECK(kl_darray_item(array, 0) != slot);
    CHECK(*static_cast<kl_control_t **>(kl_darray_item(array, 0)) == a);
    CHECK(*static_cast<kl_control_t **>(kl_darray_item(array, 1)) == b);
    CHECK(kl_darray_size(array) == 2);

    kl_darray_iter_t iterator;
    kl_darray_iterator_init(&iterator, array, 0);
    CHECK(*static_cast<kl_control_t **>(iterator.first(&iterator, -1, -1)) == a);
    CHECK(*static_cast<kl_control_t **>(iterator.next(&iterator, -1, -1)) == b);
    CHECK(iterator.next(&iterator, -1, -1) == nullptr);

    recording_fail(RECORDING_DARRAY_ADD, 1);
    CHECK(kl_darray_add(array, &a, -1) == -1);
    CHECK(kl_darray_size(array) == 2);
    recording_fail(RECORDING_DARRAY_ITEM, 1);
    CHECK(kl_darray_item(array, 0) == nullptr);
    kl_darray_free(nullptr);
    kl_darray_free(array);
    recording_fail(RECORDING_DARRAY_CREATE, 1);
    CHECK(kl_darray_create(sizeof(kl_object_t *), 0, 0) == nullptr);
    CHECK(recording_live_arrays() == 0);
}

TEST_CASE("misuse of arrays is noticed") {
    HostFixture host;
    void *object = recording_make_control(KL_OBJECT_TYPE_CONTROL, "a");
    kl_darray_t *array = kl_darray_create(static_cast<int>(sizeof(kl_object_t *)) + 1, 2, 1);
    CHECK(kl_darray_add(array, nullptr, -1) == -1);
    CHECK(kl_darray_add(array, &object, 0) == 0);
    CHECK(kl_darray_item(array, 1) == nullptr);
    CHECK(kl_darray_item(array, -1) == nullptr);
    CHECK(host.take_violations()
          == Violations{"kl_darray_create with elements of " + std::to_string(sizeof(kl_object_t *) + 1)
                            + " bytes, which is no pointer",
                        "kl_darray_create with capacity 2 instead of 0 or 1",
                        "kl_darray_create with flags 1 instead of 0", "kl_darray_add of a null element",
                        "kl_darray_add at position 0 instead of -1", "kl_darray_item 1 of 1",
                        "kl_darray_item -1 of 1"});

    kl_darray_free(array);
    kl_darray_free(array);
    CHECK(kl_darray_size(array) == 0);
    CHECK(kl_darray_item(array, 0) == nullptr);
    CHECK(kl_darray_add(array, &object, -1) == -1);
    CHECK(kl_darray_size(nullptr) == 0);
    CHECK(kl_darray_size(reinterpret_cast<kl_darray_t *>(&object)) == 0);
    CHECK(host.take_violations()
          == Violations{"kl_darray_free of array 1, which is freed", "kl_darray_size of array 1, which is freed",
                        "kl_darray_item of array 1, which is freed", "kl_darray_add of array 1, which is freed",
                        "kl_darray_size of a null array", "kl_darray_size of something that is no array"});

    kl_darray_t *list = recording_add_layer("main")->control_list;
    CHECK(kl_darray_add(list, &object, -1) == -1);
    kl_darray_free(list);
    CHECK(host.take_violations()
          == Violations{"kl_darray_add to the model's list of main", "kl_darray_free of the model's list of main"});
}

TEST_CASE("misuse of iterators is noticed") {
    HostFixture host;
    kl_darray_t *array = kl_darray_create(sizeof(kl_object_t *), 0, 0);
    kl_darray_iter_t iterator;
    kl_darray_iterator_init(&iterator, array, 1);
    iterator.first(&iterator, 0, -1);
    iterator.next(&iterator, -1, 0);
    iterator.last(&iterator, -1, -1);
    iterator.prev(&iterator, -1, -1);
    iterator.cur(&iterator, -1, -1);
    iterator.set(&iterator, 0, -1, -1);
    CHECK(host.take_violations()
          == Violations{
              "kl_darray_iterator_init with flags 1 instead of 0", "iterator's first with 0, -1 instead of -1, -1",
              "iterator's next with -1, 0 instead of -1, -1", "iterator's last, which this plug-in has no use for",
              "iterator's prev, which this plug-in has no use for", "iterator's cur, which this plug-in has no use for",
              "iterator's set, which this plug-in has no use for"});
    kl_darray_free(array);
    CHECK(iterator.first(&iterator, -1, -1) == nullptr);
    kl_darray_iterator_init(&iterator, nullptr, 0);
    CHECK(host.take_violations()
          == Violations{"first of array 1, which is freed", "kl_darray_iterator_init of a null array"});
}

TEST_CASE("a map is walked in the order of its entries, and misuse of maps is noticed") {
    HostFixture host;
    recording_add_layer("b");
    recording_add_layer("a");
    recording_put_layer("b", recording_make_layer("other"));
    Lines keys;
    auto visit = [](const char *key, void *, void *user_data) {
        static_cast<Lines *>(user_data)->emplace_back(key);
        return static_cast<Lines *>(user_data)->size() == 2 ? 5 : 0;
    };
    kl_string_map_t *map = recording_app()->layer_map;
    CHECK(kl_string_map_traverse(map, visit, &keys, 1) == 5);
    CHECK(keys == Lines{"b", "a"});
    CHECK(kl_string_map_traverse(map, visit, &keys, 0) == 0);
    CHECK(keys == Lines{"b", "a", "b", "a", "b"});
    CHECK(kl_string_map_get(map, "nosuch") == nullptr);
    CHECK(kl_string_map_get(map, nullptr) == nullptr);
    CHECK(kl_string_map_get(recording_app()->shared_data_map, "luastate") == host.L);
    recording_fail(RECORDING_MAP_GET, 1);
    CHECK(kl_string_map_get(recording_app()->shared_data_map, "luastate") == nullptr);
    CHECK(kl_string_map_get(nullptr, "x") == nullptr);
    CHECK(kl_string_map_traverse(nullptr, visit, &keys, 1) == 0);
    CHECK(host.take_violations()
          == Violations{"kl_string_map_traverse with flags 0 instead of 1", "kl_string_map_get of a null key",
                        "kl_string_map_get of something that is no map",
                        "kl_string_map_traverse of something that is no map"});
}

TEST_CASE("objects are found by their qualified names until they are removed") {
    HostFixture host;
    kl_application_t *app = recording_app();
    kl_layer_t *main = recording_add_layer("main");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_table_t *list = recording_add_table(bar, "list", 1, 2);
    kl_layer_instance_t *placed = recording_add_instance(recording_add_screen("home"), main);
    auto find = [app](const char *name) { return static_cast<void *>(kl_application_find_object(app, name, 0)); };
    CHECK(find("main") == main);
    CHECK(find("main.bar") == bar);
    CHECK(find("main.bar.list") == list);
    CHECK(find("main.bar.cell_0_1") == recording_cell(list, 0, 1));
    CHECK(find("home.main") == placed);
    CHECK(find("") == nullptr);
    recording_remove(list);
    CHECK(find("main.bar.list") == nullptr);
    CHECK(kl_darray_size(bar->control_list) == 0);
    recording_resolve("main", placed);
    CHECK(find("main") == placed);
    recording_resolve("main", nullptr);
    CHECK(find("main") == nullptr);
    recording_fail(RECORDING_FIND_OBJECT, 1);
    CHECK(find("home") == nullptr);
    CHECK(find("home") != nullptr);
}

TEST_CASE("misuse of the lookup is noticed") {
    HostFixture host;
    recording_add_layer("main");
    CHECK(kl_application_find_object(recording_app(), "main", 1) != nullptr);
    CHECK(kl_application_find_object(nullptr, "main", 0) != nullptr);
    CHECK(kl_application_find_object(recording_app(), nullptr, 0) == nullptr);
    CHECK(host.take_violations()
          == Violations{"kl_application_find_object with flags 1 instead of 0",
                        "kl_application_find_object for another application",
                        "kl_application_find_object of a null name"});
}

TEST_CASE("reading a variable puts its value in the key's place, or takes the key away") {
    HostFixture host;
    recording_set_number("main.kld_x", 10);
    recording_set_string("main.text", "hello");
    recording_set_boolean("main.kld_hidden", 1);
    CHECK(host.call(read_variable, "'main.kld_x'") == Lines{"1", "0", "10"});
    CHECK(host.call(read_variable, "'main.text'") == Lines{"1", "0", "\"hello\""});
    CHECK(host.call(read_variable, "'main.kld_hidden'") == Lines{"1", "0", "true"});
    CHECK(host.call(read_variable, "'nosuch'") == Lines{"0", "-1"});
    recording_fail(RECORDING_GET_DATA_VALUE, 1);
    CHECK(host.call(read_variable, "'main.kld_x'") == Lines{"0", "-1"});
    recording_remove_variable("main.kld_x");
    CHECK(host.call(read_variable, "'main.kld_x'") == Lines{"0", "-1"});
    CHECK(host.take_lines()[0] == "kl_lua_get_data_value(\"main.kld_x\")");
}

TEST_CASE("writing a variable leaves the stack alone and keeps numbers, strings and booleans") {
    HostFixture host;
    CHECK(host.call(write_variable, "'main.kld_x', 10") == Lines{"1", "true"});
    CHECK(host.call(write_variable, "'main.text', 'hello'") == Lines{"1", "true"});
    CHECK(host.call(write_variable, "'main.kld_hidden', false") == Lines{"1", "true"});
    CHECK(host.call(write_variable, "'main.kld_y', {}") == Lines{"0", "true"});
    CHECK(host.call(write_variable, "'main.kld_y'") == Lines{"0", "true"});
    recording_fail(RECORDING_SET_DATA_VALUE, 1);
    CHECK(host.call(write_variable, "'main.kld_x', 11") == Lines{"0", "true"});
    CHECK(std::string(recording_variable("main.kld_x")) == "10");
    CHECK(std::string(recording_variable("main.text")) == "\"hello\"");
    CHECK(std::string(recording_variable("main.kld_hidden")) == "false");
    CHECK(recording_variable("main.kld_y") == nullptr);
    Lines lines = host.take_lines();
    CHECK(Lines(lines.begin(), lines.begin() + 3)
          == Lines{"hold_change_listener()", "kl_lua_set_data_value(\"main.kld_x\", 10)", "release_change_listener()"});
    CHECK(lines[10] == "kl_lua_set_data_value(\"main.kld_y\", table)");
    CHECK(lines[13] == "kl_lua_set_data_value(\"main.kld_y\", nil)");
}

TEST_CASE("misuse of the data services is noticed") {
    HostFixture host;
    host.call([](lua_State *L) {
        kl_application_t *app = recording_app();
        lua_pushnumber(L, 1);
        kl_lua_get_data_value(L, app, data_mgr(), -1, 0);
        lua_pushstring(L, "key");
        kl_lua_get_data_value(L, nullptr, nullptr, 1, -1);
        lua_pushstring(L, "key");
        kl_lua_set_data_value(L, app, data_mgr(), 1, 1);
        return 0;
    });
    CHECK(host.take_violations()
          == Violations{"kl_lua_get_data_value with a number instead of a key on top",
                        "kl_lua_get_data_value with 0 instead of -1 as its last argument",
                        "kl_lua_get_data_value with key index 1 instead of -1",
                        "kl_lua_get_data_value for another application",
                        "kl_lua_get_data_value with a data manager that is not the application's",
                        "kl_lua_set_data_value with key index 1 instead of -1",
                        "kl_lua_set_data_value while no change listener is held"});
    data_mgr()->release_change_listener(data_mgr());
    data_mgr()->hold_change_listener(nullptr);
    CHECK(recording_open_holds() == 1);
    data_mgr()->release_change_listener(data_mgr());
    int count = 0;
    CHECK(data_mgr()->find_for_prefix(data_mgr(), nullptr, &count) == nullptr);
    CHECK(data_mgr()->find_for_prefix(data_mgr(), "", nullptr) == nullptr);
    CHECK(host.take_violations()
          == Violations{"release_change_listener without a hold", "hold_change_listener of another data manager",
                        "find_for_prefix with a null prefix", "find_for_prefix with a null count"});
}

TEST_CASE("keys are listed by prefix, sorted, longer than it; or as a test has laid down") {
    HostFixture host;
    for (const char *key : {"main.b", "main", "main.a", "menu.a"}) recording_set_number(key, 1);
    CHECK(keys_of("main") == Lines{"main.a", "main.b"});
    CHECK(keys_of("") == Lines{"main", "main.a", "main.b", "menu.a"});
    CHECK(keys_of("nosuch") == Lines{});
    recording_fail(RECORDING_FIND_FOR_PREFIX, 1);
    CHECK(keys_of("main") == Lines{});
    const char *answer[] = {"main.b", "main", "main.a"};
    recording_answer_prefix(answer, 3);
    CHECK(keys_of("main") == Lines{"main.b", "main", "main.a"});
    recording_answer_prefix(answer, 0);
    int count = -1;
    char **none = data_mgr()->find_for_prefix(data_mgr(), "main", &count);
    CHECK(none != nullptr);
    CHECK(count == 0);
    kelal_free(none);
    recording_answer_prefix(nullptr, 0);
    CHECK(keys_of("main") == Lines{"main.a", "main.b"});
}

TEST_CASE("the application can have no data manager") {
    HostFixture host;
    recording_without_data_mgr(1);
    CHECK(data_mgr() == nullptr);
    recording_without_data_mgr(0);
    CHECK(data_mgr() != nullptr);
}

TEST_CASE("a clone is answered as a test has laid down") {
    HostFixture host;
    static std::string name;
    auto clone = [](lua_State *L) {
        const char *new_name = nullptr;
        lua_pushinteger(L, kl_lua_clone_object(L, recording_app(), 1, 2, 3, 4, &new_name));
        name = new_name ? new_name : "(null)";
        return 1;
    };
    CHECK(host.call(clone, "'main.ok', 'copy', 'main'") == Lines{"0"});
    CHECK(name == "(null)");
    recording_answer_clone("main.copy");
    CHECK(host.call(clone, "'main.ok', 'copy', 12, {}") == Lines{"1"});
    CHECK(name == "main.copy");
    recording_fail(RECORDING_CLONE_OBJECT, 1);
    CHECK(host.call(clone, "'main.ok', 'copy', 'main', nil") == Lines{"0"});
    CHECK(host.take_lines()
          == Lines{"kl_lua_clone_object(\"main.ok\", \"copy\", \"main\", none)",
                   "kl_lua_clone_object(\"main.ok\", \"copy\", 12, table)",
                   "kl_lua_clone_object(\"main.ok\", \"copy\", \"main\", nil)"});
}

TEST_CASE("a deletion is noted, and obeyed where a test wants it") {
    HostFixture host;
    recording_add_control(recording_add_layer("main"), "ok");
    auto remove = [](lua_State *L) {
        lua_pushinteger(L, kl_lua_delete_object(L, recording_app(), 2));
        return 1;
    };
    auto is_there = [] { return kl_application_find_object(recording_app(), "main.ok", 0) != nullptr; };
    CHECK(host.call(remove, "1, 'main.ok'") == Lines{"1"});
    CHECK(is_there());
    recording_obey_delete(1);
    recording_fail(RECORDING_DELETE_OBJECT, 1);
    CHECK(host.call(remove, "1, 'main.ok'") == Lines{"0"});
    CHECK(host.call(remove, "1, 'main.nosuch'") == Lines{"0"});
    CHECK(is_there());
    CHECK(host.call(remove, "1, 'main.ok'") == Lines{"1"});
    CHECK_FALSE(is_there());
    CHECK(host.take_lines()[0] == "kl_lua_delete_object(\"main.ok\")");
}

TEST_CASE("misuse of clone and delete is noticed") {
    HostFixture host;
    host.call(
        [](lua_State *L) {
            const char *name = "";
            kl_lua_clone_object(L, nullptr, 1, 2, 3, -1, &name);
            kl_lua_clone_object(L, recording_app(), 1, 2, 3, 4, nullptr);
            kl_lua_delete_object(L, nullptr, 1);
            return 0;
        },
        "'a', 'b'");
    CHECK(host.take_violations()
          == Violations{"kl_lua_clone_object for another application",
                        "kl_lua_clone_object with indexes 1, 2, 3, -1 instead of 1, 2, 3, 4",
                        "kl_lua_clone_object with a place for the name that is not null",
                        "kl_lua_clone_object without a place for the name",
                        "kl_lua_delete_object for another application",
                        "kl_lua_delete_object with index 1 instead of 2"});
}

TEST_CASE("the log keeps the channel, the level and the formatted text") {
    HostFixture host;
    kel_app_log(recording_app(), KL_LOG_WARNING, "%s and %d", "text", 12);
    kel_app_log(nullptr, KL_LOG_ALWAYS, "plain");
    CHECK(host.take_log() == Lines{"1: text and 12", "-1 null: plain"});
    CHECK(host.take_lines() == Lines{"kel_app_log(app, 1, \"text and 12\")", "kel_app_log(null, -1, \"plain\")"});
    kl_application_t other{};
    kel_app_log(&other, KL_LOG_ERROR, "foreign");
    CHECK(host.take_log() == Lines{"0: foreign"});
    CHECK(host.take_violations() == Violations{"kel_app_log for another application"});
}

TEST_CASE("an error is noted, and unwinds or returns") {
    auto raise_error = [](lua_State *L) {
        kl_lua_error(L, "Argument %d must be %s", 3, "an integer");
        lua_pushstring(L, "came back");
        return 1;
    };
    SUBCASE("unwinds") {
        HostFixture host(Errors::unwind);
        CHECK(host.call(raise_error) == Lines{"error: Argument 3 must be an integer"});
        CHECK(host.take_errors() == Lines{"Argument 3 must be an integer"});
        CHECK(host.take_lines() == Lines{"kl_lua_error(\"Argument 3 must be an integer\")"});
    }
    SUBCASE("returns") {
        HostFixture host(Errors::return_);
        CHECK(host.call(raise_error) == Lines{"\"came back\""});
        CHECK(host.take_errors() == Lines{"Argument 3 must be an integer"});
    }
}

TEST_CASE("the application is given to its state and its coroutines, and to no other state unnoticed") {
    HostFixture host;
    lua_State *other = luaL_newstate();
    lua_State *coroutine = lua_newthread(host.L);
    CHECK(kl_lua_get_app(host.L) == recording_app());
    CHECK(kl_lua_get_app(coroutine) == recording_app());
    CHECK(host.take_violations() == Violations{});
    CHECK(kl_lua_get_app(other) == recording_app());
    CHECK(host.take_violations() == Violations{"kl_lua_get_app in a Lua state of another application"});
    recording_fail(RECORDING_GET_APP, 1);
    CHECK(kl_lua_get_app(host.L) == nullptr);
    lua_settop(host.L, 0);
    lua_close(other);
}

TEST_CASE("events reach the listeners of their name, until these are removed") {
    HostFixture host;
    int data = 0;
    CHECK(io_mgr()->add_event_listener(io_mgr(), "press", ignore, &data) == 0);
    CHECK(io_mgr()->add_event_listener(io_mgr(), "press", ignore, recording_app()) == 0);
    CHECK(recording_deliver("press") == 2);
    CHECK(recording_deliver("release") == 0);
    CHECK(io_mgr()->rem_event_listener(io_mgr(), ignore, &data) == 0);
    CHECK(io_mgr()->rem_event_listener(io_mgr(), ignore, &data) == -1);
    CHECK(recording_subscriptions() == 1);
    recording_fail(RECORDING_REM_EVENT_LISTENER, 1);
    CHECK(io_mgr()->rem_event_listener(io_mgr(), ignore, recording_app()) == -1);
    CHECK(recording_subscriptions() == 1);
    recording_fail(RECORDING_ADD_EVENT_LISTENER, 1);
    CHECK(io_mgr()->add_event_listener(io_mgr(), "press", ignore, nullptr) == -1);
    CHECK(recording_subscriptions() == 1);
    CHECK(host.take_lines()
          == Lines{"add_event_listener(\"press\", listener 1, something else)",
                   "add_event_listener(\"press\", listener 1, app)", "rem_event_listener(listener 1, something else)",
                   "rem_event_listener(listener 1, something else)", "rem_event_listener(listener 1, app)",
                   "add_event_listener(\"press\", listener 1, null)"});
    io_mgr()->add_event_listener(nullptr, "press", ignore, &data);
    io_mgr()->rem_event_listener(nullptr, ignore, &data);
    CHECK(host.take_violations()
          == Violations{"add_event_listener of another I/O manager", "rem_event_listener of another I/O manager"});
}

TEST_CASE("kinds of calls are written down when a test asks, services always") {
    HostFixture host;
    auto call_everything = [&host] {
        kl_lua_get_app(host.L);
        kelal_free(kelal_strdup("x"));
        kl_darray_free(kl_darray_create(sizeof(kl_object_t *), 0, 0));
        kl_string_map_traverse(
            recording_app()->screen_map, [](const char *, void *, void *) { return 0; }, nullptr, 1);
        kl_application_find_object(recording_app(), "x", 0);
        return host.take_lines();
    };
    const std::string find = "kl_application_find_object(\"x\", 0)";
    CHECK(call_everything() == Lines{find});
    host.show(RECORDING_SHOW_GET_APP);
    CHECK(call_everything() == Lines{"kl_lua_get_app()", find});
    host.show(RECORDING_SHOW_ALLOCATOR);
    CHECK(call_everything() == Lines{"kelal_strdup(\"x\")", "kelal_free(block of 2)", find});
    host.show(RECORDING_SHOW_ARRAYS);
    CHECK(call_everything() == Lines{"kl_darray_create(pointer, 0, 0)", "kl_darray_free(array 4)", find});
    host.show(RECORDING_SHOW_WALKS);
    CHECK(call_everything() == Lines{"kl_string_map_traverse(screen_map, 1)", find});
}

TEST_CASE("Lua's memory is counted, refused at the nth request for more, and watched past its ends") {
    LuaMemory memory;
    auto resize = [&memory](void *block, std::size_t before, std::size_t after) {
        return static_cast<char *>(LuaMemory::allocate(&memory, block, before, after));
    };
    char *block = resize(nullptr, 0, 16);
    std::strcpy(block, "kept");
    CHECK(memory.live_bytes() == 16);
    memory.refuse(2);
    block = resize(block, 16, 8); // not a request for more
    block = resize(block, 8, 24);
    CHECK(std::string(block) == "kept");
    CHECK_FALSE(memory.refused());
    CHECK(resize(block, 24, 32) == nullptr);
    CHECK(memory.refused());
    memory.forget_refusal();
    CHECK_FALSE(memory.refused());
    CHECK(memory.live_bytes() == 24);

    std::memset(block, 0, 24);
    block = resize(block, 24, 32);
    CHECK(memory.overruns() == 0);
    block[32] = 0;
    CHECK(resize(block, 32, 0) == nullptr);
    CHECK(memory.overruns() == 1);
    CHECK(memory.live_bytes() == 0);
}
