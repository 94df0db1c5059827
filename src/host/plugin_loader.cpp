// plugin_loader.cpp: loads plug-ins from shared objects, or takes entry points that are linked in.
// Where there is no dynamic loader, only the latter.
#include "plugin_loader.h"

#include <utility>

#if __has_include(<dlfcn.h>)
#include <dlfcn.h>
#endif

namespace kelhost {

namespace {

using Entry = int (*)(kl_plugin_state_t *state);

constexpr char entry_name[] = "KEL_PLUGIN_CREATE_FUNC";

// A shared object that stays loaded as long as this lives.
class SharedObject {
public:
    SharedObject() = default;
    SharedObject(const SharedObject &) = delete;
    SharedObject &operator=(const SharedObject &) = delete;

#if __has_include(<dlfcn.h>)
    ~SharedObject() {
        if (handle_ != nullptr) dlclose(handle_);
    }

    // Returns "" or the system's reason.
    std::string open(const std::string &path) {
        // Without a slash the system would search its library folders instead of opening the file.
        const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
        handle_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        return handle_ != nullptr ? std::string() : std::string(dlerror());
    }

    Entry find_entry() const { return reinterpret_cast<Entry>(dlsym(handle_, entry_name)); }

private:
    void *handle_ = nullptr;
#else
    std::string open(const std::string &) { return "this build loads no shared objects"; }
    Entry find_entry() const { return nullptr; }
#endif
};

std::string version_text(const kl_version_t &version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." + std::to_string(version.service)
           + "." + std::to_string(version.build);
}

std::string result_text(const char *operation, int result) {
    return std::string(operation) + " returned " + std::to_string(result) + ", expected 0";
}

} // namespace

struct PluginLoader::Loaded {
    SharedObject object;
    kl_plugin_state_t state{};
    bool started = false;

    ~Loaded() { kelal_free(state.name); }
};

PluginLoader::PluginLoader(kl_application_t &app) : app_(app) {}

PluginLoader::~PluginLoader() {
    finish();
    unload();
}

std::string PluginLoader::load(const Plugin &plugin) {
    Loaded &loaded = *loaded_.emplace_back(std::make_unique<Loaded>());
    const std::string reason = start(loaded, plugin);
    if (reason.empty()) return {};
    const std::string name = plugin.path.empty() ? "that is linked in" : "\"" + plugin.path + "\"";
    return "Cannot load plug-in " + name + ": " + reason;
}

std::string PluginLoader::start(Loaded &loaded, const Plugin &plugin) {
    Entry entry = plugin.entry;
    if (entry == nullptr) {
        if (std::string reason = loaded.object.open(plugin.path); !reason.empty()) return reason;
        entry = loaded.object.find_entry();
        if (entry == nullptr) return std::string("it has no symbol ") + entry_name;
    }
    kl_plugin_state_t &state = loaded.state;
    if (const int result = entry(&state); result != 0) return result_text(entry_name, result);
    if (state.version.major != host_interface_major)
        return "made for host interface version " + version_text(state.version) + ", expected "
               + std::to_string(host_interface_major);
    if (state.init == nullptr) return "it has no init operation";
    const char *const arguments = plugin.args.empty() ? nullptr : plugin.args.c_str();
    if (const int result = state.init(&app_, arguments, state.plugin_data); result != 0)
        return result_text("init", result);
    loaded.started = true;
    return {};
}

void PluginLoader::finish() noexcept {
    for (auto place = loaded_.rbegin(); place != loaded_.rend(); ++place) {
        Loaded &loaded = **place;
        if (!std::exchange(loaded.started, false)) continue;
        if (loaded.state.fini != nullptr) loaded.state.fini(&app_, loaded.state.plugin_data);
        kelal_free(std::exchange(loaded.state.name, nullptr));
    }
}

void PluginLoader::unload() noexcept {
    while (!loaded_.empty()) loaded_.pop_back();
}

} // namespace kelhost
