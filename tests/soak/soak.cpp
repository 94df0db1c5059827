// soak.cpp: calls the thermostat's handlers for as long as an hour of use would, and finds whether anything grows.
//
//     soak APP PLUGIN CALLS SCRIPT...
//
// A round of events leaves the application as it was. After some rounds to warm up, memory is measured; then come ten
// tenths of as many rounds each, and memory is measured again: it must be the same, to the block and the byte. The work
// of the last tenth must be that of the first, counted rather than timed. Scripts run at the start, after the
// application's own.
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <lua.hpp>

#include <kelhost/application.h>
#include <kelhost/memory.h>

#include "object_names.h"

namespace {

// ---- The C++ heap ----

std::uint64_t requests_of_new = 0;
std::uint64_t live_blocks_of_new = 0;

void *allocate(std::size_t bytes) {
    void *const block = std::malloc(bytes != 0 ? bytes : 1);
    if (block == nullptr) throw std::bad_alloc();
    ++requests_of_new;
    ++live_blocks_of_new;
    return block;
}

void release(void *block) noexcept {
    if (block == nullptr) return;
    --live_blocks_of_new;
    std::free(block);
}

} // namespace

void *operator new(std::size_t bytes) { return allocate(bytes); }
void *operator new[](std::size_t bytes) { return allocate(bytes); }
void operator delete(void *block) noexcept { release(block); }
void operator delete[](void *block) noexcept { release(block); }
void operator delete(void *block, std::size_t) noexcept { release(block); }
void operator delete[](void *block, std::size_t) noexcept { release(block); }

