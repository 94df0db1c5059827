// test_registration.cpp: which Lua names there are, on which handles, and that each calls the function of its name.
#include "harness.h"

#include <iterator>

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string common = "get_children get_data get_name get_parents get_type get_value get_variables key set_data "
                           "set_value";
const std::string of_control =
    "clone delete get_bounds get_height get_hidden get_position get_size get_width get_x "
    "get_y hide set_bounds set_height set_hidden set_position set_size set_width set_x set_y "
    "show";
const std::string of_table = "cell_key get_cols get_rows set_cols set_rows";
const std::string of_group = "clone delete get_hidden get_x get_y hide set_hidden set_x set_y show";
const std::string of_layer_instance =
    "get_alpha get_bounds get_height get_hidden get_layer get_position get_size get_width get_x get_y hide set_alpha "
    "set_bounds set_height set_hidden set_position set_size set_width set_x set_y show";

struct Metatable {
    const char *name;
    const char *parent; // "nil" for none
    std::string methods;
};

const Metatable metatables[] = {
    {"keldom_object",         "nil",            common           },
    {"control_object",        "keldom_object",  of_control       },
    {"table_object",          "control_object", of_table         },
    {"group_object",          "keldom_object",  of_group         },
    {"layer_instance_object", "keldom_object",  of_layer_instance},
    {"layer_object",          "keldom_object",  ""               },
    {"screen_object",         "keldom_object",  ""               },
};

struct Registration : Session {
    Registration() {
        results("registry = debug.getregistry()"
                // The names in a table, in order; those that are no functions with their type.
                " function names(t) local list = {} for name, value in pairs(t) do local kind = type(value)"
                " list[#list + 1] = kind == 'function' and name or name .. ':' .. kind end"
                " table.sort(list) return table.concat(list, ' ') end"
                " app, home = keldom.get_application(), keldom.get_object('home')"
                " main, place = keldom.get_object('main'), keldom.get_object('home.main')"
                " ok, list, bar = keldom.get_object('main.ok'), keldom.get_object('main.list'),"
                " keldom.get_object('main.bar')");
    }
};

Lines quoted(const std::string &text) { return {'"' + text + '"'}; }

// One row of a registration table: a call of it, and what only the function of its name does.
struct Row {
    const char *call;
    Lines results;
    Lines calls;
};

Lines written(const std::string &object, const Lines &assignments) {
    Lines calls{"hold"};
    for (const std::string &assignment : assignments) {
        size_t equals = assignment.find(" = ");
        calls.push_back("set \"" + object + ".kld_" + assignment.substr(0, equals) + "\"" + assignment.substr(equals));
    }
    calls.push_back("release");
    return calls;
}

const Row module_rows[] = {
    {"keldom.get_application()",               {"<keldom_object >"},                                                     {}                    },
    {"keldom.get_object('main.ok')",           {"<control_object main.ok>"},                                             {"find \"main.ok\""}  },
    {"keldom.get_layers()",                    {"{<layer_object main>, <layer_object status>, <layer_object spare>}"},   {}                    },
    {"keldom.get_screens()",                   {"{<screen_object home>, <screen_object setup>, <screen_object empty>}"}, {}                    },
    {"keldom.get_control('main.ok')",          {"<control_object main.ok>"},                                             {"find \"main.ok\""}  },
    {"keldom.get_table('main.list')",          {"<table_object main.list>"},                                             {"find \"main.list\""}},
    {"keldom.get_group('main.bar')",           {"<group_object main.bar>"},                                              {"find \"main.bar\""} },
    {"keldom.get_layer_instance('home.main')", {"<layer_instance_object home.main>"},                                    {"find \"home.main\""}},
    {"keldom.get_layer('main')",               {"<layer_object main>"},                                                  {"find \"main\""}     },
    {"keldom.get_screen('home')",              {"<screen_object home>"},                                                 {"find \"home\""}     },
};

const Row common_rows[] = {
    {"ok:get_name()",            {"\"main.ok\""},           {}                                              },
    {"list:get_type()",          {"1"},                     {}                                              },
    {"ok:get_parents()",         {"{<layer_object main>}"}, {"find \"main.ok\""}                            },
    {"ok:get_children()",        {"{}"},                    {"find \"main.ok\""}                            },
    {"home:get_variables()",     {"{}"},                    {"find \"home\"", "prefix \"home\""}            },
    {"ok:get_value('count')",    {"7"},                     {"get \"main.ok.count\" -> 7"}                  },
    {"ok:set_value('count', 8)", {},                        {"hold", "set \"main.ok.count\" = 8", "release"}},
    {"ok:get_data('count')",     {"{count=7}"},             {"get \"main.ok.count\" -> 7"}                  },
    {"ok:set_data({count = 9})", {},                        {"hold", "set \"main.ok.count\" = 9", "release"}},
    {"ok:key('count')",          {"\"main.ok.count\""},     {}                                              },
};

