// test_values.cpp: keys, and the methods that read and write any variable of an object.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string no_application = "Invalid argument, no application pointer";
const std::string no_data_manager = "Invalid argument, cannot access data manager";
const std::string not_a_handle = "Argument must be a keldom_object";
const std::string at_least_two = "This function expects at least 2 arguments (self, key, ...)";
const std::string at_least_three = "This function expects at least 3 arguments (self, k, v, ...)";

struct Values : Session {
    Values() {
        results("ok = keldom.get_object('main.ok') list = keldom.get_object('main.list')"
                " main = keldom.get_object('main') app = keldom.get_application()");
    }
};

struct NoDataManager {
    NoDataManager() { kc_hide_data_manager(1); }
    ~NoDataManager() { kc_hide_data_manager(0); }
};

struct NoApplication {
    NoApplication() { kc_hide_application(1); }
    ~NoApplication() { kc_hide_application(0); }
};

} // namespace

TEST_CASE("a key is the object's name, a dot and the variable; the application's is bare") {
    Values session;
    CHECK(session.results("return ok:key('kld_x'), ok:key(5), app:key('mode'), main:key('title')")
          == Lines{"\"main.ok.kld_x\"", "\"main.ok.5\"", "\"mode\"", "\"main.title\""});
    CHECK(session.calls() == Lines{});
}

TEST_CASE("a key is made whether or not the variable exists, with extra arguments ignored, without a data manager") {
    Values session;
    NoDataManager none;
    CHECK(session.results("return ok:key('none', 1)") == Lines{"\"main.ok.none\""});
}

TEST_CASE("a key of what is no handle is silently nothing, also without an application") {
    Values session;
    CHECK(session.results("return ok.key('main.ok', 'x')") == Lines{});
    CHECK(session.results("return ok.key()") == Lines{});
    NoApplication none;
    CHECK(session.results("return ok.key({}, 'x')") == Lines{});
    CHECK(session.results("return ok:key('x')") == Lines{"\"main.ok.x\""});
    CHECK(session.calls() == Lines{});
}

TEST_CASE("a key warns when the variable is neither string nor number, with or without an application") {
    Values session;
    for (const char *argument : {"", "nil", "{}", "true"}) {
        CHECK(session.results("return ok:key(" + std::string(argument) + ")") == Lines{});
        CHECK(session.calls() == Lines{"warning: Argument 2 must be a string"});
    }
    NoApplication none;
    CHECK(session.results("return ok:key()") == Lines{});
    CHECK(session.calls() == Lines{"warning: Argument 2 must be a string"});
}

TEST_CASE("a cell key is table, variable, row and column as they were given") {
    Values session;
    CHECK(session.results("return list:cell_key(3, 2, 'text'), list:cell_key('3', 2, 7), list:cell_key(-1, 0, 'a')")
          == Lines{"\"main.list.text.3.2\"", "\"main.list.7.3.2\"", "\"main.list.a.-1.0\""});
    CHECK(session.calls() == Lines{});
}

TEST_CASE("a cell key cuts fractions and ignores further arguments") {
    Values session;
    CHECK(session.results("return list:cell_key(3.9, 2.1, 'text', 'more')") == Lines{"\"main.list.text.3.2\""});
}

TEST_CASE("a cell key does not ask whether the handle is a table") {
    Values session;
    CHECK(session.results("return list.cell_key(ok, 0, 1, 'text'), list.cell_key(app, 0, 1, 'text')")
          == Lines{"\"main.ok.text.0.1\"", "\".text.0.1\""});
}

TEST_CASE("a cell key checks its arguments in order, and the last check's text names argument 3") {
    Values session;
    const std::pair<const char *, const char *> cases[] = {
        {"list:cell_key()",             "Argument 2 must be a number"     },
        {"list:cell_key('x', 'y', {})", "Argument 2 must be a number"     },
        {"list:cell_key(1)",            "Argument 3 must be a number"     },
        {"list:cell_key(1, {}, {})",    "Argument 3 must be a number"     },
        {"list:cell_key(1, 2)",         "Argument 3 must be a string"     },
        {"list:cell_key(1, 2, true)",   "Argument 3 must be a string"     },
        {"list.cell_key(1, 2, 3, 'x')", "Argument must be a keldom_object"},
    };
    for (const auto &[call, text] : cases) {
        CHECK(session.results("return " + std::string(call)) == Lines{});
        CHECK(session.calls() == Lines{"warning: " + std::string(text)});
    }
    NoApplication none;
    CHECK(session.error("list.cell_key(1)") == no_application);
}

