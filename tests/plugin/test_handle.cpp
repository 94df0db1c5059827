// test_handle.cpp: the userdata that stands for an object: how it is made, what counts as one, what it says of itself,
// and what is left of it after its end.
#include "handle.h"

#include "plugin_fixture.h"

namespace {

// One object of every kind.
struct Model {
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    kl_table_t *list = recording_add_table(main, "list", 1, 1);
    kl_control_t *row = recording_add_template(list, "row");
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_control_t *inner = recording_add_control(bar, "inner");
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_instance_t *placed = recording_add_instance(home, main);
};

// [-0, +0..] Results: what the check says of argument 1, and whether the stack is as it was.
int recognise(lua_State *L) {
    int top = lua_gettop(L);
    dom_object_t *object = keldom_check_udata_base(L, 1, keldom_object_metatable);
    bool balanced = lua_gettop(L) == top;
    lua_pushboolean(L, object != nullptr);
    lua_pushboolean(L, balanced);
    return 2;
}

const Lines recognised = {"true", "true"};
const Lines not_recognised = {"false", "true"};

// What push_object and push_list push.
kl_object_t *pushed_object;
std::vector<void *> pushed_list;

// [-0, +2..3] The handle if there is one; what the push returned; by how much the stack grew.
int push_object(lua_State *L) {
    int top = lua_gettop(L);
    int result = keldom_push_as_dom_object(L, recording_app(), pushed_object);
    int growth = lua_gettop(L) - top;
    lua_pushinteger(L, result);
    lua_pushinteger(L, growth);
    return growth + 2;
}

int push_list(lua_State *L) {
    kl_darray_t *list = kl_darray_create(sizeof(kl_object_t *), 0, 0);
    for (void *object : pushed_list) kl_darray_add(list, &object, -1);
    int top = lua_gettop(L);
    int result = keldom_push_as_dom_objects(L, recording_app(), list);
    int growth = lua_gettop(L) - top;
    lua_pushinteger(L, result);
    lua_pushinteger(L, growth);
    return growth + 2;
}

Lines pushed(HostFixture &fixture, void *object) {
    pushed_object = static_cast<kl_object_t *>(object);
    return fixture.call(push_object);
}

Lines pushed(HostFixture &fixture, std::vector<void *> objects) {
    pushed_list = std::move(objects);
    return fixture.call(push_list);
}

// Lua functions that make userdata whose metatables form a chain: each metatable's __index is a table with the next
// metatable. `last` makes what the last __index is.
const char chains[] = R"(
    base = debug.getregistry().keldom_object
    function chain(length, last)
        local object = newproxy(true)
        local metatable = getmetatable(object)
        for _ = 1, length do
            metatable.__index = setmetatable({}, {})
            metatable = getmetatable(metatable.__index)
        end
        metatable.__index = last
        return object, metatable
    end
    function to_base(length)
        return (chain(length, setmetatable({}, base)))
    end
    function to_circle(tail, length)
        local object, entrance = chain(tail)
        local metatable = entrance
        for _ = 2, length do
            metatable.__index = setmetatable({}, {})
            metatable = getmetatable(metatable.__index)
        end
        metatable.__index = setmetatable({}, entrance)
        return object
    end
)";

dom_object_t shaped_by_hand;
char shaped_name[] = "shaped";

// [-0, +1] A full userdata without a metatable that holds what a handle holds.
int push_shaped(lua_State *L) {
    *static_cast<dom_object_t *>(lua_newuserdata(L, sizeof(dom_object_t))) = {shaped_name, KL_OBJECT_TYPE_LAYER};
    return 1;
}

int push_light(lua_State *L) {
    shaped_by_hand = {shaped_name, KL_OBJECT_TYPE_SCREEN};
    lua_pushlightuserdata(L, &shaped_by_hand);
    return 1;
}

int push_null_light(lua_State *L) {
    lua_pushlightuserdata(L, nullptr);
    return 1;
}

} // namespace

