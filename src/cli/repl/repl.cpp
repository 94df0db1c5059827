// repl.cpp: `kel repl`: reads a line, evaluates it in the running application, prints, and again.
#include "../commands.h"
#include "../output.h"
#include "../session.h"
#include "colon_commands.h"
#include "ctrl_c.h"
#include "evaluator.h"
#include "line_editor.h"
#include "lines.h"

#include <string>

#include <unistd.h>

namespace kelhost {

namespace {

constexpr const char *prompt = "> ";
constexpr const char *continuation_prompt = "..> ";

class Repl {
public:
    Repl(Session &session, Lines &lines) : session_(session), lines_(lines) {}

    // Reads to the end, or until it is told to quit. False when anything failed.
    bool run();

private:
    bool take(const std::string &line);
    void evaluate_pending(bool more_can_come);

    Session &session_;
    Lines &lines_;
    std::string pending_; // code that is not finished yet
    bool good_ = true;
};

bool Repl::run() {
    for (;;) {
        std::string line;
        const Lines::Result result = lines_.read(pending_.empty() ? prompt : continuation_prompt, line);
        if (result == Lines::Result::end) break;
        if (result == Lines::Result::cancelled)
            pending_.clear();
        else if (!take(line))
            return good_;
        if (!finish_output()) return false;
    }
    if (!pending_.empty()) evaluate_pending(false);
    return good_;
}

// False when it is the last one.
bool Repl::take(const std::string &line) {
    if (pending_.empty() && is_command(line)) {
        const CommandResult result = execute_command(session_, line);
        good_ = good_ && result != CommandResult::refused;
        return result != CommandResult::quit;
    }
    pending_ += line;
    evaluate_pending(true);
    return true;
}

void Repl::evaluate_pending(bool more_can_come) {
    const Outcome outcome = evaluate(session_.app(), pending_, more_can_come);
    good_ = good_ && outcome != Outcome::failed;
    if (outcome == Outcome::unfinished)
        pending_ += '\n';
    else
        pending_.clear();
}

bool is_interactive() { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

void greet(const Application &app) {
    print("kel " KEL_VERSION ", application " + app.description().name + ". :help lists the commands, Ctrl-D ends.\n");
}

ExitStatus run_on_terminal(Session &session) {
    const CtrlC ctrl_c(session);
    if (!session.start()) return bad_input;
    greet(session.app());
    LineEditor editor([&session](std::string_view before_cursor) { return complete(session.app(), before_cursor); });
    Repl(session, editor).run();
    session.stop();
    return succeeded; // who types sees what fails
}

ExitStatus run_on_input(Session &session) {
    if (!session.start()) return bad_input;
    const bool scripts_good = session.app().script_errors().empty();
    PlainLines lines;
    const bool good = Repl(session, lines).run();
    session.stop();
    return good && scripts_good ? session.verdict(false) : failed;
}

} // namespace

ExitStatus repl(const ReplArguments &arguments) {
    const bool interactive = is_interactive();
    SessionArguments settings = arguments.session;
    settings.interruptible = interactive;
    Session session(settings);
    if (!session.load()) return bad_input;
    return interactive ? run_on_terminal(session) : run_on_input(session);
}

} // namespace kelhost
