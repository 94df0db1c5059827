// made_application.h: applications for tests that are made in memory.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include <kelhost/description.h>
#include <kelhost/diagnostic.h>

#include "application_text.h"
#include "validate.h"

// The least application without a fault, made in memory.
inline kelhost::ApplicationDescription make_application() {
    kelhost::ApplicationDescription app;
    app.name = "made";
    app.width = 320;
    app.height = 240;
    app.layers.resize(1);
    app.layers[0].name = "main";
    app.screens.resize(1);
    app.screens[0].name = "home";
    app.screens[0].layers.resize(1);
    app.screens[0].layers[0].layer = "main";
    return app;
}

inline kelhost::ElementDescription make_element(kelhost::ElementKind kind, const std::string &name) {
    kelhost::ElementDescription element;
    element.kind = kind;
    element.name = name;
    return element;
}

inline kelhost::ApplicationDescription with_element(kelhost::ElementDescription element) {
    kelhost::ApplicationDescription app = make_application();
    app.layers[0].children.push_back(std::move(element));
    return app;
}

inline kelhost::ElementDescription make_table(std::int32_t rows, std::int32_t cols) {
    kelhost::ElementDescription table = make_element(kelhost::ElementKind::table, "list");
    table.rows = rows;
    table.cols = cols;
    table.templates.resize(1);
    table.templates[0].name = "row";
    return table;
}

inline std::string faults_of(const kelhost::ApplicationDescription &app) {
    kelhost::Diagnostics faults;
    validate(app, faults);
    return to_lines(faults);
}
