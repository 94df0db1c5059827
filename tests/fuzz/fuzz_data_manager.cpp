// fuzz_data_manager.cpp: the data manager beside a plain map: after each operation both hold the same variables, with
// the same holds, and have told the same listeners of the same keys in the same order.
#include <cstring>
#include <deque>
#include <string>

#include <kelhost/memory.h>

#include "data_operations.h"
#include "io_manager.h"
#include "plain_data.h"

namespace {

using fuzz::KnownValue;
using fuzz::Operation;
using fuzz::Reaction;
using fuzz::require;
using kelhost::DataManager;
using kelhost::DataType;
using kelhost::WriteResult;

class Bench {
public:
    void play(const Operation &operation);
    void require_same();

private:
    void require_result(const char *what, bool ours, bool plain) {
        require(ours == plain, std::string(what) + " gives " + (ours ? "true" : "false"));
    }
    void add_listener(const Operation &operation);
    void remove_listener(int number);
    void react(Reaction &reaction);
    bool set_bytes(const Operation &operation);
    void require_listed(const std::string &prefix);

    kelhost::Log log_{[](const kelhost::LogEntry &) {}, KL_LOG_WARNING};
    kelhost::IoManager io_{log_};
    DataManager data_{log_, io_};
    std::deque<Reaction> reactions_; // of our listeners
    std::deque<int> numbers_;        // by which they are removed
    std::string told_;
    fuzz::PlainData plain_;
};

void Bench::add_listener(const Operation &operation) {
    Reaction &reaction = reactions_.emplace_back(operation.reaction);
    const std::string name = std::to_string(numbers_.size()) + ":";
    auto listener = [this, &reaction, name](std::string_view key) {
        told_ += name + std::string(key) + " ";
        react(reaction);
    };
    numbers_.push_back(operation.key.empty() ? data_.add_listener(listener)
                                             : data_.add_listener(operation.key, listener));
    plain_.add_listener(operation.key, operation.reaction);
}

void Bench::remove_listener(int number) {
    if (number >= 0 && number < static_cast<int>(numbers_.size()))
        data_.remove_listener(numbers_[static_cast<std::size_t>(number)]);
}

void Bench::react(Reaction &reaction) {
    if (reaction.times == 0) return;
    --reaction.times;
    if (reaction.kind == Reaction::Kind::write) data_.write(reaction.key, next_value(reaction).input);
    if (reaction.kind == Reaction::Kind::erase) data_.erase(reaction.key);
    if (reaction.kind == Reaction::Kind::remove_listener) remove_listener(reaction.number);
}

// As C callers write: floating-point numbers and strings.
bool Bench::set_bytes(const Operation &operation) {
    kl_data_mgr_t *mgr = data_.record();
    const KnownValue &value = fuzz::known_values()[operation.value];
    if (value.input.kind == kelhost::Input::Kind::number) {
        return mgr->set_data(mgr, operation.key.c_str(), "f64", &value.number, sizeof value.number) == 0;
    }
    const std::string text(value.input.text);
    return mgr->set_data(mgr, operation.key.c_str(), "string", text.c_str(), static_cast<std::uint32_t>(text.size()))
           == 0;
}

KnownValue as_c_value(KnownValue value) {
    if (value.input.kind == kelhost::Input::Kind::number) return value;
    value.input.kind = kelhost::Input::Kind::text;
    const std::size_t end = value.input.text.find('\0');
    // The one text with a zero in it is a number up to there.
    if (end != std::string_view::npos) value.is_number = true, value.number = 12;
    value.input.text = value.input.text.substr(0, end);
    return value;
}

void Bench::require_listed(const std::string &prefix) {
    kl_data_mgr_t *mgr = data_.record();
    int count = -1;
    char **keys = mgr->find_for_prefix(mgr, prefix.c_str(), &count);
    const std::vector<std::string> expected = plain_.keys(prefix);
    require(count == static_cast<int>(expected.size()) && (keys == nullptr) == expected.empty(),
            "a prefix has " + std::to_string(count) + " keys");
    for (std::size_t index = 0; index < expected.size(); ++index)
        require(keys[index] == expected[index], std::string("a prefix has the key ") + keys[index]);
    kelal_free(keys);
}

void Bench::play(const Operation &operation) {
    const KnownValue &value = fuzz::known_values()[operation.value];
    const std::string &key = operation.key;
    switch (operation.kind) {
    case Operation::Kind::create: {
        const bool is_text = value.input.kind == kelhost::Input::Kind::text;
        if (!is_text && value.input.kind != kelhost::Input::Kind::number) return; // no such Value
        const auto given = is_text ? kelhost::Value(std::string(value.input.text)) : kelhost::Value(value.number);
        return require_result("create", data_.create(key, operation.type, given),
                              plain_.create(key, operation.type, value));
    }
    case Operation::Kind::write: {
        const WriteResult result = data_.write(key, value.input);
        return require(result == plain_.write(key, value), "write gives " + std::to_string(static_cast<int>(result)));
    }
    case Operation::Kind::set_bytes: {
        if (value.input.kind == kelhost::Input::Kind::boolean || value.input.kind == kelhost::Input::Kind::other)
            return;
        const bool is_number = value.input.kind == kelhost::Input::Kind::number;
        const DataType type = is_number ? DataType::f64 : DataType::string;
        const bool set = set_bytes(operation);
        return require_result("set_data", set, plain_.write(key, as_c_value(value), type) != WriteResult::refused);
    }
    case Operation::Kind::erase:
        return require_result("erase", data_.erase(key), plain_.erase(key));
    case Operation::Kind::erase_prefix:
        data_.erase_prefix(key);
        return plain_.erase_prefix(key);
    case Operation::Kind::hold:
        data_.hold();
        return plain_.hold();
    case Operation::Kind::release:
        data_.release();
        return plain_.release();
    case Operation::Kind::restore_hold_depth:
        data_.restore_hold_depth(operation.number);
        return plain_.restore_hold_depth(operation.number);
    case Operation::Kind::force:
        data_.record()->force_notifications(data_.record());
        return plain_.force();
    case Operation::Kind::add_listener:
        return add_listener(operation);
    case Operation::Kind::remove_listener:
        remove_listener(operation.number);
        return plain_.remove_listener(static_cast<std::size_t>(operation.number));
    case Operation::Kind::list:
        return require_listed(key);
    }
}

void Bench::require_same() {
    require(data_.keys("").size() + (data_.find("") != nullptr ? 1 : 0) == plain_.variables().size(),
            "another number of variables");
    for (const auto &[key, variable] : plain_.variables()) {
        const auto *ours = data_.find(key);
        if (ours == nullptr) return require(false, "no variable \"" + key + "\"");
        require(ours->type == variable.type, "\"" + key + "\" has type " + data_type_name(ours->type));
        require(fuzz::is_same(ours->value, variable.value), "\"" + key + "\" is " + kelhost::to_text(ours->value)
                                                                + ", expected " + kelhost::to_text(variable.value));
    }
    require(data_.hold_depth() == plain_.hold_depth(), "another hold depth");
    require(told_ == plain_.told, "told " + told_ + ", expected " + plain_.told);
    told_.clear();
    plain_.told.clear();
}

} // namespace

void fuzz::run(Input input) {
    const std::size_t blocks = kelhost::memory_counts().live_blocks;
    {
        Bench bench;
        for (const Operation &operation : decode_operations(input)) {
            bench.play(operation);
            bench.require_same();
        }
    }
    require(kelhost::memory_counts().live_blocks == blocks, "blocks are left when the data manager is gone");
}

std::string fuzz::describe(Input input) {
    std::string text;
    for (const Operation &operation : decode_operations(input)) text += to_text(operation) + "\n";
    return text;
}
