// plugin_path.cpp: tries the places where the plug-in may lie, in order.
#include "plugin_path.h"

#include <cstdio>
#include <cstdlib>

#ifdef KEL_PLUGIN_IS_LINKED
#include <kel/sdk/plugin.h>
#else
#include <unistd.h>
#endif

#include "readable.h"

namespace kelhost {

namespace {

// A name without a slash would be looked for in the system's library folders instead of here.
std::string as_path(const std::string &file) { return file.find('/') == std::string::npos ? "./" + file : file; }

PluginSearch only(const std::string &file, const std::string &named_by) {
    PluginSearch search;
    const std::string fault = why_unreadable(file);
    if (fault.empty())
        search.plugin.emplace().path = as_path(file);
    else
        search.looked_for.push_back(file + " (" + named_by + "): " + fault);
    return search;
}

#ifdef KEL_PLUGIN_IS_LINKED

PluginSearch own_plugin() {
    PluginSearch search;
    search.plugin.emplace().entry = KEL_PLUGIN_CREATE_FUNC;
    return search;
}

#else

constexpr const char *file_name = "luakeldom.so";

// The folder of the running program; "" on systems that do not tell.
std::string program_folder() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0 || static_cast<std::size_t>(length) == sizeof path) return {};
    const std::string program(path, static_cast<std::size_t>(length));
    return program.substr(0, program.rfind('/'));
}

PluginSearch own_plugin() {
    const std::string folder = program_folder();
    PluginSearch search;
    if (folder.empty()) {
        search.looked_for.emplace_back("the tool's own folder, which this system does not tell");
        return search;
    }
    // As built, as installed, and side by side.
    for (const char *place : {"/../lib/", "/../lib/luakeldom/", "/"}) {
        const std::string file = folder + place + file_name;
        const std::string fault = why_unreadable(file);
        if (fault.empty()) {
            search.plugin.emplace().path = file;
            return search;
        }
        search.looked_for.push_back(std::string(file).append(": ").append(fault));
    }
    return search;
}

#endif

} // namespace

PluginSearch find_plugin(const std::string &chosen) {
    if (!chosen.empty()) return only(chosen, "--plugin");
    const char *from_environment = std::getenv("KEL_PLUGIN");
    if (from_environment != nullptr && *from_environment != '\0') return only(from_environment, "KEL_PLUGIN");
    return own_plugin();
}

std::string explain(const PluginSearch &search) {
    std::string text = "plug-in not found; looked for:";
    for (const std::string &place : search.looked_for) text += "\n  " + place;
    return text + "\nName it with --plugin FILE or in the environment as KEL_PLUGIN.";
}

} // namespace kelhost
