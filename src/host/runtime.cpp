// runtime.cpp: builds an application up, starts it and takes it down, each in the one order that works.
#include "runtime.h"

#include <utility>

#include "file.h"

namespace kelhost {

namespace {

constexpr char lua_state_entry[] = "luastate"; // where plug-ins look for the state

} // namespace

Runtime::Runtime(const ApplicationDescription &application, Options run_options)
    : description(application), options(std::move(run_options)), log(options.log, options.log_level), io(log),
      data(log, io), load_info{io.record(), data.record()}, record{}, model(record, data, log), lua(*this),
      plugins(record), handlers(*this) {
    record.runtime = this;
    record.version.major = host_interface_major;
    record.linfo = &load_info;
    record.screen_map = &screens;
    record.layer_map = &layers;
    record.shared_data_map = &shared_data;
    record.animation_map = &animations;
    record.metric_map = &metrics;
    model.build(description);
}

Runtime::~Runtime() { take_down(); }

Runtime::Activity::Activity(Runtime &runtime, std::string what)
    : runtime_(runtime), before_(std::exchange(runtime.activity, std::move(what))) {
    if (runtime_.options.activity) runtime_.options.activity(runtime_.activity);
}

Runtime::Activity::~Activity() {
    runtime_.activity = std::move(before_);
    if (runtime_.options.activity) runtime_.options.activity(runtime_.activity);
}

Runtime::Use::Use(Runtime &runtime) : runtime_(runtime), activity_(runtime, "the application") {
    if (runtime_.uses++ == 0) runtime_.forget_interruption();
}

Runtime::Use::~Use() {
    if (--runtime_.uses == 0) runtime_.forget_interruption();
}

void Runtime::interrupt() noexcept {
    lua.interrupt();
    if (uses > 0) io.interrupt();
}

void Runtime::forget_interruption() noexcept {
    lua.forget_interruption();
    io.forget_interruption();
}

StartResult Runtime::start() {
    if (started || stopped) {
        start_failure = "An application can be started once only";
        return StartResult::plugin_failed;
    }
    started = true;
    const Use use(*this);
    if (std::string reason = start_plugins(); !reason.empty()) return fail(std::move(reason));
    if (!lua.open()) return fail("Cannot make the Lua state: not enough memory");
    shared_data.entries.insert_or_assign(lua_state_entry, lua.state());
    io.trigger("kel.internalinit", {});
    const bool succeeded = run_scripts();
    handlers.subscribe();
    io.queue("kel.started", {});
    io.pump();
    return succeeded ? StartResult::started : StartResult::script_failed;
}

std::string Runtime::start_plugins() {
    for (const Plugin &plugin : options.plugins)
        if (std::string reason = plugins.load(plugin); !reason.empty()) return reason;
    return {};
}

StartResult Runtime::fail(std::string reason) {
    start_failure = std::move(reason);
    take_down();
    return StartResult::plugin_failed;
}

// A script that fails does not keep the later ones from running.
bool Runtime::run_scripts() {
    bool succeeded = true;
    for (const std::string &script : description.scripts)
        if (!lua.run_file(join_path(description.folder, script), script)) succeeded = false;
    return succeeded;
}

void Runtime::stop() noexcept {
    if (uses == 0)
        take_down();
    else
        log.write(KL_LOG_ERROR, "The application cannot be stopped by what runs in it");
}

// Plug-ins are told first; finalizers of the Lua state may still call their code, which goes last.
void Runtime::take_down() noexcept {
    if (std::exchange(stopped, true)) return;
    handlers.unsubscribe();
    plugins.finish();
    lua.close();
    shared_data.entries.erase(lua_state_entry);
    // Listeners of plug-ins would be called in code that is gone.
    io.record()->fini(io.record());
    data.record()->fini(data.record());
    plugins.unload();
}

void Runtime::release_changes() noexcept {
    try {
        data.release();
    } catch (...) {
        log.write(KL_LOG_ERROR, "Cannot tell of changes: not enough memory");
    }
}

} // namespace kelhost