namespace {

using namespace kelhost;

// ---- What is counted ----

// Since the program began.
std::uint64_t handler_calls = 0;
std::uint64_t instructions = 0;
std::uint64_t printed_bytes = 0;
std::uint64_t log_lines = 0;

void count_instruction(lua_State *, lua_Debug *) { ++instructions; }

struct Figure {
    const char *name;
    std::uint64_t value;
};

constexpr std::size_t memory_figures = 7;
using Memory = std::array<Figure, memory_figures>;

Memory measure_memory(Application &app) {
    lua_State *const L = app.lua();
    lua_gc(L, LUA_GCCOLLECT, 0);
    lua_gc(L, LUA_GCCOLLECT, 0); // what the first one finalized is freed now
    const auto kilobytes = static_cast<std::uint64_t>(lua_gc(L, LUA_GCCOUNT, 0));
    const auto rest = static_cast<std::uint64_t>(lua_gc(L, LUA_GCCOUNTB, 0));
    const std::uint64_t variables = app.keys().size();
    const std::uint64_t objects = object_names(app).size();
    const MemoryCounts counts = memory_counts();
    return {
        {{"blocks of the plug-in's heap", counts.live_blocks},
         {"bytes of the plug-in's heap", counts.live_bytes},
         {"blocks of the host's heap", live_blocks_of_new},
         {"bytes of Lua's heap", kilobytes * 1024 + rest},
         {"variables", variables},
         {"objects", objects},
         {"open change holds", static_cast<std::uint64_t>(app.hold_depth())}}
    };
}

constexpr std::size_t work_figures = 6;
using Work = std::array<Figure, work_figures>;

Work work_so_far() {
    return {
        {{"handler calls", handler_calls},
         {"Lua instructions", instructions},
         {"requests to the plug-in's heap", memory_counts().requests},
         {"requests to the host's heap", requests_of_new},
         {"bytes printed", printed_bytes},
         {"lines logged", log_lines}}
    };
}

Work operator-(Work later, const Work &earlier) {
    for (std::size_t i = 0; i < later.size(); ++i) later[i].value -= earlier[i].value;
    return later;
}

// Prints both and what differs. Returns how many do.
template <class Figures>
int compare(const char *title, const char *first, const Figures &before, const char *last, const Figures &after) {
    int differences = 0;
    std::printf("%-34s %14s %14s\n", title, first, last);
    for (std::size_t i = 0; i < before.size(); ++i) {
        const bool same = before[i].value == after[i].value;
        if (!same) ++differences;
        std::printf("  %-32s %14llu %14llu%s\n", before[i].name, static_cast<unsigned long long>(before[i].value),
                    static_cast<unsigned long long>(after[i].value), same ? "" : "  DIFFERS");
    }
    return differences;
}

// ---- What is done ----

struct Event {
    const char *name;
    const char *target;
};

// Each leads back: what one opens, sets or adds, a later one closes, sets back or takes away.
constexpr Event round_of_events[] = {
    {"press", "climate.target.warmer"      },
    {"press", "climate.target.colder"      },
    {"press", "climate.mode.cool"          },
    {"press", "climate.mode.heat"          },
    {"press", "climate.room.alerts"        }, // clones a row for each alert
    {"press", "climate.room.alerts"        }, // deletes them
    {"press", "week.heading.holiday"       }, // one row more
    {"press", "week.heading.holiday"       }, // one less
    {"press", "preferences.child_lock.card"},
    {"press", "climate.target.warmer"      }, // refused: locked
    {"press", "preferences.child_lock.card"},
    {"press", "preferences.brightness.card"},
    {"press", "preferences.brightness.card"},
    {"press", "preferences.brightness.card"},
    {"press", "preferences.brightness.card"},
    {"press", "preferences.brightness.card"}, // five steps go round
    {"press", "preferences.firmware.card"  },
};

void play_round(Application &app) {
    for (const Event &event : round_of_events) {
        app.queue_event(event.name, event.target);
        app.pump();
    }
}

void play(Application &app, std::uint64_t rounds) {
    for (std::uint64_t i = 0; i < rounds; ++i) play_round(app);
    lua_gc(app.lua(), LUA_GCCOLLECT, 0); // so that each tenth pays for its own garbage
}

Options quiet_options(const char *plugin) {
    Options options;
    options.plugins.emplace_back().path = plugin;
    options.log = [](const LogEntry &) { ++log_lines; };
    options.output = [](std::string_view text) { printed_bytes += text.size(); };
    options.activity = [](std::string_view what) {
        if (what.starts_with("handler ")) ++handler_calls;
    };
    return options;
}

std::uint64_t calls_of_a_round(Application &app) {
    const std::uint64_t before = handler_calls;
    play_round(app);
    return handler_calls - before;
}

int soak(Application &app, std::uint64_t calls) {
    constexpr std::uint64_t tenths = 10;
    play_round(app);
    const std::uint64_t rounds = calls / tenths / calls_of_a_round(app) + 1;
    // To warm up. The first measurement leaves Lua's heap in a shape of its own, and every later one in the same.
    play(app, rounds / tenths + 10);
    measure_memory(app);
    play(app, 1);
    const Memory memory_before = measure_memory(app);
    std::array<Work, tenths> work{};
    for (Work &tenth : work) {
        const Work before = work_so_far();
        const auto start = std::chrono::steady_clock::now();
        play(app, rounds);
        tenth = work_so_far() - before;
        const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
        std::printf("%llu calls, %.0f us a thousand calls (for information)\n",
                    static_cast<unsigned long long>(tenth[0].value),
                    1000 * time.count() / static_cast<double>(tenth[0].value));
    }
    const Memory memory_after = measure_memory(app);
    const int differences = compare("memory", "after warm-up", memory_before, "at the end", memory_after)
                            + compare("work", "first tenth", work.front(), "last tenth", work.back());
    for (const ScriptError &error : app.script_errors()) std::printf("a script failed: %s\n", error.message.c_str());
    const int faults = differences + static_cast<int>(app.script_errors().size());
    std::printf("%llu handler calls: %s\n", static_cast<unsigned long long>(handler_calls),
                faults == 0 ? "nothing grows" : "NOT AS IT SHOULD BE");
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: soak APP PLUGIN CALLS SCRIPT...\n");
        return 2;
    }
    Diagnostics faults;
    const auto app = Application::load(argv[1], quiet_options(argv[2]), faults);
    if (app == nullptr || app->start() != StartResult::started) {
        std::fprintf(stderr, "error: %s does not start\n", argv[1]);
        return 2;
    }
    for (int i = 4; i < argc; ++i) app->run_script(argv[i]);
    lua_sethook(app->lua(), count_instruction, LUA_MASKCOUNT, 1);
    return soak(*app, std::strtoull(argv[3], nullptr, 10));
}
