// plugin_path.h: where the plug-in is found.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <kelhost/options.h>

namespace kelhost {

struct PluginSearch {
    std::optional<Plugin> plugin;        // nothing when it was not found
    std::vector<std::string> looked_for; // every place that was tried, in order, with who named it
};

// Takes the file that the user named (`chosen`, may be empty), else the one that the environment's KEL_PLUGIN names,
// else looks for luakeldom.so near the tool. A file that somebody named is the only one that is tried. A tool for a
// system without shared objects has the plug-in in itself and takes that one.
PluginSearch find_plugin(const std::string &chosen);

// "plug-in not found; looked for:" and the places, one a line.
std::string explain(const PluginSearch &search);

} // namespace kelhost
