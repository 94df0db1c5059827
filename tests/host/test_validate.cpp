// test_validate.cpp: whether a description makes sense as a whole, however it was made.
#include <doctest/doctest.h>

#include <ctime>
#include <limits>
#include <string>

#include "application_text.h"
#include "made_application.h"
#include "model.h"
#include "temporary_folder.h"

using namespace kelhost;

TEST_CASE("a name is made of letters, digits and underlines") {
    CHECK(is_valid_name("azAZ09_"));
    for (const std::string name : {"a.b", "a-b", "a b", "a\n", "é", "@", "[", "`", "{", "/", ":"}) {
        INFO(name);
        CHECK_FALSE(is_valid_name(name));
    }
    CHECK_FALSE(is_valid_name(std::string_view("a\0b", 3)));
}

TEST_CASE("an application made in memory without a fault passes") { CHECK(faults_of(make_application()) == ""); }

TEST_CASE("faults of an application made in memory name no file") {
    ApplicationDescription app = make_application();
    app.name = "";
    Diagnostics faults;
    validate(app, faults);
    REQUIRE(faults.size() == 1);
    CHECK(faults[0].file == "");
    CHECK(faults[0].path == "$.name");
    CHECK(faults[0].message == "found \"\", expected the application's name");
}

TEST_CASE("numbers made in memory must be in range") {
    ApplicationDescription app = with_element(make_element(ElementKind::control, "ok"));
    app.width = 0;
    app.height = 32768;
    app.layers[0].width = -1;
    app.layers[0].height = 32768;
    app.layers[0].children[0].geometry = {-32769, 32768, -1, 32768};
    app.layers[0].children[0].draw.font_size = 1001;
    app.screens[0].layers[0].x = -32769;
    app.screens[0].layers[0].y = 32768;
    app.screens[0].layers[0].width = -1;
    app.screens[0].layers[0].height = 32768;
    app.screens[0].layers[0].alpha = -1;
    CHECK(faults_of(app)
          == "$.size.width: found 0, expected a whole number from 1 to 32767\n"
             "$.size.height: found 32768, expected a whole number from 1 to 32767\n"
             "$.layers[0].width: found -1, expected a whole number from 0 to 32767\n"
             "$.layers[0].height: found 32768, expected a whole number from 0 to 32767\n"
             "$.layers[0].children[0].x: found -32769, expected a whole number from -32768 to 32767\n"
             "$.layers[0].children[0].y: found 32768, expected a whole number from -32768 to 32767\n"
             "$.layers[0].children[0].width: found -1, expected a whole number from 0 to 32767\n"
             "$.layers[0].children[0].height: found 32768, expected a whole number from 0 to 32767\n"
             "$.layers[0].children[0].draw.font_size: found 1001, expected a whole number from 1 to 1000\n"
             "$.screens[0].layers[0].x: found -32769, expected a whole number from -32768 to 32767\n"
             "$.screens[0].layers[0].y: found 32768, expected a whole number from -32768 to 32767\n"
             "$.screens[0].layers[0].width: found -1, expected a whole number from 0 to 32767\n"
             "$.screens[0].layers[0].height: found 32768, expected a whole number from 0 to 32767\n"
             "$.screens[0].layers[0].alpha: found -1, expected a whole number from 0 to 255\n");
}

TEST_CASE("a template's size made in memory must be in range") {
    ElementDescription table = make_table(1, 1);
    table.templates[0].width = -1;
    table.templates[0].height = 32768;
    CHECK(faults_of(with_element(table))
          == "$.layers[0].children[0].templates[0].width: found -1, expected a whole number from 0 to 32767\n"
             "$.layers[0].children[0].templates[0].height: found 32768, expected a whole number from 0 to 32767\n");
}

TEST_CASE("variables made in memory must be single, and their values fit their types") {
    ApplicationDescription app = make_application();
    app.variables = {
        {"a", DataType::u8,     256.0                                  },
        {"b", DataType::u8,     std::string("1")                       },
        {"c", DataType::string, 1.0                                    },
        {"d", DataType::i32,    0.5                                    },
        {"e", DataType::f64,    std::numeric_limits<double>::infinity()},
        {"f", DataType::i8,     -128.0                                 },
        {"f", DataType::i8,     127.0                                  },
        {"f", DataType::i8,     128.0                                  }
    };
    CHECK(faults_of(app)
          == "$.variables.a: found 256, expected a whole number from 0 to 255 for type \"u8\"\n"
             "$.variables.b: found \"1\", expected a whole number from 0 to 255 for type \"u8\"\n"
             "$.variables.c: found 1, expected a string for type \"string\"\n"
             "$.variables.d: found 0.5, expected a whole number from -2147483648 to 2147483647 for type \"i32\"\n"
             "$.variables.e: found inf, expected a finite number for type \"f64\"\n"
             "$.variables.f: duplicate variable \"f\", expected it once in an object\n"
             "$.variables.f: duplicate variable \"f\", expected it once in an object\n");
}

