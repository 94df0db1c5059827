// sample_model.cpp: makes an application of a size and starts it.
#include "sample_model.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include <kel/sdk/plugin.h>

namespace bench {

namespace {

// By appending: GCC 12 warns of the other way for no reason.
std::string numbered(std::string name, int number) { return name.append(std::to_string(number)); }

using namespace kelhost;

ElementDescription make_control(std::string name) {
    ElementDescription control;
    control.name = std::move(name);
    control.geometry = {10, 20, 41, 21};
    return control;
}

ElementDescription make_group(std::string name, std::vector<ElementDescription> children) {
    ElementDescription group;
    group.kind = ElementKind::group;
    group.name = std::move(name);
    group.children = std::move(children);
    return group;
}

LayerDescription make_main_layer(Size size) {
    std::vector<ElementDescription> children;
    children.reserve(static_cast<std::size_t>(size.controls));
    for (int number = 0; number < size.controls; ++number)
        children.push_back(make_control(numbered("c", 10000 + number)));
    for (int level = size.depth - 1; level > 0; --level) {
        std::vector<ElementDescription> outer;
        outer.push_back(make_group(numbered("g", level), std::move(children)));
        children = std::move(outer);
    }
    LayerDescription layer;
    layer.name = "main";
    layer.children = std::move(children);
    return layer;
}

LayerDescription make_side_layer() {
    ElementDescription panel = make_control("panel");
    for (int number = 1; number <= 100; ++number)
        panel.variables.push_back({numbered("v", number), DataType::i32, static_cast<double>(number)});
    ElementDescription grid = make_control("grid");
    grid.kind = ElementKind::table;
    grid.rows = grid.cols = 4;
    grid.templates.emplace_back().name = "cell";
    LayerDescription layer;
    layer.name = "side";
    layer.children = {make_group("few", {make_control("a"), make_control("b"), make_control("c")}), panel, grid};
    return layer;
}

ScreenDescription make_screen(const char *name, const std::vector<const char *> &layers) {
    ScreenDescription screen;
    screen.name = name;
    for (const char *layer : layers) screen.layers.emplace_back().layer = layer;
    return screen;
}

ApplicationDescription describe(Size size) {
    ApplicationDescription description;
    description.name = "sample";
    description.width = 480;
    description.height = 272;
    description.layers.push_back(make_main_layer(size));
    description.layers.push_back(make_side_layer());
    description.screens = {make_screen("home", {"main", "side"}), make_screen("spare", {"side"})};
    return description;
}

[[noreturn]] void fail(const std::string &text) {
    std::fprintf(stderr, "%s\n", text.c_str());
    std::exit(1);
}

} // namespace

SampleModel start_sample(Size size) {
    Options options;
    options.log = [](const LogEntry &entry) { fail(std::string(entry.text)); };
    options.plugins.emplace_back().entry = KEL_PLUGIN_CREATE_FUNC;
    Diagnostics faults;
    auto application = Application::create(describe(size), std::move(options), faults);
    if (!application) fail(to_text(faults.front()));
    if (application->start() != StartResult::started) fail(application->start_failure());
    std::string container = "main";
    for (int level = 1; level < size.depth; ++level) container += numbered(".g", level);
    std::string control = container + numbered(".c", 10000 + size.controls / 2);
    return {std::move(application), size, std::move(container), std::move(control)};
}

} // namespace bench