TEST_CASE("get_value gives a value a key, in order, nil for what cannot be read") {
    Values session;
    CHECK(session.results("return ok:get_value('label', {}, 'count', 'none', 'kld_x')")
          == Lines{"\"OK\"", "nil", "7", "nil", "10"});
    CHECK(session.calls()
          == Lines{"get \"main.ok.label\" -> \"OK\"", "get \"main.ok.count\" -> 7", "get \"main.ok.none\" -> none",
                   "get \"main.ok.kld_x\" -> 10"});
}

TEST_CASE("get_value reads the application's variables by their bare names") {
    Values session;
    CHECK(session.results("return app:get_value('mode', 'target')") == Lines{"\"heat\"", "21"});
    CHECK(session.calls() == Lines{"get \"mode\" -> \"heat\"", "get \"target\" -> 21"});
}

TEST_CASE("get_value takes a number for a name") {
    Values session;
    CHECK(session.results("return ok:get_value(5)") == Lines{"nil"});
    CHECK(session.calls() == Lines{"get \"main.ok.5\" -> none"});
}

TEST_CASE("get_value with 200 keys gives 200 values") {
    Values session;
    CHECK(session.results("local keys = {} for i = 1, 200 do keys[i] = i % 2 == 0 and 'count' or 'none' end"
                          " local values = {n = select('#', ok:get_value(unpack(keys))), ok:get_value(unpack(keys))}"
                          " local sum = 0 for i = 1, 200 do sum = sum + (values[i] or 1000) end return values.n, sum")
          == Lines{"200", "100700"});
}

TEST_CASE("get_value checks application, handle and count, in this order") {
    Values session;
    CHECK(session.results("return ok:get_value()") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + at_least_two});
    CHECK(session.results("return ok.get_value('main.ok')") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    NoApplication none;
    CHECK(session.error("ok.get_value('main.ok')") == no_application);
}

TEST_CASE("get_value without a data manager raises") {
    Values session;
    NoDataManager none;
    CHECK(session.error("ok:get_value('label')") == no_data_manager);
}

TEST_CASE("with errors that return, get_value without a data manager reports it for every key and gives nils") {
    Values session;
    NoDataManager none;
    ReturningErrors returning;
    CHECK(session.results("return ok:get_value('label', {}, 'count')") == Lines{"nil", "nil", "nil"});
    CHECK(session.calls() == Lines(3, "error: " + no_data_manager));
}

TEST_CASE("with errors that return, values without an application give no result") {
    Values session;
    NoApplication none;
    ReturningErrors returning;
    for (const char *call : {"ok:get_value('a')", "ok:set_value('a', 1)", "ok:get_data('a')", "ok:set_data({})",
                             "ok:get_variables()", "list:cell_key(1, 2, 'a')"}) {
        CHECK(session.results("return " + std::string(call)) == Lines{});
        CHECK(session.calls() == Lines{"error: " + no_application});
    }
}

TEST_CASE("get_data maps each key to its value, numbers staying numbers, missing ones absent") {
    Values session;
    session.results("ok:set_value(5, 'five')");
    CHECK(session.results("return ok:get_data('label', 5, 'none', 'count')")
          == Lines{"{[5]=\"five\", count=7, label=\"OK\"}"});
    CHECK(session.calls()
          == Lines{"get \"main.ok.label\" -> \"OK\"", "get \"main.ok.5\" -> \"five\"", "get \"main.ok.none\" -> none",
                   "get \"main.ok.count\" -> 7"});
}

TEST_CASE("get_data takes any key that a table takes, and reads only strings and numbers") {
    Values session;
    CHECK(session.results("return ok:get_data({}, true, 'count')") == Lines{"{count=7}"});
    CHECK(session.calls() == Lines{"get \"main.ok.count\" -> 7"});
}

TEST_CASE("get_data with nil for a key raises Lua's own error") {
    Values session;
    CHECK(session.error("ok:get_data('count', nil)").find("index is nil") != std::string::npos);
}

TEST_CASE("get_data with 200 keys gives them all") {
    Values session;
    CHECK(session.results("local keys = {} for i = 1, 200 do keys[i] = i end ok:set_value(200, 'last')"
                          " return ok:get_data(unpack(keys))[200]")
          == Lines{"\"last\""});
}

TEST_CASE("get_data checks application, handle and count, in this order") {
    Values session;
    CHECK(session.results("return ok:get_data()") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + at_least_two});
    CHECK(session.results("return ok.get_data({})") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    NoApplication none;
    CHECK(session.error("ok.get_data({})") == no_application);
}

