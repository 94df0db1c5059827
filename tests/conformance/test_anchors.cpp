// test_anchors.cpp: moves and resizes that keep a point of the object where it is.
#include "harness.h"

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string no_data_manager = "Invalid argument, cannot access data manager";

// A control at x 10, y 20, width 100, height 80.
struct Anchors : Session {
    Anchors() {
        results("LEFT, TOP, CENTER, RIGHT, BOTTOM = 1, 1, 2, 3, 3 ok = keldom.get_object('main.ok')"
                " list = keldom.get_object('main.list') bar = keldom.get_object('main.bar')"
                " home = keldom.get_object('home.main')");
    }

    Lines written(const std::string &code) {
        CHECK(results("return " + code) == Lines{});
        return calls();
    }

    // What the call writes: "width 60, x 30".
    std::string effect(const std::string &code) {
        std::string text;
        for (const std::string &line : written(code)) {
            size_t name = line.find("kld_");
            if (!line.starts_with("set ") || name == std::string::npos) continue;
            size_t end = line.find("\" = ");
            text += (text.empty() ? "" : ", ") + line.substr(name + 4, end - name - 4) + " " + line.substr(end + 4);
        }
        return text;
    }
};

std::string not_an_integer(int argument) { return "Argument " + std::to_string(argument) + " must be an integer"; }
std::string not_horizontal(int argument) {
    return "Argument " + std::to_string(argument) + " must be kel.LEFT, kel.CENTER or kel.RIGHT";
}
std::string not_vertical(int argument) {
    return "Argument " + std::to_string(argument) + " must be kel.TOP, kel.CENTER or kel.BOTTOM";
}

struct Example {
    const char *prepare;
    const char *call;
    const char *effect;
};

const Example examples[] = {
    {"",                    "ok:set_width(60, CENTER)",                  "width 60, x 30"                   },
    {"",                    "ok:set_width(60, RIGHT)",                   "width 60, x 50"                   },
    {"",                    "ok:set_width(60, LEFT)",                    "width 60"                         },
    {"",                    "ok:set_width(60)",                          "width 60"                         },
    {"",                    "ok:set_width(161, CENTER)",                 "width 161, x -20"                 },
    {"",                    "ok:set_width(39, CENTER)",                  "width 39, x 40"                   }, // shrinks by 61: x moves by 30
    {"",                    "ok:set_width(100, CENTER)",                 "width 100"                        },
    {"",                    "ok:set_height(50, BOTTOM)",                 "height 50, y 50"                  },
    {"",                    "ok:set_height(50, CENTER)",                 "height 50, y 35"                  },
    {"",                    "ok:set_height(50, TOP)",                    "height 50"                        },
    {"",                    "ok:set_height(50)",                         "height 50"                        },
    {"",                    "ok:set_height(80, BOTTOM)",                 "height 80"                        },
    {"ok:set_width(51)",    "ok:set_x(100, CENTER)",                     "x 75"                             },
    {"ok:set_width(51)",    "ok:set_x(100, RIGHT)",                      "x 49"                             },
    {"ok:set_width(10)",    "ok:set_x(40000, CENTER)",                   "x -25541"                         },
    {"",                    "ok:set_x(40000)",                           "x 40000"                          },
    {"",                    "ok:set_x(40000, LEFT)",                     "x 40000"                          },
    {"",                    "ok:set_y(100, CENTER)",                     "y 60"                             },
    {"",                    "ok:set_y(100, BOTTOM)",                     "y 20"                             },
    {"",                    "ok:set_y(100, TOP)",                        "y 100"                            },
    {"",                    "ok:set_y('100', '2')",                      "y 60"                             },
    {"",                    "ok:set_y(100.9, 2.9)",                      "y 60"                             },
    {"",                    "ok:set_size(60, 50, CENTER, BOTTOM)",       "width 60, height 50, x 30, y 50"  },
    {"",                    "ok:set_size(60, 50, nil, CENTER)",          "width 60, height 50, y 35"        },
    {"",                    "ok:set_size(60, 50, RIGHT)",                "width 60, height 50, x 50"        },
    {"",                    "ok:set_size(60, 50)",                       "width 60, height 50"              },
    {"",                    "ok:set_size(60, 50, LEFT, TOP)",            "width 60, height 50"              },
    {"",                    "ok:set_size(100, 50, RIGHT, BOTTOM)",       "width 100, height 50, y 50"       },
    {"",                    "ok:set_position(100, 100, CENTER, CENTER)", "x 50, y 60"                       },
    {"",                    "ok:set_position(100, 100, RIGHT, BOTTOM)",  "x 0, y 20"                        },
    {"",                    "ok:set_position(100, 100, nil, BOTTOM)",    "x 100, y 20"                      },
    {"",                    "ok:set_position(100, 100, RIGHT)",          "x 0, y 100"                       },
    {"",                    "ok:set_position(100, 100, LEFT, TOP)",      "x 100, y 100"                     },
    {"",                    "ok:set_position(100, 100)",                 "x 100, y 100"                     },
    {"",                    "ok:set_x(100, nil)",                        "x 100"                            },
    {"",                    "ok:set_x('abc')",                           "x \"abc\""                        },
    {"",                    "ok:set_x(100, 257)",                        "x 100"                            },
    {"",                    "ok:set_x(100, 258)",                        "x 50"                             },
    {"",                    "ok:set_x(100, 259)",                        "x 0"                              },
    {"",                    "ok:set_x(100, -255)",                       "x 100"                            },
    {"",                    "ok:set_width(100 + 65536, CENTER)",         "width 65636"                      },
    {"",                    "ok:set_width(100 - 65536, RIGHT)",          "width -65436"                     },
    {"ok:set_width(32767)", "ok:set_width(-1, CENTER)",                  "width -1, x -16374"               }, // a change of 32768 is -32768
    {"",                    "list:set_x(100, RIGHT)",                    "x -100"                           },
    {"",                    "list:set_size(100, 40, RIGHT, CENTER)",     "width 100, height 40, x 111, y 37"},
};

} // namespace

