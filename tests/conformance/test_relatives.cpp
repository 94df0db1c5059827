// test_relatives.cpp: children, parents, screens, layers, and a layer instance's layer.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string no_such_object = "No such object in DOM";
const std::string one_argument = "This function should have exactly one argument";
const std::string no_application = "Invalid argument, no application pointer";

std::string get(const std::string &name) { return "keldom.get_object('" + name + "')"; }

} // namespace

TEST_CASE("the application's children are its screens, in the host's order") {
    Session session;
    CHECK(session.results("return keldom.get_application():get_children()")
          == Lines{"{<screen_object home>, <screen_object setup>, <screen_object empty>}"});
}

TEST_CASE("a screen's children are its layer instances, in order") {
    Session session;
    CHECK(session.results("return " + get("home") + ":get_children()")
          == Lines{"{<layer_instance_object home.main>, <layer_instance_object home.status>}"});
}

TEST_CASE("a screen that shows nothing has no children") {
    Session session;
    CHECK(session.results("return " + get("empty") + ":get_children()") == Lines{"{}"});
}

TEST_CASE("a layer instance's children are its layer's") {
    Session session;
    Lines of_layer = session.results("return " + get("main") + ":get_children()");
    CHECK(of_layer
          == Lines{"{<control_object main.ok>, <group_object main.bar>, <table_object main.list>, "
                   "<table_object main.bare>}"});
    CHECK(session.results("return " + get("home.main") + ":get_children()") == of_layer);
}

TEST_CASE("a group's children are its own alone, in order") {
    Session session;
    CHECK(session.results("return " + get("main.bar") + ":get_children()")
          == Lines{"{<control_object main.bar.ok>, <group_object main.bar.inner>}"});
}

TEST_CASE("a table's children are its cells row by row, named without the table, and never its templates") {
    Session session;
    CHECK(session.results("return " + get("main.list") + ":get_children()")
          == Lines{"{<control_object main.row>, <control_object main.mark>, <control_object main.mark>, "
                   "<control_object main.row>, <control_object main.mark>, <control_object main.mark>}"});
}

TEST_CASE("a table without cells has no children") {
    Session session;
    CHECK(session.results("return " + get("main.bare") + ":get_children()") == Lines{"{}"});
}

TEST_CASE("a control has no children") {
    Session session;
    CHECK(session.results("return " + get("main.ok") + ":get_children()") == Lines{"{}"});
}

TEST_CASE("a control's parent is the container that lists it, alone") {
    Session session;
    CHECK(session.results("return " + get("main.ok") + ":get_parents()") == Lines{"{<layer_object main>}"});
    CHECK(session.results("return " + get("main.bar.ok") + ":get_parents()") == Lines{"{<group_object main.bar>}"});
    CHECK(session.results("return " + get("main.bar.inner.deep") + ":get_parents()")
          == Lines{"{<group_object main.bar.inner>}"});
}

TEST_CASE("a group's parent and a table's parent are their containers") {
    Session session;
    CHECK(session.results("return " + get("main.bar.inner") + ":get_parents()") == Lines{"{<group_object main.bar>}"});
    CHECK(session.results("return " + get("main.list") + ":get_parents()") == Lines{"{<layer_object main>}"});
}

TEST_CASE("a cell's parent is its table") {
    Session session;
    CHECK(session.results("return " + get("main.row") + ":get_parents()") == Lines{"{<table_object main.list>}"});
}

TEST_CASE("a layer's parents are the screens that show it, each once, in the host's order") {
    Session session;
    CHECK(session.results("return " + get("status") + ":get_parents()")
          == Lines{"{<screen_object home>, <screen_object setup>}"});
    CHECK(session.results("return " + get("main") + ":get_parents()") == Lines{"{<screen_object home>}"});
}

TEST_CASE("a layer that no screen shows has no parents") {
    Session session;
    CHECK(session.results("return " + get("spare") + ":get_parents()") == Lines{"{}"});
}

TEST_CASE("a layer instance's parent is its screen") {
    Session session;
    CHECK(session.results("return " + get("setup.status") + ":get_parents()") == Lines{"{<screen_object setup>}"});
}

TEST_CASE("a screen's parent is the application, and the application has none") {
    Session session;
    CHECK(session.results("return " + get("home") + ":get_parents()") == Lines{"{<keldom_object >}"});
    CHECK(session.results("return keldom.get_application():get_parents()") == Lines{"{}"});
}

TEST_CASE("children and parents take a name in place of a handle") {
    Session session;
    CHECK(session.results("return keldom.get_application().get_children('main.bar')")
          == Lines{"{<control_object main.bar.ok>, <group_object main.bar.inner>}"});
    CHECK(session.results("return keldom.get_application().get_parents('main.bar')") == Lines{"{<layer_object main>}"});
}