const Row table_rows[] = {
    {"list:get_rows()",  {"2"}, {"get \"main.list.kld_rows\" -> 2"}},
    {"list:get_cols()",  {"3"}, {"get \"main.list.kld_cols\" -> 3"}},
    {"list:set_rows(4)", {},    written("main.list",                 {"rows = 4"})},
    {"list:set_cols(5)",                  {},      written("main.list",                      {"cols = 5"})},
    {"list:cell_key(0, 1, 'text')",     {"\"main.list.text.0.1\""},          {}},
};

void check_rows(const Row *rows, size_t count) {
    for (const Row *row = rows; row != rows + count; ++row) {
        CAPTURE(row->call);
        Registration session;
        CHECK(session.results("return " + std::string(row->call)) == row->results);
        CHECK(session.calls() == row->calls);
    }
}

struct Placed {
    const char *handle;
    std::string object;
    int x, y, width, height; // width 0: none
};

const Placed placed[] = {
    {"ok",    "main.ok",   10, 20, 100, 80 },
    {"bar",   "main.bar",  30, 40, 0,   0  },
    {"place", "home.main", 1,  2,  480, 272},
};

// The rows that place and hide an object: those of controls, groups and layer instances alike.
void check_placement(Registration &session, const Placed &of) {
    auto check = [&](const std::string &call, const Lines &results, const Lines &calls) {
        CAPTURE(of.handle);
        CAPTURE(call);
        CHECK(session.results("return " + std::string(of.handle) + ":" + call) == results);
        CHECK(session.calls() == calls);
    };
    auto read = [&](const std::string &variable, const std::string &value) {
        return "get \"" + of.object + ".kld_" + variable + "\" -> " + value;
    };
    const std::string x = std::to_string(of.x), y = std::to_string(of.y), width = std::to_string(of.width),
                      height = std::to_string(of.height);
    check("get_hidden()", {"false"}, {read("hidden", "0")});
    check("get_x()", {x}, {read("x", x)});
    check("get_y()", {y}, {read("y", y)});
    if (of.width) {
        check("get_width()", {width}, {read("width", width)});
        check("get_height()", {height}, {read("height", height)});
        check("get_position()", {x, y}, {read("x", x), read("y", y)});
        check("get_size()", {width, height}, {read("width", width), read("height", height)});
        check("get_bounds()", {x, y, width, height},
              {read("x", x), read("y", y), read("width", width), read("height", height)});
        check("set_width(103)", {}, written(of.object, {"width = 103"}));
        check("set_height(104)", {}, written(of.object, {"height = 104"}));
        check("set_position(105, 106)", {}, written(of.object, {"x = 105", "y = 106"}));
        check("set_size(107, 108)", {}, written(of.object, {"width = 107", "height = 108"}));
        check("set_bounds(109, 110, 111, 112)", {},
              written(of.object, {"x = 109", "y = 110", "width = 111", "height = 112"}));
    }
    check("set_hidden(1)", {}, written(of.object, {"hidden = 1"}));
    check("set_x(101)", {}, written(of.object, {"x = 101"}));
    check("set_y(102)", {}, written(of.object, {"y = 102"}));
    check("hide()", {}, written(of.object, {"hidden = true"}));
    check("show()", {}, written(of.object, {"hidden = false"}));
}

} // namespace

TEST_CASE("the module has its ten functions and eight constants, and nothing else") {
    Registration session;
    CHECK(session.results("return names(keldom)")
          == quoted("APP:number CONTROL:number GROUP:number LAYER:number LAYER_INSTANCE:number SCREEN:number "
                    "TABLE:number TEMPLATE:number get_application get_control get_group get_layer get_layer_instance "
                    "get_layers get_object get_screen get_screens get_table"));
    CHECK(session.results("return getmetatable(keldom)") == Lines{"nil"});
}

