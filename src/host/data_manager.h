// data_manager.h: every property of the application as a typed, named variable. The kl_data_mgr_t of the reference
// host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <kel/kel.h>

#include <kelhost/value.h>

#include "log.h"

namespace kelhost {

class IoManager;

// What a caller wants to write: a script's boolean, number or string, or something that no variable can hold.
struct Input {
    enum class Kind : std::uint8_t { boolean, number, text, other };
    Kind kind = Kind::other;
    bool boolean = false;
    double number = 0;
    std::string_view text; // Kind::text: the characters; Kind::other: what it is, such as "nil" or "table"
};
Input to_input(const Value &value) noexcept;

enum class WriteResult : std::uint8_t { changed, unchanged, refused };

class DataManager {
public:
    struct Variable {
        DataType type = DataType::f64;
        Value value;
    };

    DataManager(Log &log, IoManager &io);
    ~DataManager();
    DataManager(const DataManager &) = delete;
    DataManager &operator=(const DataManager &) = delete;

    kl_data_mgr_t *record() noexcept { return &record_; }
    static DataManager &of(kl_data_mgr_t *record) noexcept;

    // Decides whether a key that names no variable may become one: whether its object exists. Without it every key may.
    // Returns null when it may, else the reason, such as "no object \"main.nosuch\"".
    void set_key_policy(std::function<std::optional<std::string>(std::string_view key)> policy);

    // Creates a variable without asking the policy and without telling anybody; false when it exists already.
    bool create(std::string_view key, DataType type, Value value);

    // Writes, converting to the variable's type: booleans are 0 and 1 for numbers, numeric strings are numbers, numbers
    // are text for strings; fractions are cut toward zero for integers; numbers out of range are clamped with a
    // warning. What cannot be converted is refused with a warning that names key, type and value. A key that names no
    // variable creates one if the policy allows (boolean: u8; whole number in range: i32; other number: f64; text:
    // string).
    WriteResult write(std::string_view key, const Input &input);

    const Variable *find(std::string_view key) const noexcept;
    // As find, and tells the miss listeners when there is none.
    const Variable *read(std::string_view key);

    // Removes variables, their waiting notifications, and bindings; nobody is told. erase_prefix takes every key that
    // begins with prefix.
    bool erase(std::string_view key);
    void erase_prefix(std::string_view prefix);

    // The keys that begin with prefix and are longer, sorted by byte value.
    std::vector<std::string> keys(std::string_view prefix) const;

    // Between both, changes wait. The last release tells each changed variable once, in the order of first writes, and
    // not at all when its value is what it was. Outside of holds a change is told at once. What listeners write while
    // they are told is told after that batch; when they keep at it, a warning says that they are not told any more. A
    // release too many is ignored with a warning.
    void hold() noexcept;
    void release();
    int hold_depth() const noexcept;
    // Releases brackets until no more than `depth` are open; for callers who clean up after somebody who failed.
    void restore_hold_depth(int depth);

    // For C++ listeners inside the host; told like the C ones, in the order of subscription. The returned number
    // removes it. Inside of a listener, subscribing (from the next change on), removing and erasing variables are all
    // allowed. A listener that throws is logged, and the others are told. Whoever subscribes while changes are held is
    // told of the writes that follow.
    using Listener = std::function<void(std::string_view key)>;
    int add_listener(Listener listener); // of every variable
    int add_listener(std::string key, Listener listener);
    void remove_listener(int number);

private:
    struct Record : kl_data_mgr_t {
        DataManager *self = nullptr;
    };
    struct Slots; // the operations of the record

    struct Entry : Variable {
        std::uint32_t waiting = 0; // place in waiting_, counted from 1; 0 for none
        std::uint32_t telling = 0; // place in batch_, likewise
    };
    using Index = std::map<std::string, Entry, std::less<>>;
    using Node = Index::value_type;

    struct Change {
        Node *node;                  // null when the variable is gone
        std::optional<Value> before; // nothing for a variable that is new
    };
    struct Subscription {
        enum class Scope : std::uint8_t { every, key, misses };
        int number;
        Scope scope;
        std::string key; // Scope::key
        Listener listener;
        kl_data_listener_t function; // instead of `listener`
        void *user_data;
        bool removed = false; // while listeners are called, instead of being erased

        bool hears(std::string_view changed_key) const noexcept {
            return !removed && (scope == Scope::every || (scope == Scope::key && key == changed_key));
        }
    };

    WriteResult write_typed(std::string_view key, const Input &input, std::optional<DataType> type_if_new);
    WriteResult write_existing(Node &node, const Input &input);
    WriteResult write_new(std::string_view key, const Input &input, std::optional<DataType> type_if_new);
    bool write_bytes(std::string_view key, std::string_view format, const void *data, std::uint32_t nbytes);
    WriteResult store_number(Node &node, double number);
    WriteResult store_text(Node &node, std::string_view text);
    std::optional<Value> convert(std::string_view key, DataType type, const Input &input);
    std::optional<double> to_number(std::string_view key, DataType type, const Input &input);
    void refuse(std::string_view key, DataType type, const Input &input, const char *reason);
    bool may_create(std::string_view key);
    Node *insert(std::string_view key, DataType type, Value value);
    Index::iterator erase_node(Index::iterator node) noexcept;
    static bool same_value(const Value &left, const Value &right) noexcept;

    // Calls `visit` with each variable whose key begins with prefix and is longer, in key order.
    template <typename Visit> void for_each_longer(std::string_view prefix, Visit visit) const {
        for (auto node = variables_.lower_bound(prefix); node != variables_.end(); ++node) {
            if (!node->first.starts_with(prefix)) return;
            if (node->first.size() > prefix.size()) visit(*node);
        }
    }

    bool is_watched(std::string_view key) const noexcept;
    void make_room_for_change();
    void note_change(Node &node, std::optional<Value> before) noexcept;
    void forget_changes(Node &node) noexcept;
    void drop_waiting() noexcept;

    void force() noexcept;
    void deliver() noexcept;
    void give_up() noexcept;
    void tell_batch() noexcept;
    void tell(Node &node) noexcept;
    void tell_misses(std::string_view key);
    void call(const Subscription &subscription, const std::string &key) noexcept;
    void queue_bound_events(const std::string &key) noexcept;

    int subscribe(Subscription subscription);
    bool remove_function(kl_data_listener_t function, void *user_data) noexcept;
    template <typename Predicate> bool unsubscribe(Predicate is_meant) noexcept;
    void sweep_subscriptions() noexcept;
    void bind(std::string_view key, std::string_view event_name);
    void forget_everybody() noexcept;

    Record record_;
    Log &log_;
    IoManager &io_;
    Index variables_;
    std::function<std::optional<std::string>(std::string_view key)> policy_;
    std::deque<Subscription> subscriptions_; // a deque: one that is being called must not move
    std::map<std::string, std::vector<std::string>, std::less<>> bindings_; // events by key
    std::vector<Change> waiting_;
    std::vector<Change> batch_; // being told
    Node *told_node_ = nullptr; // that listeners are told of just now; null when one of them erased it
    Index erased_while_told_;   // the node that was, kept for its key
    int hold_depth_ = 0;
    int last_number_ = 0;
    int calls_ = 0; // of listeners under way
    bool delivering_ = false;
    bool telling_misses_ = false;
    bool forced_ = false; // deliver although held
};

} // namespace kelhost
