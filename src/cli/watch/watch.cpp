// watch.cpp: the loop of --watch: a run, a wait for what happens next, another run.
#include "../watch.h"

#include "../output.h"
#include "file_changes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
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
constexpr std::chrono::milliseconds quiet{50};
constexpr std::chrono::milliseconds longest_unrest{1000}; // a file that changes all the time is run nevertheless
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

    // What a failure has to say, the run has said; a crash says nothing. False when nobody reads any more what runs
    // say.
    bool reap() {
        int status = 0;
        if (process_ == none || waitpid(process_, &status, WNOHANG) != process_) return true;
        process_ = none;
        if (!WIFSIGNALED(status)) return true;
        if (WTERMSIG(status) == SIGPIPE) return false;
        report_error(std::string("the run crashed: ") + strsignal(WTERMSIG(status)));
        return true;
    }

private:
    pid_t process_ = none;
};

std::string in_words(const std::set<std::string> &files) {
    std::string text;
    for (const std::string &file : files) text += (text.empty() ? "" : ", ") + file;
    return text;
}

using Clock = std::chrono::steady_clock;

// The time until then as poll() takes it, never cut to an earlier one.
int milliseconds_until(Clock::time_point then) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(then - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

// Waits until files have changed and rest. Empty when there shall be an end: the user wants it, or nobody reads.
std::set<std::string> wait_for_changes(FileChanges &changes, const Signals &signals, Run &run) {
    std::set<std::string> changed;
    Clock::time_point rest; // of what has changed
    Clock::time_point latest;
    for (;;) {
        pollfd sources[] = {
            {changes.descriptor(), POLLIN, 0},
            {signals.descriptor(), POLLIN, 0}
        };
        static_cast<void>(poll(sources, 2, changed.empty() ? for_ever : milliseconds_until(rest)));
        std::set<std::string> further = changes.take();
        const Clock::time_point now = Clock::now();
        if (changed.empty()) latest = now + longest_unrest;
        if (!further.empty()) rest = std::min(now + quiet, latest);
        changed.merge(further);
        while (const int signal = signals.take())
            if (signal != SIGCHLD || !run.reap()) return {};
        if (!changed.empty() && now >= rest) return changed;
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
