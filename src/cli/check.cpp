// check.cpp: `kel check`: reads an application and compiles its scripts; runs nothing.
#include "commands.h"
#include "output.h"

#include <string>

#include <kelhost/application.h>

namespace kelhost {

namespace {

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

} // namespace

ExitStatus check(const CheckArguments &arguments) {
    Options options;
    options.log = report_log;
    Diagnostics faults;
    const auto app = Application::load(arguments.path, std::move(options), faults);
    if (app == nullptr) {
        report_faults(faults, faults.empty() ? arguments.path : faults.front().file);
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

} // namespace kelhost
