// data_changes.cpp: who is told about changed variables, when, and how often.
//
// A watched write leaves a change in waiting_. Outside of holds it is told at once, else at the last release. Telling
// goes in rounds: what listeners write while a round is told waits for the next one, so nothing here nests.
#include "data_manager.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "io_manager.h"

namespace kelhost {

namespace {

// Listeners that answer each other's writes settle sooner than this, or never.
constexpr int most_rounds = 100;

constexpr std::size_t smallest_room = 16;

} // namespace

bool DataManager::is_watched(std::string_view key) const noexcept {
    for (const Subscription &subscription : subscriptions_)
        if (subscription.hears(key)) return true;
    return !bindings_.empty() && bindings_.contains(key);
}

// Before a change is stored, so that running out of memory leaves the variable as it was.
void DataManager::make_room_for_change() {
    if (waiting_.size() == waiting_.capacity()) waiting_.reserve(std::max(smallest_room, waiting_.size() * 2));
}

// A change that waits already, or whose turn in this round is still to come, covers this one too.
void DataManager::note_change(Node &node, std::optional<Value> before) noexcept {
    if (node.second.waiting != 0 || node.second.telling != 0) return;
    waiting_.push_back({&node, std::move(before)});
    node.second.waiting = static_cast<std::uint32_t>(waiting_.size());
}

void DataManager::forget_changes(Node &node) noexcept {
    if (node.second.waiting != 0) waiting_[node.second.waiting - 1].node = nullptr;
    if (node.second.telling != 0) batch_[node.second.telling - 1].node = nullptr;
}

void DataManager::drop_waiting() noexcept {
    for (const Change &change : waiting_)
        if (change.node != nullptr) change.node->second.waiting = 0;
    waiting_.clear();
}

void DataManager::hold() noexcept { ++hold_depth_; }

void DataManager::release() {
    if (hold_depth_ == 0) {
        log_.write(KL_LOG_WARNING, "Change notifications are released without being held");
        return;
    }
    --hold_depth_;
    deliver();
}

int DataManager::hold_depth() const noexcept { return hold_depth_; }

void DataManager::restore_hold_depth(int depth) {
    while (hold_depth_ > std::max(depth, 0)) release();
}

void DataManager::force() noexcept {
    forced_ = true;
    deliver();
}

// Tells what waits, unless it is held.
void DataManager::deliver() noexcept {
    if (delivering_) return; // the delivery that is under way goes on to the next round
    delivering_ = true;
    for (int round = 0; !waiting_.empty() && (hold_depth_ == 0 || forced_); ++round) {
        if (round == most_rounds) {
            give_up();
            break;
        }
        tell_batch();
    }
    delivering_ = false;
    forced_ = false;
}

void DataManager::give_up() noexcept {
    const auto first =
        std::find_if(waiting_.begin(), waiting_.end(), [](const Change &change) { return change.node != nullptr; });
    if (first != waiting_.end())
        log_.format(KL_LOG_WARNING, "Listeners keep changing %s, they are not told any more after %d rounds",
                    first->node->first.c_str(), most_rounds);
    drop_waiting();
}

void DataManager::tell_batch() noexcept {
    batch_.swap(waiting_);
    for (const Change &change : batch_)
        if (change.node != nullptr) change.node->second.telling = std::exchange(change.node->second.waiting, 0);
    for (const Change &change : batch_) {
        if (change.node == nullptr) continue;
        change.node->second.telling = 0;
        const bool is_back = change.before && same_value(*change.before, change.node->second.value);
        if (!is_back) tell(*change.node);
    }
    batch_.clear();
}

// Whoever is told may erase the variable; nobody is told of it from then on. Its node is kept until here, for its key.
void DataManager::tell(Node &node) noexcept {
    told_node_ = &node;
    ++calls_;
    const std::string &key = node.first;
    const std::size_t count = subscriptions_.size();
    for (std::size_t index = 0; index < count && told_node_ != nullptr; ++index)
        if (subscriptions_[index].hears(key)) call(subscriptions_[index], key);
    if (told_node_ != nullptr) queue_bound_events(key);
    told_node_ = nullptr;
    erased_while_told_.clear();
    --calls_;
    sweep_subscriptions();
}

void DataManager::tell_misses(std::string_view key) {
    if (telling_misses_ || subscriptions_.empty()) return; // a listener that reads what is missing is not told again
    const std::string copy(key);
    telling_misses_ = true;
    ++calls_;
    const std::size_t count = subscriptions_.size();
    for (std::size_t index = 0; index < count; ++index) {
        const Subscription &subscription = subscriptions_[index];
        if (!subscription.removed && subscription.scope == Subscription::Scope::misses) call(subscription, copy);
    }
    telling_misses_ = false;
    --calls_;
    sweep_subscriptions();
}

// A listener that fails does not keep the others from being told.
void DataManager::call(const Subscription &subscription, const std::string &key) noexcept {
    try {
        if (subscription.function != nullptr)
            subscription.function(&record_, key.c_str(), subscription.user_data);
        else
            subscription.listener(key);
    } catch (const std::exception &failure) {
        log_.format(KL_LOG_ERROR, "A listener of %s failed: %s", key.c_str(), failure.what());
    } catch (...) {
        log_.format(KL_LOG_ERROR, "A listener of %s failed", key.c_str());
    }
}

void DataManager::queue_bound_events(const std::string &key) noexcept {
    const auto bound = bindings_.find(key);
    if (bound == bindings_.end()) return;
    try {
        for (const std::string &event_name : bound->second) io_.queue_once(event_name, key);
    } catch (...) {
        log_.format(KL_LOG_ERROR, "The event for a change of %s cannot be queued: out of memory", key.c_str());
    }
}

int DataManager::add_listener(Listener listener) {
    return subscribe({0, Subscription::Scope::every, {}, std::move(listener), nullptr, nullptr});
}

int DataManager::add_listener(std::string key, Listener listener) {
    return subscribe({0, Subscription::Scope::key, std::move(key), std::move(listener), nullptr, nullptr});
}

int DataManager::subscribe(Subscription subscription) {
    subscription.number = last_number_ + 1;
    subscriptions_.push_back(std::move(subscription));
    return ++last_number_;
}

void DataManager::remove_listener(int number) {
    unsubscribe([number](const Subscription &subscription) { return subscription.number == number; });
}

bool DataManager::remove_function(kl_data_listener_t function, void *user_data) noexcept {
    return unsubscribe([=](const Subscription &subscription) {
        return subscription.function == function && subscription.function != nullptr
               && subscription.user_data == user_data;
    });
}

template <typename Predicate> bool DataManager::unsubscribe(Predicate is_meant) noexcept {
    bool found = false;
    for (Subscription &subscription : subscriptions_) {
        if (subscription.removed || !is_meant(subscription)) continue;
        subscription.removed = true;
        found = true;
    }
    sweep_subscriptions();
    return found;
}

void DataManager::sweep_subscriptions() noexcept {
    if (calls_ == 0) std::erase_if(subscriptions_, [](const Subscription &entry) { return entry.removed; });
}

void DataManager::bind(std::string_view key, std::string_view event_name) {
    const auto bound = bindings_.find(key);
    auto &events = bound != bindings_.end() ? bound->second : bindings_[std::string(key)];
    if (std::find(events.begin(), events.end(), event_name) == events.end()) events.emplace_back(event_name);
}

void DataManager::forget_everybody() noexcept {
    unsubscribe([](const Subscription &) { return true; });
    bindings_.clear();
    drop_waiting();
}

} // namespace kelhost
