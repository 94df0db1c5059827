// test_app_file.cpp: reading application files: what becomes of their members, and of what has not their shape.
#include <doctest/doctest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "application_text.h"
#include "file.h"
#include "temporary_folder.h"

using namespace kelhost;

namespace {

const std::string here = KEL_TEST_FOLDER;

std::string bytes_of(const std::string &path) {
    std::string why;
    const auto bytes = read_file(path, why);
    REQUIRE_MESSAGE(bytes, path, ": ", why);
    return *bytes;
}

ApplicationDescription read_complete() {
    Diagnostics faults;
    const auto description = read_application_file(here + "/good_applications/complete", faults);
    if (description) validate(*description, faults);
    CHECK(to_lines(faults) == "");
    REQUIRE(description);
    return *description;
}

// "speed: u8 = 1"
std::string line_of(const VariableDescription &variable) {
    return variable.name + ": " + data_type_name(variable.type) + " = " + to_text(variable.value);
}

std::vector<std::string> lines_of(const std::vector<VariableDescription> &variables) {
    std::vector<std::string> lines;
    std::transform(variables.begin(), variables.end(), std::back_inserter(lines), line_of);
    return lines;
}

using Lines = std::vector<std::string>;

} // namespace

TEST_CASE("the application's own members are read") {
    const ApplicationDescription app = read_complete();
    CHECK(app.file == here + "/good_applications/complete/app.json");
    CHECK(app.folder == here + "/good_applications/complete");
    CHECK(app.name == "Complete – every member there is");
    CHECK(app.width == 32767);
    CHECK(app.height == 1);
    CHECK(app.default_screen == "settings");
    CHECK(app.scripts == Lines{"scripts/first.lua", "scripts/second.lua"});
}

TEST_CASE("variables are read in the file's order with the type that is given or follows from the value") {
    CHECK(lines_of(read_complete().variables)
          == Lines{"on: u8 = 1", "off: u8 = 0", "count: i32 = 42", "lowest: i32 = -2147483648",
                   "beyond: f64 = 2147483648", "ratio: f64 = 0.25", "whole_ratio: i32 = 3", "title: string = Grüße",
                   "tiny: i8 = -128", "byte: u8 = 255", "short_one: i16 = -32768", "port: u16 = 65535",
                   "long_one: i32 = 2147483647", "mask: u32 = 4294967295", "exact: f64 = 21", "digits: string = 12",
                   "flag: u16 = 1"});
}

TEST_CASE("a layer's members are read") {
    const ApplicationDescription app = read_complete();
    REQUIRE(app.layers.size() == 2);
    const LayerDescription &layer = app.layers[0];
    CHECK(layer.name == "main");
    CHECK(layer.width == 0);
    CHECK(layer.height == 32767);
    CHECK(lines_of(layer.variables) == Lines{"theme: string = dark"});
    CHECK(layer.draw.fill == "#0A0b0C");
    CHECK(layer.children.size() == 3);
}

TEST_CASE("a control's members are read") {
    const ApplicationDescription app = read_complete();
    const ElementDescription &control = app.layers.at(0).children.at(0);
    CHECK(control.kind == ElementKind::control);
    CHECK(control.name == "ok");
    CHECK(control.geometry.x == -32768);
    CHECK(control.geometry.y == 32767);
    CHECK(control.geometry.width == 32767);
    CHECK(control.geometry.height == 0);
    CHECK(control.hidden);
    CHECK(lines_of(control.variables) == Lines{"pressed: u8 = 0"});
    CHECK(control.draw.fill == "#20a0ff");
    CHECK(control.draw.color == "#FFFFFF");
    CHECK(control.draw.text == "{{{label}");
    CHECK(control.draw.font_size == 1000);
    CHECK(control.draw.align == "right");
}

