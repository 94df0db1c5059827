// test_setters.cpp: the plain property setters.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string no_application = "Invalid argument, no application pointer";
const std::string no_data_manager = "Invalid argument, cannot access data manager";
const std::string not_a_handle = "Argument must be a keldom_object";

struct Setters : Session {
    Setters() {
        results("ok = keldom.get_object('main.ok') list = keldom.get_object('main.list')"
                " bar = keldom.get_object('main.bar') home = keldom.get_object('home.main')");
    }

    // The writes of one call that gives no result.
    Lines written(const std::string &code) {
        CHECK(results("return " + code) == Lines{});
        return calls();
    }
};

Lines batch(Lines writes) {
    writes.insert(writes.begin(), "hold");
    writes.push_back("release");
    return writes;
}

struct Setter {
    const char *call;    // with one argument too few
    const char *expects; // behind "This function expects "
};

const Setter too_few[] = {
    {"ok:set_hidden()",        "2 arguments (self, hidden)"                },
    {"home:set_alpha()",       "2 arguments (self, alpha)"                 },
    {"list:set_rows()",        "2 arguments (self, rows)"                  },
    {"list:set_cols()",        "2 arguments (self, cols)"                  },
    {"ok:set_position(1)",     "3 arguments (self, x, y)"                  },
    {"ok:set_bounds(1, 2, 3)", "5 arguments (self, x, y, width, height)"   },
    {"ok:set_x()",             "2 arguments (self, x)"                     },
    {"ok:set_y()",             "2 arguments (self, y)"                     },
    {"ok:set_width()",         "2 arguments (self, width)"                 },
    {"ok:set_height()",        "2 arguments (self, height)"                },
    {"ok:set_size(1)",         "at least 3 arguments (self, width, height)"},
};

} // namespace

TEST_CASE("each setter writes its own variables in order, as one batch") {
    Setters session;
    CHECK(session.written("ok:set_hidden(true)") == batch({"set \"main.ok.kld_hidden\" = true"}));
    CHECK(session.written("ok:set_hidden(1)") == batch({"set \"main.ok.kld_hidden\" = 1"}));
    CHECK(session.written("home:set_alpha(17)") == batch({"set \"home.main.kld_alpha\" = 17"}));
    CHECK(session.written("list:set_rows(4)") == batch({"set \"main.list.kld_rows\" = 4"}));
    CHECK(session.written("list:set_cols(5)") == batch({"set \"main.list.kld_cols\" = 5"}));
    CHECK(session.written("ok:set_position(1, 2)")
          == batch({"set \"main.ok.kld_x\" = 1", "set \"main.ok.kld_y\" = 2"}));
    CHECK(session.written("ok:set_bounds(1, 2, 3, 4)")
          == batch({"set \"main.ok.kld_x\" = 1", "set \"main.ok.kld_y\" = 2", "set \"main.ok.kld_width\" = 3",
                    "set \"main.ok.kld_height\" = 4"}));
}

TEST_CASE("a table has a control's setters, a group and a layer instance those of their kind") {
    Setters session;
    CHECK(session.written("list:set_hidden(false)") == batch({"set \"main.list.kld_hidden\" = false"}));
    CHECK(session.written("bar:set_hidden(true)") == batch({"set \"main.bar.kld_hidden\" = true"}));
    CHECK(session.written("home:set_hidden(true)") == batch({"set \"home.main.kld_hidden\" = true"}));
    CHECK(session.written("home:set_bounds(1, 2, 3, 4)")
          == batch({"set \"home.main.kld_x\" = 1", "set \"home.main.kld_y\" = 2", "set \"home.main.kld_width\" = 3",
                    "set \"home.main.kld_height\" = 4"}));
    const std::string setters =
        "{'set_hidden', 'show', 'hide', 'set_alpha', 'set_rows', 'set_cols', 'set_position', 'set_bounds', 'set_x', "
        "'set_y', 'set_width', 'set_height', 'set_size'}";
    const std::pair<const char *, const char *> cases[] = {
        {"main.ok",   "set_hidden show hide set_position set_bounds set_x set_y set_width set_height set_size"},
        {"main.list", "set_hidden show hide set_rows set_cols set_position set_bounds set_x set_y set_width set_height "
                      "set_size"                                                         },
        {"main.bar",  "set_hidden show hide set_x set_y"                                                      },
        {"home.main",
         "set_hidden show hide set_alpha set_position set_bounds set_x set_y set_width set_height set_size"   },
        {"main",      ""                                                                                      },
        {"home",      ""                                                                                      },
    };
    for (const auto &[object, methods] : cases) {
        CAPTURE(object);
        CHECK(session.results("local h, has = keldom.get_object('" + std::string(object)
                              + "'), {} for _, name in ipairs(" + setters
                              + ") do if h[name] then has[#has + 1] = name end end return table.concat(has, ' ')")
              == Lines{"\"" + std::string(methods) + "\""});
    }
}

