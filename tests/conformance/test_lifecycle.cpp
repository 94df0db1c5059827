// test_lifecycle.cpp: clone and delete.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string no_application = "Invalid argument, no application pointer";
const std::string not_a_handle = "Argument must be a keldom_object";
const std::string expects = "This function expects 3 or 4 arguments (self, name, parent_name, data(optional))";

struct Lifecycle : Session {
    Lifecycle() { results("ok = keldom.get_object('main.ok') bar = keldom.get_object('main.bar')"); }
};

} // namespace

TEST_CASE("a clone is a new object with the source's variables, and both handles are good") {
    Lifecycle session;
    CHECK(session.results("copy = ok:clone('ok2', 'main') return copy") == Lines{"<control_object main.ok2>"});
    CHECK(session.calls() == Lines{"clone \"main.ok\" \"ok2\" \"main\"", "find \"main.ok2\""});
    CHECK(session.results("return copy:get_value('label'), copy:get_width(), ok:get_name(), copy == ok")
          == Lines{"\"OK\"", "100", "\"main.ok\"", "false"});
    CHECK(session.results("copy:set_x(99) return ok:get_x(), copy:get_x()") == Lines{"10", "99"});
}

TEST_CASE("a clone of a group has all that the group contains") {
    Lifecycle session;
    CHECK(session.results("return bar:clone('bar2', 'main')") == Lines{"<group_object main.bar2>"});
    CHECK(session.results("return keldom.get_object('main.bar2'):get_children()")
          == Lines{"{<control_object main.bar2.ok>, <group_object main.bar2.inner>}"});
    CHECK(session.results("return keldom.get_object('main.bar2.inner.deep'):get_bounds()")
          == Lines{"1", "2", "3", "4"});
}

TEST_CASE("a clone of a table goes into a group with its cells") {
    Lifecycle session;
    CHECK(session.results("return keldom.get_object('main.list'):clone('rows', 'main.bar')")
          == Lines{"<table_object main.bar.rows>"});
    CHECK(session.results("local copy = keldom.get_object('main.bar.rows') return copy:get_rows(), copy:get_cols(),"
                          " copy:get_children()[1]")
          == Lines{"2", "3", "<control_object main.bar.row>"});
}

TEST_CASE("a clone's data is passed on and applied") {
    Lifecycle session;
    CHECK(session.results("return ok:clone('ok2', 'main', {label = 'Copy', kld_x = 5}):get_value('label', 'kld_x')")
          == Lines{"\"Copy\"", "5"});
    CHECK(first(session.calls()) == "clone \"main.ok\" \"ok2\" \"main\" data");
}

TEST_CASE("clone takes two or three arguments behind self") {
    Lifecycle session;
    for (const char *arguments : {"", "'a'", "'a', 'main', {}, 1"}) {
        CHECK(session.results("return ok:clone(" + std::string(arguments) + ")") == Lines{});
        CHECK(session.calls() == Lines{"warning: " + expects});
    }
}

TEST_CASE("clone hands the host whatever it was given") {
    Lifecycle session;
    kc_fail("kl_lua_clone_object", -1);
    CHECK(session.results("return ok:clone(1, true)") == Lines{});
    CHECK(session.calls() == Lines{"clone \"main.ok\" 1 true"});
    CHECK(session.results("return ok:clone('a', nil, nil)") == Lines{});
    CHECK(session.calls() == Lines{"clone \"main.ok\" \"a\" nil"});
}

// The recorder collects garbage in the midst of a clone, and the name has taken the handle's place on the stack by
// then.
TEST_CASE("a handle that is collected while it is cloned does no harm") {
    Lifecycle session;
    CHECK(session.results("return keldom.get_object('main.ok'):clone('ok2', 'main')")
          == Lines{"<control_object main.ok2>"});
}