TEST_CASE("anchored moves and resizes write what their anchors ask for") {
    for (const Example &example : examples) {
        CAPTURE(example.call);
        Anchors session;
        session.results(example.prepare);
        CHECK(session.effect(example.call) == example.effect);
    }
}

TEST_CASE("a move reads the extent before the batch, a resize reads extent, then position") {
    Anchors session;
    CHECK(session.written("ok:set_x(100, CENTER)")
          == Lines{"get \"main.ok.kld_width\" -> 100", "hold", "set \"main.ok.kld_x\" = 50", "release"});
    CHECK(session.written("ok:set_size(60, 50, CENTER, BOTTOM)")
          == Lines{"get \"main.ok.kld_width\" -> 100", "get \"main.ok.kld_x\" -> 50",
                   "get \"main.ok.kld_height\" -> 80", "get \"main.ok.kld_y\" -> 20", "hold",
                   "set \"main.ok.kld_width\" = 60", "set \"main.ok.kld_height\" = 50", "set \"main.ok.kld_x\" = 70",
                   "set \"main.ok.kld_y\" = 50", "release"});
    CHECK(session.written("ok:set_position(0, 0, RIGHT, BOTTOM)")
          == Lines{"get \"main.ok.kld_width\" -> 60", "get \"main.ok.kld_height\" -> 50", "hold",
                   "set \"main.ok.kld_x\" = -60", "set \"main.ok.kld_y\" = -50", "release"});
}

TEST_CASE("a leading anchor and none read nothing, an unchanged extent no position") {
    Anchors session;
    CHECK(session.written("ok:set_width(60, LEFT)") == Lines{"hold", "set \"main.ok.kld_width\" = 60", "release"});
    CHECK(session.written("ok:set_width(60, RIGHT)")
          == Lines{"get \"main.ok.kld_width\" -> 60", "hold", "set \"main.ok.kld_width\" = 60", "release"});
}

