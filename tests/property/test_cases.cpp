// test_cases.cpp: cases are the same after being written and read, and replaying says what is wrong with files and
// cases. The plug-in is not in this program: its own first_difference decides what fails.
#include <rapidcheck.h>

#include <doctest/doctest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "case_file.h"
#include "case_text.h"
#include "functions.h"
#include "generate.h"
#include "replay.h"

// A case fails when it has both a table and a call of get_rows, and counts as one call.
std::string first_difference(const RandomCase &random_case, Tally &tally) {
    ++tally.calls;
    bool has_table = false, has_call = false;
    for (const Brick &brick : random_case.bricks) has_table = has_table || brick.kind == Brick::table;
    for (const Step &step : random_case.steps)
        has_call = has_call || all_functions()[static_cast<std::size_t>(step.function)].name == std::string("get_rows");
    return has_table && has_call ? "the difference\n" : "";
}

namespace {

const std::string path = "test_cases.tmp";

struct File {
    explicit File(const std::string &text) {
        FileHandle file(std::fopen(path.c_str(), "w"));
        REQUIRE(file);
        REQUIRE(std::fwrite(text.data(), 1, text.size(), file.get()) == text.size());
    }
    ~File() { std::remove(path.c_str()); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
};

struct Said {
    int status;
    std::string text;
};

Said replayed(const std::vector<std::string> &arguments) {
    FileHandle report(std::tmpfile());
    REQUIRE(report);
    Said said{replay(arguments, report.get()), ""};
    std::rewind(report.get());
    for (int character; (character = std::fgetc(report.get())) != EOF;) said.text += static_cast<char>(character);
    return said;
}

Said replayed_text(const std::string &text) {
    File file(text);
    return replayed({path});
}

const std::string heading = "cases of geometry, seed 7\n";

} // namespace

TEST_CASE("a case reads as its errors, bricks and steps") {
    RandomCase random_case;
    random_case.errors_return = true;
    random_case.bricks = {
        Brick{Brick::table, 1, 22, 333, 4, 5}
    };
    Step step;
    step.function = 0;
    step.place = 2;
    step.missing = 1;
    step.fault = 3;
    step.nth = 4;
    step.clone = 567;
    step.arguments = {
        Argument{Argument::name, 89},
        Argument{Argument::nil,  0 }
    };
    random_case.steps = {step};
    CHECK(case_text(random_case) == "returns +5,1,22,333,4,5 =0,keldom.get_object,2,1,3,4,567:1,89:5,0");
    CHECK(case_from_text(case_text(random_case)) == random_case);
    CHECK(case_text(RandomCase{}) == "unwinds");
    CHECK(case_from_text("unwinds") == RandomCase{});
}

TEST_CASE("generated cases are the same after being written to a file and read") {
    const Property &mixed = *property_named("mixed");
    std::vector<RandomCase> cases;
    for (int size : {0, 1, 10, 50, 100})
        for (int i = 0; i < 60; ++i)
            cases.push_back(arbitrary_case(mixed.subjects)(rc::Random(static_cast<std::uint64_t>(i)), size).value());
    File emptied("");
    CaseWriter writer(path, mixed, "12");
    for (const RandomCase &random_case : cases) writer.add(random_case);
    writer.finish();
    CaseReader reader(path);
    CHECK(&reader.property() == &mixed);
    std::size_t parts = 0;
    for (const RandomCase &expected : cases) {
        RandomCase seen;
        REQUIRE(reader.next(seen));
        CHECK(seen == expected);
        parts += seen.bricks.size() + seen.steps.size();
    }
    CHECK(parts > cases.size());
    RandomCase none;
    CHECK_FALSE(reader.next(none));
}

TEST_CASE("a file that is no file of cases is refused at its line, with what was expected") {
    struct Row {
        std::string text;
        const char *said; // behind the path
    };
    const std::string brick = heading + "unwinds +5,1,22,333,4,5";
    const std::string step = heading + "unwinds =0,control_object.get_x,0,0,0,1,0";
    const std::vector<Row> rows{
        {"",                                                          ":1: found \"\", expected \"cases of SUBJECT, seed NUMBER\""                 },
        {"cases of x\n",                                              ":1: found \"cases of x\", expected \"cases of SUBJECT, seed NUMBER\""       },
        {"cases of x, seed 1\n",
         ":1: found subject \"x\", expected one of navigation, values, geometry, lifecycle, mixed"                                                 },
        {heading,                                                     ":2: found the file's end, expected a case or \"end of 0 cases\""            },
        {heading + "unwinds\n",                                       ":3: found the file's end, expected a case or \"end of 1 cases\""            },
        {heading + "unwinds\nend of 2 cases\n",                       ":3: found \"end of 2 cases\", expected \"end of 1 cases\""                  },
        {heading + "end of 0 cases\nunwinds\n",                       ":3: found \"unwinds\", expected the file's end"                             },
        {heading + "\n",                                              ":2: found the line's end, expected \"unwinds\" or \"returns\""              },
        {heading + "unwind\n",                                        ":2: found \"unwind\", expected \"unwinds\" or \"returns\""                  },
        {heading + "unwinds x\n",                                     ":2: found \" x\", expected \" +\", \" =\" or the line's end"                },
        {heading + "unwinds \n",                                      ":2: found \" \", expected \" +\", \" =\" or the line's end"                 },
        {heading + "unwinds +\n",                                     ":2: found the line's end, expected a brick's kind, a number from 0 to 16"   },
        {heading + "unwinds +17,0,0,0,0,0\n",
         ":2: found \"17,0,0,0,0,0\", expected a brick's kind, a number from 0 to 16"                                                              },
        {heading + "unwinds +-1,0,0,0,0,0\n",
         ":2: found \"-1,0,0,0,0,0\", expected a brick's kind, a number from 0 to 16"                                                              },
        {heading + "unwinds +1,2\n",                                  ":2: found the line's end, expected a comma and a brick's pick"              },
        {heading + "unwinds +1,2,99999999999,1,1,1\n",
         ":2: found \"99999999999,1,1,1\", expected a brick's pick, a number from 0 to 99999"                                                      },
        {heading + "unwinds +1,2,3,4,100,1\n",                        ":2: found \"100,1\", expected a brick's rows, a number from 0 to 99"        },
        {brick + ",6\n",                                              ":2: found \",6\", expected \" +\", \" =\" or the line's end"                },
        {heading + "unwinds =0,control_object.get_q,0,0,0,1,0\n",
         ":2: found \"control_object.get_q\", expected the name of a function"                                                                     },
        {heading + "unwinds =7,control_object.get_x,0,0,0,1,0\n",
         ":2: found \"7,control_object.get\", expected a step's event, a number from 0 to 6"                                                       },
        {heading + "unwinds =0,control_object.get_x,0,3,0,1,0\n",
         ":2: found \"3,0,1,0\", expected what a step misses, a number from 0 to 2"                                                                },
        {heading + "unwinds =0,control_object.get_x,0,0,8,1,0\n",
         ":2: found \"8,1,0\", expected a step's fault, a number from 0 to 7"                                                                      },
        {heading + "unwinds =2,control_object.get_x,0,0,0,1,0:1,1\n",
         ":2: found the line's end, expected two arguments of what the host does"                                                                  },
        {step + ":\n",                                                ":2: found the line's end, expected an argument's kind, a number from 0 to 9"},
        {step + ":1\n",                                               ":2: found the line's end, expected a comma and an argument's pick"          },
        {step + " +1,2,3,4,5,6\n",                                    ":2: found \" +1,2,3,4,5,6\", expected \" =\", \":\" or the line's end"      },
    };
    for (const Row &row : rows) {
        CAPTURE(row.text);
        Said said = replayed_text(row.text);
        CHECK(said.status == 2);
        CHECK(said.text == path + row.said + "\n");
    }
}

TEST_CASE("a file that is not there is named") {
    CHECK(replayed({"nowhere.cases"}).status == 2);
    CHECK(replayed({"nowhere.cases"}).text == "nowhere.cases: cannot read: No such file or directory\n");
}

TEST_CASE("arguments that make no sense are answered with the usage") {
    const std::vector<std::vector<std::string>> bad{
        {          },
        {            "--at-most"          },
        { "--at-most",           "5"},
        {           "--at-most",        "x", "f"},
        {                  "--at-most",         "", "f"},
        {        "--at-most", "-1", "f"},
        {"--most",           "5"}
    };
    for (const std::vector<std::string> &arguments : bad) {
        Said said = replayed(arguments);
        CHECK(said.status == 2);
        CHECK(said.text == "usage: replay_property [--at-most N] FILE...\n");
    }
}

TEST_CASE("cases without a difference are counted") {
    Said said = replayed_text(heading + "unwinds\nreturns\nend of 2 cases\n");
    CHECK(said.status == 0);
    CHECK(said.text == "geometry: 2 sequences of 2 calls in all\n");
}

TEST_CASE("no more cases than asked for are played, whatever comes behind them") {
    File file(heading + "unwinds\nreturns\nno case\n");
    Said said = replayed({"--at-most", "2", path, path});
    CHECK(said.status == 0);
    CHECK(said.text == "geometry: 2 sequences of 2 calls in all\ngeometry: 2 sequences of 2 calls in all\n");
}

TEST_CASE("a run long enough for everything to come up fails when something did not") {
    std::string text = heading;
    for (int i = 0; i < 800; ++i) text += "unwinds\n";
    File file(text + "end of 800 cases\n");
    Said said = replayed({path});
    CHECK(said.status == 1);
    CHECK(said.text.starts_with("geometry: 800 sequences of 800 calls in all\ngeometry: \"get_x\" never came up\n"));
    CHECK(said.text.find("geometry: \"Argument 4 must be an integer\" never came up\n") != std::string::npos);
    CHECK(replayed({"--at-most", "799", path}).status == 0);
}

TEST_CASE("a case that fails is shown with its line, without what the failure does not need") {
    Said said =
        replayed_text(heading
                      + "unwinds\n"
                        "returns +1,0,0,0,0,0 +5,0,0,0,0,0 +2,0,0,1,0,0 =0,control_object.get_x,0,0,0,1,0 "
                        "=0,table_object.get_rows,0,0,0,1,0:5,0 =0,control_object.get_y,0,0,0,1,0\nend of 2 cases\n");
    CHECK(said.status == 1);
    CHECK(said.text
          == path
                 + ":3: this case fails, here without what it does not need:\n"
                   "an application, with errors that return:\n"
                   "  #1 layer \"main\": #2\n"
                   "  #2 table \"main\": 0 x 0 of | #3\n"
                   "  #3 control \"main\"\n"
                   "  layer map: main -> #1\n"
                   "  find \"lost.main\" -> #3\n"
                   "  find \"main\" -> #1\n"
                   "  find \"main.main\" -> #2\n"
                   "the script (handles by metatable and name):\n"
                   "  table_object.get_rows(nil)  --> \n"
                   "the difference\n");
}
