// test_model.cpp: the objects that a model builds and the names that lead to them.
#include <string>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include <kelhost/application.h>

#include "model_fixture.h"

namespace {

ElementDescription hidden(ElementDescription element) {
    element.hidden = true;
    return element;
}

ElementDescription with_variables(ElementDescription element, std::vector<kelhost::VariableDescription> variables) {
    element.variables = std::move(variables);
    return element;
}

} // namespace

TEST_CASE_FIXTURE(ModelFixture, "the application's record says what the description says") {
    auto description = application({control("ok")});
    description.folder = "examples/sample";
    description.screens.push_back({"second", {}, {}});
    description.default_screen = "second";
    description.variables = {
        {"mode", DataType::u8, 3.0}
    };
    build(description);

    CHECK(app.object.type == KL_OBJECT_TYPE_APP);
    CHECK(std::string(app.name) == "sample");
    CHECK(std::string(app.path) == "examples/sample");
    CHECK(size_text(app.size) == "480x272");
    CHECK(std::string(app.default_screen->name) == "second");
    CHECK(app.pressed_control == nullptr);
    CHECK(variable("mode") == "u8 3");
}

TEST_CASE_FIXTURE(ModelFixture, "the first screen is the default when none is named, and there may be none at all") {
    auto description = application({});
    SUBCASE("first") {
        description.screens.push_back({"second", {}, {}});
        build(description);
        CHECK(std::string(app.default_screen->name) == "home");
    }
    SUBCASE("none") {
        description.screens.clear();
        build(description);
        CHECK(app.default_screen == nullptr);
    }
}

TEST_CASE_FIXTURE(ModelFixture, "screens and layers stand in their maps in the designer's order") {
    auto description = application({});
    description.layers.push_back({"a_layer", {}, {}, {}, {}, {}});
    description.screens.push_back({"a_screen", {}, {}});
    build(description);

    std::string order;
    const auto note = [](const char *key, void *, void *text) {
        *static_cast<std::string *>(text) += std::string(key) + " ";
        return 0;
    };
    kl_string_map_traverse(app.screen_map, note, &order, 1);
    kl_string_map_traverse(app.layer_map, note, &order, 1);
    CHECK(order == "home a_screen main a_layer ");
    CHECK(kl_string_map_get(app.screen_map, "a_screen") == find("a_screen"));
    CHECK(kl_string_map_get(app.layer_map, "a_layer") == find("a_layer"));
}

TEST_CASE_FIXTURE(ModelFixture, "a layer has its own size, or else the application's") {
    auto description = application({});
    description.layers.push_back({"small", 20, 10, {{"note", DataType::string, "hi"}}, {}, {}});
    build(description);

    const auto &main = record<kl_layer_t>("main");
    CHECK(main.object.type == KL_OBJECT_TYPE_LAYER);
    CHECK(std::string(main.name) == "main");
    CHECK(main.app == &app);
    CHECK(size_text(main.size) == "480x272");
    CHECK(variable("main.kld_width") == "i16 480");
    CHECK(variable("main.kld_height") == "i16 272");
    CHECK(keys("main.") == "main.kld_height main.kld_width ");

    const auto &small = record<kl_layer_t>("small");
    CHECK(size_text(small.size) == "20x10");
    CHECK(rect_text(small.viewport) == "0,0,20,10");
    CHECK(variable("small.kld_width") == "i16 20");
    CHECK(variable("small.kld_height") == "i16 10");
    CHECK(variable("small.note") == "string hi");
}

