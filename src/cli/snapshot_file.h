// snapshot_file.h: screens as files, of an application that runs.
#pragma once

#include "commands.h"

#include <string>

#include <kelhost/application.h>

namespace kelhost {

// What is wrong with the name of a file that a snapshot is to go to; empty when nothing is.
std::string snapshot_name_fault(const std::string &file);

// Draws the screen as it is now, whatever the arguments say of a session and of events. Why the file could not be
// written; empty when it was.
std::string write_snapshot(const Application &app, const SnapshotArguments &arguments);

} // namespace kelhost
