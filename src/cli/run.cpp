// run.cpp: `kel run`: starts an application, then runs what the command line adds to it: scripts, code, events.
#include "commands.h"
#include "events.h"
#include "output.h"
#include "readable.h"
#include "session.h"
#include "watch.h"

#include <utility>

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

std::string join(const std::string &folder, const std::string &path) {
    if (folder.empty() || path.starts_with('/')) return path;
    return folder.ends_with('/') ? folder + path : folder + "/" + path;
}

// The file of the application, its scripts, and those that the command line adds. An application file that is faulty
// just now keeps the scripts that it had.
class FilesOfRun {
public:
    explicit FilesOfRun(const RunArguments &arguments) : arguments_(arguments) {}

    std::vector<std::string> operator()() {
        Options silent;
        silent.log = [](const LogEntry &) {};
        Diagnostics faults; // the run reports them
        const std::string &path = arguments_.session.path;
        if (const auto app = Application::load(path, std::move(silent), faults)) {
            scripts_.clear();
            for (const std::string &script : app->description().scripts)
                scripts_.push_back(join(app->description().folder, script));
        }
        std::vector<std::string> files = scripts_;
        // While it is missing nobody knows which of the two it is.
        files.insert(files.end(), {path, join(path, "app.json")});
        files.insert(files.end(), arguments_.scripts.begin(), arguments_.scripts.end());
        return files;
    }

private:
    const RunArguments &arguments_;
    std::vector<std::string> scripts_;
};

} // namespace

ExitStatus run(const RunArguments &arguments) {
    if (!arguments.watch) return run_once(arguments);
    return watch(FilesOfRun(arguments), [&arguments] { return run_once(arguments); });
}

} // namespace kelhost