TEST_CASE_FIXTURE(ModelFixture, "a screen lists its layer instances, bottom first") {
    auto description = application({});
    description.layers.push_back({"popup", 100, 50, {}, {}, {}});
    description.screens.front().variables = {
        {"title", DataType::string, "Home"}
    };
    description.screens.front().layers.push_back({.layer = "popup",
                                                  .x = 7,
                                                  .y = -8,
                                                  .width = 90,
                                                  .height = {},
                                                  .alpha = 128,
                                                  .hidden = true,
                                                  .variables = {{"open", DataType::u8, 1.0}}});
    build(description);

    auto &home = record<kl_screen_t>("home");
    CHECK(home.object.type == KL_OBJECT_TYPE_SCREEN);
    CHECK(std::string(home.name) == "home");
    CHECK(home.app == &app);
    REQUIRE(kl_darray_size(home.layer_list) == 2);
    CHECK(*static_cast<kl_object_t **>(kl_darray_item(home.layer_list, 0)) == find("home.main"));
    CHECK(*static_cast<kl_object_t **>(kl_darray_item(home.layer_list, 1)) == find("home.popup"));
    CHECK(keys("home.")
          == "home.main.kld_alpha home.main.kld_height home.main.kld_hidden home.main.kld_width "
             "home.main.kld_x home.main.kld_y home.popup.kld_alpha home.popup.kld_height "
             "home.popup.kld_hidden home.popup.kld_width home.popup.kld_x home.popup.kld_y "
             "home.popup.open home.title ");

    const auto &first = record<kl_layer_instance_t>("home.main");
    CHECK(first.object.type == KL_OBJECT_TYPE_LAYER_INSTANCE);
    CHECK(&first.layer->object == find("main"));
    CHECK(first.screen == &home);
    CHECK(first.alpha == 255);
    CHECK(first.flags == 0);
    CHECK(first.index == 0);
    CHECK(variable("home.main.kld_width") == "i16 480");
    CHECK(variable("home.main.kld_height") == "i16 272");
    CHECK(variable("home.main.kld_alpha") == "u8 255");

    const auto &second = record<kl_layer_instance_t>("home.popup");
    CHECK(&second.layer->object == find("popup"));
    CHECK(second.x == 7);
    CHECK(second.y == -8);
    CHECK(second.alpha == 128);
    CHECK(second.flags == 1);
    CHECK(second.index == 1);
    CHECK(variable("home.popup.kld_x") == "i16 7");
    CHECK(variable("home.popup.kld_y") == "i16 -8");
    CHECK(variable("home.popup.kld_width") == "i16 90");
    CHECK(variable("home.popup.kld_height") == "i16 50");
    CHECK(variable("home.popup.kld_alpha") == "u8 128");
    CHECK(variable("home.popup.kld_hidden") == "u8 1");
    CHECK(variable("home.popup.open") == "u8 1");
}

TEST_CASE_FIXTURE(ModelFixture, "a control's record and variables come from its description") {
    build({
        control("first"), with_variables(hidden(control("ok", {10,  -20, 100, 40}
          )),
                                         {{"text", DataType::string, "OK"}, {"ratio", DataType::f64, 0.5}   }
          )
    });

    const auto &ok = control_record("main.ok");
    CHECK(ok.object.type == KL_OBJECT_TYPE_CONTROL);
    CHECK(std::string(ok.name) == "ok");
    CHECK(rect_text(ok.rect) == "10,-20,110,20");
    CHECK(size_text(ok.size) == "100x40");
    CHECK(ok.flags == 1);
    CHECK(ok.zindex == 1);
    CHECK(&ok.layer->object == find("main"));
    CHECK(ok.parent == nullptr);
    CHECK(ok.app == &app);
    CHECK(control_record("main.first").zindex == 0);
    CHECK(control_record("main.first").flags == 0);
    CHECK(names_in(list_of("main")) == "first ok ");

    CHECK(keys("main.ok.")
          == "main.ok.kld_height main.ok.kld_hidden main.ok.kld_width main.ok.kld_x main.ok.kld_y "
             "main.ok.ratio main.ok.text ");
    CHECK(variable("main.ok.kld_x") == "i16 10");
    CHECK(variable("main.ok.kld_y") == "i16 -20");
    CHECK(variable("main.ok.kld_width") == "i16 100");
    CHECK(variable("main.ok.kld_height") == "i16 40");
    CHECK(variable("main.ok.kld_hidden") == "u8 1");
    CHECK(variable("main.ok.text") == "string OK");
    CHECK(variable("main.ok.ratio") == "f64 0.5");
}

