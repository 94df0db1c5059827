// test_lookup.cpp: the ways from a name or a handle to an object: get_object, the six typed getters, get_application,
// and the step that other methods take their first argument through.
#include "lookup.h"

#include "plugin_fixture.h"

namespace {

const Lines nothing = {};
const Lines not_a_string = {"1: Argument must be a string"};
const Lines no_such_object = {"1: No such object in DOM"};
const char one_argument[] = "This function should have exactly one argument";
const char no_application[] = "Invalid argument, no application pointer";

const std::string typed_getters[] = {"get_control",        "get_table", "get_group",
                                     "get_layer_instance", "get_layer", "get_screen"};

struct Model {
    kl_layer_t *main = recording_add_layer("main");
    kl_control_t *ok = recording_add_control(main, "ok");
    kl_table_t *list = recording_add_table(main, "list", 1, 1);
    kl_group_t *bar = recording_add_group(main, "bar");
    kl_screen_t *home = recording_add_screen("home");
    kl_layer_instance_t *placed = recording_add_instance(home, main);
};

// Whether a byte may stand in a name.
bool is_allowed(int byte) {
    const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._";
    return allowed.find(static_cast<char>(byte)) != std::string::npos;
}

// A Lua string constant with one byte, whichever it is, before, between or after letters.
std::string constant_with(int byte, int place) {
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\%03d", byte);
    return std::string(place > 0 ? "'a" : "'") + escaped + (place < 2 ? "b'" : "'");
}

// What get_object_from_stack gave last.
kl_object_t *found;

// [-0, +1] Whether the stack is as it was.
int find_from_stack(lua_State *L) {
    int top = lua_gettop(L);
    found = keldom_get_object_from_stack(L, recording_app());
    lua_pushboolean(L, lua_gettop(L) == top);
    return 1;
}

kl_object_t *from_stack(HostFixture &fixture, const std::string &arguments) {
    found = nullptr;
    CHECK(fixture.call(find_from_stack, arguments) == Lines{"true"});
    return found;
}

template <typename Record> kl_object_t *object_of(Record *record) { return reinterpret_cast<kl_object_t *>(record); }

} // namespace

TEST_CASE("get_object gives one handle for the object that a name resolves to") {
    PluginFixture fixture;
    Model model;
    CHECK(fixture.run("return keldom.get_object('main')") == Lines{"layer_object \"main\""});
    CHECK(fixture.run("return keldom.get_object('main.ok')") == Lines{"control_object \"main.ok\""});
    CHECK(fixture.run("return keldom.get_object('main.list')") == Lines{"table_object \"main.list\""});
    CHECK(fixture.run("return keldom.get_object('main.cell_0_0')") == Lines{"control_object \"main.cell_0_0\""});
    CHECK(fixture.run("return keldom.get_object('main.bar')") == Lines{"group_object \"main.bar\""});
    CHECK(fixture.run("return keldom.get_object('home')") == Lines{"screen_object \"home\""});
    CHECK(fixture.run("return keldom.get_object('home.main')") == Lines{"layer_instance_object \"home.main\""});
}

TEST_CASE("get_object takes the application, then asks the host for the name once") {
    PluginFixture fixture;
    Model model;
    fixture.show(RECORDING_SHOW_GET_APP);
    fixture.run("keldom.get_object('main.ok')");
    CHECK(fixture.take_lines() == Lines{"kl_lua_get_app()", "kl_application_find_object(\"main.ok\", 0)"});
}

TEST_CASE("get_object with other than one argument raises, before it looks at anything") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.show(RECORDING_SHOW_GET_APP);
    for (std::string arguments : {"", "'main', 'ok'", "'main', nil", "nil, nil", "{}, {}, {}", "'main', 1, 2"}) {
        CAPTURE(arguments);
        for (bool without : {false, true}) {
            fixture.without_application(without);
            CHECK(fixture.raises("return keldom.get_object(" + arguments + ")") == one_argument);
            CHECK(fixture.take_lines() == Lines{"kl_lua_error(\"" + std::string(one_argument) + "\")"});
        }
    }
}

TEST_CASE("get_object without an application raises, before it looks at its argument") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.without_application();
    fixture.show(RECORDING_SHOW_GET_APP);
    for (std::string argument : {"'main'", "nil", "{}", "'a-b'"}) {
        CAPTURE(argument);
        CHECK(fixture.raises("return keldom.get_object(" + argument + ")") == no_application);
        CHECK(fixture.take_lines()
              == Lines{"kl_lua_get_app()", "kl_lua_error(\"" + std::string(no_application) + "\")"});
    }
}