TEST_CASE("a handle has its kind's metatable, the object's type and its qualified name") {
    PluginFixture fixture;
    Model model;
    CHECK(pushed(fixture, model.ok) == Lines{"control_object \"main.ok\"", "1", "1"});
    CHECK(pushed(fixture, model.list) == Lines{"table_object \"main.list\"", "1", "1"});
    CHECK(pushed(fixture, model.bar) == Lines{"group_object \"main.bar\"", "1", "1"});
    CHECK(pushed(fixture, model.main) == Lines{"layer_object \"main\"", "1", "1"});
    CHECK(pushed(fixture, model.placed) == Lines{"layer_instance_object \"home.main\"", "1", "1"});
    CHECK(pushed(fixture, model.home) == Lines{"screen_object \"home\"", "1", "1"});
    CHECK(pushed(fixture, recording_app()) == Lines{"keldom_object \"\"", "1", "1"});
    recording_list_append(model.main, model.row);
    CHECK(pushed(fixture, model.row) == Lines{"keldom_object \"main.row\"", "1", "1"});
    CHECK(pushed(fixture, recording_cell(model.list, 0, 0)) == Lines{"control_object \"main.cell_0_0\"", "1", "1"});
}

TEST_CASE("get_type gives the type code as a number, for every kind") {
    PluginFixture fixture;
    Model model;
    recording_list_append(model.main, model.row);
    void *const objects[] = {model.ok,   model.list,   model.row,  model.bar,
                             model.main, model.placed, model.home, recording_app()};
    int code = 0;
    for (void *object : objects) {
        pushed_object = static_cast<kl_object_t *>(object);
        fixture.call(push_object);
        CHECK(fixture.run("local h = native() return h:get_type(), type(h:get_type())")
              == Lines{std::to_string(code++), "\"number\""});
    }
}

TEST_CASE("get_name gives the name that the handle was made with, whatever became of the object") {
    PluginFixture fixture;
    Model model;
    CHECK(fixture.run("h = keldom.get_object('main.ok') return h:get_name()") == Lines{"\"main.ok\""});
    recording_rename(model.ok, "yes");
    CHECK(fixture.run("return h:get_name()") == Lines{"\"main.ok\""});
    recording_remove(model.ok);
    fixture.take_lines();
    CHECK(fixture.run("return h:get_name(), h:get_type()") == Lines{"\"main.ok\"", "0"});
    CHECK(fixture.take_lines() == Lines{});
}

TEST_CASE("get_type gives the type that the object had") {
    PluginFixture fixture;
    Model model;
    fixture.run("h = keldom.get_object('main.ok')");
    model.ok->object.type = KL_OBJECT_TYPE_GROUP;
    CHECK(fixture.run("return h:get_type()") == Lines{"0"});
    model.ok->object.type = KL_OBJECT_TYPE_CONTROL;
}

TEST_CASE("get_name and get_type ignore further arguments") {
    PluginFixture fixture;
    Model model;
    CHECK(fixture.run("local h = keldom.get_object('main.ok') return h:get_name(1, {}), h:get_type('x')")
          == Lines{"\"main.ok\"", "0"});
}

TEST_CASE("handles work in coroutines") {
    PluginFixture fixture;
    Model model;
    CHECK(fixture.run("return coroutine.wrap(function() return keldom.get_object('main.ok'):get_name() end)()")
          == Lines{"\"main.ok\""});
}

TEST_CASE("a method without an application raises, whatever its argument") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("h = keldom.get_object('main.ok') methods = getmetatable(getmetatable(h).__index).__index");
    fixture.without_application();
    for (std::string method : {"get_name", "get_type"})
        for (std::string argument : {"h", "1", ""}) {
            CAPTURE(method);
            CAPTURE(argument);
            CHECK(fixture.raises("return methods." + method + "(" + argument + ")")
                  == "Invalid argument, no application pointer");
        }
}

