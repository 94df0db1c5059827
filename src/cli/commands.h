// commands.h: the tool's subcommands: what each is told on the command line, and what its exit status means.
#pragma once

#include <string>
#include <vector>

#include <kelhost/options.h>

namespace kelhost {

enum ExitStatus : int {
    succeeded = 0,
    failed = 1, // a script, a handler or a piece of code failed, or what the user asked to be free of warnings was not
    bad_input =
        2 // the command line, the application or a file named on the command line is at fault; nothing more was run
};

// What every command that runs an application is told.
struct SessionArguments {
    std::string path; // of the application
    std::string log_level = "warning";
    std::string plugin; // "" for the one near the tool
    // Beyond what a handler needs, and reached in seconds by one that does not end. The instructions stop it first.
    Limits limits{.instructions = 100'000'000, .memory_bytes = std::size_t{256} * 1024 * 1024};
    double timeout = 60;        // seconds for a script or an event, with all that it brings about; 0 is no bound
    bool interruptible = false; // whether Application::interrupt() ends scripts; not on the command line
};

struct RunArguments {
    SessionArguments session;
    std::vector<std::string> scripts;
    std::vector<std::string> code;
    std::vector<std::string> events; // "NAME" or "NAME:TARGET"
    bool strict = false;
    bool watch = false; // run again when a file changes
};

struct CheckArguments {
    std::string path;
};

struct SnapshotArguments {
    SessionArguments session;
    std::string screen; // "" for the default one
    std::string file;   // ends in .svg, .png or .txt
    std::vector<std::string> events;
    int scale = 1;
    bool outline = false;
};

struct TestArguments {
    SessionArguments session;
    std::vector<std::string> files; // and folders; none for those of the application
    std::string format = "terminal";
    std::string output; // "" for none
    std::string filter; // "" for none
    bool list = false;
    bool update_snapshots = false;
};

// What every command that only looks at a running application is told.
struct LookArguments {
    SessionArguments session;
    std::vector<std::string> events; // that come before: "NAME" or "NAME:TARGET"
};

struct TreeArguments {
    LookArguments look;
    std::string name; // "" for all objects
    bool json = false;
};

struct VarsArguments {
    LookArguments look;
    std::string prefix; // "" for all variables
    bool json = false;
};

struct ReplArguments {
    SessionArguments session;
};

ExitStatus run(const RunArguments &arguments);
ExitStatus check(const CheckArguments &arguments);
ExitStatus snapshot(const SnapshotArguments &arguments);
ExitStatus test(const TestArguments &arguments);
ExitStatus tree(const TreeArguments &arguments);
ExitStatus vars(const VarsArguments &arguments);
ExitStatus repl(const ReplArguments &arguments);

} // namespace kelhost
