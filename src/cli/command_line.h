// command_line.h: from the words of the command line to the command.
#pragma once

#include "commands.h"

namespace kelhost {

// Reads the words and runs the command that they ask for. Wrong ones are reported, and nothing is run.
ExitStatus execute_command_line(int argc, char **argv);

} // namespace kelhost