TEST_CASE("a method on something that is no handle warns and gives no value") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("methods = getmetatable(keldom.get_application()).__index");
    fixture.show(RECORDING_SHOW_GET_APP);
    for (std::string method : {"get_name", "get_type"})
        for (std::string argument : {"", "nil", "1", "'main.ok'", "{}", "print", "io.stdout"}) {
            CAPTURE(method);
            CAPTURE(argument);
            CHECK(fixture.run("return methods." + method + "(" + argument + ")") == Lines{});
            CHECK(fixture.take_log() == Lines{"1: Argument must be a keldom_object"});
            CHECK(fixture.take_lines()
                  == Lines{"kl_lua_get_app()", "kel_app_log(app, 1, \"Argument must be a keldom_object\")"});
        }
}

TEST_CASE(
    "a table handle has its own methods, then the control's, then the common ones; a group has not the control's") {
    PluginFixture fixture;
    Model model;
    fixture.run(R"(
        local registry = debug.getregistry()
        for _, name in ipairs {'table_object', 'control_object', 'keldom_object'} do
            registry[name].__index['of_' .. name] = name
            registry[name].__index.first = name
        end
        list, ok, bar = keldom.get_object('main.list'), keldom.get_object('main.ok'), keldom.get_object('main.bar')
    )");
    CHECK(fixture.run("return list.of_table_object, list.of_control_object, list.of_keldom_object, list.first")
          == Lines{"\"table_object\"", "\"control_object\"", "\"keldom_object\"", "\"table_object\""});
    CHECK(fixture.run("return ok.of_table_object, ok.of_control_object, ok.of_keldom_object, ok.first")
          == Lines{"nil", "\"control_object\"", "\"keldom_object\"", "\"control_object\""});
    CHECK(fixture.run("return bar.of_table_object, bar.of_control_object, bar.of_keldom_object, bar.first")
          == Lines{"nil", "nil", "\"keldom_object\"", "\"keldom_object\""});
}

TEST_CASE("handles of every kind are recognised") {
    PluginFixture fixture;
    Model model;
    recording_list_append(model.main, model.row);
    for (void *object : std::initializer_list<void *>{model.ok, model.list, model.row, model.bar, model.main,
                                                      model.placed, model.home, recording_app()}) {
        pushed_object = static_cast<kl_object_t *>(object);
        fixture.call(push_object);
        fixture.run("h = native()");
        CHECK(fixture.call(recognise, "h") == recognised);
        CHECK(fixture.call(recognise, "h, 'more'") == recognised);
    }
}

TEST_CASE("the check gives the handle itself") {
    PluginFixture fixture;
    Model model;
    fixture.run("h = keldom.get_object('main.list')");
    CHECK(fixture.call(
              [](lua_State *L) {
                  dom_object_t *object = keldom_check_udata_base(L, 1, keldom_object_metatable);
                  lua_pushboolean(L, object == lua_touserdata(L, 1));
                  lua_pushstring(L, object->name);
                  lua_pushinteger(L, object->type);
                  return 3;
              },
              "h")
          == Lines{"true", "\"main.list\"", "1"});
}

TEST_CASE("the check looks at the position and for the metatable that it is asked for") {
    PluginFixture fixture;
    Model model;
    fixture.run("list, bar = keldom.get_object('main.list'), keldom.get_object('main.bar')");
    CHECK(fixture.call(
              [](lua_State *L) {
                  for (int index = 1; index <= 4; ++index)
                      lua_pushboolean(L, keldom_check_udata_base(L, index, "control_object") != nullptr);
                  return 4;
              },
              "'main.list', bar, list")
          == Lines{"false", "false", "true", "false"});
}

TEST_CASE("what is no userdata is no handle") {
    PluginFixture fixture;
    fixture.run("base = debug.getregistry().keldom_object");
    for (std::string value : {"", "nil", "true", "1", "'main.ok'", "{}", "setmetatable({}, base)", "base", "print",
                              "coroutine.create(function() end)"}) {
        CAPTURE(value);
        CHECK(fixture.call(recognise, value) == not_recognised);
    }
}