TEST_CASE_FIXTURE(ModelFixture, "edges that lie beyond the coordinates are cut there") {
    build({control("far", {32767, 32000, 32767, 1000})});
    CHECK(rect_text(control_record("main.far").rect) == "32767,32000,32767,32767");
}

TEST_CASE_FIXTURE(ModelFixture, "groups hold their children in order and nest") {
    auto outer = group("bar", {control("ok"), group("inner", {control("ok")}), group("empty")});
    outer.geometry = {5, 6, 0, 0};
    build({hidden(outer)});

    auto &bar = record<kl_group_t>("main.bar");
    CHECK(bar.control.object.type == KL_OBJECT_TYPE_GROUP);
    CHECK(std::string(bar.control.name) == "bar");
    CHECK(names_in(bar.control_list) == "ok inner empty ");
    CHECK(rect_text(bar.control.rect) == "5,6,5,6");
    CHECK(bar.control.flags == 1);
    CHECK(bar.control.parent == nullptr);
    CHECK(keys("main.bar.kld") == "main.bar.kld_hidden main.bar.kld_x main.bar.kld_y ");
    CHECK(variable("main.bar.kld_x") == "i16 5");
    CHECK(variable("main.bar.kld_y") == "i16 6");
    CHECK(variable("main.bar.kld_hidden") == "u8 1");

    auto &inner = record<kl_group_t>("main.bar.inner");
    CHECK(inner.control.parent == &bar.control);
    CHECK(inner.control.zindex == 1);
    CHECK(&inner.control.layer->object == find("main"));
    CHECK(control_record("main.bar.inner.ok").parent == &inner.control);
    CHECK(find("main.bar.inner.ok") != find("main.bar.ok"));
    CHECK(names_in(list_of("main.bar.empty")).empty());
}

TEST_CASE_FIXTURE(ModelFixture, "names lead to objects, and only whole names") {
    build({control("ok"), group("bar", {control("ok")})});
    for (const char *name : {"main", "home", "home.main", "main.ok", "main.bar", "main.bar.ok"}) {
        INFO(name);
        REQUIRE(find(name) != nullptr);
        CHECK(model.qualified_name(find(name)) == name);
    }
    for (const char *name : {"", ".", "ok", "main.", ".main", "main.o", "main.okk", "main.ok.", "main.bar.o", "home.ok",
                             "home.main.ok", "main.ok.kld_x", "Main"}) {
        INFO(name);
        CHECK(find(name) == nullptr);
    }
    CHECK(find(std::string_view("main.ok.more").substr(0, 7)) == find("main.ok"));
}

TEST_CASE_FIXTURE(ModelFixture, "what is not of the model has no name and no looks") {
    build({control("ok")});
    kl_control_t stranger = control_record("main.ok");
    CHECK(model.qualified_name(&stranger.object).empty());
    CHECK(model.draw_hints(&stranger.object) == nullptr);
    CHECK(model.qualified_name(nullptr).empty());
    CHECK(model.draw_hints(nullptr) == nullptr);
    CHECK(model.qualified_name(&app.object).empty());
}

