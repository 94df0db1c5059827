// event_handlers.cpp: calls the Lua functions that the application names for events.
// A change of a variable never runs Lua by itself: it queues an event, so that no script is called inside another's
// write.
#include "event_handlers.h"

#include <algorithm>
#include <set>

#include "runtime.h"

namespace kelhost {

namespace {

constexpr char changed_event[] = "kel.changed";

bool is_meant(const HandlerDescription &handler, const kl_event_t &event) noexcept {
    return handler.target.empty() || (event.target != nullptr && handler.target == event.target);
}

} // namespace

EventHandlers::EventHandlers(Runtime &runtime) : runtime_(runtime) {}

EventHandlers::~EventHandlers() { unsubscribe(); }

void EventHandlers::subscribe() {
    for (const HandlerDescription &handler : runtime_.description.handlers)
        group_of(handler.event).handlers.push_back(&handler);
    for (const auto &group : groups_) {
        listen(*group);
        if (group->event == changed_event) watch_variables(*group);
    }
}

EventHandlers::Group &EventHandlers::group_of(const std::string &event) {
    const auto found = std::ranges::find(groups_, event, [](const auto &group) { return group->event; });
    if (found != groups_.end()) return **found;
    return *groups_.emplace_back(std::make_unique<Group>(Group{this, event, {}}));
}

void EventHandlers::listen(Group &group) {
    kl_io_mgr_t *const io = runtime_.io.record();
    if (io->add_event_listener(io, group.event.c_str(), on_event, &group) != 0) throw std::bad_alloc();
}

void EventHandlers::watch_variables(const Group &group) {
    const auto queue_change = [this](std::string_view key) { runtime_.io.queue_once(changed_event, std::string(key)); };
    std::set<std::string> targets;
    for (const HandlerDescription *handler : group.handlers) targets.insert(handler->target);
    for (const std::string &target : targets)
        watches_.push_back(target.empty() ? runtime_.data.add_listener(queue_change)
                                          : runtime_.data.add_listener(target, queue_change));
}

void EventHandlers::unsubscribe() noexcept {
    kl_io_mgr_t *const io = runtime_.io.record();
    for (const auto &group : groups_) io->rem_event_listener(io, on_event, group.get());
    for (const int number : watches_) runtime_.data.remove_listener(number);
    groups_.clear();
    watches_.clear();
}

void EventHandlers::on_event(kl_io_mgr_t *, kl_event_t *event, void *user_data) {
    const auto &group = *static_cast<const Group *>(user_data);
    for (const HandlerDescription *handler : group.handlers)
        if (is_meant(*handler, *event)) group.owner->runtime_.lua.call_handler(*handler, *event);
}

} // namespace kelhost