TEST_CASE("a userdata without a metatable is taken for a handle") {
    PluginFixture fixture;
    CHECK(fixture.call(recognise, "newproxy()") == recognised);
    fixture.call(push_shaped);
    CHECK(fixture.run("shaped = native() methods = debug.getregistry().keldom_object.__index"
                      " return methods.get_name(shaped), methods.get_type(shaped)")
          == Lines{"\"shaped\"", "4"});
    CHECK(fixture.call(recognise, "shaped") == recognised);
}

TEST_CASE("a light userdata is one without a metatable, unless it is null or its type has got one") {
    PluginFixture fixture;
    fixture.call(push_light);
    fixture.run("light = native()");
    CHECK(fixture.call(recognise, "light") == recognised);
    CHECK(fixture.run("local methods = debug.getregistry().keldom_object.__index"
                      " return methods.get_name(light), methods.get_type(light)")
          == Lines{"\"shaped\"", "6"});
    fixture.call(push_null_light);
    fixture.run("null = native()");
    CHECK(fixture.call(recognise, "null") == not_recognised);
    fixture.run("debug.setmetatable(light, {})");
    CHECK(fixture.call(recognise, "light") == not_recognised);
    fixture.run("debug.setmetatable(light, debug.getregistry().control_object)");
    CHECK(fixture.call(recognise, "light") == recognised);
    fixture.run("debug.setmetatable(light, nil)");
}

TEST_CASE("a userdata of another library is no handle, however its metatables' chain ends") {
    PluginFixture fixture;
    fixture.run(chains);
    CHECK(fixture.call(recognise, "io.stdout") == not_recognised);
    CHECK(fixture.call(recognise, "newproxy(true)") == not_recognised);
    for (int length : {0, 1, 2, 3, 10})
        for (std::string end : {"nil", "{}", "setmetatable({}, {})", "print", "function() return base end", "'text'",
                                "1", "true", "false", "newproxy()", "newproxy(true)", "base"}) {
            CAPTURE(length);
            CAPTURE(end);
            CHECK(fixture.call(recognise, "(chain(" + std::to_string(length) + ", " + end + "))") == not_recognised);
        }
}

TEST_CASE("a chain goes on through tables alone: a handle as __index does not make its owner one") {
    PluginFixture fixture;
    Model model;
    fixture.run(chains);
    for (int length : {0, 1, 2}) {
        CAPTURE(length);
        CHECK(fixture.call(recognise, "(chain(" + std::to_string(length) + ", keldom.get_object('main.ok')))")
              == not_recognised);
    }
}

TEST_CASE("a chain that reaches the base metatable makes a handle, at any length") {
    PluginFixture fixture;
    fixture.run(chains);
    for (int length = 0; length <= 40; ++length) {
        CAPTURE(length);
        CHECK(fixture.call(recognise, "to_base(" + std::to_string(length) + ")") == recognised);
    }
}

TEST_CASE("the check needs no more of Lua's stack for a long chain") {
    PluginFixture fixture;
    fixture.run(chains);
    CHECK(fixture.call(recognise, "to_base(1000)") == recognised);
    CHECK(fixture.call(recognise, "(chain(1000))") == not_recognised);
    CHECK(fixture.call(recognise, "to_circle(1000, 1000)") == not_recognised);
    fixture.collect();
    CHECK(fixture.memory.overruns() == 0);
}

TEST_CASE("a chain that runs in a circle is no handle, and the check ends") {
    PluginFixture fixture;
    fixture.run(chains);
    for (int tail : {0, 1, 2, 3, 4, 5, 7, 8, 9, 31, 100})
        for (int length : {1, 2, 3, 4, 7, 8, 64}) {
            CAPTURE(tail);
            CAPTURE(length);
            CHECK(fixture.call(recognise, "to_circle(" + std::to_string(tail) + ", " + std::to_string(length) + ")")
                  == not_recognised);
        }
}

