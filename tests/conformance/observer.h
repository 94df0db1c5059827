// observer.h: what a program that does more than run the suite is told of its sessions.
#pragma once

#include <string>

#include "harness.h"

namespace conformance {

// What a session has left when its host has stopped. All of it has to be nothing.
struct Remains {
    int stack_height = 0; // of the Lua state
    int blocks = 0;
    int lists = 0;
    int holds = 0;
    int violations = 0;
    std::string last_violation;
};

class Observer {
public:
    Observer() = default;
    Observer(const Observer &) = delete;
    Observer &operator=(const Observer &) = delete;
    virtual ~Observer() = default;

    virtual void session_starts(Session &) {}
    virtual void collection_held(Session &) {} // the test counts blocks, so Lua collects at its word alone from here on
    virtual void call_starts() {}              // a chunk is loaded and is called now
    virtual void call_ends() {}
    virtual void run_ends(const std::string & /*code*/, const Outcome &) {}
    virtual void session_ends(Session &) {} // the host is still there, and what the test asked for is undone
    virtual void session_ended(const Remains &) {}
};

// One at a time; null takes it away. It stays the caller's.
void set_observer(Observer *observer);

} // namespace conformance
