// application_text.h: applications for tests as text, and the faults that are found in them as lines of text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <doctest/doctest.h>

#include <kelhost/description.h>
#include <kelhost/diagnostic.h>

#include "app_file.h"
#include "validate.h"

inline std::string to_lines(const kelhost::Diagnostics &faults) {
    std::string lines;
    for (const kelhost::Diagnostic &fault : faults) lines += to_text(fault) + '\n';
    return lines;
}

// What reading finds, without the check of what it means.
inline std::string faults_of_shape(std::string_view text) {
    kelhost::Diagnostics faults;
    kelhost::parse_application(text, "app.json", faults);
    return to_lines(faults);
}

// What reading and checking find together.
inline std::string all_faults(std::string_view text) {
    kelhost::Diagnostics faults;
    const auto description = kelhost::parse_application(text, "app.json", faults);
    if (description) validate(*description, faults);
    return to_lines(faults);
}

inline kelhost::ApplicationDescription read_good(std::string_view text) {
    kelhost::Diagnostics faults;
    const auto description = kelhost::parse_application(text, "app.json", faults);
    CHECK(to_lines(faults) == "");
    REQUIRE(description);
    return *description;
}

// An application of one layer, "main", with these children, and of the screen "home", which shows it.
inline std::string with_children(const std::string &children) {
    return R"({"name": "test", "size": {"width": 320, "height": 240}, "layers": [{"name": "main", "children": [)"
           + children + R"(]}], "screens": [{"name": "home", "layers": [{"layer": "main"}]}]})";
}
