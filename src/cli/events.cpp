// events.cpp: sends events, to objects that exist.
#include "events.h"

#include "object_names.h"
#include "output.h"

#include <algorithm>

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

bool has_handler(const Application &app, const Event &event) {
    const auto &handlers = app.description().handlers;
    return std::any_of(handlers.begin(), handlers.end(), [&event](const HandlerDescription &handler) {
        return handler.event == event.name && (handler.target.empty() || handler.target == event.target);
    });
}

std::string in_words(const Event &event) {
    return event.target.empty() ? "\"" + event.name + "\"" : "\"" + event.name + "\" on " + event.target;
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
    if (!has_handler(app, event)) report_note("no handler is called for event " + in_words(event));
    app.queue_event(event.name, event.target);
    app.pump();
    return true;
}

} // namespace kelhost
