// run.cpp: `kel run`: starts an application, then runs what the command line adds to it: scripts, code, events.
#include "commands.h"
#include "events.h"
#include "output.h"
#include "readable.h"
#include "session.h"
#include "watch.h"

#include <set>

#include "../host/app_file.h"
#include "../host/file.h"

namespace kelhost {

namespace {

bool are_readable(const std::vector<std::string> &scripts) {
    bool readable = true;
    for (const std::string &script : scripts) {
        const std::string fault = why_unreadable(script);
        if (fault.empty()) continue;
        report_error(std::string("script ").append(script).append(": ").append(fault));
        readable = false;
    }
    return readable;
}

// What stands before the line number in messages about a piece of code.
std::string code_name(std::size_t index, std::size_t count) {
    return count == 1 ? "--exec" : "--exec[" + std::to_string(index + 1) + "]";
}

ExitStatus run_additions(Application &app, const RunArguments &arguments) {
    for (const std::string &script : arguments.scripts) {
        app.run_script(script);
        app.pump();
    }
    for (std::size_t i = 0; i < arguments.code.size(); ++i) {
        app.run_code(arguments.code[i], code_name(i, arguments.code.size()));
        app.pump();
    }
    for (const std::string &event : arguments.events)
        if (!send_event(app, event)) return bad_input;
    return succeeded;
}

ExitStatus run_once(const RunArguments &arguments) {
    Session session(arguments.session);
    const bool loaded = session.load();
    if (!are_readable(arguments.scripts) || !loaded || !session.start()) return bad_input;
    const ExitStatus status = run_additions(session.app(), arguments);
    session.stop();
    return status == succeeded ? session.verdict(arguments.strict) : status;
}

// The file of the application, its scripts, and those that the command line adds. An application file that is faulty
// just now keeps the scripts that it had. A script that is missing is waited for: only the file is read here, as an
// application with such a fault cannot be loaded.
class FilesOfRun {
public:
    explicit FilesOfRun(const RunArguments &arguments) : arguments_(arguments) {}

    std::vector<std::string> operator()() {
        Diagnostics faults; // the run reports them
        const std::string &path = arguments_.session.path;
        const auto description = read_application_file(path, faults);
        if (faults.empty()) scripts_.clear();
        if (description)
            for (const std::string &script : description->scripts)
                scripts_.insert(join_path(description->folder, script));
        std::vector<std::string> files(scripts_.begin(), scripts_.end());
        // While it is missing nobody knows which of the two it is.
        files.insert(files.end(), {path, join_path(path, "app.json")});
        files.insert(files.end(), arguments_.scripts.begin(), arguments_.scripts.end());
        return files;
    }

private:
    const RunArguments &arguments_;
    std::set<std::string> scripts_;
};

} // namespace

ExitStatus run(const RunArguments &arguments) {
    if (!arguments.watch) return run_once(arguments);
    return watch(FilesOfRun(arguments), [&arguments] { return run_once(arguments); });
}

} // namespace kelhost
