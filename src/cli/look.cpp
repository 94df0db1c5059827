// look.cpp: what the commands that only look have in common.
#include "look.h"

#include "events.h"
#include "output.h"
#include "session.h"

#include <algorithm>

namespace kelhost {

ExitStatus look(const LookArguments &arguments, const std::function<bool(Application &app)> &show) {
    Session session(arguments.session, {.log = report_log, .output = report_output});
    if (!session.load() || !session.start()) return bad_input;
    Application &app = session.app();
    const auto &events = arguments.events;
    if (!std::all_of(events.begin(), events.end(), [&app](const std::string &event) { return send_event(app, event); }))
        return bad_input;
    if (!show(app)) return bad_input;
    session.stop();
    return session.verdict(false);
}

} // namespace kelhost