TEST_CASE("an __index field is taken as Lua takes fields, inherited ones too") {
    PluginFixture fixture;
    fixture.run(chains);
    CHECK(fixture.call(recognise, "(function() local u, m = chain(0)"
                                  " setmetatable(m, {__index = {__index = setmetatable({}, base)}}) return u end)()")
          == recognised);
}

TEST_CASE("a __metatable field hides nothing from the check") {
    PluginFixture fixture;
    Model model;
    fixture.run("h = keldom.get_object('main.ok') getmetatable(h).__metatable = 'hidden'");
    CHECK(fixture.call(recognise, "h") == recognised);
}

TEST_CASE("without the base metatable nothing with a metatable is a handle") {
    PluginFixture fixture;
    Model model;
    fixture.run("h, app = keldom.get_object('main.list'), keldom.get_application()"
                " base = debug.getregistry().keldom_object debug.getregistry().keldom_object = nil");
    CHECK(fixture.call(recognise, "h") == not_recognised);
    CHECK(fixture.call(recognise, "app") == not_recognised);
    CHECK(fixture.call(recognise, "newproxy()") == recognised);
    fixture.run("debug.getregistry().keldom_object = base");
    CHECK(fixture.call(recognise, "h") == recognised);
}

TEST_CASE("an object without a qualified name gives no handle but a warning") {
    PluginFixture fixture;
    Model model;
    const Lines nothing = {"0", "0"};
    const Lines warning = {"1: Object has no qualified name"};
    CHECK(pushed(fixture, recording_make_control(KL_OBJECT_TYPE_CONTROL, "loose")) == nothing);
    CHECK(fixture.take_log() == warning);
    CHECK(pushed(fixture, model.row) == nothing);
    CHECK(fixture.take_log() == warning);
    CHECK(pushed(fixture, static_cast<void *>(nullptr)) == nothing);
    CHECK(fixture.take_log() == warning);
    for (int type : {8, 9, 128, 255}) {
        CAPTURE(type);
        model.ok->object.type = static_cast<kl_object_type_t>(type);
        CHECK(pushed(fixture, model.ok) == nothing);
        CHECK(fixture.take_log() == warning);
    }
}

TEST_CASE("a handle without a name is collected like any other, with nothing to free") {
    PluginFixture fixture;
    kl_control_t *loose = recording_make_control(KL_OBJECT_TYPE_CONTROL, "loose");
    fixture.show(RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_GET_APP);
    pushed(fixture, loose);
    CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
    fixture.collect();
    CHECK(fixture.take_lines()
          == Lines{"kel_app_log(app, 1, \"Object has no qualified name\")", "kl_lua_get_app()", "kelal_free(null)"});
}

TEST_CASE("a push without memory for the name gives no handle but a warning, wherever memory ran out") {
    PluginFixture fixture;
    Model model;
    for (auto [call, nth] : {
             std::pair{RECORDING_STRDUP,  1u},
             {RECORDING_REALLOC, 1u},
             {RECORDING_REALLOC, 2u}
    }) {
        recording_fail(call, nth);
        int before = recording_live_blocks();
        CHECK(pushed(fixture, model.inner) == Lines{"0", "0"});
        CHECK(recording_live_blocks() == before);
        CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
    }
    CHECK(pushed(fixture, model.inner) == Lines{"control_object \"main.bar.inner\"", "1", "1"});
}

TEST_CASE("a push without memory in Lua is Lua's error and leaves no name behind") {
    PluginFixture fixture;
    Model model;
    fixture.run("get = keldom.get_object"); // so that the name and the function are there
    unsigned long refusals = 0;
    for (unsigned long nth = 1;; ++nth) {
        fixture.collect();
        int before = recording_live_blocks();
        Lines results = fixture.run_starved("local h = get('main.bar.inner')", nth);
        if (!fixture.memory.refused()) break;
        ++refusals;
        CHECK(results == Lines{"error: not enough memory"});
        CHECK(recording_live_blocks() == before);
    }
    CHECK(refusals > 0);
}