TEST_CASE("get_object of what is no string warns, gives no value and asks the host nothing") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("h = keldom.get_object('main')");
    fixture.take_lines();
    for (std::string argument : {"nil", "true", "false", "{}", "print", "h", "io.stdout", "newproxy()"}) {
        CAPTURE(argument);
        CHECK(fixture.run("return keldom.get_object(" + argument + ")") == nothing);
        CHECK(fixture.take_log() == not_a_string);
        CHECK(fixture.take_lines() == Lines{"kel_app_log(app, 1, \"Argument must be a string\")"});
    }
}

TEST_CASE("a number is a name, by its text") {
    PluginFixture fixture;
    recording_add_layer("12");
    CHECK(fixture.run("return keldom.get_object(12)") == Lines{"layer_object \"12\""});
    fixture.take_lines();
    CHECK(fixture.run("return keldom.get_object(1.5)") == nothing);
    CHECK(fixture.take_lines()
          == Lines{"kl_application_find_object(\"1.5\", 0)", "kel_app_log(app, 1, \"No such object in DOM\")"});
    CHECK(fixture.take_log() == no_such_object);
    for (std::string number : {"-12", "1e100", "1e-10"}) {
        CAPTURE(number);
        CHECK(fixture.run("return keldom.get_object(" + number + ")") == nothing);
        CHECK(fixture.take_log() == not_a_string);
        CHECK(fixture.take_lines() == Lines{"kel_app_log(app, 1, \"Argument must be a string\")"});
    }
}

TEST_CASE("a name is made of letters, digits, dots and underscores alone, at its beginning, middle and end") {
    PluginFixture fixture;
    for (int byte = 0; byte <= 255; ++byte)
        for (int place = 0; place <= 2; ++place) {
            CAPTURE(byte);
            CAPTURE(place);
            unsigned long asked_before = recording_calls(RECORDING_FIND_OBJECT);
            CHECK(fixture.run("return keldom.get_object(" + constant_with(byte, place) + ")") == nothing);
            bool asked = recording_calls(RECORDING_FIND_OBJECT) == asked_before + 1;
            CHECK(asked == is_allowed(byte));
            CHECK(fixture.take_log() == (is_allowed(byte) ? no_such_object : not_a_string));
        }
}

TEST_CASE("a name with a zero byte is refused whole, not looked up by its beginning") {
    PluginFixture fixture;
    Model model;
    fixture.take_lines();
    for (std::string name : {"'main\\0'", "'main\\0.ok'", "'\\0'", "'main.ok\\0\\0'"}) {
        CAPTURE(name);
        CHECK(fixture.run("return keldom.get_object(" + name + ")") == nothing);
        CHECK(fixture.take_log() == not_a_string);
        CHECK(fixture.take_lines() == Lines{"kel_app_log(app, 1, \"Argument must be a string\")"});
    }
}

TEST_CASE("a name has no limit of length") {
    PluginFixture fixture;
    std::string name(20000, 'n');
    recording_add_layer(name.c_str());
    CHECK(fixture.run("return keldom.get_object(('n'):rep(20000)):get_name() == ('n'):rep(20000)") == Lines{"true"});
    CHECK(fixture.run("return keldom.get_object(('n'):rep(20000) .. '-')") == nothing);
    CHECK(fixture.take_log() == not_a_string);
}

TEST_CASE("the empty name is the host's to resolve") {
    PluginFixture fixture;
    Model model;
    fixture.take_lines();
    CHECK(fixture.run("return keldom.get_object('')") == nothing);
    CHECK(fixture.take_lines()
          == Lines{"kl_application_find_object(\"\", 0)", "kel_app_log(app, 1, \"No such object in DOM\")"});
    CHECK(fixture.take_log() == no_such_object);
    recording_resolve("", recording_app());
    CHECK(fixture.run("return keldom.get_object('')") == Lines{"keldom_object \"\""});
}

TEST_CASE("a name of allowed characters and an odd shape is the host's to resolve") {
    PluginFixture fixture;
    Model model;
    fixture.take_lines();
    for (std::string name : {".", "..", "main.", ".main", "main..ok", "_"}) {
        CAPTURE(name);
        CHECK(fixture.run("return keldom.get_object('" + name + "')") == nothing);
        CHECK(fixture.take_lines()
              == Lines{"kl_application_find_object(\"" + name + "\", 0)",
                       "kel_app_log(app, 1, \"No such object in DOM\")"});
        CHECK(fixture.take_log() == no_such_object);
    }
}

