// data_manager.h: every property of the application as a typed, named variable. The kl_data_mgr_t of the reference host.
#pragma once

#include <cstddef>
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
    std::string_view text;       // Kind::text: the characters; Kind::other: what it is, such as "nil" or "table"
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

    // Writes, converting to the variable's type: booleans are 0 and 1 for numbers, numeric strings are numbers, numbers are
    // text for strings; fractions are cut toward zero for integers; numbers out of range are clamped with a warning. What
    // cannot be converted is refused with a warning that names key, type and value. A key that names no variable creates
    // one if the policy allows (boolean: u8; whole number in range: i32; other number: f64; text: string).
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

    void hold() noexcept;
    void release();
    int hold_depth() const noexcept;
    // Releases brackets until no more than `depth` are open; for callers who clean up after somebody who failed.
    void restore_hold_depth(int depth);

    // For C++ listeners inside the host; told like the C ones. The returned number removes it.
    using Listener = std::function<void(std::string_view key)>;
    int add_listener(Listener listener);              // of every variable
    int add_listener(std::string key, Listener listener);
    void remove_listener(int number);

private:
    struct Record : kl_data_mgr_t {
        DataManager *self = nullptr;
    };
    Record record_;
    Log &log_;
    IoManager &io_;
    std::map<std::string, Variable, std::less<>> variables_;
};

} // namespace kelhost