TEST_CASE("what an element's kind does not have is a fault, not lost") {
    ElementDescription control = make_element(ElementKind::control, "a");
    control.children.push_back(make_element(ElementKind::control, "b"));
    CHECK(faults_of(with_element(control))
          == "$.layers[0].children[0].children: found children, expected them in a group alone\n");

    ElementDescription group = make_element(ElementKind::group, "a");
    group.geometry.height = 1;
    group.draw.align = "left";
    group.cols = 1;
    CHECK(faults_of(with_element(group))
          == "$.layers[0].children[0]: found a group with a size, expected a position alone\n"
             "$.layers[0].children[0].draw: found drawing hints, expected none for a group\n"
             "$.layers[0].children[0]: found rows, columns, templates or cells, expected them in a table alone\n");

    ElementDescription table = make_table(0, 0);
    table.children.push_back(make_element(ElementKind::control, "b"));
    CHECK(faults_of(with_element(table))
          == "$.layers[0].children[0].children: found children, expected them in a group alone\n");

    ApplicationDescription app = make_application();
    app.layers[0].draw.fill = "#102030";
    app.layers[0].draw.text = "title";
    CHECK(faults_of(app) == "$.layers[0].draw: found hints for a text, expected \"fill\" alone for a layer\n");
}

TEST_CASE("an empty name is a fault wherever a name is needed") {
    ApplicationDescription app = with_element(make_element(ElementKind::control, ""));
    app.layers.resize(2);
    app.screens.resize(2);
    app.screens[0].layers.resize(2);
    app.handlers.resize(1);
    app.scripts.resize(1);
    CHECK(faults_of(app)
          == "$.layers[0].children[0].name: found \"\", expected a name of letters, digits and \"_\"\n"
             "$.layers[1].name: found \"\", expected a name of letters, digits and \"_\"\n"
             "$.screens[0].layers[1].layer: found \"\", expected a name of letters, digits and \"_\"\n"
             "$.screens[1].name: found \"\", expected a name of letters, digits and \"_\"\n"
             "$.scripts[0]: found \"\", expected the path of a Lua script\n"
             "$.handlers[0].event: found \"\", expected the name of an event\n"
             "$.handlers[0].function: found \"\", expected a Lua function such as \"on_press\" or \"ui.on_press\"\n");
}

TEST_CASE("a text that ends early as a C string is a fault where plug-ins get it as one") {
    ApplicationDescription app = make_application();
    app.name = std::string("a\0b", 3);
    app.handlers = {
        {std::string("press\0", 6), "", "f"}
    };
    CHECK(faults_of(app)
          == "$.name: found \"a\\u0000b\", expected the application's name\n"
             "$.handlers[0].event: found \"press\\u0000\", expected the name of an event\n");
}

TEST_CASE("groups made in memory nest as deep as the model allows, and no deeper") {
    ElementDescription element = make_element(ElementKind::control, "-"); // a fault that shows how deep the check goes
    for (int level = 0; level < deepest_nesting; ++level) {
        ElementDescription group = make_element(ElementKind::group, "g");
        group.children.push_back(std::move(element));
        element = std::move(group);
    }
    std::string path = "$.layers[0]";
    for (int level = 0; level < deepest_nesting; ++level) path += ".children[0]";
    CHECK(faults_of(with_element(element))
          == path + ".children[0].name: found \"-\", expected a name of letters, digits and \"_\"\n");

    ElementDescription group = make_element(ElementKind::group, "g");
    group.children.push_back(std::move(element));
    CHECK(faults_of(with_element(std::move(group)))
          == path + ".children[0]: found a group inside 32 others, expected groups nested at most 32 deep\n");
}

TEST_CASE("a table has at most as many cells as the model allows") {
    CHECK(faults_of(with_element(make_table(65535, 1))) == "");
    CHECK(faults_of(with_element(make_table(256, 256))) == "");
    CHECK(faults_of(with_element(make_table(65535, 65535)))
          == "$.layers[0].children[0]: found 65535 rows of 65535 cells, expected a table of at most 65536 cells\n");
    CHECK(faults_of(with_element(make_table(-1, 65536)))
          == "$.layers[0].children[0].rows: found -1, expected a whole number from 0 to 65535\n"
             "$.layers[0].children[0].cols: found 65536, expected a whole number from 0 to 65535\n");
}

TEST_CASE("a table without cells needs no template") {
    ElementDescription table = make_table(0, 5);
    table.templates.clear();
    CHECK(faults_of(with_element(table)) == "");
}