TEST_CASE("get_data without a data manager raises; where errors return, once more than there are keys") {
    Values session;
    NoDataManager none;
    CHECK(session.error("ok:get_data('label')") == no_data_manager);
    ReturningErrors returning;
    CHECK(session.results("return ok:get_data('label', 'count')") == Lines{"{}"});
    CHECK(session.calls() == Lines(3, "error: " + no_data_manager));
}

TEST_CASE("set_value writes its pairs in order, as one batch") {
    Values session;
    CHECK(session.results("return ok:set_value('label', 'Yes', 'kld_x', 11, 'on', true)") == Lines{});
    CHECK(session.calls()
          == Lines{"hold", "set \"main.ok.label\" = \"Yes\"", "set \"main.ok.kld_x\" = 11", "set \"main.ok.on\" = true",
                   "release"});
    CHECK(session.results("return ok:get_value('label', 'kld_x')") == Lines{"\"Yes\"", "11"});
}

TEST_CASE("set_value writes the application's variables by their bare names") {
    Values session;
    session.results("app:set_value('mode', 'cool')");
    CHECK(session.calls() == Lines{"hold", "set \"mode\" = \"cool\"", "release"});
}

TEST_CASE("set_value ignores an odd key at the end, and skips a pair whose key is no name") {
    Values session;
    session.results("ok:set_value('a', 1, 'b')");
    CHECK(session.calls() == Lines{"hold", "set \"main.ok.a\" = 1", "release"});
    session.results("ok:set_value({}, 1, 'b', 2, nil, 3, 4, 5)");
    CHECK(session.calls() == Lines{"hold", "set \"main.ok.b\" = 2", "set \"main.ok.4\" = 5", "release"});
    session.results("ok:set_value({}, 1)");
    CHECK(session.calls() == Lines{"hold", "release"});
}

TEST_CASE("set_value hands every kind of value to the host") {
    Values session;
    session.results("ok:set_value('count', nil, 'count', {}, 'count', print)");
    CHECK(session.calls()
          == Lines{"hold", "set \"main.ok.count\" = nil", "set \"main.ok.count\" = table",
                   "set \"main.ok.count\" = function", "release"});
}

TEST_CASE("set_value checks application, handle, count and data manager, in this order, and writes nothing") {
    Values session;
    CHECK(session.results("return ok:set_value('a')") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + at_least_three});
    CHECK(session.results("return ok.set_value('main.ok')") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    {
        NoDataManager none;
        CHECK(session.results("return ok:set_value('a')") == Lines{});
        CHECK(session.calls() == Lines{"warning: " + at_least_three});
        CHECK(session.error("ok:set_value('a', 1)") == no_data_manager);
        ReturningErrors returning;
        CHECK(session.results("return ok:set_value('a', 1)") == Lines{});
        CHECK(session.calls() == Lines{"error: " + no_data_manager});
    }
    NoApplication none;
    CHECK(session.error("ok.set_value()") == no_application);
}

TEST_CASE("set_data writes a table's string keys, as one batch") {
    Values session;
    CHECK(session.results("return ok:set_data({label = 'Yes'})") == Lines{});
    CHECK(session.calls() == Lines{"hold", "set \"main.ok.label\" = \"Yes\"", "release"});
    session.results("ok:set_data({kld_x = 1, kld_y = 2, [true] = 3, [{}] = 4})");
    CHECK(session.calls().size() == 4);
    CHECK(session.results("return ok:get_value('kld_x', 'kld_y')") == Lines{"1", "2"});
    session.results("ok:set_data({})");
    CHECK(session.calls() == Lines{"hold", "release"});
}

TEST_CASE("set_data writes the application's variables by their bare names") {
    Values session;
    session.results("app:set_data({mode = 'off'})");
    CHECK(session.calls() == Lines{"hold", "set \"mode\" = \"off\"", "release"});
}

TEST_CASE("set_data takes the last argument") {
    Values session;
    session.results("ok:set_data({label = 'first'}, {label = 'last'})");
    CHECK(session.calls() == Lines{"hold", "set \"main.ok.label\" = \"last\"", "release"});
    CHECK(session.error("ok:set_data({label = 'first'}, 1)") == "Argument must be a table");
    CHECK(session.error("ok:set_data()") == "Argument must be a table");
    CHECK(session.calls() == Lines{"error: Argument must be a table"});
}

