// test_lookup.cpp: from a name to a handle: get_object, the six typed getters, get_application; and the methods that
// take a name or a handle.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string one_argument = "This function should have exactly one argument";
const std::string no_application = "Invalid argument, no application pointer";
const std::string not_a_string = "Argument must be a string";
const std::string not_a_handle = "Argument must be a keldom_object";
const std::string no_such_object = "No such object in DOM";
const std::string no_name = "Object has no qualified name";

const char *const typed_getters[] = {
    "get_control", "get_table", "get_group", "get_layer_instance", "get_layer", "get_screen",
};

// get_object, and the typed getters, which do the same for a string.
const char *const getters[] = {
    "get_object", "get_control", "get_table", "get_group", "get_layer_instance", "get_layer", "get_screen",
};

const std::pair<const char *, const char *> objects[] = {
    {"home",                "<screen_object home>"                },
    {"empty",               "<screen_object empty>"               },
    {"main",                "<layer_object main>"                 },
    {"home.main",           "<layer_instance_object home.main>"   },
    {"setup.status",        "<layer_instance_object setup.status>"},
    {"main.ok",             "<control_object main.ok>"            },
    {"main.bar",            "<group_object main.bar>"             },
    {"main.bar.ok",         "<control_object main.bar.ok>"        },
    {"main.bar.inner",      "<group_object main.bar.inner>"       },
    {"main.bar.inner.deep", "<control_object main.bar.inner.deep>"},
    {"main.list",           "<table_object main.list>"            },
    {"main.row",            "<control_object main.row>"           },
    {"spare.lone",          "<control_object spare.lone>"         },
};

std::string call(const std::string &function, const std::string &arguments) {
    return "return keldom." + function + "(" + arguments + ")";
}

bool may_stand_in_name(int byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '.'
           || byte == '_';
}

// A number in the place of "%" of a pattern, as the byte that it is.
std::string with_byte(std::string pattern, int byte) {
    return pattern.replace(pattern.find('%'), 1, 1, static_cast<char>(byte));
}

void each_byte_in(const std::string &pattern) {
    Session session;
    for (int byte = 0; byte <= 255; ++byte) {
        CAPTURE(byte);
        const std::string name = with_byte(pattern, byte);
        lua_pushlstring(session.lua(), name.data(), name.size());
        lua_setglobal(session.lua(), "name");
        bool allowed = may_stand_in_name(byte);
        CHECK(session.results("return keldom.get_object(name)") == Lines{});
        CHECK(session.calls()
              == (allowed ? Lines{"find \"" + name + "\"", "warning: " + no_such_object}
                          : Lines{"warning: " + not_a_string}));
        CHECK(session.results("return keldom.get_application().get_children(name)") == Lines{});
        CHECK(session.calls()
              == (allowed
                      ? Lines{"find \"" + name + "\"", "warning: " + no_such_object}
                      : Lines{"warning: Argument must be a valid fully qualified name", "warning: " + no_such_object}));
    }
}

int forged_handle(lua_State *L) {
    static struct {
        const char *name;
        kl_object_type_t type;
    } record = {"main.ok", KL_OBJECT_TYPE_CONTROL};
    lua_pushlightuserdata(L, &record);
    return 1;
}

int strange_userdata(lua_State *L) {
    lua_newuserdata(L, 64);
    lua_newtable(L);
    lua_setmetatable(L, -2);
    return 1;
}

} // namespace

TEST_CASE("every getter finds every kind of object by its name, and looks at no type") {
    Session session;
    for (const auto &[name, handle] : objects)
        for (const char *getter : getters) {
            CAPTURE(getter);
            CHECK(session.results(call(getter, "'" + std::string(name) + "'")) == Lines{handle});
            CHECK(session.calls() == Lines{"find \"" + std::string(name) + "\""});
        }
}

TEST_CASE("a look-up gives a new handle each time") {
    Session session;
    CHECK(session.results("local a, b = keldom.get_object('main.ok'), keldom.get_object('main.ok')"
                          " return rawequal(a, b), a == b")
          == Lines{"false", "true"});
}

TEST_CASE("an unknown name warns and gives no result") {
    Session session;
    for (const char *name : {"none", "main.none", "main.bar.none", "MAIN", "main.OK", "home.spare", "list"})
        for (const char *getter : getters) {
            CAPTURE(getter);
            CHECK(session.results(call(getter, "'" + std::string(name) + "'")) == Lines{});
            CHECK(session.calls() == Lines{"find \"" + std::string(name) + "\"", "warning: " + no_such_object});
        }
}

