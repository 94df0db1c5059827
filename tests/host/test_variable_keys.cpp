// test_variable_keys.cpp: which keys a data variable may have, and why others are refused.
#include <optional>
#include <utility>

#include <doctest/doctest.h>

#include "model_fixture.h"

TEST_CASE_FIXTURE(ModelFixture, "a key is accepted when its object exists and its variable is named well") {
    build({control("ok"), group("bar", {control("ok")}),
           table("list", 2, 3, {cell_template("row"), cell_template("unused")})});
    for (const char *key :
         {"mode", "7", "_", "main.x", "home.x", "home.main.x", "main.ok.kld_x", "main.ok.5", "main.bar.ok.a_B9",
          "main.list.title", "main.row.text", "main.list.text.0.0", "main.list.text.1.2", "main.list.5"}) {
        INFO(key);
        CHECK(model.refuses_key(key) == std::nullopt);
    }
}

TEST_CASE_FIXTURE(ModelFixture, "a refused key's reason says what is wrong") {
    build({control("ok"), table("list", 2, 3, {cell_template("row"), cell_template("unused")})});
    const std::pair<const char *, const char *> rows[] = {
        {"main.nosuch.x",                         R"(no object "main.nosuch")"                                       },
        {"nosuch.x",                              R"(no object "nosuch")"                                            },
        {"main.ok.a.b",                           R"(no object "main.ok.a")"                                         },
        {".x",                                    R"(no object "")"                                                  },
        {"main.unused.x",                         R"(no object "main.unused")"                                       },
        {"",                                      R"("" is no variable name: letters, digits and "_" only)"          },
        {"a-b",                                   R"("a-b" is no variable name: letters, digits and "_" only)"       },
        {"main.ok.",                              R"("" is no variable name: letters, digits and "_" only)"          },
        {"main.ok.a b",                           R"("a b" is no variable name: letters, digits and "_" only)"       },
        {"main.list.a-b.0.0",                     R"("a-b" is no variable name: letters, digits and "_" only)"       },
        {"main",                                  R"("main" is an object's name)"                                    },
        {"home.main",                             R"("home.main" is an object's name)"                               },
        {"main.ok",                               R"("main.ok" is an object's name)"                                 },
        {"main.row",                              R"("main.row" is an object's name)"                                },
        {"main.unused",                           R"("main.unused" is an object's name)"                             },
        {"main.list.text.2.0",                    R"(no cell 2.0 in "main.list" (rows 2, cols 3))"                   },
        {"main.list.text.0.3",                    R"(no cell 0.3 in "main.list" (rows 2, cols 3))"                   },
        {"main.list.text.-1.0",                   R"(no cell -1.0 in "main.list" (rows 2, cols 3))"                  },
        {"main.list.text.01.0",                   R"(no cell 01.0 in "main.list" (rows 2, cols 3))"                  },
        {"main.list.text.0.99999999999999999999", R"(no cell 0.99999999999999999999 in "main.list" (rows 2, cols 3))"},
        {"main.list.text.1",                      R"(no object "main.list.text")"                                    },
        {"main.list.text.1.x",                    R"(no object "main.list.text.1")"                                  },
        {"main.list.text.x.1",                    R"(no object "main.list.text.x")"                                  },
        {"main.list.text.+1.1",                   R"(no object "main.list.text.+1")"                                 },
        {"main.list.0.0",                         R"(no cell 0.0 in "main", which is no table)"                      },
        {"main.ok.text.0.0",                      R"(no cell 0.0 in "main.ok", which is no table)"                   },
        {"main.nosuch.text.0.0",                  R"(no object "main.nosuch")"                                       },
        {"main.unused.text.0.0",                  R"(no object "main.unused")"                                       },
        {"0.0",                                   R"(no object "0")"                                                 },
    };
    for (const auto &[key, reason] : rows) {
        INFO(key);
        CHECK(model.refuses_key(key) == reason);
    }
}

TEST_CASE_FIXTURE(ModelFixture, "the longest object that exists decides whose variable a key is") {
    build({group("list", {group("text", {group("0", {control("x")})})})});
    CHECK(model.refuses_key("main.list.text.0.0") == std::nullopt); // of the group "0", not of a cell
    CHECK(model.refuses_key("main.list.text.0.x") == R"("main.list.text.0.x" is an object's name)");
}

TEST_CASE_FIXTURE(ModelFixture, "writing creates variables of existing objects only") {
    build({control("ok")});
    CHECK(write("main.ok.count", 3.0));
    CHECK(variable("main.ok.count") == "i32 3");
    CHECK_FALSE(write("main.nosuch.count", 3.0));
    CHECK(warnings() == "warning: Cannot create main.nosuch.count: no object \"main.nosuch\"");
    CHECK(variable("main.nosuch.count") == "none");
}
