// test_getters.cpp: the property getters.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

struct Getter {
    const char *object;
    const char *method;
    Lines variables;
    Lines values;
};

// Each variable has a value of its own, so that a getter which reads its neighbour's is found out.
const Getter getters[] = {
    {"main.ok",   "get_x",        {"kld_x"},                                     {"10"}                   },
    {"main.ok",   "get_y",        {"kld_y"},                                     {"20"}                   },
    {"main.ok",   "get_width",    {"kld_width"},                                 {"100"}                  },
    {"main.ok",   "get_height",   {"kld_height"},                                {"80"}                   },
    {"main.ok",   "get_position", {"kld_x", "kld_y"},                            {"10", "20"}             },
    {"main.ok",   "get_size",     {"kld_width", "kld_height"},                   {"100", "80"}            },
    {"main.ok",   "get_bounds",   {"kld_x", "kld_y", "kld_width", "kld_height"}, {"10", "20", "100", "80"}},
    {"main.list", "get_rows",     {"kld_rows"},                                  {"2"}                    },
    {"main.list", "get_cols",     {"kld_cols"},                                  {"3"}                    },
    {"main.list", "get_x",        {"kld_x"},                                     {"11"}                   },
    {"main.list", "get_y",        {"kld_y"},                                     {"12"}                   },
    {"main.list", "get_width",    {"kld_width"},                                 {"200"}                  },
    {"main.list", "get_height",   {"kld_height"},                                {"90"}                   },
    {"main.list", "get_position", {"kld_x", "kld_y"},                            {"11", "12"}             },
    {"main.list", "get_size",     {"kld_width", "kld_height"},                   {"200", "90"}            },
    {"main.list", "get_bounds",   {"kld_x", "kld_y", "kld_width", "kld_height"}, {"11", "12", "200", "90"}},
    {"main.bar",  "get_x",        {"kld_x"},                                     {"30"}                   },
    {"main.bar",  "get_y",        {"kld_y"},                                     {"40"}                   },
    {"home.main", "get_x",        {"kld_x"},                                     {"1"}                    },
    {"home.main", "get_y",        {"kld_y"},                                     {"2"}                    },
    {"home.main", "get_width",    {"kld_width"},                                 {"480"}                  },
    {"home.main", "get_height",   {"kld_height"},                                {"272"}                  },
    {"home.main", "get_alpha",    {"kld_alpha"},                                 {"200"}                  },
    {"home.main", "get_position", {"kld_x", "kld_y"},                            {"1", "2"}               },
    {"home.main", "get_size",     {"kld_width", "kld_height"},                   {"480", "272"}           },
    {"home.main", "get_bounds",   {"kld_x", "kld_y", "kld_width", "kld_height"}, {"1", "2", "480", "272"} },
};

std::string call(const Getter &getter, const char *arguments = "") {
    return "local h = keldom.get_object('" + std::string(getter.object) + "') return h:" + getter.method + "("
           + arguments + ")";
}

Lines reads(const Getter &getter, const Lines &values) {
    Lines lines;
    for (size_t i = 0; i < getter.variables.size(); ++i)
        lines.push_back("get \"" + std::string(getter.object) + "." + getter.variables[i] + "\" -> " + values[i]);
    return lines;
}

const std::string no_application = "Invalid argument, no application pointer";
const std::string no_data_manager = "Invalid argument, cannot access data manager";
const std::string all_getters = "{'get_hidden', 'get_x', 'get_y', 'get_width', 'get_height', 'get_alpha', "
                                "'get_position', 'get_size', 'get_bounds', 'get_rows', 'get_cols'}";

} // namespace

TEST_CASE("each getter reads its variables in order and gives their values, whatever arguments follow") {
    Session session;
    for (const Getter &getter : getters) {
        CAPTURE(getter.object);
        CAPTURE(getter.method);
        CHECK(session.results(call(getter)) == getter.values);
        Lines calls = session.calls();
        calls.erase(calls.begin()); // the look-up of the handle
        CHECK(calls == reads(getter, getter.values));
        CHECK(session.results(call(getter, "1, 'x', {}")) == getter.values);
    }
}

