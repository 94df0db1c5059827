// check.cpp: `kel check`: reads an application and compiles its scripts; runs nothing.
#include "commands.h"
#include "output.h"

#include <memory>
#include <string>

#include <kelhost/application.h>

namespace kelhost {

namespace {

constexpr const char *footer = R"(Examples:
  kel check examples/thermostat
  kel check examples/thermostat/app.json && echo ready to ship

Exit status: 0 no fault; 1 scripts that do not compile are the only faults; 2 bad usage or a faulty application file.)";

// Controls, tables and groups; a table's cells count as part of it.
std::size_t count_elements(const std::vector<ElementDescription> &elements) {
    std::size_t count = elements.size();
    for (const ElementDescription &element : elements) count += count_elements(element.children);
    return count;
}

std::size_t count_objects(const ApplicationDescription &description) {
    std::size_t count = 0;
    for (const LayerDescription &layer : description.layers) count += count_elements(layer.children);
    return count;
}

std::string summary(const Application &app) {
    const ApplicationDescription &description = app.description();
    return description.file + ": " + counted(description.screens.size(), "screen") + ", "
           + counted(description.layers.size(), "layer") + ", " + counted(count_objects(description), "object") + ", "
           + counted(app.keys().size(), "variable") + ", " + counted(description.scripts.size(), "script") + ": ";
}

ExitStatus check(const std::string &path) {
    Options options;
    options.log = report_log;
    Diagnostics faults;
    const auto app = Application::load(path, std::move(options), faults);
    if (app == nullptr) {
        report_faults(faults, faults.empty() ? path : faults.front().file);
        return bad_input;
    }
    faults = app->check_scripts();
    if (!faults.empty()) {
        report_faults(faults, app->description().file);
        return failed;
    }
    print(summary(*app));
    print_success("no faults");
    print("\n");
    return succeeded;
}

} // namespace

Command add_check_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("check", "Check an application and compile its scripts, without running it");
    const auto path = std::make_shared<std::string>();
    parser->add_option("APP", *path, "Application file, or the folder that holds it as app.json")
        ->required()
        ->type_name("PATH");
    parser->footer(footer);
    return {parser, [path] { return check(*path); }};
}

} // namespace kelhost
