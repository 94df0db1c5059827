// test_references.cpp: what parts of an application name each other by, and what follows from a part that is lost.
#include <doctest/doctest.h>

#include <string>
#include <utility>
#include <vector>

#include "application_text.h"
#include "made_application.h"

using namespace kelhost;

namespace {

std::string with_handlers(const std::string &children, const std::string &handlers) {
    const std::string app = with_children(children);
    return app.substr(0, app.size() - 1) + ", \"handlers\": [" + handlers + "]}";
}

} // namespace

TEST_CASE("a layer whose name cannot be read makes no reference to it unknown") {
    const std::string rest = R"("size": {"width": 1, "height": 1}, "name": "t", "default_screen": "home",
                                "screens": [{"name": "home", "layers": [{"layer": "main"}]}]})";
    CHECK(all_faults(R"({"layers": [{"name": 5}], )" + rest)
          == "app.json: $.layers[0].name: found 5, expected a string\n");
    CHECK(all_faults(R"({"layers": [{}], )" + rest) == "app.json: $.layers[0].name: missing member \"name\"\n");
    CHECK(all_faults(R"({"layers": ["main"], )" + rest)
          == "app.json: $.layers[0]: found \"main\", expected an object\n");
    CHECK(all_faults(R"({"layers": "main", )" + rest) == "app.json: $.layers: found \"main\", expected an array\n");
    CHECK(all_faults("{" + rest) == "app.json: $.layers: missing member \"layers\"\n");
    // But a name that is only spelt badly is known.
    CHECK(all_faults(R"({"layers": [{"name": "ma-in"}], )" + rest)
          == "app.json: $.layers[0].name: found \"ma-in\", expected a name of letters, digits and \"_\"\n"
             "app.json: $.screens[0].layers[0].layer: unknown layer \"main\", did you mean \"ma-in\"?\n");
}

TEST_CASE("a screen whose name cannot be read does not make the default screen unknown") {
    CHECK(all_faults(R"({"name": "t", "size": {"width": 1, "height": 1}, "default_screen": "home", "layers": [],
                         "screens": [{"name": null}]})")
          == "app.json: $.screens[0].name: found null, expected a string\n");
}

TEST_CASE("templates that cannot be read do not make cells wrong") {
    const auto table = [](const std::string &templates) {
        return with_children(R"({"type": "table", "name": "t", "rows": 1, "cols": 1, "cells": [["row"]], "templates": )"
                             + templates + "}");
    };
    CHECK(all_faults(table("5")) == "app.json: $.layers[0].children[0].templates: found 5, expected an array\n");
    CHECK(all_faults(table("[{}]"))
          == "app.json: $.layers[0].children[0].templates[0].name: missing member \"name\"\n");
    CHECK(all_faults(table(R"([{"name": "other"}])"))
          == "app.json: $.layers[0].children[0].cells[0][0]: unknown template \"row\", expected the name of one in "
             "\"templates\"\n");
}

TEST_CASE("a cell that cannot be read is not called a cell of an unknown template") {
    CHECK(
        all_faults(with_children(R"({"type": "table", "name": "t", "rows": 1, "cols": 3, "templates": [{"name": "row"}],
                                       "cells": [[4, {"template": 5}, {}]]})"))
        == "app.json: $.layers[0].children[0].cells[0][0]: found 4, expected the name of a template or an object\n"
           "app.json: $.layers[0].children[0].cells[0][1].template: found 5, expected a string\n"
           "app.json: $.layers[0].children[0].cells[0][2].template: missing member \"template\"\n");
}

TEST_CASE("an element whose type cannot be read is not blamed for its members") {
    CHECK(
        all_faults(with_children(R"({"name": "a", "children": [{"type": "control", "name": "b"}], "rows": 1, "width": 5,
                                       "draw": {"fill": "#000000"}})"))
        == "app.json: $.layers[0].children[0].type: missing member \"type\"\n");
}

TEST_CASE("a variable whose type cannot be read is not blamed for its value") {
    CHECK(all_faults(R"({"name": "t", "size": {"width": 1, "height": 1}, "layers": [], "screens": [],
                         "variables": {"v": {"value": "a", "type": "text"}, "w": {"value": "b"}}})")
          == "app.json: $.variables.v.type: found \"text\", expected \"i8\", \"u8\", \"i16\", \"u16\", \"i32\", "
             "\"u32\", \"f64\" or \"string\"\n"
             "app.json: $.variables.w.type: missing member \"type\"\n");
}