TEST_CASE("a group's members are read, and what is inside it") {
    const ApplicationDescription app = read_complete();
    const ElementDescription &group = app.layers.at(0).children.at(1);
    CHECK(group.kind == ElementKind::group);
    CHECK(group.name == "bar");
    CHECK(group.geometry.x == 1);
    CHECK(group.geometry.y == 2);
    CHECK(group.hidden);
    CHECK(lines_of(group.variables) == Lines{"open: i32 = 1"});
    REQUIRE(group.children.size() == 1);
    const ElementDescription &inner = group.children[0];
    CHECK(inner.kind == ElementKind::group);
    CHECK(inner.name == "inner");
    REQUIRE(inner.children.size() == 1);
    CHECK(inner.children[0].kind == ElementKind::control);
    CHECK(inner.children[0].name == "ok");
}

TEST_CASE("a table's members are read, and its templates and cells") {
    const ApplicationDescription app = read_complete();
    const ElementDescription &table = app.layers.at(0).children.at(2);
    CHECK(table.kind == ElementKind::table);
    CHECK(table.name == "list");
    CHECK(table.geometry.x == 3);
    CHECK(table.geometry.y == 4);
    CHECK(table.geometry.width == 5);
    CHECK(table.geometry.height == 6);
    CHECK(table.hidden);
    CHECK(lines_of(table.variables) == Lines{"selected: i32 = 0"});
    CHECK(table.draw.fill == "#111111");
    CHECK(table.rows == 2);
    CHECK(table.cols == 2);

    REQUIRE(table.templates.size() == 2);
    CHECK(table.templates[0].name == "head");
    const TemplateDescription &row = table.templates[1];
    CHECK(row.name == "row");
    CHECK(row.width == 7);
    CHECK(row.height == 8);
    CHECK(lines_of(row.variables) == Lines{"text: string = "});
    CHECK(row.draw.text == "{text}");
    CHECK(row.draw.align == "left");

    REQUIRE(table.cells.size() == 2);
    REQUIRE(table.cells[0].size() == 2);
    REQUIRE(table.cells[1].size() == 2);
    CHECK(table.cells[0][0].template_name == "head");
    CHECK(table.cells[0][1].template_name == "head");
    CHECK(table.cells[1][0].template_name == "row");
    CHECK(table.cells[1][1].template_name == "row");
    CHECK(lines_of(table.cells[1][0].variables) == Lines{});
    CHECK(lines_of(table.cells[1][1].variables) == Lines{"text: string = Kitchen", "note: f64 = 1.5"});
}

TEST_CASE("a screen's members are read, and its layer instances") {
    const ApplicationDescription app = read_complete();
    REQUIRE(app.screens.size() == 2);
    const ScreenDescription &screen = app.screens[0];
    CHECK(screen.name == "home");
    CHECK(lines_of(screen.variables) == Lines{"visits: i32 = 0"});
    REQUIRE(screen.layers.size() == 2);
    CHECK(screen.layers[0].layer == "bare");
    const LayerInstanceDescription &instance = screen.layers[1];
    CHECK(instance.layer == "main");
    CHECK(instance.x == -1);
    CHECK(instance.y == 2);
    CHECK(instance.width == 3);
    CHECK(instance.height == 4);
    CHECK(instance.alpha == 0);
    CHECK(instance.hidden);
    CHECK(lines_of(instance.variables) == Lines{"offset: i32 = 5"});
    CHECK(app.screens[1].name == "settings");
}

TEST_CASE("a handler's members are read") {
    const ApplicationDescription app = read_complete();
    REQUIRE(app.handlers.size() == 9);
    CHECK(app.handlers[0].event == "kel.started");
    CHECK(app.handlers[0].target == "");
    CHECK(app.handlers[0].function == "start");
    CHECK(app.handlers[1].event == "press");
    CHECK(app.handlers[1].target == "main.bar.inner.ok");
    CHECK(app.handlers[1].function == "ui.on_press");
}