TEST_CASE("a current value that is missing counts as 0") {
    Anchors session;
    kc_fail("kl_lua_get_data_value", 0);
    CHECK(session.effect("ok:set_x(100, RIGHT)") == "x 100");
    kc_fail("kl_lua_get_data_value", 0);
    CHECK(session.effect("ok:set_width(60, RIGHT)") == "width 60, x 40");
    kc_fail("kl_lua_get_data_value", 1);
    CHECK(session.effect("ok:set_width(50, RIGHT)") == "width 50, x 10");
}

TEST_CASE("groups and layer instances neither read nor test anchors") {
    Anchors session;
    CHECK(session.written("bar:set_x(10, 99)") == Lines{"hold", "set \"main.bar.kld_x\" = 10", "release"});
    CHECK(session.written("bar:set_y(11, {})") == Lines{"hold", "set \"main.bar.kld_y\" = 11", "release"});
    CHECK(session.written("home:set_width(60, CENTER)")
          == Lines{"hold", "set \"home.main.kld_width\" = 60", "release"});
    CHECK(session.written("home:set_height(60, true)")
          == Lines{"hold", "set \"home.main.kld_height\" = 60", "release"});
    CHECK(session.written("home:set_size(60, 70, 99, 99)")
          == Lines{"hold", "set \"home.main.kld_width\" = 60", "set \"home.main.kld_height\" = 70", "release"});
    CHECK(session.written("home:set_position(1, 2, CENTER, CENTER)")
          == Lines{"hold", "set \"home.main.kld_x\" = 1", "set \"home.main.kld_y\" = 2", "release"});
}

TEST_CASE("arguments behind the anchors are neither read nor tested") {
    Anchors session;
    CHECK(session.written("ok:set_x(10, nil, RIGHT, RIGHT)") == Lines{"hold", "set \"main.ok.kld_x\" = 10", "release"});
    CHECK(session.written("ok:set_width(60, nil, RIGHT, 99)")
          == Lines{"hold", "set \"main.ok.kld_width\" = 60", "release"});
    CHECK(session.written("ok:set_size(60, 50, nil, nil, RIGHT, 99)")
          == Lines{"hold", "set \"main.ok.kld_width\" = 60", "set \"main.ok.kld_height\" = 50", "release"});
}

TEST_CASE("a bad anchor raises and names its position; nothing is written") {
    Anchors session;
    const std::pair<const char *, std::string> cases[] = {
        {"ok:set_x(1, true)",              not_an_integer(3)},
        {"ok:set_x(1, {})",                not_an_integer(3)},
        {"ok:set_y(1, 'x')",               not_an_integer(3)},
        {"ok:set_width(1, false)",         not_an_integer(3)},
        {"ok:set_height(1, {})",           not_an_integer(3)},
        {"ok:set_size(1, 2, {})",          not_an_integer(4)},
        {"ok:set_size(1, 2, nil, {})",     not_an_integer(5)},
        {"ok:set_position(1, 2, {})",      not_an_integer(4)},
        {"ok:set_position(1, 2, nil, {})", not_an_integer(5)},
        {"ok:set_x(1, 0)",                 not_horizontal(3)},
        {"ok:set_x(1, 4)",                 not_horizontal(3)},
        {"ok:set_x(1, -1)",                not_horizontal(3)},
        {"ok:set_x(1, 256)",               not_horizontal(3)},
        {"ok:set_width(1, 4)",             not_horizontal(3)},
        {"ok:set_y(1, 0)",                 not_vertical(3)  },
        {"ok:set_height(1, 4)",            not_vertical(3)  },
        {"ok:set_size(1, 2, 9)",           not_horizontal(4)},
        {"ok:set_size(1, 2, 1, 9)",        not_vertical(5)  },
        {"ok:set_position(1, 2, 9)",       not_horizontal(4)},
        {"ok:set_position(1, 2, 1, 9)",    not_vertical(5)  },
        {"list:set_x(1, 9)",               not_horizontal(3)},
    };
    for (const auto &[call, text] : cases) {
        CAPTURE(call);
        CHECK(session.error(call) == text);
        CHECK(session.calls() == Lines{"error: " + text});
    }
}

