// plain_data.h: the data manager as a plain map: what it is to do, written down once more without its indices.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "data_operations.h"

namespace fuzz {

class PlainData {
public:
    struct Variable {
        kelhost::DataType type;
        kelhost::Value value;
    };

    bool create(const std::string &key, kelhost::DataType type, const KnownValue &value);
    kelhost::WriteResult write(const std::string &key, const KnownValue &value,
                               std::optional<kelhost::DataType> type_if_new = std::nullopt);
    bool erase(const std::string &key);
    void erase_prefix(const std::string &prefix);
    void hold() { ++holds_; }
    void release();
    void restore_hold_depth(int depth);
    void force() { deliver(true); }
    void add_listener(const std::string &key, const Reaction &reaction) { listeners_.push_back({key, reaction}); }
    void remove_listener(std::size_t number);

    const std::map<std::string, Variable> &variables() const { return variables_; }
    int hold_depth() const { return holds_; }
    std::vector<std::string> keys(const std::string &prefix) const;
    std::string told; // "listener:key " for each call of one

private:
    struct Listener {
        std::string key; // "" for all
        Reaction reaction;
        bool removed = false;
    };
    struct Change {
        std::string key;
        std::optional<kelhost::Value> before; // nothing for a new variable
        bool gone = false;                    // the variable, or the turn
    };

    bool is_heard(const std::string &key) const;
    void note(const std::string &key, std::optional<kelhost::Value> before);
    void deliver(bool forced);
    void tell(const std::string &key);
    void react(Reaction &reaction);

    std::map<std::string, Variable> variables_;
    std::vector<Listener> listeners_;
    std::vector<Change> waiting_;
    std::vector<Change> batch_;
    std::optional<std::string> told_key_; // nothing when nobody is being told of it any more
    int holds_ = 0;
    bool delivering_ = false;
};

// Whether two values are one: 0 and -0 are not, any two NaNs are.
bool is_same(const kelhost::Value &left, const kelhost::Value &right);

// The value of a listener's write.
const KnownValue &next_value(Reaction &reaction);

} // namespace fuzz