TEST_CASE("members that are left out have their defaults") {
    const ApplicationDescription app = read_good(R"({
        "name": "least", "size": {"width": 1, "height": 2},
        "layers": [{"name": "main", "children": [
            {"type": "control", "name": "a"}, {"type": "table", "name": "b", "rows": 1, "cols": 1, "templates": []}]}],
        "screens": [{"name": "home", "layers": [{"layer": "main"}]}],
        "handlers": [{"event": "press", "function": "f"}]
    })");
    CHECK(app.default_screen == "");
    CHECK(app.folder == "");
    CHECK(app.variables.empty());
    CHECK(app.scripts.empty());
    const LayerDescription &layer = app.layers.at(0);
    CHECK_FALSE(layer.width);
    CHECK_FALSE(layer.height);
    CHECK(layer.variables.empty());
    CHECK(layer.draw.fill == "");
    const ElementDescription &control = layer.children.at(0);
    CHECK(control.geometry.x == 0);
    CHECK(control.geometry.y == 0);
    CHECK(control.geometry.width == 0);
    CHECK(control.geometry.height == 0);
    CHECK_FALSE(control.hidden);
    CHECK(control.draw.text == "");
    CHECK(control.draw.font_size == 0);
    CHECK(layer.children.at(1).cells.empty());
    const LayerInstanceDescription &instance = app.screens.at(0).layers.at(0);
    CHECK(instance.x == 0);
    CHECK(instance.y == 0);
    CHECK_FALSE(instance.width);
    CHECK_FALSE(instance.height);
    CHECK(instance.alpha == 255);
    CHECK_FALSE(instance.hidden);
    CHECK(app.handlers.at(0).target == "");
}

TEST_CASE("numbers count by their value, not by their spelling") {
    const ApplicationDescription app = read_good(R"({
        "name": "numbers", "size": {"width": 3.2e2, "height": 240.0}, "layers": [], "screens": [],
        "variables": {"a": 1e3, "b": -0.0, "c": {"type": "u8", "value": 2.55e2}}})");
    CHECK(app.width == 320);
    CHECK(app.height == 240);
    CHECK(lines_of(app.variables) == Lines{"a: i32 = 1000", "b: i32 = 0", "c: u8 = 255"});
}

TEST_CASE("each faulty application gives exactly the diagnostics that stand beside it") {
    for (const std::string name : {KEL_BAD_APPLICATIONS}) {
        const std::string file = here + "/bad_applications/" + name;
        INFO(file);
        const std::string expected = bytes_of(file + ".txt");
        CHECK(expected != "");
        CHECK(all_faults(bytes_of(file + ".json")) == expected);
    }
}

TEST_CASE("a fault of shape has a path and neither line nor column") {
    Diagnostics faults;
    CHECK(parse_application("{\"name\": 1, \"size\": {\"width\": 1, \"height\": 1}, \"layers\": [], \"screens\": []}",
                            "folder/app.json", faults));
    REQUIRE(faults.size() == 1);
    CHECK(faults[0].file == "folder/app.json");
    CHECK(faults[0].line == 0);
    CHECK(faults[0].column == 0);
    CHECK(faults[0].path == "$.name");
    CHECK(faults[0].message == "found 1, expected a string");
}

TEST_CASE("what can be read is returned beside the faults, each item in its place") {
    Diagnostics faults;
    const auto app = parse_application(R"({
        "name": "partly", "size": {"width": 320, "heigth": 240}, "screens": 1,
        "variables": {"bad": null, "good": 2, "good": 3, "typed": {"type": "string", "value": 1}},
        "layers": [7, {"name": "main", "children": [[], {"type": "control", "name": "ok", "x": "1", "y": 5},
                                                    {"type": "knob", "name": "set", "rows": 4}]}]})",
                                       "app.json", faults);
    CHECK(to_lines(faults)
          == "app.json: $.size.heigth: unknown member \"heigth\", did you mean \"height\"?\n"
             "app.json: $.screens: found 1, expected an array\n"
             "app.json: $.variables.bad: found null, expected a boolean, a number, a string or an object with \"type\" "
             "and "
             "\"value\"\n"
             "app.json: $.variables.good: found member \"good\" again, expected it once in an object\n"
             "app.json: $.variables.typed.value: found 1, expected a string for type \"string\"\n"
             "app.json: $.layers[0]: found 7, expected an object\n"
             "app.json: $.layers[1].children[0]: found an array, expected an object\n"
             "app.json: $.layers[1].children[1].x: found \"1\", expected a whole number from -32768 to 32767\n"
             "app.json: $.layers[1].children[2].type: found \"knob\", expected \"control\", \"table\" or \"group\"\n");
    REQUIRE(app);
    CHECK(app->width == 320);
    CHECK(app->height == 240);
    CHECK(lines_of(app->variables) == Lines{"bad: f64 = 0", "good: i32 = 2", "typed: string = "});
    REQUIRE(app->layers.size() == 2);
    CHECK(app->layers[0].name == "");
    CHECK(app->layers[1].name == "main");
    REQUIRE(app->layers[1].children.size() == 3);
    CHECK(app->layers[1].children[1].name == "ok");
    CHECK(app->layers[1].children[1].geometry.x == 0);
    CHECK(app->layers[1].children[1].geometry.y == 5);
    CHECK(app->layers[1].children[2].kind == ElementKind::table);
    CHECK(app->layers[1].children[2].rows == 4);
}