TEST_CASE("a clone that the host refuses is nothing, with no word from the plug-in") {
    Lifecycle session;
    kc_fail("kl_lua_clone_object", 0);
    CHECK(session.results("return ok:clone('ok2', 'main')") == Lines{});
    CHECK(session.calls() == Lines{"clone \"main.ok\" \"ok2\" \"main\""});
    CHECK(session.results("return ok:clone('bar', 'main')") == Lines{});
    CHECK(session.calls() == Lines{"clone \"main.ok\" \"bar\" \"main\""});
}

TEST_CASE("a clone that is not found under its name warns") {
    Lifecycle session;
    kc_fail("kl_application_find_object", 0);
    CHECK(session.results("return ok:clone('ok2', 'main')") == Lines{});
    CHECK(session.calls()
          == Lines{"clone \"main.ok\" \"ok2\" \"main\"", "find \"main.ok2\"", "warning: No such object in DOM"});
}

TEST_CASE("a clone whose name cannot be made warns") {
    Lifecycle session;
    kc_fail("kelal_strdup", 0);
    CHECK(session.results("return ok:clone('ok2', 'main')") == Lines{});
    CHECK(session.warnings() == Lines{"Object has no qualified name"});
}

TEST_CASE("clone and delete ask for the application first, then for a handle") {
    Lifecycle session;
    CHECK(session.results("return ok.clone('main.ok')") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    CHECK(session.results("return ok.delete('main.ok')") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    kc_hide_application(1);
    CHECK(session.error("ok.clone()") == no_application);
    CHECK(session.error("ok.delete()") == no_application);
    ReturningErrors returning;
    CHECK(session.results("return ok:clone('ok2', 'main')") == Lines{});
    CHECK(session.calls() == Lines{"error: " + no_application});
    CHECK(session.results("return ok:delete()") == Lines{});
    CHECK(session.calls() == Lines{"error: " + no_application});
    kc_hide_application(0);
}

TEST_CASE("delete removes the object with its variables; the handle keeps its name and finds nothing") {
    Lifecycle session;
    CHECK(session.results("return ok:delete()") == Lines{});
    CHECK(session.calls() == Lines{"delete \"main.ok\""});
    CHECK(session.results("return ok:get_name(), ok:get_type(), tostring(ok), ok == ok, ok:get_x()")
          == Lines{"\"main.ok\"", "0", "\"main.ok\"", "true", "nil"});
    CHECK(session.results("return keldom.get_object('main.ok')") == Lines{});
    CHECK(session.warnings() == Lines{"No such object in DOM"});
}

TEST_CASE("delete of a group removes all that it contains") {
    Lifecycle session;
    session.results("bar:delete()");
    CHECK(session.results("return keldom.get_object('main.bar.inner.deep')") == Lines{});
    CHECK(session.warnings() == Lines{"No such object in DOM"});
    CHECK(session.results("return keldom.get_object('main'):get_children()")
          == Lines{"{<control_object main.ok>, <table_object main.list>, <table_object main.bare>}"});
}

TEST_CASE("delete with an extra argument deletes what that names") {
    Lifecycle session;
    CHECK(session.results("return ok:delete('main.bar')") == Lines{});
    CHECK(session.calls() == Lines{"delete \"main.bar\""});
    CHECK(session.results("return keldom.get_object('main.ok')") == Lines{"<control_object main.ok>"});
}

TEST_CASE("a deletion that the host refuses is silent") {
    Lifecycle session;
    kc_fail("kl_lua_delete_object", 0);
    CHECK(session.results("return ok:delete()") == Lines{});
    CHECK(session.calls() == Lines{"delete \"main.ok\""});
    CHECK(session.results("return ok:get_x()") == Lines{"10"});
}

TEST_CASE("a name can be used again for another kind, and an old handle then finds the new object") {
    Lifecycle session;
    CHECK(session.results("ok:delete() bar:clone('ok', 'main') return ok:get_type(), #ok:get_children()")
          == Lines{"0", "2"});
    CHECK(session.results("return keldom.get_object('main.ok'), keldom.get_object('main.ok') == ok")
          == Lines{"<group_object main.ok>", "false"});
}
