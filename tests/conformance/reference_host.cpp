// reference_host.cpp: the reference host, as the conformance suite starts it.
#include "host_under_test.h"

#include <memory>
#include <utility>

#include <kelhost/application.h>
#include <kelhost/memory.h>

#include "recorder.h"

struct kc_instance_of_host {
    std::unique_ptr<kelhost::Application> application;
};

namespace {

using namespace kelhost;

std::vector<VariableDescription> describe(const kc_variables_t &variables) {
    std::vector<VariableDescription> described;
    for (int i = 0; i < variables.count; ++i) {
        const kc_variable_t &one = variables.items[i];
        Value value = one.text ? Value(std::string(one.text)) : Value(one.number);
        described.push_back({one.name, *data_type_from_name(one.type), std::move(value)});
    }
    return described;
}

ElementDescription describe(const kc_element_t &element) {
    ElementDescription described;
    described.kind = element.kind == KC_TABLE   ? ElementKind::table
                     : element.kind == KC_GROUP ? ElementKind::group
                                                : ElementKind::control;
    described.name = element.name;
    described.geometry = {element.x, element.y, element.width, element.height};
    described.hidden = element.hidden != 0;
    described.variables = describe(element.variables);
    for (int i = 0; i < element.child_count; ++i) described.children.push_back(describe(element.children[i]));
    described.rows = element.rows;
    described.cols = element.cols;
    for (int i = 0; i < element.template_count; ++i) {
        described.templates.emplace_back();
        described.templates.back().name = element.templates[i];
    }
    for (int row = 0; element.cells && row < element.rows; ++row) {
        described.cells.emplace_back();
        for (int col = 0; col < element.cols; ++col)
            described.cells.back().push_back({element.cells[row * element.cols + col], {}});
    }
    return described;
}

ApplicationDescription describe(const kc_application_t &application) {
    ApplicationDescription described;
    described.name = application.name;
    described.width = 480;
    described.height = 272;
    described.variables = describe(application.variables);
    for (int i = 0; i < application.layer_count; ++i) {
        const kc_layer_t &layer = application.layers[i];
        described.layers.emplace_back();
        described.layers.back().name = layer.name;
        described.layers.back().variables = describe(layer.variables);
        for (int j = 0; j < layer.child_count; ++j)
            described.layers.back().children.push_back(describe(layer.children[j]));
    }
    for (int i = 0; i < application.screen_count; ++i) {
        const kc_screen_t &screen = application.screens[i];
        described.screens.emplace_back();
        described.screens.back().name = screen.name;
        described.screens.back().variables = describe(screen.variables);
        for (int j = 0; j < screen.layer_count; ++j) {
            const kc_instance_t &instance = screen.layers[j];
            LayerInstanceDescription placed;
            placed.layer = instance.layer;
            placed.x = instance.x;
            placed.y = instance.y;
            placed.width = instance.width;
            placed.height = instance.height;
            placed.alpha = instance.alpha;
            placed.hidden = instance.hidden != 0;
            described.screens.back().layers.push_back(std::move(placed));
        }
    }
    return described;
}

} // namespace

extern "C" {

// The recorder sees what the plug-in logs, so the host's own log is kept quiet.
kc_host_t *kc_host_start(const kc_application_t *application, int (*entry)(kl_plugin_state_t *state)) {
    set_fault_hook([](std::size_t, std::size_t, void *) { return kc_host_request_fails() != 0; }, nullptr);
    Options options;
    options.log = [](const LogEntry &) {};
    set_host_log_sink([](const LogEntry &) {});
    options.sandbox.debug = true; // tests take metatables apart
    Plugin plugin;
    plugin.entry = entry;
    options.plugins.push_back(std::move(plugin));
    Diagnostics faults;
    auto created = Application::create(describe(*application), std::move(options), faults);
    if (!created || created->start() != StartResult::started) return nullptr;
    return new kc_host_t{std::move(created)};
}

void kc_host_stop(kc_host_t *host) {
    delete host;
    set_fault_hook(nullptr, nullptr);
}

kl_application_t *kc_host_application(kc_host_t *host) { return host->application->record(); }
lua_State *kc_host_lua(kc_host_t *host) { return host->application->lua(); }
const char *kc_host_name(void) { return "the reference host"; }

} // extern "C"