TEST_CASE("children and parents are new handles at every call, equal to others of the same object") {
    Session session;
    CHECK(session.results("local s = " + get("home")
                          + " local a, b = s:get_children()[1], s:get_children()[1]"
                            " return rawequal(a, b), a == b")
          == Lines{"false", "true"});
}

TEST_CASE("children and parents raise for any number of arguments but one") {
    Session session;
    for (const char *method : {"get_children", "get_parents"}) {
        CHECK(session.error("local h = " + get("main.ok") + " h." + method + "()") == one_argument);
        CHECK(session.error("local h = " + get("main.ok") + " h:" + method + "(1)") == one_argument);
        CHECK(session.error("local h = " + get("main.ok") + " h." + method + "('main', nil)") == one_argument);
    }
}

TEST_CASE("children and parents count arguments before they ask for the application") {
    Session session;
    session.results("h = " + get("main.ok"));
    kc_hide_application(1);
    CHECK(session.error("h:get_children(1)") == one_argument);
    CHECK(session.error("h:get_children()") == no_application);
    CHECK(session.error("h:get_parents()") == no_application);
    kc_hide_application(0);
}

TEST_CASE("with errors that return, children and parents give no result after each error") {
    Session session;
    session.results("h = " + get("main.ok"));
    ReturningErrors returning;
    CHECK(session.results("return h:get_children(1)") == Lines{});
    CHECK(session.calls() == Lines{"error: " + one_argument});
    kc_hide_application(1);
    CHECK(session.results("return h:get_parents()") == Lines{});
    CHECK(session.calls() == Lines{"error: " + no_application});
    kc_hide_application(0);
}

TEST_CASE("children and parents of an unknown name warn and give nothing") {
    Session session;
    for (const char *method : {"get_children", "get_parents"}) {
        CHECK(session.results("return keldom.get_application()." + std::string(method) + "('main.none')") == Lines{});
        CHECK(session.calls() == Lines{"find \"main.none\"", "warning: " + no_such_object});
    }
}

TEST_CASE("children and parents of what is no name or handle warn twice") {
    Session session;
    session.results("f = keldom.get_application().get_children");
    CHECK(session.results("return f('main-bar')") == Lines{});
    CHECK(session.calls()
          == Lines{"warning: Argument must be a valid fully qualified name", "warning: " + no_such_object});
    CHECK(session.results("return f({})") == Lines{});
    CHECK(session.calls()
          == Lines{"warning: Argument must be a string or keldom_object", "warning: " + no_such_object});
}

TEST_CASE("children and parents of a deleted object warn and give nothing") {
    Session session;
    session.results("h = " + get("main.ok") + " h:delete()");
    CHECK(session.results("return h:get_children()") == Lines{});
    CHECK(session.warnings() == Lines{no_such_object});
    CHECK(session.results("return h:get_parents()") == Lines{});
    CHECK(session.warnings() == Lines{no_such_object});
}

TEST_CASE("an object of an unknown type has no children, and its parents are not known") {
    Session session;
    session.results("h = " + get("main.ok"));
    kl_object_t *object = kl_application_find_object(session.application(), "main.ok", 0);
    for (int type : {8, 255}) {
        object->type = static_cast<kl_object_type_t>(type);
        CHECK(session.results("return h:get_children()") == Lines{"{}"});
        CHECK(session.results("return h:get_parents()") == Lines{});
        CHECK(session.calls() == Lines{"find \"main.ok\"", "warning: " + no_such_object});
    }
    object->type = KL_OBJECT_TYPE_CONTROL;
}

TEST_CASE("the application's children are found without a look-up") {
    Session session;
    session.results("return keldom.get_application():get_children()");
    CHECK(session.calls() == Lines{});
}

TEST_CASE("children and parents warn when no list can be made") {
    Session session;
    session.results("h = " + get("main.bar"));
    for (const char *method : {"get_children", "get_parents"}) {
        kc_fail("kl_darray_create", 0);
        CHECK(session.results("return h:" + std::string(method) + "()") == Lines{});
        CHECK(session.calls() == Lines{"find \"main.bar\"", "warning: " + no_such_object});
    }
    for (const char *name : {"status", "home", "home.main"}) {
        session.results("h = " + get(name));
        kc_fail("kl_darray_create", 0);
        CHECK(session.results("return h:get_parents()") == Lines{});
        CHECK(session.warnings() == Lines{no_such_object});
    }
    kc_fail("kl_darray_create", 0);
    CHECK(session.results("return keldom.get_application():get_parents()") == Lines{});
    CHECK(session.warnings() == Lines{no_such_object});
}

