// diagnostic.cpp: how a fault reads in one line.
#include <kelhost/diagnostic.h>

namespace kelhost {

std::string to_text(const Diagnostic &diagnostic) {
    std::string text = diagnostic.file;
    const auto append = [&text](const std::string &part, const char *separator) {
        if (!text.empty()) text += separator;
        text += part;
    };
    if (diagnostic.line > 0) append(std::to_string(diagnostic.line), ":");
    if (diagnostic.line > 0 && diagnostic.column > 0) append(std::to_string(diagnostic.column), ":");
    if (!diagnostic.path.empty()) append(diagnostic.path, ": ");
    append(diagnostic.message, ": ");
    return text;
}

} // namespace kelhost
