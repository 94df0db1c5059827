// io_manager.cpp: subscriptions, the queue and its pump.
// Knows nothing of what events mean; whoever sends and whoever listens agree on that.
#include "io_manager.h"

#include <utility>

#include "c_border.h"

namespace kelhost {

namespace {

// Each level of triggers inside triggers takes stack of every listener on the way.
constexpr int deepest_delivery = 50;

// Ends what it began when its scope ends, by an exception too.
class Raised {
public:
    explicit Raised(int &level) : level_(level) { ++level_; }
    ~Raised() { --level_; }
    Raised(const Raised &) = delete;
    Raised &operator=(const Raised &) = delete;

private:
    int &level_;
};

bool is_complete(const kl_event_t *event) {
    return event != nullptr && event->name != nullptr && (event->data != nullptr || event->nbytes == 0);
}

char *text_or_null(std::optional<std::string> &text) { return text ? text->data() : nullptr; }

} // namespace

// What the C record offers: each turns its arguments into the manager's and keeps exceptions in.
struct IoManager::Slots {
    static int init(kl_io_mgr_t *, kl_application_t *) { return 0; } // a manager is ready when it is made
    static void fini(kl_io_mgr_t *mgr) { of(mgr).forget_everything(); }

    static int add_event_listener(kl_io_mgr_t *mgr, const char *event_name, io_listener_t listener, void *user_data) {
        if (event_name == nullptr || listener == nullptr) return -1;
        return at_c_border(-1, [=] {
            of(mgr).subscriptions_.push_back({event_name, listener, user_data});
            return 0;
        });
    }

    static int rem_event_listener(kl_io_mgr_t *mgr, io_listener_t listener, void *user_data) {
        return of(mgr).unsubscribe(listener, user_data) ? 0 : -1;
    }

    static int trigger_event(kl_io_mgr_t *mgr, const kl_event_t *event) {
        if (!is_complete(event)) return -1;
        return at_c_border(-1, [=] {
            of(mgr).deliver(of(mgr).copy_event(*event));
            return 0;
        });
    }

    static int trigger_callback(kl_io_mgr_t *mgr, io_callback_t callback, void *user_data) {
        if (callback == nullptr) return -1;
        callback(mgr, user_data);
        return 0;
    }

    static int queue_event(kl_io_mgr_t *mgr, const kl_event_t *event) {
        if (!is_complete(event)) return -1;
        return at_c_border(-1, [=] {
            of(mgr).queue_.emplace_back(of(mgr).copy_event(*event));
            return 0;
        });
    }

    static int queue_compress_event(kl_io_mgr_t *mgr, const kl_event_t *event) {
        if (!is_complete(event)) return -1;
        return at_c_border(-1, [=] {
            IoManager &self = of(mgr);
            Event copy = self.copy_event(*event);
            if (Event *waiting = self.find_waiting(copy.name, copy.target))
                *waiting = std::move(copy);
            else
                self.queue_.emplace_back(std::move(copy));
            return 0;
        });
    }

    static int queue_callback(kl_io_mgr_t *mgr, io_callback_t callback, void *user_data) {
        if (callback == nullptr) return -1;
        return at_c_border(-1, [=] {
            of(mgr).queue_.emplace_back(Callback{callback, user_data});
            return 0;
        });
    }

    static int event_loop(kl_io_mgr_t *mgr) {
        return at_c_border(-1, [=] { return static_cast<int>(of(mgr).pump()); });
    }

    static int add_pointer_event(kl_io_mgr_t *mgr, const char *event_name) {
        if (event_name == nullptr) return -1;
        return at_c_border(-1, [=] {
            of(mgr).pointer_events_.insert(event_name);
            return 0;
        });
    }

    static int rem_pointer_event(kl_io_mgr_t *mgr, const char *event_name) {
        if (event_name == nullptr) return -1;
        auto &names = of(mgr).pointer_events_;
        const auto found = names.find(event_name);
        if (found == names.end()) return -1;
        names.erase(found);
        return 0;
    }

