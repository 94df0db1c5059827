// object_names.cpp: collects names from the variables that every object has, and finds the nearest.
#include "object_names.h"

#include <algorithm>
#include <set>
#include <utility>

#include <kelhost/closest_name.h>

namespace kelhost {

namespace {

// The first with these components at its end, for who left out what it is in. "" when there is none.
std::string name_that_ends_with(const std::string &components, const std::vector<std::string> &names) {
    if (components.empty()) return {};
    const auto found = std::find_if(names.begin(), names.end(), [ending = "." + components](const std::string &name) {
        return name.ends_with(ending);
    });
    return found != names.end() ? *found : std::string();
}

} // namespace

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
    std::string found = closest.found();
    if (found.empty()) found = name_that_ends_with(wrong, names);
    return found.empty() ? std::string() : "; did you mean " + found + "?";
}

} // namespace kelhost
