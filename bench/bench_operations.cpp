// bench_operations.cpp: how long each operation of the plug-in takes beside its floor, on models of several sizes.
// Both are timed in turns, so that what slows the machine down slows both.
#include <algorithm>
#include <chrono>
#include <optional>

#include <benchmark/benchmark.h>

#include <kel/kel.h>

#include "measurement.h"
#include "sizes.h"

namespace {

using namespace bench;

std::uint64_t nanoseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

// The one model in memory; benchmarks come in the order of their models.
SampleModel &sample_of(Size size) {
    static std::optional<SampleModel> sample;
    if (!sample || sample->size != size) {
        sample.reset();
        sample.emplace(start_sample(size));
    }
    return *sample;
}

void run(benchmark::State &state, const Operation &operation, Size size) {
    Measurement measurement(sample_of(size), operation);
    const int calls = operation.grows ? std::clamp(10000 / size.controls, 1, 100) : most_calls;
    std::int64_t total = 0;
    std::int64_t floor = 0;
    while (state.KeepRunningBatch(calls)) {
        const Reading reading = measurement.measure(nanoseconds, calls);
        total += reading.total;
        floor += reading.floor;
        state.SetIterationTime(static_cast<double>(reading.total) * 1e-9);
    }
    state.counters["floor_ns"] = static_cast<double>(floor) / static_cast<double>(state.iterations());
    state.counters["ratio"] = static_cast<double>(total) / static_cast<double>(floor);
}

// What a handle of one's own costs at least: the yard-stick for lists of handles.
int make_bare_handles(lua_State *L) {
    luaL_getmetatable(L, "bench.bare");
    for (lua_Integer left = lua_tointeger(L, 1); left > 0; --left) {
        auto *const name = static_cast<char **>(lua_newuserdata(L, 2 * sizeof(char *)));
        *name = kelal_strdup("main.g1.g2.c10500");
        lua_pushvalue(L, 2);
        lua_setmetatable(L, -2);
        lua_settop(L, 2);
    }
    return 0;
}

void bare_handles(benchmark::State &state) {
    lua_State *const L = sample_of(standard_size).application->lua();
    Measurement registers_bare(sample_of(standard_size), all_operations().front());
    while (state.KeepRunningBatch(1000)) {
        lua_gc(L, LUA_GCCOLLECT, 0);
        lua_gc(L, LUA_GCCOLLECT, 0);
        lua_gc(L, LUA_GCSTOP, 0);
        lua_pushcfunction(L, make_bare_handles);
        lua_pushinteger(L, 1000);
        const std::uint64_t start = nanoseconds();
        call_lua(L, 1, 0);
        state.SetIterationTime(static_cast<double>(nanoseconds() - start) * 1e-9);
    }
}

void add(const Operation &operation, Size size) {
    const std::string name =
        std::string(operation.name) + "/" + std::to_string(size.controls) + "/" + std::to_string(size.depth);
    benchmark::RegisterBenchmark(name.c_str(), run, operation, size)->UseManualTime()->MinTime(0.1);
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    for (const Operation &operation : all_operations())
        if (!operation.grows) add(operation, standard_size);
    benchmark::RegisterBenchmark("a bare userdata with a name", bare_handles)->UseManualTime()->MinTime(0.1);
    for (const Size size : all_sizes)
        for (const Operation &operation : all_operations())
            if (operation.grows) add(operation, size);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
