// watchdog.cpp: a thread that waits for the end of the time allowed or for a stack overflow, then ends the process.
#include "../watchdog.h"

#include "../output.h"
#include "stack_overflow.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>

#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

namespace kelhost {

namespace {

using Nanoseconds = std::int64_t; // of the clock that nobody sets

constexpr Nanoseconds second = 1'000'000'000;
constexpr double longest_bound = 1e9; // seconds: 30 years, and no number here overflows

Nanoseconds now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * second + time.tv_nsec;
}

timespec to_timespec(Nanoseconds time) {
    timespec result = {};
    result.tv_sec = static_cast<time_t>(time / second);
    result.tv_nsec = static_cast<long>(time % second);
    return result;
}

Nanoseconds to_nanoseconds(double seconds) {
    const bool bounded = seconds > 0 && seconds < longest_bound;
    return static_cast<Nanoseconds>((bounded ? seconds : longest_bound) * static_cast<double>(second));
}

std::string in_words(double seconds) {
    char number[32] = {};
    static_cast<void>(std::snprintf(number, sizeof number, "%g", seconds));
    return std::string(number) + (seconds == 1 ? " second" : " seconds");
}

constexpr unsigned report_seconds = 1;

// What the process ends with when its report does not come through; static, as signals are the process's.
std::string last_words;

// Nobody may read from standard output, or from standard error either, and whoever writes there waits for ever.
void give_up(int) {
    pollfd messages = {STDERR_FILENO, POLLOUT, 0};
    const bool has_room = poll(&messages, 1, 0) == 1 && (messages.revents & POLLOUT) != 0;
    const auto written = has_room ? write(STDERR_FILENO, last_words.data(), last_words.size()) : 0;
    static_cast<void>(written); // there is nobody to tell
    _exit(EXIT_FAILURE);
}

void bound_the_report(const std::string &message) {
    last_words = "error: " + message + "\n";
    struct sigaction ours = {};
    ours.sa_handler = give_up;
    ours.sa_flags = SA_ONSTACK; // the main thread may be at its stack's end
    sigaction(SIGALRM, &ours, nullptr);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    alarm(report_seconds);
}

// Not through exit(), which would take down what is in use.
[[noreturn]] void end_process(const std::string &message) {
    bound_the_report(message);
    report_error(message);
    std::_Exit(EXIT_FAILURE);
}

// A thread that is made while it lives gets no signals: they are the main thread's.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t before_ = {};
};

template <typename Function> std::thread start_thread(Function function) {
    const SignalsBlocked blocked;
    return std::thread(function);
}

struct Semaphore {
    Semaphore() { sem_init(&semaphore, 0, 0); }
    ~Semaphore() { sem_destroy(&semaphore); }
    Semaphore(const Semaphore &) = delete;
    Semaphore &operator=(const Semaphore &) = delete;

    void post() { sem_post(&semaphore); }

    // False when the time came first.
    bool wait_until(Nanoseconds time) {
        const timespec end = to_timespec(time);
        int result = 0;
        do result = sem_clockwait(&semaphore, CLOCK_MONOTONIC, &end);
        while (result != 0 && errno == EINTR);
        return result == 0;
    }

    sem_t semaphore;
};

} // namespace

// What the process is at. Telling it takes no memory, as there may be none; text that is too long is cut.
class Activity {
public:
    void set(std::string_view text) noexcept {
        const std::lock_guard lock(guard_);
        length_ = std::min(text.size(), sizeof text_);
        while (length_ < text.size() && length_ > 0 && is_inside_letter(text[length_])) --length_;
        std::copy_n(text.data(), length_, text_);
    }

    std::string get() {
        const std::lock_guard lock(guard_);
        return {text_, length_};
    }

private:
    static bool is_inside_letter(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; }

    std::mutex guard_;
    char text_[1024] = {};
    std::size_t length_ = 0;
};

struct Watchdog::Guard {
    explicit Guard(double most)
        : seconds(most), bound(to_nanoseconds(most)), thread(start_thread([this] { watch(); })) {}
    ~Guard() {
        done = true;
        alarm.post();
        thread.join();
    }
    Guard(const Guard &) = delete;
    Guard &operator=(const Guard &) = delete;

    void watch();

    const double seconds;
    const Nanoseconds bound;
    std::atomic<bool> done = false;
    std::atomic<Nanoseconds> busy_since = 0; // 0 when it is not
    Activity activity;
    Semaphore alarm; // the end of the watch, or a stack overflow
    StackOverflowAlarm overflow{alarm.semaphore};
    std::thread thread; // last: it uses all the others
};

// Nobody has to wake it when the process becomes busy: what began while it slept has time left when it wakes.
void Watchdog::Guard::watch() {
    Nanoseconds end = now() + bound;
    while (!alarm.wait_until(end)) {
        const Nanoseconds since = busy_since;
        const Nanoseconds time = now();
        if (since != 0 && time >= since + bound)
            end_process("timed out after " + in_words(seconds) + ", while " + activity.get() + " was running");
        end = (since != 0 ? since : time) + bound;
    }
    if (!done) end_process("C stack overflow inside a library function, while " + activity.get() + " was running");
}

Watchdog::Watchdog(double seconds) : guard_(std::make_unique<Guard>(seconds)) {}

Watchdog::~Watchdog() = default;

void Watchdog::tell(std::string_view activity) noexcept {
    if (activity.empty()) {
        guard_->busy_since = 0;
        return;
    }
    if (guard_->busy_since == 0) guard_->busy_since = now();
    guard_->activity.set(activity);
}

} // namespace kelhost