TEST_CASE("an object that the host does not find warns, and one whose name cannot be made warns in other words") {
    Session session;
    for (const char *getter : getters) {
        kc_fail("kl_application_find_object", 0);
        CHECK(session.results(call(getter, "'main.ok'")) == Lines{});
        CHECK(session.calls() == Lines{"find \"main.ok\"", "warning: " + no_such_object});
        kc_fail("kelal_strdup", 0);
        CHECK(session.results(call(getter, "'main.ok'")) == Lines{});
        CHECK(session.calls() == Lines{"find \"main.ok\"", "warning: " + no_name});
    }
}

TEST_CASE("a name of one byte may be a letter, a digit, a dot or an underscore") { each_byte_in("%"); }
TEST_CASE("a name may begin with letters, digits, dots and underscores, and no other byte") { each_byte_in("%zz"); }
TEST_CASE("a name may have letters, digits, dots and underscores within, and no other byte") { each_byte_in("z%z"); }
TEST_CASE("a name may end with letters, digits, dots and underscores, and no other byte") { each_byte_in("zz%"); }

TEST_CASE("a bad name is the same to the typed getters") {
    Session session;
    for (const char *getter : getters)
        for (const char *name : {"'main-ok'", "'main ok'", "'main.ok\\0'", "'\\255'", "-12", "1e100"}) {
            CAPTURE(getter);
            CAPTURE(name);
            CHECK(session.results(call(getter, name)) == Lines{});
            CHECK(session.calls() == Lines{"warning: " + not_a_string});
        }
}

TEST_CASE("a number is a name, by its text") {
    Session session;
    for (const char *getter : getters) {
        CHECK(session.results(call(getter, "12")) == Lines{});
        CHECK(session.calls() == Lines{"find \"12\"", "warning: " + no_such_object});
        CHECK(session.results(call(getter, "1.5")) == Lines{});
        CHECK(session.calls() == Lines{"find \"1.5\"", "warning: " + no_such_object});
    }
    CHECK(session.results("return keldom.get_application().get_parents(12)") == Lines{});
    CHECK(session.calls() == Lines{"find \"12\"", "warning: " + no_such_object});
}

TEST_CASE("the empty name and names of odd shape are the host's to answer") {
    Session session;
    for (const char *name : {"", ".", "main.", ".main", "main..ok"})
        for (const char *getter : getters) {
            session.results(call(getter, "'" + std::string(name) + "'"));
            CHECK(first(session.calls()) == "find \"" + std::string(name) + "\"");
        }
}

TEST_CASE("get_object raises for any number of arguments but one, before it asks for the application") {
    Session session;
    for (int hidden : {0, 1}) {
        kc_hide_application(hidden);
        for (const char *arguments : {"", "'main', 'ok'", "'main', nil", "nil, nil", "{}, 1, 2"}) {
            CAPTURE(arguments);
            CHECK(session.error(call("get_object", arguments)) == one_argument);
            CHECK(session.calls() == Lines{"error: " + one_argument});
            ReturningErrors returning;
            CHECK(session.results(call("get_object", arguments)) == Lines{});
            CHECK(session.calls() == Lines{"error: " + one_argument});
        }
    }
    kc_hide_application(0);
}

TEST_CASE("the typed getters count the arguments behind a string alone") {
    Session session;
    for (const char *getter : typed_getters) {
        CHECK(session.error(call(getter, "'main.ok', 1")) == one_argument);
        CHECK(session.error(call(getter, "12, nil")) == one_argument);
        {
            ReturningErrors returning;
            CHECK(session.results(call(getter, "'main.ok', 1")) == Lines{});
            CHECK(session.calls() == Lines{"error: " + one_argument});
        }
        CHECK(session.results(call(getter, "{}, 1")) == Lines{});
        CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    }
}

TEST_CASE("names without an application raise, before they are looked at") {
    Session session;
    kc_hide_application(1);
    for (const char *getter : getters)
        for (const char *name : {"'main.ok'", "'main-ok'", "12"}) {
            CAPTURE(getter);
            CHECK(session.error(call(getter, name)) == no_application);
            CHECK(session.calls() == Lines{"error: " + no_application});
            ReturningErrors returning;
            CHECK(session.results(call(getter, name)) == Lines{});
            CHECK(session.calls() == Lines{"error: " + no_application});
        }
    CHECK(session.error("keldom.get_object({})") == no_application);
    kc_hide_application(0);
}

TEST_CASE("get_object of what is no string warns and asks the host nothing") {
    Session session;
    session.results("h = keldom.get_object('main.ok')");
    for (const char *argument : {"nil", "true", "false", "{}", "print", "h"}) {
        CAPTURE(argument);
        CHECK(session.results(call("get_object", argument)) == Lines{});
        CHECK(session.calls() == Lines{"warning: " + not_a_string});
    }
}

