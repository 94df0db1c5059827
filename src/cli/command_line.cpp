// command_line.cpp: the options of all subcommands, and their help. The parser takes long to compile: no other file
// includes it.
#include "command_line.h"

#include "events.h"
#include "object_names.h"
#include "output.h"
#include "snapshot_file.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The device's C++ library has no <filesystem>; CLI11 does without it.
#define CLI11_HAS_FILESYSTEM 0
#include <CLI/CLI.hpp>
#include <kelhost/log.h>

namespace kelhost {

namespace {

constexpr const char *version = "kel " KEL_VERSION; // the build sets it

constexpr const char *tool_footer = R"(Examples:
  kel run examples/thermostat
  kel run examples/thermostat --event press:climate.target.warmer
  kel check examples/thermostat
  kel snapshot examples/thermostat -o home.png
  kel tree examples/thermostat
  kel vars examples/thermostat climate.target
  kel test examples/thermostat
  kel repl examples/thermostat

Exit status: 0 success; 1 a script or a test failed; 2 bad usage or bad input.
'kel COMMAND --help' tells more about a command.)";

constexpr const char *run_footer =
    R"(Scripts run first, then pieces of code, then events, each in the order given; after each one, waiting events
are delivered. A failure is reported and the rest is run all the same.

Log levels, most important first: always, error, warning, info, event1, action, diag1, diag2, event2, trace1, trace2.

Examples:
  kel run examples/thermostat
  kel run examples/thermostat --event press:climate.target.warmer --event press:climate.mode.cool
  kel run examples/thermostat --script examples/thermostat/extra/look_around.lua
  kel run examples/thermostat --exec 'print(keldom.get_object("week.plan"))' --strict
  kel run examples/thermostat --log-level trace2 2>log.txt
  kel run examples/thermostat --watch --event press:climate.target.warmer

Exit status: 0 success; 1 a script, a handler or a piece of code failed, or with --strict a warning was logged;
2 bad usage or bad input. With --watch 0 in any case.)";

constexpr const char *check_footer = R"(Examples:
  kel check examples/thermostat
  kel check examples/thermostat/app.json && echo ready to ship

Exit status: 0 no fault; 1 scripts that do not compile are the only faults; 2 bad usage or a faulty application file.)";

constexpr const char *snapshot_footer =
    R"(The application is started, the events are sent in the order given, and then the screen is drawn: its layers with
their alpha, without what is hidden. A file that is there already is replaced only by a whole new one.

A .txt file has a line for each area with its place, colors and text: keep it, and `diff` tells what has changed.

Examples:
  kel snapshot examples/thermostat -o home.png
  kel snapshot examples/thermostat schedule -o schedule.svg
  kel snapshot examples/thermostat --after press:climate.room.alerts -o alerts.png --scale 2
  kel snapshot examples/thermostat settings --outline --scale 3 -o names.png
  kel snapshot examples/thermostat -o now.txt && diff docs/images/thermostat-home.txt now.txt

Exit status: 0 success; 1 a script or a handler failed, but the picture is written; 2 bad usage or bad input, and no
picture is written.)";

constexpr const char *test_footer =
    R"(Runs the files with busted, each with a fresh application: it is loaded and started, the file runs next to it, it