TEST_CASE("further arguments pass and are ignored") {
    Setters session;
    CHECK(session.written("ok:set_bounds(1, 2, 3, 4, 5)")
          == batch({"set \"main.ok.kld_x\" = 1", "set \"main.ok.kld_y\" = 2", "set \"main.ok.kld_width\" = 3",
                    "set \"main.ok.kld_height\" = 4"}));
    CHECK(session.written("list:set_rows(3, 'x')") == batch({"set \"main.list.kld_rows\" = 3"}));
}

TEST_CASE("too few arguments warn and write nothing") {
    Setters session;
    for (const Setter &setter : too_few) {
        CAPTURE(setter.call);
        CHECK(session.written(setter.call) == Lines{"warning: This function expects " + std::string(setter.expects)});
    }
}

TEST_CASE("setters hand any value to the host as it is") {
    Setters session;
    CHECK(session.written("ok:set_bounds('a', nil, {}, 1.5)")
          == batch({"set \"main.ok.kld_x\" = \"a\"", "set \"main.ok.kld_y\" = nil", "set \"main.ok.kld_width\" = table",
                    "set \"main.ok.kld_height\" = 1.5"}));
}

TEST_CASE("show and hide write false and true to the hidden variable") {
    Setters session;
    CHECK(session.written("ok:show()") == batch({"set \"main.ok.kld_hidden\" = false"}));
    CHECK(session.written("ok:hide()") == batch({"set \"main.ok.kld_hidden\" = true"}));
    CHECK(session.results("ok:hide() local hidden = ok:get_hidden() ok:show() return hidden, ok:get_hidden()")
          == Lines{"true", "false"});
}

TEST_CASE("show and hide write their extra argument instead when there is one") {
    Setters session;
    CHECK(session.written("ok:hide(false)") == batch({"set \"main.ok.kld_hidden\" = false"}));
    CHECK(session.written("ok:show(true)") == batch({"set \"main.ok.kld_hidden\" = true"}));
    CHECK(session.written("ok:show('x', 2)") == batch({"set \"main.ok.kld_hidden\" = \"x\""}));
}

TEST_CASE("setters ask for the application first, then for a handle, then count") {
    Setters session;
    const std::string each = "for _, method in ipairs{ok.set_hidden, home.set_alpha, list.set_rows, list.set_cols,"
                             " ok.set_position, ok.set_bounds, ok.set_x, ok.set_y, ok.set_width, ok.set_height,"
                             " ok.set_size, ok.show, ok.hide} do ";
    CHECK(session.results(each + "assert(select('#', method('main.ok')) == 0) end") == Lines{});
    CHECK(session.calls() == Lines(13, "warning: " + not_a_handle));
    kc_hide_application(1);
    CHECK(session.results(each + "assert(not pcall(method)) end") == Lines{});
    CHECK(session.calls() == Lines(13, "error: " + no_application));
    ReturningErrors returning;
    CHECK(session.results(each + "assert(select('#', method(ok, 1, 2, 3, 4)) == 0) end") == Lines{});
    CHECK(session.calls() == Lines(13, "error: " + no_application));
    kc_hide_application(0);
}

TEST_CASE("without a data manager setters raise before anything is held") {
    Setters session;
    kc_hide_data_manager(1);
    const std::string each =
        "for _, call in ipairs{'ok:set_hidden(1)', 'home:set_alpha(1)', 'list:set_rows(1)', 'list:set_cols(1)', "
        "'ok:set_position(1, 2)', 'ok:set_bounds(1, 2, 3, 4)', 'ok:set_x(1)', 'ok:set_size(1, 2)', 'ok:show()', "
        "'ok:hide()'} do ";
    CHECK(session.results(each + "assert(not pcall(loadstring(call))) end") == Lines{});
    CHECK(session.calls() == Lines(10, "error: " + no_data_manager));
    {
        ReturningErrors returning;
        CHECK(session.results(each + "assert(select('#', loadstring('return ' .. call)()) == 0) end") == Lines{});
        CHECK(session.calls() == Lines(10, "error: " + no_data_manager));
    }
    kc_hide_data_manager(0);
}

TEST_CASE("what was set is read back") {
    Setters session;
    CHECK(session.results("ok:set_bounds(1, 2, 3, 4) ok:set_position(5, 6) return ok:get_bounds()")
          == Lines{"5", "6", "3", "4"});
    CHECK(session.results("list:set_rows(3) list:set_cols(1) return list:get_rows(), list:get_cols(),"
                          " #list:get_children()")
          == Lines{"3", "1", "3"});
    CHECK(session.results("home:set_alpha(3) return home:get_alpha()") == Lines{"3"});
}
