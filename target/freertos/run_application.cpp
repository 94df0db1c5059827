// run_application.cpp: one application from its file to its end, on the reference host. Nothing here knows of tasks.
#include "run_application.h"

#include <cstdio>
#include <exception>
#include <new>

#include <kel/sdk/plugin.h>
#include <kelhost/application.h>

#include <output.h>

#include "statuses.h"

namespace {

using namespace kelhost;

std::unique_ptr<Application> load(const std::string &path) {
    Options options;
    options.log = report_log;
    options.output = print;
    options.plugins.emplace_back().entry = KEL_PLUGIN_CREATE_FUNC;
    Diagnostics faults;
    auto app = Application::load(path, std::move(options), faults);
    if (app == nullptr) report_faults(faults, faults.empty() ? path : faults.front().file);
    return app;
}

// "name" or "name:target"
void send(Application &app, const std::string &event) {
    const std::size_t colon = event.find(':');
    app.queue_event(event.substr(0, colon), colon == std::string::npos ? std::string() : event.substr(colon + 1));
    app.pump();
}

int run(const Arguments &arguments, void (*before_scripts)()) {
    const auto app = load(arguments.path);
    if (app == nullptr) return BAD_INPUT;
    before_scripts();
    if (app->start() == StartResult::plugin_failed) {
        report_error(app->start_failure());
        return BAD_INPUT;
    }
    for (const std::string &script : arguments.scripts) {
        app->run_script(script);
        app->pump();
    }
    for (const std::string &event : arguments.events) send(*app, event);
    app->stop();
    return app->script_errors().empty() ? SUCCEEDED : SCRIPT_FAILED;
}

} // namespace

int run_application(const Arguments &arguments, void (*before_scripts)()) noexcept {
    try {
        return run(arguments, before_scripts);
    } catch (const std::bad_alloc &) {
        // Not report_error(): what it does may need memory.
        static_cast<void>(std::fputs("error: not enough memory to run the application\n", stderr));
        return OUT_OF_MEMORY;
    } catch (const std::exception &error) {
        report_error(error.what());
        return BAD_INPUT;
    }
}