is stopped. Without FILES, those are tests/*_spec.lua in the application's folder. docs/testing.md says what a test
file can use.

Examples:
  kel test examples/thermostat
  kel test examples/thermostat examples/thermostat/tests/climate_spec.lua
  kel test examples/thermostat --filter "child lock"
  kel test examples/thermostat --update-snapshots
  kel test examples/thermostat --format junit --output results.xml

Exit status: 0 all tests passed; 1 a test, a test file or the application's start failed, or no test was found;
2 bad usage or bad input.)";

constexpr const char *tree_footer =
    R"(Each object is on a line with its kind, name, position, size, alpha and whether it is hidden. Of a table that is
named the cells are shown too: the name of each, row by row. What scripts print goes to standard error.

With --json: an object with "kind" (application, screen, layer_instance, layer, group, control, table, template) and
"name", and as far as its kind has them "x", "y", "width", "height", "rows", "cols", "alpha", "hidden", and lists of such
objects: "screens" and "layers" of the application, "instances" of a screen, "children" of a layer or group, "templates"
of a table; a table that is named has "cells", a list of names a row.

Examples:
  kel tree examples/thermostat
  kel tree examples/thermostat week.plan
  kel tree examples/thermostat climate --after press:climate.target.warmer --json

Exit status: 0 success; 1 a script or a handler failed, the tree is printed all the same; 2 bad usage or bad input.)";

constexpr const char *vars_footer =
    R"(PREFIX means whole components: main.ok shows the variables of that object and of what it contains, and not those of
main.ok_too. When nothing has such a key, the keys that begin with the same letters are shown. What scripts print goes to
standard error.

With --json: an object with a member a variable, its key as name: {"type": "u8", "value": 46}. A number that JSON
cannot hold is null.

Examples:
  kel vars examples/thermostat
  kel vars examples/thermostat climate.target
  kel vars examples/thermostat target_celsius --after press:climate.target.warmer --json

Exit status: 0 success; 1 a script or a handler failed, the variables are printed all the same; 2 bad usage or bad
input.)";

constexpr const char *repl_footer =
    R"(Reads Lua line by line, runs it in the application and shows what it gives: handles as <control main.ok>, tables with
their fields. On a terminal lines are edited, TAB completes names from the running application, the up key brings back
earlier lines, which are kept in $XDG_STATE_HOME/kel/history or ~/.local/state/kel/history; Ctrl-C ends a script that
runs, Ctrl-D the session. :help lists further commands.

Examples:
  kel repl examples/thermostat
  echo 'keldom.get_object("week.plan"):get_size()' | kel repl examples/thermostat

Exit status: 0 success; 1 standard input or output is no terminal, and a line or a script failed; 2 bad usage or bad
input.)";

struct Command {
    CLI::App *parser = nullptr;          // the subcommand; owned by the whole command line
    std::function<ExitStatus()> execute; // with what the parser has read
};

std::string check_event(const std::string &text) {
    return is_event(text) ? std::string() : "expected NAME or NAME:TARGET, found \"" + text + "\"";
}

std::string check_log_level(const std::string &text) {
    if (log_level_from_name(text)) return {};
    std::string names;
    for (int level = KL_LOG_ALWAYS; level <= KL_LOG_TRACE2; ++level) {
        if (!names.empty()) names += ", ";
        names += log_level_name(level);
    }
    return "no log level \"" + text + "\"; there are " + names;
}

std::string check_file(const std::string &text) {
    return text.empty() ? std::string("expected the name of a file, found \"\"") : std::string();
}

void add_path(CLI::App &parser, std::string &path) {
    parser.add_option("APP", path, "Application file, or the folder that holds it as app.json")
        ->required()
        ->type_name("PATH")
        ->check(CLI::Validator(check_file, ""));
}

std::string check_bound(const std::string &text) {
    const bool is_number = !text.empty() && text.front() >= '0' && text.front() <= '9';
    return is_number ? std::string() : "expected a number from 0 up, found \"" + text + "\"";
}

// "64M" -> "67108864"
std::string to_bytes(std::string &text) {
    const std::string found = text;
    try {
        if (check_bound(text).empty() && CLI::AsSizeValue(false)(text).empty()) return {};
    } catch (const CLI::ParseError &) { // its message is a long list
    }
    return "expected a number of bytes such as 500k or 64M, found \"" + found + "\"";
}

// What bounds each script and each call of a handler; 0 is no bound.
void add_limits(CLI::App &parser, SessionArguments &session) {
    constexpr const char *group = "Bounds on scripts, 0 for none";
    const std::string default_timeout = session.timeout > 0 ? CLI::detail::to_string(session.timeout) : "none";
    parser
        .add_option("--max-instructions", session.limits.instructions,
                    "End a script or a handler after so many instructions of Lua (default 100000000)")
        ->type_name("N")
        ->check(CLI::Validator(check_bound, ""))
        ->group(group);
    parser.add_option("--max-memory", session.limits.memory_bytes, "Most memory that Lua may use (default 256M)")
        ->type_name("BYTES")
        ->transform(CLI::Validator(to_bytes, ""))
        ->group(group);
    parser
        .add_option("--timeout", session.timeout,
                    "End kel when a script, or an event with all that it brings about, takes longer (default "
                        + default_timeout + ")")
        ->type_name("SECONDS")
        ->check(CLI::Validator(check_bound, ""))
        ->group(group);
}

void add_session_options(CLI::App &parser, SessionArguments &session) {
    parser.add_option("--log-level", session.log_level, "Show log lines down to this level (default warning)")
        ->type_name("LEVEL")
        ->check(CLI::Validator(check_log_level, ""));
    parser.add_option("--plugin", session.plugin, "The keldom plug-in, instead of the one near the tool")
        ->type_name("FILE")
        ->check(CLI::Validator(check_file, ""));
    add_limits(parser, session);
}

// An option that can be given several times, with one value each time.
CLI::Option *add_repeated(CLI::App &parser, const std::string &name, std::vector<std::string> &values,
                          const std::string &help) {
    return parser.add_option(name, values, help)->type_size(1)->allow_extra_args(false);
}

Command add_run_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("run", "Run an application: its scripts, then what the options add");
    const auto arguments = std::make_shared<RunArguments>();
    add_path(*parser, arguments->session.path);
    add_repeated(*parser, "--script", arguments->scripts, "Run a Lua file; may be given again")
        ->type_name("FILE")
        ->check(CLI::Validator(check_file, ""));
    add_repeated(*parser, "--exec", arguments->code, "Run a piece of Lua code; may be given again")->type_name("CODE");
    add_repeated(*parser, "--event", arguments->events,
                 "Send an event, to an object if one is named; may be given again")
        ->type_name("NAME[:TARGET]")
        ->check(CLI::Validator(check_event, ""));
    parser->add_flag("--strict", arguments->strict, "Fail when a warning is logged");
    parser->add_flag("--watch", arguments->watch, "Run again when the application or a script changes, until Ctrl-C");
    add_session_options(*parser, arguments->session);
    parser->footer(run_footer);
    return {parser, [arguments] { return run(*arguments); }};
}

Command add_check_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("check", "Check an application and compile its scripts, without running it");
    const auto arguments = std::make_shared<CheckArguments>();
    add_path(*parser, arguments->path);
    parser->footer(check_footer);
    return {parser, [arguments] { return check(*arguments); }};
}

Command add_snapshot_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("snapshot", "Draw a screen of an application as SVG or PNG");
    const auto arguments = std::make_shared<SnapshotArguments>();
    add_path(*parser, arguments->session.path);
    parser->add_option("SCREEN", arguments->screen, "The screen's name; without it, the default screen")
        ->type_name("NAME");
    parser->add_option("-o,--output", arguments->file, "File to write: .svg, .png, or .txt for a list of what is shown")
        ->required()
        ->type_name("FILE")
        ->check(CLI::Validator(snapshot_name_fault, ""));
    add_repeated(*parser, "--after", arguments->events, "Send an event first; may be given again")
        ->type_name("NAME[:TARGET]")
        ->check(CLI::Validator(check_event, ""));
    parser->add_flag("--outline", arguments->outline, "Draw a frame and the name of each object over the picture");
    parser->add_option("--scale", arguments->scale, "Times as large as the screen, 1 to 16 (default 1)")
        ->type_name("N")
        ->check(CLI::Range(1, 16).description(""));
    add_session_options(*parser, arguments->session);
    parser->footer(snapshot_footer);
    return {parser, [arguments] { return snapshot(*arguments); }};
}

Command add_test_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("test", "Run the tests of an application");
    const auto arguments = std::make_shared<TestArguments>();
    add_path(*parser, arguments->session.path);
    parser->add_option("FILES", arguments->files, "Test files, or folders of *_spec.lua")
        ->type_name("PATH")
        ->check(CLI::Validator(check_file, ""));
    parser->add_option("--format", arguments->format, "terminal (default), tap or junit")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"terminal", "tap", "junit"}).description(""));
    parser->add_option("--output", arguments->output, "Write the JUnit report to a file, and show the terminal's")
        ->type_name("FILE")
        ->check(CLI::Validator(check_file, ""));
    parser->add_option("--filter", arguments->filter, "Run the tests whose full names match a Lua pattern")
        ->type_name("PATTERN");
    parser->add_flag("--list", arguments->list, "List the tests instead of running them");
    parser->add_flag("--update-snapshots", arguments->update_snapshots, "Store what screens show as the new snapshots");
    add_session_options(*parser, arguments->session);
    parser->footer(test_footer);
    parser->final_callback([arguments] {
        if (!arguments->output.empty() && arguments->format != "junit")
            throw CLI::ValidationError("--output", "is for --format junit");
    });
    return {parser, [arguments] { return test(*arguments); }};
}

void add_look_options(CLI::App &parser, LookArguments &look) {
    add_repeated(parser, "--after", look.events,
                 "Send an event before, to an object if one is named; may be given again")
        ->type_name("EVENT[:TARGET]")
        ->check(CLI::Validator(check_event, ""));
    add_session_options(parser, look.session);
}

Command add_tree_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("tree", "Show the objects of an application, once its scripts have run");
    const auto arguments = std::make_shared<TreeArguments>();
    add_path(*parser, arguments->look.session.path);
    parser->add_option("NAME", arguments->name, "An object: show it alone, with what it contains")->type_name("OBJECT");
    parser->add_flag("--json", arguments->json, "Print JSON");
    add_look_options(*parser, arguments->look);
    parser->footer(tree_footer);
    return {parser, [arguments] { return tree(*arguments); }};
}

Command add_vars_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("vars", "Show the variables of an application, once its scripts have run");
    const auto arguments = std::make_shared<VarsArguments>();
    add_path(*parser, arguments->look.session.path);
    parser->add_option("PREFIX", arguments->prefix, "Show those whose key begins so")->type_name("KEY");
    parser->add_flag("--json", arguments->json, "Print JSON");
    add_look_options(*parser, arguments->look);
    parser->footer(vars_footer);
    return {parser, [arguments] { return vars(*arguments); }};
}

Command add_repl_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("repl", "Run an application and type Lua into it");
    const auto arguments = std::make_shared<ReplArguments>();
    arguments->session.timeout = 0; // who types can end what hangs
    add_path(*parser, arguments->session.path);
    add_session_options(*parser, arguments->session);
    parser->footer(repl_footer);
    return {parser, [arguments] { return repl(*arguments); }};
}

ExitStatus report_usage_error(const std::string &message, const CLI::App &tool) {
    const auto chosen = tool.get_subcommands();
    const std::string command = chosen.empty() ? "kel" : "kel " + chosen.front()->get_name();
    report_error(message);
    report_line("Run '" + command + " --help' for usage.");
    return bad_input;
}

// The words that the parser has no use for, as they were given: it tells them in an order of its own.
std::vector<std::string> unexpected_words(const CLI::App &tool, int argc, char **argv) {
    std::vector<std::string> unused = tool.remaining(true);
    std::vector<std::string> words;
    for (int index = argc - 1; index > 0; --index) {
        const auto found = std::find(unused.begin(), unused.end(), argv[index]);
        if (found == unused.end()) continue;
        unused.erase(found);
        words.emplace_back(argv[index]);
    }
    std::reverse(words.begin(), words.end());
    return words;
}

std::string unknown_command(const std::string &word, const CLI::App &tool) {
    std::vector<std::string> names;
    std::string all;
    for (const CLI::App *const command : tool.get_subcommands({})) {
        names.push_back(command->get_name());
        all += (all.empty() ? "" : ", ") + names.back();
    }
    const std::string nearest = suggest(word, names);
    return "there is no command \"" + word + "\"" + nearest + (nearest.empty() ? "; there are " : " There are ") + all;
}

// For the first of the words that is an option.
std::string suggest_option(const std::vector<std::string> &words, const CLI::App &parser) {
    const auto option =
        std::find_if(words.begin(), words.end(), [](const auto &word) { return word.starts_with('-'); });
    if (option == words.end()) return {};
    std::vector<std::string> names;
    for (const CLI::Option *const known : parser.get_options())
        for (const std::string &name : known->get_lnames()) names.push_back("--" + name);
    return suggest(option->substr(0, option->find('=')), names);
}

std::string unexpected_text(const std::vector<std::string> &words, const CLI::App &tool) {
    const auto chosen = tool.get_subcommands();
    if (chosen.empty() && !words.front().starts_with('-')) return unknown_command(words.front(), tool);
    std::string all;
    for (const std::string &word : words) all += " " + word;
    const char *const start =
        words.size() == 1 ? "The following argument was not expected:" : "The following arguments were not expected:";
    return start + all + suggest_option(words, chosen.empty() ? tool : *chosen.front());
}

} // namespace

ExitStatus execute_command_line(int argc, char **argv) {
    CLI::App tool("Runs and checks applications of an embedded user interface on the desktop.", "kel");
    tool.set_version_flag("--version", version, "Print the version and exit");
    tool.set_help_flag("-h,--help", "Print this help and exit");
    tool.require_subcommand(0, 1); // none is reported below: the parser would say so of a misspelt one too
    tool.footer(tool_footer);
    const std::vector<Command> commands = {add_run_command(tool),  add_check_command(tool), add_snapshot_command(tool),
                                           add_test_command(tool), add_tree_command(tool),  add_vars_command(tool),
                                           add_repl_command(tool)};
    try {
        tool.parse(argc, argv);
    } catch (const CLI::ExtrasError &error) {
        const std::vector<std::string> words = unexpected_words(tool, argc, argv);
        return report_usage_error(words.empty() ? error.what() : unexpected_text(words, tool), tool);
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

} // namespace kelhost
