// evaluator.h: runs what was typed, and shows what it gives.
#pragma once

#include <string>

#include <kelhost/application.h>

namespace kelhost {

enum class Outcome {
    succeeded,
    failed,    // after an error message
    unfinished // the code ends too early to be anything
};

// Runs Lua code as an expression if it is one, else as statements, prints the results, and delivers waiting events.
// Code that more lines can still come to is not run when it is unfinished.
Outcome evaluate(Application &app, const std::string &code, bool more_can_come);

} // namespace kelhost