TEST_CASE("a collection at any moment of a push does no harm") {
    PluginFixture fixture;
    Model model;
    int before = recording_live_blocks();
    lua_gc(fixture.L, LUA_GCRESTART, 0);
    lua_gc(fixture.L, LUA_GCSETPAUSE, 0);
    lua_gc(fixture.L, LUA_GCSETSTEPMUL, 1000000);
    CHECK(fixture.run("for _ = 1, 200 do"
                      "  local h, app = keldom.get_object('main.bar.inner'), keldom.get_application()"
                      "  assert(h:get_name() == 'main.bar.inner' and tostring(h) == 'main.bar.inner')"
                      "  assert(app:get_name() == '' and h == keldom.get_control('main.bar.inner'))"
                      " end")
          == Lines{});
    fixture.collect();
    CHECK(recording_live_blocks() == before);
}

TEST_CASE("a list becomes an array of handles, in order, and is freed") {
    PluginFixture fixture;
    Model model;
    CHECK(
        pushed(fixture, {model.ok, model.home, recording_app(), model.ok})
        == Lines{"{control_object \"main.ok\", screen_object \"home\", keldom_object \"\", control_object \"main.ok\"}",
                 "1", "1"});
    CHECK(recording_live_arrays() == 0);
    CHECK(pushed(fixture, std::vector<void *>{}) == Lines{"{}", "1", "1"});
    CHECK(recording_live_arrays() == 0);
}

TEST_CASE("each handle in an array is one of its own") {
    PluginFixture fixture;
    Model model;
    pushed(fixture, {model.ok, model.ok});
    CHECK(fixture.run("local a = native() return rawequal(a[1], a[2]), a[1] == a[2]") == Lines{"false", "true"});
}

TEST_CASE("a list's size is asked for before each element") {
    PluginFixture fixture;
    Model model;
    pushed_list = {model.home, model.main};
    fixture.call(push_list);
    fixture.show(RECORDING_SHOW_ARRAYS);
    fixture.run("native()");
    CHECK(fixture.take_lines()
          == Lines{"kl_darray_create(pointer, 0, 0)", "kl_darray_add(array 2, screen \"home\", -1)",
                   "kl_darray_add(array 2, layer \"main\", -1)", "kl_darray_size(array 2)",
                   "kl_darray_item(array 2, 0)", "kl_darray_size(array 2)", "kl_darray_item(array 2, 1)",
                   "kl_darray_size(array 2)", "kl_darray_free(array 2)"});
}

TEST_CASE("when one object of a list has no name, nothing is pushed and the list is freed") {
    PluginFixture fixture;
    Model model;
    kl_control_t *loose = recording_make_control(KL_OBJECT_TYPE_CONTROL, "loose");
    std::vector<std::vector<void *>> lists = {
        {model.ok,    model.bar, loose, model.home},
        {loose          },
        {model.ok,      loose               },
        {model.ok, nullptr,model.home          }
    };
    for (const std::vector<void *> &list : lists) {
        CAPTURE(list.size());
        fixture.collect();
        int before = recording_live_blocks();
        CHECK(pushed(fixture, list) == Lines{"0", "0"});
        CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
        CHECK(recording_live_arrays() == 0);
        fixture.collect();
        CHECK(recording_live_blocks() == before);
    }
}

TEST_CASE("a failed list stops at the object that has no name") {
    PluginFixture fixture;
    Model model;
    pushed_list = {model.home, recording_make_control(KL_OBJECT_TYPE_CONTROL, "loose"), model.main};
    fixture.call(push_list);
    fixture.take_log();
    fixture.show(RECORDING_SHOW_ARRAYS);
    fixture.run("native()");
    Lines lines = fixture.take_lines();
    CHECK(Lines(lines.begin() + 4, lines.end())
          == Lines{"kl_darray_size(array 2)", "kl_darray_item(array 2, 0)", "kl_darray_size(array 2)",
                   "kl_darray_item(array 2, 1)", "kel_app_log(app, 1, \"Object has no qualified name\")",
                   "kl_darray_free(array 2)"});
    CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
}