TEST_CASE_FIXTURE(ModelFixture, "drawing hints are the object's, a cell's its template's") {
    auto ok = control("ok");
    ok.draw.fill = "#102030";
    ok.draw.text = "{text}";
    auto row = cell_template("row");
    row.draw.align = "right";
    row.draw.font_size = 12;
    auto list = table("list", 1, 2, {row, cell_template("plain")});
    list.cells = cells({
        {"row", "plain"}
    });
    list.draw.color = "#ffffff";
    auto description = application({ok, list, group("bar")});
    description.layers.front().draw.fill = "#000000";
    build(description);

    CHECK(model.draw_hints(find("main.ok"))->fill == "#102030");
    CHECK(model.draw_hints(find("main.ok"))->text == "{text}");
    CHECK(model.draw_hints(find("main"))->fill == "#000000");
    CHECK(model.draw_hints(find("main.list"))->color == "#ffffff");
    CHECK(model.draw_hints(find("main.row"))->align == "right");
    CHECK(model.draw_hints(find("main.row"))->font_size == 12);
    CHECK(model.draw_hints(&table_record("main.list").template_controls[0]->object)->font_size == 12);
    REQUIRE(model.draw_hints(find("main.plain")) != nullptr);
    CHECK(model.draw_hints(find("main.plain"))->align.empty());
    CHECK(model.draw_hints(find("main.bar"))->fill.empty());
}

TEST_CASE_FIXTURE(ModelFixture, "a model that was never built knows nothing and goes quietly") {
    CHECK(find("main") == nullptr);
    CHECK(model.refuses_key("main.x") == R"(no object "main")");
    CHECK(model.qualified_name(&app.object).empty());
    model.reclaim();
}

TEST_CASE("a model leaves no trace in the application and the data manager") {
    CapturedLog log;
    kelhost::IoManager io(log.log);
    kelhost::DataManager data(log.log, io);
    kl_string_map_t screens, layers;
    kl_application_t app{};
    app.screen_map = &screens;
    app.layer_map = &layers;
    {
        kelhost::Model model(app, data, log.log);
        model.build(application({control("ok")}));
        CHECK(data.write("nosuch.x", kelhost::to_input(1.0)) == kelhost::WriteResult::refused);
        CHECK(log.take() == "warning: Cannot create nosuch.x: no object \"nosuch\"");
    }
    CHECK(kl_string_map_get(&screens, "home") == nullptr);
    CHECK(kl_string_map_get(&layers, "main") == nullptr);
    CHECK(app.default_screen == nullptr);
    CHECK(data.record()->will_fire_event(data.record(), "main.ok.kld_x") == 0);
    CHECK(data.write("nosuch.x", kelhost::to_input(1.0)) == kelhost::WriteResult::changed);
    CHECK(data.write("main.ok.kld_x", kelhost::to_input(1.0)) == kelhost::WriteResult::changed);
}

TEST_CASE("plug-ins find objects by name") {
    kelhost::Options options;
    std::string logged;
    options.log = [&logged](const kelhost::LogEntry &entry) { logged += entry.text; };
    kelhost::Diagnostics faults;
    const auto app = kelhost::Application::create(application({control("ok")}), std::move(options), faults);
    REQUIRE(app != nullptr);
    REQUIRE(app->find("main.ok") != nullptr);
    CHECK(kl_application_find_object(app->record(), "main.ok", 0) == app->find("main.ok"));
    CHECK(kl_application_find_object(app->record(), "home.main", 0) == app->find("home.main"));
    CHECK(kl_application_find_object(app->record(), "main.nosuch", 0) == nullptr);
    CHECK(kl_application_find_object(app->record(), "", 0) == nullptr);
    CHECK(logged.empty());
}

TEST_CASE_FIXTURE(ModelFixture, "ten thousand controls are built, found and let go in order") {
    std::vector<ElementDescription> groups;
    for (int number = 0; number < 100; ++number) {
        groups.push_back(group("g" + std::to_string(number)));
        for (int child = 0; child < 100; ++child)
            groups.back().children.push_back(control("c" + std::to_string(child)));
    }
    build(std::move(groups));
    CHECK(data.keys("").size() == 2 + 6 + 100 * 3 + 10000 * 5);
    for (int number = 0; number < 100; ++number) {
        const std::string name = "main.g" + std::to_string(number) + ".c" + std::to_string(99 - number);
        CHECK(model.qualified_name(find(name)) == name);
        CHECK(control_record(name).zindex == 99 - number);
    }
}
