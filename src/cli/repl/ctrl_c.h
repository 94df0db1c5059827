// ctrl_c.h: what Ctrl-C does while an application is driven from a terminal: it ends the script that runs, or what is
// being typed, but not the tool, unless it is pressed three times and nothing else helps.
#pragma once

#include "../session.h"

namespace kelhost {

// Takes the signal over for as long as it lives; one at a time.
class CtrlC {
public:
    explicit CtrlC(Session &session);
    ~CtrlC();
    CtrlC(const CtrlC &) = delete;
    CtrlC &operator=(const CtrlC &) = delete;

    static void forget() noexcept;
    static bool pressed() noexcept; // since forget() was called
};

} // namespace kelhost