TEST_CASE("a handle's text is its name") {
    PluginFixture fixture;
    Model model;
    CHECK(fixture.run("return tostring(keldom.get_object('main.ok')), tostring(keldom.get_object('home.main')),"
                      " tostring(keldom.get_application())")
          == Lines{"\"main.ok\"", "\"home.main\"", "\"\""});
}

TEST_CASE("the text of something that is no handle is \"nil\"") {
    PluginFixture fixture;
    fixture.run("to_string = debug.getregistry().keldom_object.__tostring");
    for (std::string value : {"", "nil", "1", "'text'", "{}", "io.stdout", "newproxy(true)"}) {
        CAPTURE(value);
        CHECK(fixture.run("return to_string(" + value + ")") == Lines{"\"nil\""});
    }
}

TEST_CASE("two handles of one object are equal, of different objects not") {
    PluginFixture fixture;
    Model model;
    CHECK(fixture.run("local a, b = keldom.get_object('main.ok'), keldom.get_object('main.ok')"
                      " return a == b, rawequal(a, b), a ~= b")
          == Lines{"true", "false", "false"});
    recording_add_control(model.main, "other");
    CHECK(
        fixture.run("local a, b = keldom.get_object('main.ok'), keldom.get_object('main.other') return a == b, a ~= b")
        == Lines{"false", "true"});
    CHECK(fixture.run("return keldom.get_application() == keldom.get_application()") == Lines{"true"});
}

TEST_CASE("handles of different kinds are unequal to Lua even when their names are alike, but their names are") {
    PluginFixture fixture;
    recording_add_layer("same");
    fixture.run("layer = keldom.get_object('same')");
    kl_screen_t *screen = recording_add_screen("same");
    recording_resolve("same", screen);
    fixture.run("screen = keldom.get_object('same')");
    CHECK(fixture.run("return layer:get_type(), screen:get_type(), layer == screen") == Lines{"4", "6", "false"});
    CHECK(fixture.run("return getmetatable(layer).__eq(layer, screen)") == Lines{"true"});
}

TEST_CASE("equality gives one boolean, false when either is no handle") {
    PluginFixture fixture;
    Model model;
    fixture.run("h = keldom.get_object('main.ok') equals = getmetatable(h).__eq");
    for (std::string arguments : {"", "h", "h, nil", "nil, h", "h, 'main.ok'", "'main.ok', h", "h, {}", "io.stdout, h",
                                  "h, io.stdout", "1, 1", "nil, nil"}) {
        CAPTURE(arguments);
        CHECK(fixture.run("return equals(" + arguments + ")") == Lines{"false"});
    }
    CHECK(fixture.run("return equals(h, h)") == Lines{"true"});
    CHECK(fixture.run("return equals(h, keldom.get_object('main.ok'), 'more')") == Lines{"true"});
}

TEST_CASE("text and equality need no application and call nothing of the host") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("a, b = keldom.get_object('main.ok'), keldom.get_object('main.ok')");
    fixture.without_application();
    fixture.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_WALKS | RECORDING_SHOW_ARRAYS);
    CHECK(fixture.run("return tostring(a), a == b, getmetatable(a).__tostring(1), getmetatable(a).__eq(a, 1)")
          == Lines{"\"main.ok\"", "true", "\"nil\"", "false"});
    CHECK(fixture.take_lines() == Lines{});
}

TEST_CASE("collecting a handle frees its name, once") {
    PluginFixture fixture;
    Model model;
    int before = recording_live_blocks();
    fixture.run("h = keldom.get_object('main.ok')");
    CHECK(recording_live_blocks() == before + 1);
    fixture.show(RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_GET_APP);
    fixture.run("h = nil");
    fixture.collect();
    CHECK(fixture.take_lines() == Lines{"kl_lua_get_app()", "kelal_free(block of 8)"});
    CHECK(recording_live_blocks() == before);
}