TEST_CASE("a missing variable is nil in its place, and the following ones are read") {
    Session session;
    for (const Getter &getter : getters) {
        CAPTURE(getter.method);
        for (size_t missing = 0; missing < getter.variables.size(); ++missing) {
            kc_fail("kl_lua_get_data_value", static_cast<int>(missing));
            Lines values = getter.values;
            values[missing] = "nil";
            CHECK(session.results(call(getter)) == values);
        }
    }
}

TEST_CASE("which kind of handle has which getters") {
    Session session;
    const std::pair<const char *, const char *> cases[] = {
        {"main.ok",   "get_hidden get_x get_y get_width get_height get_position get_size get_bounds"                  },
        {"main.list", "get_hidden get_x get_y get_width get_height get_position get_size get_bounds get_rows get_cols"},
        {"main.bar",  "get_hidden get_x get_y"                                                                        },
        {"home.main", "get_hidden get_x get_y get_width get_height get_alpha get_position get_size get_bounds"        },
        {"main",      ""                                                                                              },
        {"home",      ""                                                                                              },
    };
    for (const auto &[object, methods] : cases) {
        CAPTURE(object);
        CHECK(session.results("local h, has = keldom.get_object('" + std::string(object)
                              + "'), {} for _, name in ipairs(" + all_getters
                              + ") do if h[name] then has[#has + 1] = name end end return table.concat(has, ' ')")
              == Lines{"\"" + std::string(methods) + "\""});
    }
    CHECK(session.results("return keldom.get_application().get_x") == Lines{"nil"});
}

TEST_CASE("get_hidden is a boolean: whether the variable is a number other than 0") {
    Session session;
    session.results("ok = keldom.get_object('main.ok')");
    CHECK(session.results("return ok:get_hidden()") == Lines{"false"});
    CHECK(session.calls() == Lines{"get \"main.ok.kld_hidden\" -> 0"});
    CHECK(session.results("return keldom.get_object('main.bar.ok'):get_hidden()") == Lines{"true"});
    CHECK(session.results("return keldom.get_object('home.status'):get_hidden()") == Lines{"true"});
    kc_fail("kl_lua_get_data_value", 0);
    CHECK(session.results("return ok:get_hidden(1, 2)") == Lines{"false"});
}

TEST_CASE("getters ask for the application first, then for a handle") {
    Session session;
    session.results("ok = keldom.get_object('main.ok') list = keldom.get_object('main.list')"
                    " home = keldom.get_object('home.main')"
                    " function method(name) return ok[name] or list[name] or home[name] end");
    const std::string each = " for _, name in ipairs(" + all_getters + ") do ";
    CHECK(session.results(each + "assert(select('#', method(name)('main.ok')) == 0) end") == Lines{});
    CHECK(session.calls() == Lines(11, "warning: Argument must be a keldom_object"));
    kc_hide_application(1);
    CHECK(session.results(each + "local ok, text = pcall(method(name), 1) assert(not ok and text:find('"
                          + no_application + "')) end")
          == Lines{});
    CHECK(session.calls() == Lines(11, "error: " + no_application));
    ReturningErrors returning;
    CHECK(session.results(each + "assert(select('#', method(name)(ok)) == 0) end") == Lines{});
    CHECK(session.calls() == Lines(11, "error: " + no_application));
    kc_hide_application(0);
}

TEST_CASE("getters without a data manager raise; where errors return, once a variable, and give nil or false") {
    Session session;
    session.results("ok = keldom.get_object('main.ok')");
    kc_hide_data_manager(1);
    CHECK(session.error("ok:get_x()") == no_data_manager);
    CHECK(session.error("ok:get_hidden()") == no_data_manager);
    {
        ReturningErrors returning;
        CHECK(session.results("return ok:get_bounds()") == Lines(4, "nil"));
        CHECK(session.calls() == Lines(4, "error: " + no_data_manager));
        CHECK(session.results("return ok:get_hidden()") == Lines{"false"});
        CHECK(session.calls() == Lines{"error: " + no_data_manager});
    }
    kc_hide_data_manager(0);
}

TEST_CASE("a handle of a deleted object reads nil") {
    Session session;
    CHECK(session.results("local ok = keldom.get_object('main.ok') ok:delete() return ok:get_size()")
          == Lines{"nil", "nil"});
}
