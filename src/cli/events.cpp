// events.cpp: sends events, to objects that exist.
#include "events.h"

#include "object_names.h"
#include "output.h"

#include <algorithm>
#include <vector>

namespace kelhost {

namespace {

struct Event {
    std::string name;
    std::string target; // "" for nobody in particular
};

Event parse_event(const std::string &text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return {text, {}};
    return {text.substr(0, colon), text.substr(colon + 1)};
}

bool exists(const Application &app, const std::string &target) {
    return app.find(target) != nullptr || app.variable(target).has_value();
}

std::string in_words(const Event &event) {
    return event.target.empty() ? "\"" + event.name + "\"" : "\"" + event.name + "\" on " + event.target;
}

// Those that a handler is called for when they are sent to that target.
std::vector<std::string> handled_events(const Application &app, const std::string &target) {
    std::vector<std::string> names;
    for (const HandlerDescription &handler : app.description().handlers)
        if (handler.target.empty() || handler.target == target) names.push_back(handler.event);
    return names;
}

void note_if_unhandled(const Application &app, const Event &event) {
    const std::vector<std::string> handled = handled_events(app, event.target);
    if (std::find(handled.begin(), handled.end(), event.name) != handled.end()) return;
    report_note("no handler is called for event " + in_words(event) + suggest(event.name, handled));
}

} // namespace

bool is_event(const std::string &text) { return !text.empty() && text.front() != ':' && text.back() != ':'; }

bool send_event(Application &app, const std::string &text) {
    const Event event = parse_event(text);
    if (!event.target.empty() && !exists(app, event.target)) {
        report_error("event " + in_words(event) + ": there is no object of that name"
                     + suggest(event.target, object_names(app)));
        return false;
    }
    note_if_unhandled(app, event);
    app.queue_event(event.name, event.target);
    app.pump();
    return true;
}

} // namespace kelhost
