// thermostat.cpp: runs the application that the command line names, presses a button and tells what became of it.
#include <cstdio>
#include <string_view>

#include <kelhost/application.h>
#include <lua.hpp>

int main(int argc, char **argv) {
    if (argc != 2) return 2;
    kelhost::Options options;
    options.plugins = {{.path = PLUGIN}};
    options.output = [](std::string_view) {}; // what the scripts print is theirs
    kelhost::Diagnostics faults;
    const auto app = kelhost::Application::load(argv[1], std::move(options), faults);
    for (const kelhost::Diagnostic &fault : faults) std::printf("%s\n", kelhost::to_text(fault).c_str());
    if (!app || app->start() != kelhost::StartResult::started) return 1;

    app->queue_event("press", "climate.target.warmer");
    app->pump();
    lua_getglobal(app->lua(), "keldom");
    std::printf("%s %g %zu %zu\n", lua_typename(app->lua(), lua_type(app->lua(), -1)),
                std::get<double>(*app->variable("target_celsius")), app->warnings(), app->script_errors().size());
    lua_pop(app->lua(), 1);
    return 0;
}