TEST_CASE("a name that cannot be made leaves no partial list, whichever element it is") {
    Session session;
    session.results("h = " + get("home"));
    for (int failing = 0; failing < 2; ++failing) {
        kc_fail("kelal_strdup", failing);
        CHECK(session.results("return h:get_children()") == Lines{});
        CHECK(session.calls() == Lines{"find \"home\"", "warning: Object has no qualified name"});
        CHECK(kc_live_lists() == 0);
    }
    CHECK(session.results("return #h:get_children()") == Lines{"2"});
}

TEST_CASE("screens and layers are all there are, and extra arguments are ignored") {
    Session session;
    CHECK(session.results("return keldom.get_screens(1, 2)")
          == session.results("return keldom.get_application():get_children()"));
    CHECK(session.results("return keldom.get_layers('x')")
          == Lines{"{<layer_object main>, <layer_object status>, <layer_object spare>}"});
}

TEST_CASE("screens and layers without an application log and give nothing") {
    Session session;
    kc_hide_application(1);
    for (const char *function : {"get_screens", "get_layers"}) {
        CHECK(session.results("return keldom." + std::string(function) + "()") == Lines{});
        CHECK(session.calls() == Lines{"warning: Invalid call, no application pointer"});
    }
    kc_hide_application(0);
}

TEST_CASE("screens and layers are silently nothing when no list can be made") {
    Session session;
    for (const char *function : {"get_screens", "get_layers"}) {
        kc_fail("kl_darray_create", 0);
        CHECK(session.results("return keldom." + std::string(function) + "()") == Lines{});
        CHECK(session.calls() == Lines{});
    }
}

TEST_CASE("screens and layers give nothing when a name cannot be made") {
    Session session;
    for (const char *function : {"get_screens", "get_layers"}) {
        kc_fail("kelal_strdup", 1);
        CHECK(session.results("return keldom." + std::string(function) + "()") == Lines{});
        CHECK(session.calls() == Lines{"warning: Object has no qualified name"});
    }
}

TEST_CASE("a layer instance gives its layer, whatever arguments follow") {
    Session session;
    CHECK(session.results("return " + get("setup.status") + ":get_layer()") == Lines{"<layer_object status>"});
    CHECK(session.results("return " + get("setup.status") + ":get_layer(1, 2)") == Lines{"<layer_object status>"});
}

TEST_CASE("get_layer asks for the application first, then for a handle") {
    Session session;
    session.results("get_layer = " + get("home.main") + ".get_layer");
    kc_hide_application(1);
    CHECK(session.error("get_layer(1)") == no_application);
    kc_hide_application(0);
    CHECK(session.results("return get_layer('home.main')") == Lines{});
    CHECK(session.calls() == Lines{"warning: Argument must be a keldom_object"});
}

TEST_CASE("get_layer raises for an object that is gone, and for one that is no layer instance") {
    Session session;
    session.results("get_layer = " + get("home.main") + ".get_layer ok = " + get("main.ok"));
    CHECK(session.error("get_layer(ok)") == "Object is not a layer instance");
    kc_fail("kl_application_find_object", 0);
    CHECK(session.error("get_layer(ok)") == no_such_object);
    CHECK(session.calls() == Lines{"find \"main.ok\"", "error: " + no_such_object});
}

TEST_CASE("with errors that return, get_layer gives no result after each error and does not go on") {
    Session session;
    session.results("h = " + get("home.main") + " get_layer = h.get_layer ok = " + get("main.ok"));
    ReturningErrors returning;
    CHECK(session.results("return get_layer(ok)") == Lines{});
    CHECK(session.calls() == Lines{"find \"main.ok\"", "error: Object is not a layer instance"});
    kc_fail("kl_application_find_object", 0);
    CHECK(session.results("return get_layer(h)") == Lines{});
    CHECK(session.calls() == Lines{"find \"home.main\"", "error: " + no_such_object});
    kc_hide_application(1);
    CHECK(session.results("return get_layer(h)") == Lines{});
    CHECK(session.calls() == Lines{"error: " + no_application});
    kc_hide_application(0);
}

TEST_CASE("get_layer gives nothing when the layer's name cannot be made") {
    Session session;
    session.results("h = " + get("home.main"));
    kc_fail("kelal_strdup", 0);
    CHECK(session.results("return h:get_layer()") == Lines{});
    CHECK(session.calls() == Lines{"find \"home.main\"", "warning: Object has no qualified name"});
}
