// io_manager.h: delivers events to listeners, at once or from a queue. The kl_io_mgr_t of the reference host.
#pragma once

#include <chrono>
#include <csignal>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <kel/kel.h>

#include "log.h"

namespace kelhost {

// Every event is stamped with the milliseconds since the manager was made, whatever its sender wrote there. Listeners
// are called in the order in which they subscribed; one that is added during a delivery does not get that event, and
// one that is removed is not called any more.
class IoManager {
public:
    explicit IoManager(Log &log);
    ~IoManager();
    IoManager(const IoManager &) = delete;
    IoManager &operator=(const IoManager &) = delete;

    kl_io_mgr_t *record() noexcept { return &record_; }
    static IoManager &of(kl_io_mgr_t *record) noexcept { return *static_cast<Record *>(record)->self; }

    // Events that carry nothing but a target; "" is none. Triggers that trigger events are cut with a warning where
    // they nest too deeply.
    void trigger(const std::string &name, const std::string &target);
    void queue(const std::string &name, const std::string &target);
    // As queue, but an event of the same name and target that waits already is enough.
    void queue_once(const std::string &name, const std::string &target);

    // Has every listener called through `guard`, for hosts whose listeners may do what must not pass through the
    // manager, such as raise a Lua error. Null ends it. context: the guard's own.
    using Guard = void (*)(void *context, io_listener_t listener, kl_io_mgr_t *mgr, kl_event_t *event, void *user_data);
    void guard_listeners(Guard guard, void *context) noexcept;

    // Delivers until nothing waits; returns how many events and callbacks were delivered. An endless chain of events
    // that queue events is cut after `most` deliveries with a warning, and the rest stays queued. Called from inside a
    // delivery of its own it returns 0: the pump that runs already delivers the rest.
    std::size_t pump(std::size_t most = 100000);

    // Until it is forgotten, a pump ends before its next delivery, and drops the events that wait with a warning.
    // Callbacks stay queued: their user data may be somebody's only once they are called. Fit for a signal handler.
    void interrupt() noexcept { interrupted_ = 1; }
    void forget_interruption() noexcept { interrupted_ = 0; }

private:
    struct Record : kl_io_mgr_t {
        IoManager *self = nullptr;
    };
    struct Slots; // the operations of the record

    struct Event {
        std::string name;
        std::optional<std::string> target;
        std::optional<std::string> format;
        std::vector<unsigned char> data;
        std::int32_t timestamp = 0;
    };
    struct Callback {
        io_callback_t function = nullptr;
        void *user_data = nullptr;
    };
    struct Subscription {
        std::string event_name;
        io_listener_t listener = nullptr;
        void *user_data = nullptr;
        bool removed = false; // while a delivery is under way, instead of being erased
    };

    Event make_event(const std::string &name, const std::string &target) const;
    Event copy_event(const kl_event_t &event) const;
    std::int32_t milliseconds() const;
    Event *find_waiting(std::string_view name, const std::optional<std::string> &target) noexcept;

    void deliver(Event event);
    void call_listeners(Event &event);
    void deliver_next();
    void drop_events();
    bool unsubscribe(io_listener_t listener, void *user_data) noexcept;
    void forget_everything() noexcept;

    Record record_;
    Log &log_;
    std::chrono::steady_clock::time_point start_;
    std::vector<Subscription> subscriptions_;
    std::deque<std::variant<Event, Callback>> queue_;
    std::set<std::string, std::less<>> pointer_events_;
    Guard guard_ = nullptr;
    void *guard_context_ = nullptr;
    int deliveries_ = 0; // under way, one inside the other
    int pumps_ = 0;      // 1 while a pump is under way
    volatile std::sig_atomic_t interrupted_ = 0;
};

} // namespace kelhost
