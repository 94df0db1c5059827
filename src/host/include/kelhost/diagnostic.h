// diagnostic.h: one fault in what a user supplied, with the place it stands at.
#pragma once

#include <string>
#include <vector>

namespace kelhost {

struct Diagnostic {
    std::string file;    // as the user named it; empty for an application made in memory
    int line = 0;        // from 1; 0 when the place is a JSON path
    int column = 0;      // from 1, in bytes; 0 when the place is a JSON path
    std::string path;    // JSON path such as "$.layers[0].children[2].x"; empty when the place is a line
    std::string message; // what was found and what was expected
};

using Diagnostics = std::vector<Diagnostic>;

// "app.json:3:14: message", "app.json: $.layers[0].name: message" or "app.json: message".
std::string to_text(const Diagnostic &diagnostic);

} // namespace kelhost
