// main.cpp: reads the command line and hands over to the subcommand; nothing of any subcommand stands here.
#include "commands.h"
#include "output.h"

#include <exception>
#include <string>
#include <vector>

namespace {

using namespace kelhost;

constexpr const char *version = "kel " KEL_VERSION; // the build sets it

constexpr const char *examples = R"(Examples:
  kel run examples/thermostat
  kel run examples/thermostat --event press:climate.target.warmer
  kel check examples/thermostat

Exit status: 0 success; 1 a script failed; 2 bad usage or bad input.
'kel COMMAND --help' tells more about a command.)";

ExitStatus report_usage_error(const std::string &message, const CLI::App &tool) {
    const auto chosen = tool.get_subcommands();
    const std::string command = chosen.empty() ? "kel" : "kel " + chosen.front()->get_name();
    report_error(message);
    report_line("Run '" + command + " --help' for usage.");
    return bad_input;
}

ExitStatus dispatch(int argc, char **argv) {
    CLI::App tool("Runs and checks applications of an embedded user interface on the desktop.", "kel");
    tool.set_version_flag("--version", version, "Print the version and exit");
    tool.set_help_flag("-h,--help", "Print this help and exit");
    tool.require_subcommand(0, 1); // none is reported below: the parser would say so of a misspelt one too
    tool.footer(examples);
    const std::vector<Command> commands = {add_run_command(tool), add_check_command(tool)};
    try {
        tool.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        const bool asked_for_text = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
        if (!asked_for_text) return report_usage_error(error.what(), tool);
        tool.exit(error);
        return succeeded;
    }
    for (const Command &command : commands)
        if (command.parser->parsed()) return command.execute();
    return report_usage_error("A command is missing", tool);
}

} // namespace

int main(int argc, char **argv) {
    kelhost::ExitStatus status = kelhost::failed;
    try {
        status = dispatch(argc, argv);
    } catch (const std::exception &error) {
        kelhost::report_error(error.what());
    }
    return kelhost::finish_output() || status != kelhost::succeeded ? status : kelhost::failed;
}
