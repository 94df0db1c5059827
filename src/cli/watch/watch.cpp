// watch.cpp: the loop of --watch: a run, a wait for what happens next, another run.
#include "../watch.h"

#include "../output.h"
#include "file_changes.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelhost {

namespace {

// Editors write a file in several steps, and people save several files at once.
constexpr int quiet_milliseconds = 50;
constexpr int for_ever = -1;

constexpr pid_t none = 0;

// Makes signals wait to be read from a descriptor instead of ending the process.
class Signals {
public:
    Signals() {
        sigset_t handled;
        sigemptyset(&handled);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) sigaddset(&handled, signal);
        sigprocmask(SIG_BLOCK, &handled, &before_);
        descriptor_ = signalfd(-1, &handled, SFD_NONBLOCK | SFD_CLOEXEC);
        if (descriptor_ < 0) throw std::runtime_error(std::string("cannot watch files: ") + std::strerror(errno));
    }
    ~Signals() {
        close(descriptor_);
        restore();
    }
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

    int descriptor() const noexcept { return descriptor_; }
    void restore() const noexcept { sigprocmask(SIG_SETMASK, &before_, nullptr); }

    // The next one that waits; 0 when none does.
    int take() const noexcept {
        signalfd_siginfo signal = {};
        return read(descriptor_, &signal, sizeof signal) == sizeof signal ? static_cast<int>(signal.ssi_signo) : 0;
    }

private:
    sigset_t before_ = {};
    int descriptor_ = -1;
};

class Run {
public:
    Run() = default;
    ~Run() { end(); }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    // False in the new process.
    bool begin(const Signals &signals) {
        static_cast<void>(finish_output()); // or both processes write what waits
        process_ = fork();
        if (process_ < 0) throw std::runtime_error(std::string("cannot start a run: ") + std::strerror(errno));
        if (process_ != none) return true;
        signals.restore();
        return false;
    }

    // Gives the run up if it is still under way.
    void end() noexcept {
        if (process_ == none) return;
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = none;
    }

    // What a failure has to say, the run has said; a crash says nothing.
    void reap() {
        int status = 0;
        if (process_ == none || waitpid(process_, &status, WNOHANG) != process_) return;
        process_ = none;
        if (WIFSIGNALED(status)) report_error(std::string("the run crashed: ") + strsignal(WTERMSIG(status)));
    }

private:
    pid_t process_ = none;
};

std::string in_words(const std::set<std::string> &files) {
    std::string text;
    for (const std::string &file : files) text += (text.empty() ? "" : ", ") + file;
    return text;
}

// Waits until files have changed and rest. Empty when the user wants an end.
std::set<std::string> wait_for_changes(FileChanges &changes, const Signals &signals, Run &run) {
    std::set<std::string> changed;
    for (;;) {
        pollfd sources[] = {
            {changes.descriptor(), POLLIN, 0},
            {signals.descriptor(), POLLIN, 0}
        };
        const int ready = poll(sources, 2, changed.empty() ? for_ever : quiet_milliseconds);
        if (ready == 0) return changed;
        changed.merge(changes.take());
        while (const int signal = signals.take()) {
            if (signal != SIGCHLD) return {};
            run.reap();
        }
    }
}

} // namespace

ExitStatus watch(const Files &files, const Work &work) {
    FileChanges changes;
    const Signals signals;
    Run run;
    for (;;) {
        changes.set_files(files()); // before the run reads them, so that no change is missed
        if (!run.begin(signals)) return work();
        const std::set<std::string> changed = wait_for_changes(changes, signals, run);
        if (changed.empty()) return succeeded;
        run.end();
        report_line("changed: " + in_words(changed));
    }
}

} // namespace kelhost
