// unprotected.cpp: runs a script in an application with the debug library, which shows it the metatables of handles.
//
//     unprotected PLUGIN APPLICATION SCRIPT
#include <cstdio>
#include <string_view>
#include <utility>

#include <kelhost/application.h>

int main(int count, char **arguments) {
    if (count != 4) {
        std::fputs("expected PLUGIN APPLICATION SCRIPT\n", stderr);
        return 2;
    }
    bool shown = false; // what the application's own scripts print is not
    kelhost::Options options;
    options.sandbox.debug = true;
    options.plugins.emplace_back().path = arguments[1];
    options.output = [&shown](std::string_view line) {
        if (shown) std::fwrite(line.data(), 1, line.size(), stdout);
    };
    kelhost::Diagnostics faults;
    const auto app = kelhost::Application::load(arguments[2], std::move(options), faults);
    if (app == nullptr || app->start() != kelhost::StartResult::started) return 2;
    shown = true;
    return app->run_script(arguments[3]) ? 0 : 1;
}