TEST_CASE("a handle that a script has ended by hand has no name, and every use of it is harmless") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("h, other = keldom.get_object('main.ok'), keldom.get_object('main.ok') meta = getmetatable(h)");
    int before = recording_live_blocks();
    CHECK(fixture.run("return meta.__gc(h)") == Lines{});
    CHECK(recording_live_blocks() == before - 1);
    fixture.show(RECORDING_SHOW_ALLOCATOR);
    CHECK(fixture.run("return meta.__gc(h)") == Lines{});
    CHECK(fixture.take_lines() == Lines{"kelal_free(null)"});

    CHECK(fixture.run("return h:get_name()") == Lines{"nil"});
    CHECK(fixture.run("return h:get_type()") == Lines{"0"});
    CHECK(fixture.run("return meta.__tostring(h)") == Lines{"nil"});
    CHECK(fixture.run("return h == other, other == h, meta.__eq(h, h), h == h")
          == Lines{"false", "false", "false", "true"});
    CHECK(fixture.run("return keldom.get_control(h)") == Lines{"control_object null"});
    CHECK(fixture.call(recognise, "h") == recognised);
    CHECK(fixture.run("return other:get_name()") == Lines{"\"main.ok\""});
    CHECK(fixture.take_log() == Lines{});
}

TEST_CASE("ending something that is no handle warns and gives no value") {
    PluginFixture fixture(either_kind_of_error());
    fixture.run("free = debug.getregistry().keldom_object.__gc");
    fixture.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ALLOCATOR);
    for (std::string value : {"", "nil", "1", "'text'", "{}", "io.stdout", "newproxy(true)"}) {
        CAPTURE(value);
        CHECK(fixture.run("return free(" + value + ")") == Lines{});
        CHECK(fixture.take_log() == Lines{"1: Argument must be a keldom_object"});
        CHECK(fixture.take_lines()
              == Lines{"kl_lua_get_app()", "kel_app_log(app, 1, \"Argument must be a keldom_object\")"});
    }
}

TEST_CASE("ending a handle by hand without an application raises and leaves the name") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("h = keldom.get_object('main.ok') free = getmetatable(h).__gc");
    int before = recording_live_blocks();
    fixture.without_application();
    CHECK(fixture.raises("return free(h)") == "Invalid argument, no application pointer");
    CHECK(fixture.raises("return free(1)") == "Invalid argument, no application pointer");
    CHECK(recording_live_blocks() == before);
    fixture.without_application(false);
    CHECK(fixture.run("return h:get_name()") == Lines{"\"main.ok\""});
}

TEST_CASE("a handle that is collected while there is no application raises, and its name stays") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.without_application(false);
    fixture.run("keldom.get_object('main.ok')");
    int before = recording_live_blocks();
    recording_fail_always(RECORDING_GET_APP, 1);
    fixture.run("pcall(collectgarbage)"); // some Luas raise what a collection raises, others keep it to themselves
    CHECK(fixture.take_errors() == Lines{"Invalid argument, no application pointer"});
    CHECK(recording_live_blocks() == before);
    recording_fail_always(RECORDING_GET_APP, 0);
    fixture.collect();
    CHECK(recording_live_blocks() == before);
    fixture.expect_leaks(1);
}

TEST_CASE("closing a state without an application raises for each handle, and the state closes all the same") {
    HostFixture host(either_kind_of_error());
    lua_State *L = luaL_newstate();
    REQUIRE(L != nullptr);
    recording_share_state(L);
    kl_plugin_state_t plugin;
    recording_load_plugin(&plugin, nullptr);
    recording_deliver("kel.internalinit");
    Model model;
    CHECK(luaL_dostring(L, "a = keldom.get_object('main.ok') b = keldom.get_object('main.ok')") == 0);
    host.without_application();
    lua_close(L);
    CHECK(host.take_errors()
          == Lines{"Invalid argument, no application pointer", "Invalid argument, no application pointer"});
    host.expect_leaks(2);
    recording_share_state(host.L);
    recording_unload_plugin(&plugin);
}