TEST_CASE("the rows of cells are checked one by one") {
    ElementDescription table = make_table(2, 1);
    table.cells = {
        {{"row", {}}, {"rwo", {}}},
        {           }
    };
    CHECK(faults_of(with_element(table))
          == "$.layers[0].children[0].cells[0]: found 2 cells, expected 1 as \"cols\" says\n"
             "$.layers[0].children[0].cells[0][1]: unknown template \"rwo\", did you mean \"row\"?\n"
             "$.layers[0].children[0].cells[1]: found 0 cells, expected 1 as \"cols\" says\n");
}

TEST_CASE("a cell's variables are checked like any other's") {
    ElementDescription table = make_table(1, 1);
    table.cells = {{{"row", {{"a b", DataType::u8, 300.0}, {"kld_x", DataType::i16, 1.0}}}}};
    CHECK(
        faults_of(with_element(table))
        == "$.layers[0].children[0].cells[0][0].variables[\"a b\"]: found \"a b\", expected a name of letters, digits "
           "and "
           "\"_\"\n"
           "$.layers[0].children[0].cells[0][0].variables[\"a b\"]: found 300, expected a whole number from 0 to 255 "
           "for "
           "type \"u8\"\n"
           "$.layers[0].children[0].cells[0][0].variables.kld_x: found \"kld_x\", expected a name that does not begin "
           "with \"kld_\", which the host keeps for its own variables\n");
}

TEST_CASE("the same name may stand in different containers") {
    CHECK(all_faults(with_children(R"({"type": "control", "name": "main"},
                                      {"type": "group", "name": "a", "children": [{"type": "control", "name": "a"}]},
                                      {"type": "group", "name": "b", "children": [{"type": "control", "name": "a"}]},
                                      {"type": "control", "name": "kld_alpha", "variables": {"a": 1}})"))
          == "");
}

TEST_CASE("a container with a taken name does not make all that it holds a duplicate") {
    const std::string group = R"({"type": "group", "name": "a", "children": [{"type": "control", "name": "ok"}]})";
    CHECK(all_faults(with_children(group + "," + group))
          == "app.json: $.layers[0].children[1].name: duplicate name \"main.a\", first used by "
             "$.layers[0].children[0]\n");
}

TEST_CASE("faults of shape and of meaning come in one run, each in the file's order") {
    CHECK(
        all_faults(with_children(R"({"type": "control", "name": "a-b", "x": 1.5, "draw": {"fill": "red"}},
                                      {"type": "control", "name": "ok", "y": null, "draw": {"align": "top"}})"))
        == "app.json: $.layers[0].children[0].x: found 1.5, expected a whole number from -32768 to 32767\n"
           "app.json: $.layers[0].children[1].y: found null, expected a whole number from -32768 to 32767\n"
           "app.json: $.layers[0].children[0].name: found \"a-b\", expected a name of letters, digits and \"_\"\n"
           "app.json: $.layers[0].children[0].draw.fill: found \"red\", expected a color such as \"#20a0ff\"\n"
           "app.json: $.layers[0].children[1].draw.align: found \"top\", expected \"left\", \"center\" or \"right\"\n");
}

TEST_CASE("scripts are looked for in the application's folder") {
    TemporaryFolder folder;
    const std::string script = folder.write("main.lua", "");
    ApplicationDescription app = make_application();
    app.folder = folder.path();
    app.scripts = {"main.lua", script};
    CHECK(faults_of(app) == "");
    app.scripts = {"main.lua", "mian.lua", "."};
    CHECK(faults_of(app)
          == "$.scripts[1]: cannot read \"" + folder.path()
                 + "/mian.lua\" (No such file or directory), expected a Lua script\n"
                   "$.scripts[2]: cannot read \""
                 + folder.path() + "/.\" (Is a directory), expected a Lua script\n");
}

TEST_CASE("what was reported about another file hides nothing") {
    ApplicationDescription app = make_application();
    app.file = "app.json";
    app.name = "";
    Diagnostics faults = {
        {"other.json", 0, 0, "$.name", "found 1, expected a string"}
    };
    validate(app, faults);
    REQUIRE(faults.size() == 2);
    CHECK(to_text(faults[1]) == "app.json: $.name: found \"\", expected the application's name");
}

TEST_CASE("ten thousand controls are checked without work that grows with their square") {
    ApplicationDescription app = make_application();
    for (int index = 0; index < 10000; ++index) {
        const std::string name = "c" + std::to_string(index);
        app.layers[0].children.push_back(make_element(ElementKind::control, name));
        app.handlers.push_back({"press", "main." + name + ".kld_x", "f"});
    }
    const std::clock_t begin = std::clock();
    CHECK(faults_of(app) == "");
    // A few milliseconds as a rule. Comparing each name with each other takes many seconds with sanitizers.
    CHECK(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC < 3);
}
