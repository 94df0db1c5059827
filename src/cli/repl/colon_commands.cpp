// colon_commands.cpp: one row a command; the help is made of the same rows.
#include "colon_commands.h"

#include "../events.h"
#include "../object_names.h"
#include "../output.h"
#include "../snapshot_file.h"
#include "../tree.h"
#include "../vars.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <sstream>

namespace kelhost {

namespace {

using Words = std::vector<std::string>; // the command's word first

CommandResult result_of(bool done) { return done ? CommandResult::done : CommandResult::refused; }

std::string second(const Words &words) { return words.size() > 1 ? words[1] : std::string(); }

CommandResult show_tree(Session &session, const Words &words) {
    return result_of(print_tree(session.app(), second(words), false));
}

CommandResult show_variables(Session &session, const Words &words) {
    return result_of(print_variables(session.app(), second(words), false));
}

// The screen may be left out.
CommandResult draw(Session &session, const Words &words) {
    SnapshotArguments arguments;
    arguments.file = words.back();
    if (words.size() > 2) arguments.screen = words[1];
    std::string fault = snapshot_name_fault(arguments.file);
    if (fault.empty()) fault = write_snapshot(session.app(), arguments);
    if (!fault.empty()) report_error(fault);
    return result_of(fault.empty());
}

CommandResult send(Session &session, const Words &words) {
    const std::size_t errors_before = session.app().script_errors().size();
    if (!is_event(words[1])) {
        report_error("expected NAME or NAME:TARGET, found \"" + words[1] + "\"");
        return CommandResult::refused;
    }
    const bool sent = send_event(session.app(), words[1]);
    return result_of(sent && session.app().script_errors().size() == errors_before);
}

CommandResult reload(Session &session, const Words &) {
    if (!session.reload()) {
        report_note("the application that was loaded before goes on");
        return CommandResult::refused;
    }
    return result_of(session.app().script_errors().empty());
}

CommandResult help(Session &, const Words &);

CommandResult quit(Session &, const Words &) { return CommandResult::quit; }

struct Command {
    const char *word;
    const char *arguments; // as the help shows them
    const char *purpose;
    std::size_t least; // how many it takes
    std::size_t most;
    CommandResult (*execute)(Session &session, const Words &words);
};

constexpr Command commands[] = {
    {":tree",     "[NAME]",        "the objects that there are, or that one and what is in it",           0, 1, show_tree     },
    {":vars",     "[PREFIX]",      "the variables, or those whose key begins so",                         0, 1, show_variables},
    {":snapshot", "[SCREEN] FILE", "draw the default screen or that one: .svg, .png, or .txt for a list", 1, 2, draw          },
    {":event",    "NAME[:TARGET]", "send an event, to an object if one is named",                         1, 1, send          },
    {":reload",   "",              "start the application anew from its file; globals are lost",          0, 0, reload        },
    {":help",     "",              "this list",                                                           0, 0, help          },
    {":quit",     "",              "leave, as Ctrl-D does",                                               0, 0, quit          },
};

constexpr const char *help_footer = R"(
Anything else is Lua: an expression, whose results are shown, or statements. What ends too early goes on on the next
line, until Ctrl-C cancels it. Waiting events are delivered after each piece. A piece is a chunk of its own: its local
variables end with it, globals stay.
TAB completes names of objects in quotes, keys in kel.get_value("... and h:get_value("..., methods after h: and fields
after a dot. Ctrl-C ends a script that runs; where a library function does not end, the third one ends kel.
)";

CommandResult help(Session &, const Words &) {
    constexpr std::size_t column = 28;
    for (const Command &command : commands) {
        std::string usage = std::string("  ") + command.word + " " + command.arguments;
        usage.resize(std::max(usage.size(), column), ' ');
        print(usage + command.purpose + "\n");
    }
    print(help_footer);
    return CommandResult::done;
}

Words split(const std::string &line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

} // namespace

bool is_command(std::string_view line) {
    const std::size_t begin = line.find_first_not_of(" \t");
    return begin != std::string_view::npos && line[begin] == ':';
}

CommandResult execute_command(Session &session, const std::string &line) {
    const Words words = split(line);
    const auto *const command = std::find_if(std::begin(commands), std::end(commands),
                                             [&words](const Command &row) { return words.front() == row.word; });
    if (command == std::end(commands)) {
        report_error("there is no command " + words.front() + suggest(words.front(), command_words()));
        return CommandResult::refused;
    }
    if (const std::size_t given = words.size() - 1; given < command->least || given > command->most) {
        const std::string expected = *command->arguments == '\0' ? "nothing" : command->arguments;
        report_error(words.front() + " takes " + expected + ", found " + counted(given, "word"));
        return CommandResult::refused;
    }
    return command->execute(session, words);
}

std::vector<std::string> command_words() {
    std::vector<std::string> words;
    std::transform(std::begin(commands), std::end(commands), std::back_inserter(words),
                   [](const Command &command) { return command.word; });
    return words;
}

} // namespace kelhost
