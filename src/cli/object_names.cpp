// object_names.cpp: collects names from the variables that every object has, and finds the nearest.
#include "object_names.h"

#include <set>
#include <utility>

#include <kelhost/closest_name.h>

namespace kelhost {

std::vector<std::string> object_names(const Application &app) {
    std::set<std::string> names;
    for (const ScreenDescription &screen : app.description().screens) names.insert(screen.name);
    for (const std::string &key : app.keys()) {
        const std::size_t dot = key.rfind('.');
        if (dot == std::string::npos) continue; // the application's own
        std::string owner = key.substr(0, dot);
        if (app.find(owner) != nullptr) names.insert(std::move(owner));
    }
    return {names.begin(), names.end()};
}

std::string suggest(const std::string &wrong, const std::vector<std::string> &names) {
    ClosestName closest(wrong);
    for (const std::string &name : names) closest.offer(name);
    return closest.found().empty() ? std::string() : "; did you mean " + closest.found() + "?";
}

} // namespace kelhost
