// heap_figures.cpp: prints, as JSON, what a script's Lua state and its handles take of the heap on this machine.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <lua.hpp>

#include <kel/sdk/plugin.h>
#include <kelhost/application.h>
#include <kelhost/memory.h>

using namespace kelhost;

namespace {

std::unique_ptr<Application> start(bool with_plugin) {
    ApplicationDescription description;
    description.name = "figures";
    description.width = 320;
    description.height = 240;
    ElementDescription button;
    button.name = "ok";
    LayerDescription layer;
    layer.name = "main";
    layer.children.push_back(button);
    description.layers.push_back(layer);

    Options options;
    if (with_plugin) options.plugins.emplace_back().entry = KEL_PLUGIN_CREATE_FUNC;
    Diagnostics faults;
    auto app = Application::create(description, std::move(options), faults);
    if (app == nullptr || app->start() != StartResult::started) std::abort();
    return app;
}

// What is in use, garbage excluded.
long lua_bytes(Application &app) {
    lua_State *const L = app.lua();
    lua_gc(L, LUA_GCCOLLECT, 0);
    lua_gc(L, LUA_GCCOLLECT, 0); // the first one runs finalizers, the second one frees what they were of
    return lua_gc(L, LUA_GCCOUNT, 0) * 1024L + lua_gc(L, LUA_GCCOUNTB, 0);
}

struct PerHandle {
    long lua;
    long name; // of "main.ok", its end included
};

PerHandle measure_handle(Application &app) {
    constexpr int count = 100;
    app.run_code("handles = {} for i = 1, 100 do handles[i] = false end handle = keldom.get_object('main.ok')",
                 "figures");
    const long lua_before = lua_bytes(app);
    const auto blocks_before = memory_counts().live_bytes;
    app.run_code("for i = 1, 100 do handles[i] = keldom.get_object('main.ok') end", "figures");
    const long lua = lua_bytes(app) - lua_before;
    return {lua / count, static_cast<long>(memory_counts().live_bytes - blocks_before) / count};
}

} // namespace

int main() {
    const auto bare = start(false);
    const auto app = start(true);
    const long without = lua_bytes(*bare);
    const long with = lua_bytes(*app);
    const PerHandle handle = measure_handle(*app);
    std::printf("{\"lua_heap_without_plugin_bytes\": %ld, \"lua_heap_after_start_bytes\": %ld, "
                "\"handle_lua_bytes\": %ld, \"handle_name_bytes\": %ld}\n",
                without, with, handle.lua, handle.name);
    return app->script_errors().empty() ? 0 : 1;
}
