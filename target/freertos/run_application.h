// run_application.h: what the application's task does.
#pragma once

#include "arguments.h"

// Loads, starts, feeds and stops the application. Everything it took is given back. Never throws. Calls before_scripts
// when the application's file was read and nothing of Lua has run.
// Returns how the program is to end (statuses.h).
int run_application(const Arguments &arguments, void (*before_scripts)()) noexcept;
