// runtime.h: all that one application is made of, in the order in which it is built up; it is taken down in reverse.
#pragma once

#include <string>

#include <kel/kel.h>

#include <kelhost/application.h>

#include "data_manager.h"
#include "event_handlers.h"
#include "io_manager.h"
#include "log.h"
#include "lua_host.h"
#include "model.h"
#include "plugin_loader.h"
#include "string_map.h"

namespace kelhost {

// The application record as the host allocates it: the way back from a plug-in's pointer to the runtime.
struct ApplicationRecord : kl_application_t {
    Runtime *runtime = nullptr;
};

struct Runtime {
    Runtime(const ApplicationDescription &application, Options run_options);
    ~Runtime(); // stop()
    Runtime(const Runtime &) = delete;
    Runtime &operator=(const Runtime &) = delete;

    // app is never null.
    static Runtime &of(kl_application_t *app) noexcept { return *static_cast<ApplicationRecord *>(app)->runtime; }

    // Application::start() and stop(), see there.
    StartResult start();
    void stop() noexcept;
    // Whether scripts can run: from start() to stop(), unless the start failed.
    bool is_running() const noexcept { return lua.state() != nullptr && !stopped; }

    // Application::interrupt(), see there.
    void interrupt() noexcept;

    // Closes a bracket of the data manager for callers who can bear no exception.
    void release_changes() noexcept;

    // Tells whoever asked to know it what the application is at, for as long as the object lives.
    class Activity {
    public:
        Activity(Runtime &runtime, std::string what);
        ~Activity();
        Activity(const Activity &) = delete;
        Activity &operator=(const Activity &) = delete;

    private:
        Runtime &runtime_;
        std::string before_;
    };

    // Counts the host's calls into the application, during which it cannot be taken down. An interruption lasts until
    // the outermost one ends: handlers that queue each other would outlive one that ended with a handler.
    class Use {
    public:
        explicit Use(Runtime &runtime);
        ~Use();
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;

    private:
        Runtime &runtime_;
        Activity activity_;
    };

    ApplicationDescription description;
    Options options;
    Log log;
    IoManager io;
    DataManager data;
    kl_string_map_t screens, layers, shared_data, animations, metrics;
    _kl_load_info load_info;
    ApplicationRecord record;
    Model model;
    LuaHost lua;
    PluginLoader plugins;
    EventHandlers handlers;
    std::string start_failure;
    std::string activity; // what the application is at
    bool started = false;
    bool stopped = false;
    int uses = 0;

private:
    std::string start_plugins();
    StartResult fail(std::string reason);
    bool run_scripts();
    void take_down() noexcept;
    void forget_interruption() noexcept;
};

} // namespace kelhost