TEST_CASE("a value that is no number raises with an anchor that needs it; the anchor is tested first") {
    Anchors session;
    CHECK(session.error("ok:set_x('abc', CENTER)") == not_an_integer(2));
    CHECK(session.calls() == Lines{"error: " + not_an_integer(2)});
    CHECK(session.error("ok:set_y({}, BOTTOM)") == not_an_integer(2));
    CHECK(session.error("ok:set_position(5, 'abc', nil, BOTTOM)") == not_an_integer(3));
    CHECK(session.error("ok:set_size(5, 'abc', nil, BOTTOM)") == not_an_integer(3));
    CHECK(session.error("ok:set_x('abc', 9)") == not_horizontal(3));
}

TEST_CASE("a resize reads the extent before it tests the value") {
    Anchors session;
    CHECK(session.error("ok:set_width('abc', CENTER)") == not_an_integer(2));
    CHECK(session.calls() == Lines{"get \"main.ok.kld_width\" -> 100", "error: " + not_an_integer(2)});
    CHECK(session.error("ok:set_height({}, CENTER)") == not_an_integer(2));
    CHECK(session.calls() == Lines{"get \"main.ok.kld_height\" -> 80", "error: " + not_an_integer(2)});
}

TEST_CASE("with errors that return, a failed step is passed over and the rest is done") {
    Anchors session;
    ReturningErrors returning;
    CHECK(session.written("ok:set_size(60, 50, 9, 9)")
          == Lines{"error: " + not_horizontal(4), "error: " + not_vertical(5), "hold", "set \"main.ok.kld_width\" = 60",
                   "set \"main.ok.kld_height\" = 50", "release"});
    CHECK(session.written("ok:set_position(1, 2, {}, BOTTOM)")
          == Lines{"error: " + not_an_integer(4), "get \"main.ok.kld_height\" -> 50", "hold",
                   "set \"main.ok.kld_x\" = 1", "set \"main.ok.kld_y\" = -48", "release"});
    CHECK(session.written("ok:set_x('abc', RIGHT)")
          == Lines{"error: " + not_an_integer(2), "hold", "set \"main.ok.kld_x\" = \"abc\"", "release"});
    CHECK(session.written("ok:set_width('abc', RIGHT)")
          == Lines{"get \"main.ok.kld_width\" -> 60", "error: " + not_an_integer(2), "hold",
                   "set \"main.ok.kld_width\" = \"abc\"", "release"});
}

TEST_CASE("without a data manager an anchored step raises at its first read; where errors return it reads 0") {
    Anchors session;
    kc_hide_data_manager(1);
    CHECK(session.error("ok:set_x(100, CENTER)") == no_data_manager);
    CHECK(session.calls() == Lines{"error: " + no_data_manager});
    {
        ReturningErrors returning;
        CHECK(session.written("ok:set_x(100, CENTER)") == Lines(2, "error: " + no_data_manager));
        CHECK(session.written("ok:set_width(60, CENTER)") == Lines(3, "error: " + no_data_manager));
        CHECK(session.written("ok:set_width(0, CENTER)") == Lines(2, "error: " + no_data_manager));
    }
    kc_hide_data_manager(0);
}

TEST_CASE("the host's anchor constants have the numbers that the setters test") {
    Anchors session;
    if (session.results("return type(kel)") != Lines{"\"table\""}) {
        MESSAGE("this host has no module kel, so its anchor constants are not compared");
        return;
    }
    CHECK(session.results("return kel.LEFT, kel.TOP, kel.CENTER, kel.RIGHT, kel.BOTTOM")
          == Lines{"1", "1", "2", "3", "3"});
}
