// commands.h: the tool's subcommands, and what their exit statuses mean.
#pragma once

#include <functional>

// The device's C++ library has no <filesystem>; CLI11 does without it.
#define CLI11_HAS_FILESYSTEM 0
#include <CLI/CLI.hpp>

namespace kelhost {

enum ExitStatus : int {
    succeeded = 0,
    failed = 1, // a script, a handler or a piece of code failed, or what the user asked to be free of warnings was not
    bad_input =
        2 // the command line, the application or a file named on the command line is at fault; nothing more was run
};

struct Command {
    CLI::App *parser = nullptr;          // the subcommand; owned by the whole command line
    std::function<ExitStatus()> execute; // with what the parser has read
};

Command add_run_command(CLI::App &tool);
Command add_check_command(CLI::App &tool);

} // namespace kelhost
