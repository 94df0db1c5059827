// bench_host.cpp: what it costs to load and start an application, by its number of controls.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include <kelhost/application.h>

namespace {

using namespace kelhost;

std::unique_ptr<Application> load(std::int64_t controls) {
    Options options;
    options.log = [](const LogEntry &entry) { std::fprintf(stderr, "%s\n", std::string(entry.text).c_str()); };
    options.plugins.emplace_back().path = PLUGIN;
    Diagnostics faults;
    auto application =
        Application::load(APPLICATIONS "/large_" + std::to_string(controls) + ".json", std::move(options), faults);
    if (application) return application;
    for (const Diagnostic &fault : faults) std::fprintf(stderr, "%s\n", to_text(fault).c_str());
    std::exit(1);
}

// Reads, checks and builds; the application's end is not counted.
void load_application(benchmark::State &state) {
    for ([[maybe_unused]] auto iteration : state) {
        auto application = load(state.range(0));
        state.PauseTiming();
        application.reset();
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}

// Loads the plug-in, opens Lua, delivers the start-up event.
void start_application(benchmark::State &state) {
    for ([[maybe_unused]] auto iteration : state) {
        state.PauseTiming();
        auto application = load(state.range(0));
        state.ResumeTiming();
        if (application->start() != StartResult::started) std::exit(1);
        state.PauseTiming();
        application.reset();
        state.ResumeTiming();
    }
}

// What a script's look-up by name costs in all.
void look_up_by_name(benchmark::State &state) {
    auto application = load(state.range(0));
    if (application->start() != StartResult::started) std::exit(1);
    const auto &layer = application->description().layers.front();
    const std::string code = "local get = keldom.get_object for _ = 1, 100 do get('" + layer.name + "') end";
    for ([[maybe_unused]] auto iteration : state) application->run_code(code, "bench");
    state.SetItemsProcessed(state.iterations() * 100);
}

BENCHMARK(load_application)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(start_application)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond);
BENCHMARK(look_up_by_name)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