    static int is_pointer_event(kl_io_mgr_t *mgr, const char *event_name) {
        return event_name != nullptr && of(mgr).pointer_events_.contains(event_name) ? 1 : 0;
    }
};

IoManager::IoManager(Log &log)
    : log_(log), start_(std::chrono::steady_clock::now()), pointer_events_{"press", "motion", "release"} {
    record_.self = this;
    record_.nbytes = sizeof(kl_io_mgr_t);
    record_.init = Slots::init;
    record_.fini = Slots::fini;
    record_.add_event_listener = Slots::add_event_listener;
    record_.rem_event_listener = Slots::rem_event_listener;
    record_.trigger_event = Slots::trigger_event;
    record_.trigger_callback = Slots::trigger_callback;
    record_.queue_event = Slots::queue_event;
    record_.queue_compress_event = Slots::queue_compress_event;
    record_.queue_callback = Slots::queue_callback;
    record_.event_loop = Slots::event_loop;
    record_.add_pointer_event = Slots::add_pointer_event;
    record_.rem_pointer_event = Slots::rem_pointer_event;
    record_.is_pointer_event = Slots::is_pointer_event;
}

IoManager::~IoManager() = default;

void IoManager::trigger(const std::string &name, const std::string &target) { deliver(make_event(name, target)); }

void IoManager::queue(const std::string &name, const std::string &target) {
    queue_.emplace_back(make_event(name, target));
}

void IoManager::queue_once(const std::string &name, const std::string &target) {
    Event event = make_event(name, target);
    if (find_waiting(event.name, event.target) == nullptr) queue_.emplace_back(std::move(event));
}

std::size_t IoManager::pump(std::size_t most) {
    if (pumps_ > 0) return 0;
    const Raised pumping(pumps_);
    std::size_t delivered = 0;
    for (; delivered < most && !queue_.empty() && interrupted_ == 0; ++delivered) deliver_next();
    if (interrupted_ != 0)
        drop_events();
    else if (!queue_.empty())
        log_.format(KL_LOG_WARNING, "Stopped after delivering %lu events, %lu still wait: do events queue each other?",
                    static_cast<unsigned long>(delivered), static_cast<unsigned long>(queue_.size()));
    return delivered;
}

void IoManager::drop_events() {
    const auto is_event = [](const auto &waiting) { return std::holds_alternative<Event>(waiting); };
    if (const std::size_t dropped = std::erase_if(queue_, is_event); dropped > 0)
        log_.format(KL_LOG_WARNING, "Interrupted: events that waited are dropped, %lu",
                    static_cast<unsigned long>(dropped));
}

void IoManager::deliver_next() {
    auto next = std::move(queue_.front());
    queue_.pop_front();
    if (const auto *callback = std::get_if<Callback>(&next))
        callback->function(&record_, callback->user_data);
    else
        deliver(std::get<Event>(std::move(next)));
}

void IoManager::deliver(Event event) {
    if (deliveries_ == deepest_delivery) {
        log_.format(KL_LOG_WARNING, "Event \"%s\" is not delivered: %d deliveries inside each other already",
                    event.name.c_str(), deliveries_);
        return;
    }
    {
        const Raised delivery(deliveries_);
        call_listeners(event);
    }
    if (deliveries_ == 0) std::erase_if(subscriptions_, [](const Subscription &entry) { return entry.removed; });
}

// The event is the listeners' to read and, its strings not being const, to write: what they write there reaches later
// listeners but does not decide which of them are called.
void IoManager::call_listeners(Event &event) {
    const std::string name = event.name;
    const std::size_t count = subscriptions_.size();
    for (std::size_t index = 0; index < count; ++index) {
        const Subscription &entry = subscriptions_[index];
        if (entry.removed || entry.event_name != name) continue;
        kl_event_t record = {event.name.data(),
                             text_or_null(event.target),
                             text_or_null(event.format),
                             event.timestamp,
                             static_cast<std::uint32_t>(event.data.size()),
                             event.data.empty() ? nullptr : event.data.data()};
        if (guard_ != nullptr)
            guard_(guard_context_, entry.listener, &record_, &record, entry.user_data);
        else
            entry.listener(&record_, &record, entry.user_data);
    }
}

void IoManager::guard_listeners(Guard guard, void *context) noexcept {
    guard_ = guard;
    guard_context_ = context;
}

bool IoManager::unsubscribe(io_listener_t listener, void *user_data) noexcept {
    const auto is_meant = [=](const Subscription &entry) {
        return !entry.removed && entry.listener == listener && entry.user_data == user_data;
    };
    if (deliveries_ == 0) return std::erase_if(subscriptions_, is_meant) > 0;
    bool found = false;
    for (Subscription &entry : subscriptions_) {
        if (!is_meant(entry)) continue;
        entry.removed = true;
        found = true;
    }
    return found;
}

void IoManager::forget_everything() noexcept {
    queue_.clear();
    if (deliveries_ == 0) subscriptions_.clear();
    for (Subscription &entry : subscriptions_) entry.removed = true;
}

IoManager::Event IoManager::make_event(const std::string &name, const std::string &target) const {
    Event event;
    event.name = name;
    if (!target.empty()) event.target = target;
    event.timestamp = milliseconds();
    return event;
}

IoManager::Event IoManager::copy_event(const kl_event_t &event) const {
    Event copy;
    copy.name = event.name;
    if (event.target != nullptr) copy.target = event.target;
    if (event.format != nullptr) copy.format = event.format;
    const auto *data = static_cast<const unsigned char *>(event.data);
    if (event.nbytes > 0) copy.data.assign(data, data + event.nbytes);
    copy.timestamp = milliseconds();
    return copy;
}

// Wraps round after some 24 days, as the record's 32 bits do.
std::int32_t IoManager::milliseconds() const {
    const auto elapsed = std::chrono::steady_clock::now() - start_;
    return static_cast<std::int32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

IoManager::Event *IoManager::find_waiting(std::string_view name, const std::optional<std::string> &target) noexcept {
    for (auto &waiting : queue_) {
        auto *event = std::get_if<Event>(&waiting);
        if (event != nullptr && event->name == name && event->target == target) return event;
    }
    return nullptr;
}

} // namespace kelhost