TEST_CASE("the typed getters pass any handle through, and neither count nor ask the host anything") {
    Session session;
    session.define("forged", forged_handle);
    session.results("handles = {keldom.get_application(), keldom.get_object('home'), keldom.get_object('main'),"
                    " keldom.get_object('home.main'), keldom.get_object('main.ok'), keldom.get_object('main.list'),"
                    " keldom.get_object('main.bar'), forged()}");
    for (int hidden : {0, 1}) {
        kc_hide_application(hidden);
        for (const char *getter : typed_getters) {
            CAPTURE(getter);
            CHECK(session.results("local get = keldom." + std::string(getter)
                                  + " for _, h in ipairs(handles) do assert(rawequal(get(h), h)"
                                    " and rawequal(get(h, 1, 'x'), h) and select('#', get(h)) == 1) end")
                  == Lines{});
            CHECK(session.calls() == Lines{});
        }
    }
    kc_hide_application(0);
}

TEST_CASE("the typed getters pass the handle of a deleted object through") {
    Session session;
    CHECK(session.results("local h = keldom.get_object('main.ok') h:delete() return rawequal(keldom.get_layer(h), h)")
          == Lines{"true"});
}

TEST_CASE("the typed getters warn of what is neither string nor handle, with or without an application") {
    Session session;
    session.define("strange", strange_userdata);
    for (int hidden : {0, 1}) {
        kc_hide_application(hidden);
        for (const char *getter : typed_getters)
            for (const char *argument : {"", "nil", "true", "{}", "print", "strange()"}) {
                CAPTURE(getter);
                CAPTURE(argument);
                CHECK(session.results(call(getter, argument)) == Lines{});
                CHECK(session.calls() == Lines{"warning: " + not_a_handle});
            }
    }
    kc_hide_application(0);
}

TEST_CASE("the application's handle is made without a look-up, whatever the arguments") {
    Session session;
    for (const char *arguments : {"", "nil", "'main', {}, 3"}) {
        CHECK(session.results(call("get_application", arguments)) == Lines{"<keldom_object >"});
        CHECK(session.calls() == Lines{});
    }
    CHECK(session.results("local a, b = keldom.get_application(), keldom.get_application()"
                          " return a:get_name(), a:get_type(), rawequal(a, b), a == b")
          == Lines{"\"\"", "7", "false", "true"});
}

TEST_CASE("without an application its handle is a warning, and no error") {
    Session session;
    kc_hide_application(1);
    CHECK(session.results("return keldom.get_application()") == Lines{});
    CHECK(session.calls() == Lines{"warning: Invalid call, no application pointer"});
    kc_hide_application(0);
}

TEST_CASE("the application's handle warns when its name cannot be made") {
    Session session;
    kc_fail("kelal_strdup", 0);
    CHECK(session.results("return keldom.get_application()") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + no_name});
}

TEST_CASE("where a name or a handle is taken, the name is looked up, the handle's too, the application's is not") {
    Session session;
    session.results("app = keldom.get_application() ok = keldom.get_object('main.ok')");
    for (const char *method : {"get_children", "get_parents", "get_variables"}) {
        CAPTURE(method);
        const std::string take = "return #app." + std::string(method);
        session.results(take + "('main.ok')");
        CHECK(first(session.calls()) == "find \"main.ok\"");
        session.results(take + "(ok)");
        CHECK(first(session.calls()) == "find \"main.ok\"");
        session.results(take + "(app)");
        Lines calls = session.calls();
        CHECK((calls.empty() || first(calls) == "prefix \"\""));
    }
}

TEST_CASE("where a name or a handle is taken, what is neither warns in words of its own, then as not found") {
    Session session;
    session.define("strange", strange_userdata);
    session.results("app = keldom.get_application()");
    for (const char *method : {"get_children", "get_parents", "get_variables"}) {
        for (const char *argument : {"nil", "true", "{}", "print", "strange()"}) {
            CAPTURE(argument);
            CHECK(session.results("return app." + std::string(method) + "(" + argument + ")") == Lines{});
            CHECK(session.calls()
                  == Lines{"warning: Argument must be a string or keldom_object", "warning: " + no_such_object});
        }
        CHECK(session.results("return app." + std::string(method) + "('main-ok')") == Lines{});
        CHECK(session.calls()
              == Lines{"warning: Argument must be a valid fully qualified name", "warning: " + no_such_object});
    }
}