TEST_CASE("a misspelt member is read as the one that is missing, and as no other") {
    const std::string expected =
        R"(, expected "type", "name", "x", "y", "width", "height", "hidden", "variables" or "draw")";
    Diagnostics faults;
    const auto app = parse_application(with_children(R"({"type": "control", "name": "a", "wdith": 5},
                                                        {"type": "control", "name": "b", "width": 6, "wdith": 7},
                                                        {"type": "control", "name": "c", "wdith": 8, "widht": 9},
                                                        {"type": "control", "name": "d", "wdith": 1, "wdith": 2})"),
                                       "app.json", faults);
    CHECK(to_lines(faults)
          == "app.json: $.layers[0].children[0].wdith: unknown member \"wdith\", did you mean \"width\"?\n"
             "app.json: $.layers[0].children[1].wdith: unknown member \"wdith\""
                 + expected
                 + "\n"
                   "app.json: $.layers[0].children[2].wdith: unknown member \"wdith\", did you mean \"width\"?\n"
                   "app.json: $.layers[0].children[2].widht: unknown member \"widht\""
                 + expected
                 + "\n"
                   "app.json: $.layers[0].children[3].wdith: unknown member \"wdith\", did you mean \"width\"?\n");
    REQUIRE(app);
    const std::vector<ElementDescription> &controls = app->layers.at(0).children;
    REQUIRE(controls.size() == 4);
    CHECK(controls[0].geometry.width == 5);
    CHECK(controls[1].geometry.width == 6);
    CHECK(controls[2].geometry.width == 8);
    CHECK(controls[3].geometry.width == 1);
}

TEST_CASE("a file is read by its own path or by that of its folder") {
    TemporaryFolder folder;
    const std::string file = folder.write("app.json", with_children(""));
    for (const std::string &path : {file, folder.path(), folder.path() + "/"}) {
        INFO(path);
        Diagnostics faults;
        const auto app = read_application_file(path, faults);
        CHECK(to_lines(faults) == "");
        REQUIRE(app);
        CHECK(app->file == (path == folder.path() + "/" ? path + "app.json" : file));
        CHECK(app->folder == folder.path());
    }
    Diagnostics faults;
    const auto other = read_application_file(folder.write("other.json", with_children("")), faults);
    REQUIRE(other);
    CHECK(other->file == folder.path() + "/other.json");
}

TEST_CASE("a file that cannot be read gives one diagnostic that names it and the reason") {
    TemporaryFolder folder;
    const std::string expected = ", expected an application file or a folder that holds it as app.json\n";
    const auto faults_of = [](const std::string &path) {
        Diagnostics faults;
        CHECK_FALSE(read_application_file(path, faults));
        return to_lines(faults);
    };
    CHECK(faults_of(folder.path() + "/missing.json")
          == folder.path() + "/missing.json: cannot read the file (No such file or directory)" + expected);
    CHECK(faults_of(folder.path())
          == folder.path() + "/app.json: cannot read the file (No such file or directory)" + expected);
    const std::string file = folder.write("app.json", "{}");
    CHECK(faults_of(file + "/app.json") == file + "/app.json: cannot read the file (Not a directory)" + expected);
}