TEST_CASE("set_data asks for the data manager before it looks at the table") {
    Values session;
    {
        NoDataManager none;
        CHECK(session.error("ok:set_data()") == no_data_manager);
        ReturningErrors returning;
        CHECK(session.results("return ok:set_data({})") == Lines{"nil"});
        CHECK(session.calls() == Lines{"error: " + no_data_manager});
    }
    ReturningErrors returning;
    CHECK(session.results("return ok:set_data(1)") == Lines{});
    CHECK(session.calls() == Lines{"error: Argument must be a table"});
    CHECK(session.results("return ok.set_data({})") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
}

TEST_CASE("get_variables lists an object's own keys in full, and no descendant's") {
    Values session;
    const std::string sorted = "table.sort(keys) return keys";
    session.results("function own(keys) local own = {} for _, key in ipairs(keys) do"
                    " if not key:find('kld_') then own[#own + 1] = key end end return own end");
    CHECK(session.results("return own(main:get_variables())") == Lines{"{\"main.title\"}"});
    CHECK(session.calls() == Lines{"find \"main\"", "prefix \"main\""});
    CHECK(session.results("local keys = app:get_variables() " + sorted) == Lines{"{\"mode\", \"target\"}"});
    CHECK(session.calls() == Lines{"prefix \"\""});
    CHECK(session.results("local keys = ok:get_variables() " + sorted)
          == Lines{"{\"main.ok.count\", \"main.ok.kld_height\", \"main.ok.kld_hidden\", \"main.ok.kld_width\", "
                   "\"main.ok.kld_x\", \"main.ok.kld_y\", \"main.ok.label\"}"});
}

TEST_CASE("get_variables leaves cells' variables out") {
    Values session;
    session.results("app:set_value('main.list.text.0.1', 'cell')");
    CHECK(session.results("local keys = list:get_variables() for _, key in ipairs(keys) do"
                          " if key:find('text', 1, true) then return key end end return #keys")
          == Lines{"7"});
}

TEST_CASE("get_variables takes a name, and lists an application variable that begins with it") {
    Values session;
    session.results("app:set_value('statusx', 1)");
    CHECK(session.results("for _, key in ipairs(app.get_variables('status')) do"
                          " if key == 'statusx' then return key end end")
          == Lines{"\"statusx\""});
    CHECK(session.calls() == Lines{"find \"status\"", "prefix \"status\""});
}

TEST_CASE("get_variables raises for any number of arguments but one, before it asks for the application") {
    Values session;
    NoApplication none;
    CHECK(session.error("ok:get_variables(1)") == "This function should have exactly one argument");
    CHECK(session.error("ok.get_variables()") == "This function should have exactly one argument");
    CHECK(session.error("ok:get_variables()") == no_application);
}

TEST_CASE("get_variables of what is not there warns, after the look-up's own warning") {
    Values session;
    CHECK(session.results("return ok.get_variables('main.none')") == Lines{});
    CHECK(session.calls() == Lines{"find \"main.none\"", "warning: No such object in DOM"});
    CHECK(session.results("return ok.get_variables({})") == Lines{});
    CHECK(session.calls()
          == Lines{"warning: Argument must be a string or keldom_object", "warning: No such object in DOM"});
}

TEST_CASE("get_variables without a name warns in its own words") {
    Values session;
    kc_fail("kelal_strdup", 0);
    CHECK(session.results("return ok:get_variables()") == Lines{});
    CHECK(session.calls() == Lines{"find \"main.ok\"", "warning: DOM Object has no qualified name"});
}

TEST_CASE("get_variables with no array of keys gives an empty table") {
    Values session;
    kc_fail("find_for_prefix", 0);
    CHECK(session.results("return ok:get_variables()") == Lines{"{}"});
    CHECK(session.calls() == Lines{"find \"main.ok\"", "prefix \"main.ok\""});
}

TEST_CASE("get_variables without a data manager raises, and has freed the name") {
    Values session;
    NoDataManager none;
    int blocks = kc_live_blocks();
    CHECK(session.error("ok:get_variables()") == no_data_manager);
    CHECK(kc_live_blocks() == blocks);
    ReturningErrors returning;
    CHECK(session.results("return ok:get_variables()") == Lines{});
    CHECK(session.calls() == Lines{"find \"main.ok\"", "error: " + no_data_manager});
    CHECK(kc_live_blocks() == blocks);
}

TEST_CASE("variables of a handle that was collected by hand make no key that names anything") {
    Values session;
    session.results("debug.getmetatable(list).__gc(ok)");
    CHECK(session.results("return ok:get_value('label')") == Lines{"nil"});
    CHECK(session.results("ok:set_value('label', 'x') return #ok:key('label')") == Lines{"12"});
}
