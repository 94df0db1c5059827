// plugin_loader.h: loads plug-ins from shared objects, or takes entry points that are linked in.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <kel/kel.h>

#include <kelhost/options.h>

namespace kelhost {

// The host interface version that this host offers. A plug-in that was built for another major version is refused.
inline constexpr int host_interface_major = 7;

class PluginLoader {
public:
    explicit PluginLoader(kl_application_t &app);
    ~PluginLoader(); // finish() and unload()
    PluginLoader(const PluginLoader &) = delete;
    PluginLoader &operator=(const PluginLoader &) = delete;

    // Loads one plug-in, calls its entry point and its init. Returns "" or what went wrong, with the path. A path is a
    // file's, never a name to be searched for.
    std::string load(const Plugin &plugin);

    // Calls every fini, last loaded first. The code stays loaded: a Lua state may still call it.
    void finish() noexcept;
    // Unloads the shared objects, when nothing can call them any more.
    void unload() noexcept;

private:
    struct Loaded;
    std::string start(Loaded &loaded, const Plugin &plugin);

    kl_application_t &app_;
    std::vector<std::unique_ptr<Loaded>>
        loaded_; // those that were refused too, until unload(): they may have subscribed
};

} // namespace kelhost
