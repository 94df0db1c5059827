// stack_overflow.cpp: catches the signal of a stack overflow, on a stack of its own.
// The handler may do next to nothing: it hands over to a thread that may.
#include "stack_overflow.h"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <pthread.h>
#include <unistd.h>

namespace kelhost {

namespace {

// How far below the stack's end an overflowing function may reach at once: past its frame, and what it has on it.
constexpr std::uintptr_t reach = std::uintptr_t{256} * 1024;

// What the handler needs; static, as signals are the process's.
sem_t *alarm_to_post = nullptr;
std::uintptr_t stack_end = 0; // its lowest address
struct sigaction before;
std::vector<std::byte> handler_stack;

std::uintptr_t find_stack_end() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    void *lowest = nullptr;
    std::size_t bytes = 0;
    pthread_attr_getstack(&attributes, &lowest, &bytes);
    pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(lowest);
}

bool is_overflow(const siginfo_t &fault) {
    const bool is_of_access = fault.si_code == SEGV_MAPERR || fault.si_code == SEGV_ACCERR;
    const auto address = reinterpret_cast<std::uintptr_t>(fault.si_addr);
    return is_of_access && address < stack_end + reach && address + reach > stack_end;
}

void on_fault(int signal, siginfo_t *fault, void *) {
    if (is_overflow(*fault)) {
        sem_post(alarm_to_post);
        for (;;) pause();
    }
    sigaction(SIGSEGV, &before, nullptr);
    if (fault->si_code <= 0) raise(signal); // sent by somebody; a fault of its own comes again on return
}

// A sanitizer has one already.
void provide_handler_stack() {
    stack_t present = {};
    if (sigaltstack(nullptr, &present) == 0 && (present.ss_flags & SS_DISABLE) == 0) return;
    handler_stack.resize(std::size_t{64} * 1024);
    stack_t provided = {};
    provided.ss_sp = handler_stack.data();
    provided.ss_size = handler_stack.size();
    sigaltstack(&provided, nullptr);
}

} // namespace

StackOverflowAlarm::StackOverflowAlarm(sem_t &alarm) {
    alarm_to_post = &alarm;
    stack_end = find_stack_end();
    provide_handler_stack();
    struct sigaction ours = {};
    ours.sa_sigaction = on_fault;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(SIGSEGV, &ours, &before);
}

StackOverflowAlarm::~StackOverflowAlarm() { sigaction(SIGSEGV, &before, nullptr); }

} // namespace kelhost
