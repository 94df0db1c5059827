// event_handlers.h: calls the Lua functions that the application names for events.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <kel/kel.h>

#include <kelhost/description.h>

namespace kelhost {

struct Runtime;

class EventHandlers {
public:
    explicit EventHandlers(Runtime &runtime);
    ~EventHandlers(); // unsubscribe()
    EventHandlers(const EventHandlers &) = delete;
    EventHandlers &operator=(const EventHandlers &) = delete;

    // Listens to every event that the description has a handler for, and has "kel.changed" queued for every variable
    // that a handler of that event watches. To be called once.
    void subscribe();
    void unsubscribe() noexcept;

private:
    // All handlers of one event, in the order of the file.
    struct Group {
        EventHandlers *owner;
        std::string event;
        std::vector<const HandlerDescription *> handlers;
    };
    static void on_event(kl_io_mgr_t *mgr, kl_event_t *event, void *user_data);
    Group &group_of(const std::string &event);
    void listen(Group &group);
    void watch_variables(const Group &group);

    Runtime &runtime_;
    std::vector<std::unique_ptr<Group>> groups_;
    std::vector<int> watches_; // listeners of the data manager
};

} // namespace kelhost