TEST_CASE("targets are not called unknown where objects may have been lost") {
    const std::string handler = R"({"event": "press", "target": "main.ok", "function": "f"})";
    const std::string unknown =
        "app.json: $.handlers[0].target: unknown target \"main.ok\", expected the qualified name "
        "of an object or the key of a variable\n";
    CHECK(all_faults(with_handlers("", handler)) == unknown);
    CHECK(all_faults(with_handlers(R"({"type": "control", "name": 1})", handler))
          == "app.json: $.layers[0].children[0].name: found 1, expected a string\n");
    CHECK(all_faults(with_handlers(R"({"type": "control", "name": "a", "variables": 1})", handler))
          == "app.json: $.layers[0].children[0].variables: found 1, expected an object\n");
    // These faults can have hidden nothing.
    CHECK(all_faults(with_handlers(R"({"type": "control", "name": "a", "x": "1"})", handler))
          == "app.json: $.layers[0].children[0].x: found \"1\", expected a whole number from -32768 to 32767\n"
                 + unknown);
    CHECK(all_faults(with_handlers(
              R"({"type": "control", "name": "a", "variables": {"b": {"type": "u9", "value": 1}}})", handler))
          == "app.json: $.layers[0].children[0].variables.b.type: found \"u9\", expected \"i8\", \"u8\", \"i16\", "
             "\"u16\", \"i32\", \"u32\", \"f64\" or \"string\"\n"
                 + unknown);
}

TEST_CASE("a variable whose value cannot be read is still there for those who refer to it") {
    CHECK(
        all_faults(with_handlers(R"({"type": "control", "name": "a", "variables": {"b": null, "kld_z": []}})",
                                 R"({"event": "kel.changed", "target": "main.a.b", "function": "f"})"))
        == "app.json: $.layers[0].children[0].variables.b: found null, expected a boolean, a number, a string or an "
           "object with \"type\" and \"value\"\n"
           "app.json: $.layers[0].children[0].variables.kld_z: found an array, expected a boolean, a number, a string "
           "or an object with \"type\" and \"value\"\n");
}

TEST_CASE("a handler's target is an object, a variable of one, or of the application") {
    ApplicationDescription app = with_element(make_table(2, 1));
    app.variables = {
        {"mode", DataType::u8, 0.0}
    };
    app.layers[0].children[0].templates[0].variables = {
        {"text", DataType::string, std::string()}
    };
    ElementDescription group = make_element(ElementKind::group, "bar");
    group.children.push_back(make_element(ElementKind::control, "ok"));
    app.layers[0].children.push_back(group);
    const auto is_known = [&app](const std::string &target) {
        ApplicationDescription changed = app;
        changed.handlers = {
            {"e", target, "f"}
        };
        return faults_of(changed) == "";
    };
    for (const std::string target :
         {"mode", "main", "main.kld_width", "home", "home.main", "home.main.kld_alpha", "home.main.kld_hidden",
          "main.list", "main.list.kld_rows", "main.list.kld_x", "main.row", "main.bar", "main.bar.kld_y", "main.bar.ok",
          "main.bar.ok.kld_height", "main.list.text.0.0", "main.list.text.1.0"}) {
        INFO(target);
        CHECK(is_known(target));
    }
    for (const std::string target : {"mod",
                                     "mode.mode",
                                     ".mode",
                                     "main.",
                                     ".main",
                                     "main.kld_x",
                                     "kld_width",
                                     "home.kld_x",
                                     "main.main",
                                     "main.bar.kld_width",
                                     "main.bar.ok.kld_rows",
                                     "main.row.text",
                                     "main.list.text",
                                     "main.list.text.2.0",
                                     "main.list.text.0.1",
                                     "main.list.text.00.0",
                                     "main.list.text.-1.0",
                                     "main.list.text.0",
                                     "main.list.note.0.0",
                                     "main.bar.text.0.0",
                                     "main.list.row"}) {
        INFO(target);
        CHECK_FALSE(is_known(target));
    }
}

TEST_CASE("the nearest of all objects and of the owner's variables is suggested for a target") {
    CHECK(all_faults(with_handlers(R"({"type": "control", "name": "slider", "variables": {"level": 1}})",
                                   R"({"event": "e", "target": "main.slidr", "function": "f"},
                                      {"event": "e", "target": "main.slider.levle", "function": "f"},
                                      {"event": "e", "target": "main.slider.kldx", "function": "f"},
                                      {"event": "e", "target": "hoem", "function": "f"})"))
          == "app.json: $.handlers[0].target: unknown target \"main.slidr\", did you mean \"main.slider\"?\n"
             "app.json: $.handlers[1].target: unknown target \"main.slider.levle\", did you mean "
             "\"main.slider.level\"?\n"
             "app.json: $.handlers[2].target: unknown target \"main.slider.kldx\", did you mean "
             "\"main.slider.kld_x\"?\n"
             "app.json: $.handlers[3].target: unknown target \"hoem\", did you mean \"home\"?\n");
}

TEST_CASE("after a hundred unknown references nothing is suggested any more, but each is reported") {
    ApplicationDescription app = make_application();
    app.screens[0].layers.assign(102, {});
    for (LayerInstanceDescription &instance : app.screens[0].layers) instance.layer = "mian";
    Diagnostics faults;
    validate(app, faults);
    REQUIRE(faults.size() == 102);
    CHECK(faults[99].message == "unknown layer \"mian\", did you mean \"main\"?");
    CHECK(faults[100].message == "unknown layer \"mian\", expected the name of one in \"layers\"");
    CHECK(faults[101].path == "$.screens[0].layers[101].layer");
}
