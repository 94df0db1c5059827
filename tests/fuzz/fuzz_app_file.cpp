// fuzz_app_file.cpp: application files. Each either has faults, with a place in the file and a text, or is an
// application that starts, whose model is whole and which leaves nothing behind.
#include <algorithm>
#include <string>

#include <kelhost/memory.h>

#include "app_file.h"
#include "fuzzer.h"
#include "model_checks.h"
#include "runtime.h"
#include "validate.h"

namespace {

using fuzz::require;
using kelhost::Diagnostic;

// What a file may ask for is bounded by the host, but the fuzzer has no time for as much.
constexpr int most_cells_of_all = 5000;

void require_sound(const Diagnostic &fault, std::string_view text) {
    const std::string shown = to_text(fault);
    require(fault.file == "app.json" && !fault.message.empty(), "a fault says nothing: " + shown);
    require((fault.line == 0) == (fault.column == 0), "a fault has half a place: " + shown);
    require(fault.line == 0 || fault.path.empty(), "a fault has two places: " + shown);
    const auto lines = 1 + std::count(text.begin(), text.end(), '\n') + std::count(text.begin(), text.end(), '\r');
    require(fault.line <= lines, "a fault lies behind the file: " + shown);
}

int cells_in(const std::vector<kelhost::ElementDescription> &elements) {
    int cells = 0;
    for (const auto &element : elements) cells += element.rows * element.cols + cells_in(element.children);
    return cells;
}

bool is_large(const kelhost::ApplicationDescription &description) {
    int cells = 0;
    for (const auto &layer : description.layers) cells += cells_in(layer.children);
    return cells > most_cells_of_all;
}

// Every variable and object that the file describes is there; of the rest the model's checks take care.
void require_described(kelhost::Runtime &runtime, const kelhost::ApplicationDescription &description) {
    for (const auto &variable : description.variables) {
        const auto *found = runtime.data.find(variable.name);
        require(found != nullptr && found->type == variable.type, "no variable " + variable.name);
    }
    for (const auto &layer : description.layers) {
        require(runtime.model.find(layer.name) != nullptr, "no layer " + layer.name);
        for (const auto &element : layer.children)
            require(runtime.model.find(layer.name + "." + element.name) != nullptr, "no element " + element.name);
    }
    require(runtime.layers.entries.size() == description.layers.size(), "another number of layers");
    require(runtime.screens.entries.size() == description.screens.size(), "another number of screens");
}

void start(const kelhost::ApplicationDescription &description) {
    kelhost::Options options;
    options.plugins.emplace_back().entry = KEL_PLUGIN_CREATE_FUNC;
    options.log = [](const kelhost::LogEntry &) {};
    options.output = [](std::string_view) {};
    kelhost::Runtime runtime(description, options);
    require(runtime.start() == kelhost::StartResult::started, "an application without faults does not start");
    require_described(runtime, description);
    fuzz::require_whole(runtime);
    const bool answers = runtime.lua.run_code("assert(keldom.get_application():get_type() == keldom.APP)\n"
                                              "for _, layer in ipairs(keldom.get_layers()) do\n"
                                              "    assert(keldom.get_object(layer:get_name()) == layer)\n"
                                              "    for _, child in ipairs(layer:get_children()) do\n"
                                              "        assert(child:get_parents()[1] == layer)\n"
                                              "    end\n"
                                              "end",
                                              "known");
    require(answers, answers ? "" : runtime.lua.errors().back().message);
}

} // namespace

void fuzz::run(Input input) {
    const std::string_view text(reinterpret_cast<const char *>(input.data()), input.size());
    kelhost::Diagnostics faults;
    auto description = kelhost::parse_application(text, "app.json", faults);
    require(description || faults.size() == 1, "what is no JSON has one fault");
    if (description) kelhost::validate(*description, faults);
    for (const Diagnostic &fault : faults) require_sound(fault, text);
    if (!faults.empty() || is_large(*description)) return;
    description->scripts.clear(); // they would name any file of this machine
    const std::size_t blocks = kelhost::memory_counts().live_blocks;
    start(*description);
    require(kelhost::memory_counts().live_blocks == blocks, "blocks are left when the application is gone");
}

std::string fuzz::describe(Input input) {
    return std::string(reinterpret_cast<const char *>(input.data()), input.size()) + "\n";
}