TEST_CASE("get_object of a name that the host does not resolve warns and gives no value") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    CHECK(fixture.run("return keldom.get_object('main.nosuch')") == nothing);
    CHECK(fixture.take_log() == no_such_object);
    recording_fail(RECORDING_FIND_OBJECT, 1);
    CHECK(fixture.run("return keldom.get_object('main.ok')") == nothing);
    CHECK(fixture.take_log() == no_such_object);
    CHECK(fixture.run("return keldom.get_object('main.ok')") == Lines{"control_object \"main.ok\""});
}

TEST_CASE("get_object of an object that has no qualified name warns and gives no value") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    recording_resolve("ghost", recording_make_control(KL_OBJECT_TYPE_CONTROL, "ghost"));
    CHECK(fixture.run("return keldom.get_object('ghost')") == nothing);
    CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
    recording_fail(RECORDING_REALLOC, 1);
    CHECK(fixture.run("return keldom.get_object('main.ok')") == nothing);
    CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
}

TEST_CASE("a handle's name is the model's, not the one that was asked for") {
    PluginFixture fixture;
    Model model;
    recording_resolve("alias", model.ok);
    CHECK(fixture.run("return keldom.get_object('alias')") == Lines{"control_object \"main.ok\""});
}

TEST_CASE("a typed getter given a name does what get_object does") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    for (const std::string &getter : typed_getters) {
        CAPTURE(getter);
        const std::string call = "return keldom." + getter;
        CHECK(fixture.run(call + "('main.ok')") == Lines{"control_object \"main.ok\""});
        fixture.show(RECORDING_SHOW_GET_APP);
        fixture.run(call + "('home')");
        CHECK(fixture.take_lines() == Lines{"kl_lua_get_app()", "kl_application_find_object(\"home\", 0)"});
        CHECK(fixture.run(call + "(12)") == nothing);
        CHECK(fixture.take_log() == no_such_object);
        CHECK(fixture.run(call + "('main-ok')") == nothing);
        CHECK(fixture.take_log() == not_a_string);
        CHECK(fixture.run(call + "('main.nosuch')") == nothing);
        CHECK(fixture.take_log() == no_such_object);
        CHECK(fixture.raises(call + "('main', 1)") == one_argument);
        CHECK(fixture.raises(call + "(12, nil)") == one_argument);
        fixture.without_application();
        CHECK(fixture.raises(call + "('main')") == no_application);
        CHECK(fixture.raises(call + "('main', 1)") == one_argument);
        fixture.without_application(false);
    }
}

TEST_CASE("no typed getter looks at the type of what it finds or is given") {
    PluginFixture fixture;
    Model model;
    const std::pair<std::string, std::string> objects[] = {
        {"main",      "layer_object \"main\""              },
        {"main.ok",   "control_object \"main.ok\""         },
        {"main.list", "table_object \"main.list\""         },
        {"main.bar",  "group_object \"main.bar\""          },
        {"home",      "screen_object \"home\""             },
        {"home.main", "layer_instance_object \"home.main\""},
    };
    for (const std::string &getter : typed_getters)
        for (const auto &[name, text] : objects) {
            CAPTURE(getter);
            CAPTURE(name);
            CHECK(fixture.run("return keldom." + getter + "('" + name + "')") == Lines{text});
            CHECK(fixture.run("h = keldom.get_object('" + name + "') return rawequal(keldom." + getter + "(h), h)")
                  == Lines{"true"});
        }
}

TEST_CASE("a typed getter given a handle gives that handle back, alone, and calls nothing of the host") {
    PluginFixture fixture(either_kind_of_error());
    Model model;
    fixture.run("h, app = keldom.get_object('main.ok'), keldom.get_application()");
    recording_remove(model.ok);
    fixture.show(RECORDING_SHOW_GET_APP | RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_WALKS);
    for (bool without : {false, true})
        for (const std::string &getter : typed_getters) {
            CAPTURE(getter);
            fixture.without_application(without);
            CHECK(fixture.run("return keldom." + getter + "(h)") == Lines{"control_object \"main.ok\""});
            CHECK(fixture.run("return rawequal(keldom." + getter + "(h), h)") == Lines{"true"});
            CHECK(fixture.run("return rawequal(keldom." + getter + "(app), app)") == Lines{"true"});
            CHECK(fixture.run("return keldom." + getter + "(h, 1, app)") == Lines{"control_object \"main.ok\""});
            CHECK(fixture.take_lines() == Lines{});
        }
    fixture.without_application(false);
}

TEST_CASE("a typed getter takes a userdata without a metatable for a handle") {
    PluginFixture fixture;
    CHECK(fixture.run("local u = newproxy() return rawequal(keldom.get_control(u), u)") == Lines{"true"});
}