TEST_CASE("the constants are the types that handles give") {
    Registration session;
    CHECK(session.results("return keldom.CONTROL, keldom.TABLE, keldom.TEMPLATE, keldom.GROUP, keldom.LAYER,"
                          " keldom.LAYER_INSTANCE, keldom.SCREEN, keldom.APP")
          == Lines{"0", "1", "2", "3", "4", "5", "6", "7"});
    CHECK(session.results("return ok:get_type() == keldom.CONTROL, list:get_type() == keldom.TABLE,"
                          " bar:get_type() == keldom.GROUP, main:get_type() == keldom.LAYER,"
                          " place:get_type() == keldom.LAYER_INSTANCE, home:get_type() == keldom.SCREEN,"
                          " app:get_type() == keldom.APP")
          == Lines(7, "true"));
}

TEST_CASE("each of the seven metatables has its own methods, three metamethods, and its parent behind the methods") {
    Registration session;
    for (const Metatable &one : metatables) {
        CAPTURE(one.name);
        session.results("m = registry." + std::string(one.name));
        CHECK(session.results("return names(m)") == quoted("__eq __gc __index:table __tostring"));
        CHECK(session.results("return names(m.__index)") == quoted(one.methods));
        CHECK(session.results("return rawequal(debug.getmetatable(m.__index), registry[" + std::string("'") + one.parent
                              + "'])")
              == Lines{"true"});
    }
}

TEST_CASE("the metatables' methods and metamethods are functions of their own, each once") {
    Registration session;
    CHECK(session.results("local seen, count = {}, 0"
                          " for _, name in ipairs{'keldom_object', 'control_object', 'table_object', 'group_object',"
                          " 'layer_instance_object', 'layer_object', 'screen_object'} do"
                          " for _, part in ipairs{registry[name], registry[name].__index} do"
                          " for _, value in pairs(part) do"
                          " if type(value) == 'function' and not seen[value] then seen[value], count = true, count + 1"
                          " end end end end return count")
          == Lines{"87"}); // 66 methods and 7 times 3
}

TEST_CASE("a handle has the methods of its kind and those that it inherits") {
    Registration session;
    const std::pair<const char *, std::string> kinds[] = {
        {"app",   common                                    },
        {"home",  common                                    },
        {"main",  common                                    },
        {"place", common + " " + of_layer_instance          },
        {"ok",    common + " " + of_control                 },
        {"list",  common + " " + of_control + " " + of_table},
        {"bar",   common + " " + of_group                   },
    };
    const std::string all = common + " " + of_control + " " + of_table + " " + of_layer_instance;
    for (const auto &[handle, names] : kinds) {
        CAPTURE(handle);
        CHECK(session.results(
                  "local has, expected = {}, {}"
                  " for name in ('"
                  + all
                  + "'):gmatch('%S+') do"
                    " if type("
                  + handle
                  + "[name]) == 'function' then has[name] = 1 end end"
                    " for name in ('"
                  + names
                  + "'):gmatch('%S+') do expected[name] = 1 end"
                    " for name in pairs(has) do if not expected[name] then return 'too many: ' .. name end end"
                    " for name in pairs(expected) do if not has[name] then return 'missing: ' .. name end end")
              == Lines{});
        CHECK(session.results("return " + std::string(handle) + ".none, " + handle + "[1], " + handle + ".__gc")
              == Lines(3, "nil"));
    }
}

TEST_CASE("the module's names call the functions of their names") { check_rows(module_rows, std::size(module_rows)); }

TEST_CASE("the common methods' names call the functions of their names") {
    check_rows(common_rows, std::size(common_rows));
}

TEST_CASE("the table methods' names call the functions of their names") {
    check_rows(table_rows, std::size(table_rows));
}

TEST_CASE("the names that place and hide call the functions of their names, in each kind's table") {
    for (const Placed &one : placed) {
        Registration session;
        check_placement(session, one);
    }
}

TEST_CASE("the other names of controls, groups and layer instances call the functions of their names") {
    Registration session;
    CHECK(session.results("return place:get_layer()") == Lines{"<layer_object main>"});
    CHECK(session.results("return place:get_alpha()") == Lines{"200"});
    CHECK(session.calls() == Lines{"get \"home.main.kld_alpha\" -> 200"});
    CHECK(session.results("return place:set_alpha(9)") == Lines{});
    CHECK(session.calls() == written("home.main", {"alpha = 9"}));
    CHECK(session.results("return ok:clone('a', 'main'), bar:clone('b', 'main')")
          == Lines{"<control_object main.a>", "<group_object main.b>"});
    CHECK(session.results("return ok:delete()") == Lines{});
    CHECK(session.calls() == Lines{"delete \"main.ok\""});
    CHECK(session.results("return bar:delete()") == Lines{});
    CHECK(session.calls() == Lines{"delete \"main.bar\""});
}
