// look.h: commands that only look at an application once its scripts have run.
#pragma once

#include "commands.h"

#include <functional>

#include <kelhost/application.h>

namespace kelhost {

// Runs the application's scripts, which print to standard error, sends the events and lets `show` print what there is
// to see; show gives false, after an error message, when it was asked for what is not there. A script that fails does
// not keep it from being called.
ExitStatus look(const LookArguments &arguments, const std::function<bool(Application &app)> &show);

} // namespace kelhost
