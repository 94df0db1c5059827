// plugin_path.h: where the plug-in is found.
#pragma once

#include <string>
#include <vector>

namespace kelhost {

struct PluginSearch {
    std::string path;                    // of the plug-in; empty when it was not found
    std::vector<std::string> looked_for; // every place that was tried, in order, with who named it
};

// Takes the file that the user named (`chosen`, may be empty), else the one that the environment's KEL_PLUGIN names,
// else looks for luakeldom.so near the tool. A file that somebody named is the only one that is tried.
PluginSearch find_plugin(const std::string &chosen);

// "plug-in not found; looked for:" and the places, one a line.
std::string explain(const PluginSearch &search);

} // namespace kelhost
