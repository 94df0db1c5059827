// ctrl_c.cpp: the handler of SIGINT, and of SIGWINCH, which needs none but must end a wait for a key.
#include "ctrl_c.h"

#include <atomic>
#include <cerrno>
#include <csignal>

#include <termios.h>
#include <unistd.h>

namespace kelhost {

namespace {

// The first press ends a script that runs. Where a library function does not end, such as one that matches a pattern,
// nothing looks at it: the second says so, and the third is the way out.
constexpr int warning_press = 2;
constexpr int last_press = 3;
constexpr char warning[] = "note: a library function does not end; Ctrl-C again ends kel\n";
constexpr int exit_status = 128 + SIGINT; // as shells count

std::atomic<Session *> session_to_interrupt = nullptr;
volatile std::sig_atomic_t presses = 0;
termios terminal = {}; // as kel found it
bool terminal_is_known = false;

extern "C" void on_interrupt(int) {
    const int before = errno;
    const int count = presses + 1;
    presses = count;
    if (Session *const session = session_to_interrupt) session->interrupt();
    if (count == warning_press) static_cast<void>(!::write(STDERR_FILENO, warning, sizeof warning - 1));
    if (count == last_press) {
        if (terminal_is_known) static_cast<void>(tcsetattr(STDIN_FILENO, TCSANOW, &terminal)); // if a line was edited
        ::_exit(exit_status);
    }
    errno = before;
}

extern "C" void on_resize(int) {}

// Without restart: a wait for a key ends.
void handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

} // namespace

CtrlC::CtrlC(Session &session) {
    session_to_interrupt = &session;
    terminal_is_known = tcgetattr(STDIN_FILENO, &terminal) == 0;
    forget();
    handle(SIGINT, on_interrupt);
    handle(SIGWINCH, on_resize);
}

CtrlC::~CtrlC() {
    handle(SIGINT, SIG_DFL);
    handle(SIGWINCH, SIG_DFL);
    session_to_interrupt = nullptr;
}

void CtrlC::forget() noexcept { presses = 0; }

bool CtrlC::pressed() noexcept { return presses != 0; }

} // namespace kelhost
