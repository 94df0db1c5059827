// runtime.h: all that one application is made of, in the order in which it is built up; it is taken down in reverse.
#pragma once

#include <string>

#include <kel/kel.h>

#include <kelhost/application.h>

#include "data_manager.h"
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
    Runtime(const ApplicationDescription &description, Options options);
    ~Runtime();
    Runtime(const Runtime &) = delete;
    Runtime &operator=(const Runtime &) = delete;

    // app is never null.
    static Runtime &of(kl_application_t *app) noexcept { return *static_cast<ApplicationRecord *>(app)->runtime; }

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
    std::string start_failure;
    bool started = false;
    bool stopped = false;
};

} // namespace kelhost