TEST_CASE("a typed getter given neither name nor handle warns and gives no value, however many arguments there are") {
    PluginFixture fixture(either_kind_of_error());
    fixture.show(RECORDING_SHOW_GET_APP);
    for (const std::string &getter : typed_getters)
        for (std::string arguments : {"", "nil", "true", "{}", "print", "io.stdout", "newproxy(true)", "nil, 'main'"}) {
            CAPTURE(getter);
            CAPTURE(arguments);
            CHECK(fixture.run("return keldom." + getter + "(" + arguments + ")") == nothing);
            CHECK(fixture.take_log() == Lines{"1: Argument must be a keldom_object"});
            CHECK(fixture.take_lines()
                  == Lines{"kl_lua_get_app()", "kel_app_log(app, 1, \"Argument must be a keldom_object\")"});
        }
}

TEST_CASE("a typed getter given neither, without an application, warns in no application's log") {
    PluginFixture fixture(either_kind_of_error());
    fixture.without_application();
    for (const std::string &getter : typed_getters) {
        CAPTURE(getter);
        CHECK(fixture.run("return keldom." + getter + "({})") == nothing);
        CHECK(fixture.take_log() == Lines{"1 null: Argument must be a keldom_object"});
    }
}

TEST_CASE("get_application gives the application's handle, whatever the arguments, without looking it up") {
    PluginFixture fixture;
    fixture.show(RECORDING_SHOW_GET_APP);
    CHECK(fixture.run("return keldom.get_application()") == Lines{"keldom_object \"\""});
    CHECK(fixture.take_lines() == Lines{"kl_lua_get_app()"});
    CHECK(fixture.run("return keldom.get_application(1, 'x', {})") == Lines{"keldom_object \"\""});
    CHECK(fixture.run("local app = keldom.get_application() return app:get_name(), app:get_type()")
          == Lines{"\"\"", "7"});
}

TEST_CASE("get_application without an application warns in no application's log, and raises nothing") {
    PluginFixture fixture(either_kind_of_error());
    fixture.without_application();
    CHECK(fixture.run("return keldom.get_application()") == nothing);
    CHECK(fixture.take_log() == Lines{"1 null: Invalid call, no application pointer"});
    CHECK(fixture.run("return keldom.get_application(1)") == nothing);
    CHECK(fixture.take_log() == Lines{"1 null: Invalid call, no application pointer"});
}

TEST_CASE("get_application without memory for the empty name warns and gives no value") {
    PluginFixture fixture;
    recording_fail(RECORDING_STRDUP, 1);
    CHECK(fixture.run("return keldom.get_application()") == nothing);
    CHECK(fixture.take_log() == Lines{"1: Object has no qualified name"});
}

TEST_CASE("argument 1 as a name gives the object that the host resolves, or null without a word") {
    PluginFixture fixture;
    Model model;
    fixture.show(RECORDING_SHOW_GET_APP);
    CHECK(from_stack(fixture, "'main.ok'") == object_of(model.ok));
    CHECK(fixture.take_lines() == Lines{"kl_application_find_object(\"main.ok\", 0)"});
    CHECK(from_stack(fixture, "'home.main', 'more', {}") == object_of(model.placed));
    CHECK(from_stack(fixture, "'main.nosuch'") == nullptr);
    CHECK(fixture.take_log() == Lines{});
    kl_layer_t *twelve = recording_add_layer("12");
    CHECK(from_stack(fixture, "12") == object_of(twelve));
}

TEST_CASE("argument 1 as the empty name is the host's to resolve") {
    PluginFixture fixture;
    fixture.take_lines();
    CHECK(from_stack(fixture, "''") == nullptr);
    CHECK(fixture.take_lines() == Lines{"kl_application_find_object(\"\", 0)"});
    recording_resolve("", recording_app());
    CHECK(from_stack(fixture, "''") == recording_app_object());
}

TEST_CASE("argument 1 as an ill-formed name warns in other words than get_object, and gives null") {
    PluginFixture fixture;
    Model model;
    const Lines warning = {"1: Argument must be a valid fully qualified name"};
    for (int byte = 0; byte <= 255; ++byte)
        for (int place = 0; place <= 2; ++place) {
            CAPTURE(byte);
            CAPTURE(place);
            unsigned long asked_before = recording_calls(RECORDING_FIND_OBJECT);
            CHECK(from_stack(fixture, constant_with(byte, place)) == nullptr);
            CHECK((recording_calls(RECORDING_FIND_OBJECT) == asked_before + 1) == is_allowed(byte));
            CHECK(fixture.take_log() == (is_allowed(byte) ? Lines{} : warning));
        }
    fixture.take_lines();
    for (std::string name : {"'main\\0'", "'main ok'", "-12", "'m\\195\\164in'"}) {
        CAPTURE(name);
        CHECK(from_stack(fixture, name) == nullptr);
        CHECK(fixture.take_log() == warning);
        CHECK(fixture.take_lines() == Lines{"kel_app_log(app, 1, \"Argument must be a valid fully qualified name\")"});
    }
}

