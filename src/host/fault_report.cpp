// fault_report.cpp: tells by their paths which faults of meaning would only repeat a fault of shape.
#include "fault_report.h"

#include <algorithm>
#include <utility>

namespace kelhost {

namespace {

// Members whose values name and hold no objects and variables.
constexpr std::string_view plain_members[] = {
    "$schema", "align",  "alpha", "color",  "cols", "default_screen", "draw",  "event", "fill", "font_size", "function",
    "height",  "hidden", "rows",  "target", "text", "type",           "value", "width", "x",    "y",
};

// "$.layers[0].x" -> "x"; "$.scripts[0]" -> "scripts[0]"
std::string_view last_step(std::string_view path) { return path.substr(path.rfind('.') + 1); }

bool may_hide_names(std::string_view path) {
    // A variable's name is read even where its value is not.
    const bool in_variables =
        path.find(".variables.") != std::string_view::npos || path.find(".variables[") != std::string_view::npos;
    const bool holds_none = path.starts_with("$.size") || path.starts_with("$.scripts")
                            || path.starts_with("$.handlers") || path == "$.name";
    const std::string_view member = last_step(path);
    return !in_variables && !holds_none
           && std::find(std::begin(plain_members), std::end(plain_members), member) == std::end(plain_members);
}

} // namespace

FaultReport::FaultReport(const std::string &file, Diagnostics &faults) : file_(file), faults_(faults) {
    for (const Diagnostic &fault : faults) {
        if (fault.file != file || fault.path.empty()) continue;
        unreadable_.insert(fault.path);
        may_lack_names_ = may_lack_names_ || may_hide_names(fault.path);
    }
}

void FaultReport::add(const Place &place, std::string message) {
    if (!is_unreadable(place)) faults_.push_back({file_, 0, 0, place.path(), std::move(message)});
}

bool FaultReport::is_unreadable(const Place &place) const {
    if (unreadable_.empty()) return false;
    // Cuts step after step off the path's end.
    std::string path = place.path();
    for (;;) {
        if (unreadable_.contains(path)) return true;
        const std::size_t step = path.find_last_of(".[");
        if (step == std::string::npos) return false;
        path.resize(step);
    }
}

} // namespace kelhost
