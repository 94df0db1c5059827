// ctrl_c.cpp: the handler of SIGINT, and of SIGWINCH, which needs none but must end a wait for a key.
#include "ctrl_c.h"

#include <atomic>
#include <csignal>

namespace kelhost {

namespace {

std::atomic<Session *> session_to_interrupt = nullptr;
volatile std::sig_atomic_t was_pressed = 0;

extern "C" void on_interrupt(int) {
    was_pressed = 1;
    if (Session *const session = session_to_interrupt) session->interrupt();
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
    handle(SIGINT, on_interrupt);
    handle(SIGWINCH, on_resize);
}

CtrlC::~CtrlC() {
    handle(SIGINT, SIG_DFL);
    handle(SIGWINCH, SIG_DFL);
    session_to_interrupt = nullptr;
}

void CtrlC::forget() noexcept { was_pressed = 0; }

bool CtrlC::pressed() noexcept { return was_pressed != 0; }

} // namespace kelhost