TEST_CASE("argument 1 as neither name nor handle warns and gives null") {
    PluginFixture fixture;
    Model model;
    fixture.show(RECORDING_SHOW_GET_APP);
    for (std::string arguments : {"", "nil", "true", "{}", "print", "io.stdout", "newproxy(true)", "nil, 'main'"}) {
        CAPTURE(arguments);
        CHECK(from_stack(fixture, arguments) == nullptr);
        CHECK(fixture.take_log() == Lines{"1: Argument must be a string or keldom_object"});
        CHECK(fixture.take_lines() == Lines{"kel_app_log(app, 1, \"Argument must be a string or keldom_object\")"});
    }
}

TEST_CASE("argument 1 as the application's handle gives the application, without a lookup") {
    PluginFixture fixture;
    Model model;
    fixture.run("app = keldom.get_application()");
    recording_resolve("", model.ok);
    fixture.show(RECORDING_SHOW_GET_APP);
    CHECK(from_stack(fixture, "app") == recording_app_object());
    CHECK(fixture.take_lines() == Lines{});
}

TEST_CASE("argument 1 as a handle gives the object that its name resolves to now, or null without a word") {
    PluginFixture fixture;
    Model model;
    fixture.run("h = keldom.get_object('main.ok')");
    fixture.show(RECORDING_SHOW_GET_APP);
    CHECK(from_stack(fixture, "h") == object_of(model.ok));
    CHECK(fixture.take_lines() == Lines{"kl_application_find_object(\"main.ok\", 0)"});
    recording_remove(model.ok);
    CHECK(from_stack(fixture, "h") == nullptr);
    CHECK(fixture.take_lines() == Lines{"kl_application_find_object(\"main.ok\", 0)"});
    kl_group_t *successor = recording_add_group(model.main, "ok");
    CHECK(from_stack(fixture, "h") == object_of(successor));
}

TEST_CASE("argument 1 as a handle that a script has ended gives null, and the application for the application's") {
    PluginFixture fixture;
    Model model;
    fixture.run("h, app = keldom.get_object('main.ok'), keldom.get_application()"
                " getmetatable(h).__gc(h) getmetatable(app).__gc(app)");
    fixture.take_lines();
    CHECK(from_stack(fixture, "h") == nullptr);
    CHECK(from_stack(fixture, "app") == recording_app_object());
    CHECK(fixture.take_lines() == Lines{});
}

TEST_CASE("looking a name up asks the host with flags 0, and for no name not at all") {
    PluginFixture fixture;
    Model model;
    fixture.take_lines();
    CHECK(keldom_get_object(recording_app(), "main.ok") == object_of(model.ok));
    CHECK(keldom_get_object(recording_app(), "main-ok") == nullptr);
    CHECK(keldom_get_object(recording_app(), nullptr) == nullptr);
    CHECK(fixture.take_lines()
          == Lines{"kl_application_find_object(\"main.ok\", 0)", "kl_application_find_object(\"main-ok\", 0)"});
}

TEST_CASE("argument 1 as a string of allowed characters is that string, and anything else none") {
    HostFixture host;
    auto sanitary = [](lua_State *L) {
        lua_pushstring(L, keldom_sanitary_lua_string(L));
        lua_pushinteger(L, lua_gettop(L));
        return 2;
    };
    CHECK(host.call(sanitary, "'main.ok_2'") == Lines{"\"main.ok_2\"", "2"});
    CHECK(host.call(sanitary, "''") == Lines{"\"\"", "2"});
    CHECK(host.call(sanitary, "12") == Lines{"\"12\"", "2"});
    CHECK(host.call(sanitary, "'main-ok'") == Lines{"nil", "2"});
    CHECK(host.call(sanitary, "'main\\0'") == Lines{"nil", "2"});
    CHECK(host.call(sanitary, "nil") == Lines{"nil", "2"});
    CHECK(host.call(sanitary, "{}") == Lines{"nil", "2"});
    CHECK(host.call(sanitary, "true, 'main'") == Lines{"nil", "3"});
    CHECK(host.call(sanitary) == Lines{"nil", "1"});
}
