// data_manager.cpp: the variables: creating, writing, finding and removing them.
// What a change brings about is data_changes.cpp's, the C operations are data_slots.cpp's.
#include "data_manager.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "conversion.h"
#include "wording.h"

namespace kelhost {

namespace {

// A key as messages show it: as it is when it reads like one, else in quotes.
std::string key_text(std::string_view key) {
    const auto usual = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.'
               || c == '-';
    };
    return !key.empty() && std::all_of(key.begin(), key.end(), usual) ? std::string(key) : quoted(key);
}

// Whether writing one over the other would be no change.
bool same_number(double left, double right) {
    if (std::isnan(left) || std::isnan(right)) return std::isnan(left) && std::isnan(right);
    return left == right && std::signbit(left) == std::signbit(right);
}

} // namespace

bool DataManager::same_value(const Value &left, const Value &right) noexcept {
    const auto *left_number = std::get_if<double>(&left);
    const auto *right_number = std::get_if<double>(&right);
    if (left_number != nullptr && right_number != nullptr) return same_number(*left_number, *right_number);
    const auto *left_text = std::get_if<std::string>(&left);
    const auto *right_text = std::get_if<std::string>(&right);
    return left_text != nullptr && right_text != nullptr && *left_text == *right_text;
}

void DataManager::set_key_policy(std::function<std::optional<std::string>(std::string_view key)> policy) {
    policy_ = std::move(policy);
}

bool DataManager::create(std::string_view key, DataType type, Value value) {
    if (type == DataType::string && std::holds_alternative<std::string>(value))
        return insert(key, type, std::move(value)) != nullptr;
    std::optional<Value> converted = convert(key, type, to_input(value));
    return converted && insert(key, type, std::move(*converted)) != nullptr;
}

WriteResult DataManager::write(std::string_view key, const Input &input) {
    return write_typed(key, input, std::nullopt);
}

WriteResult DataManager::write_typed(std::string_view key, const Input &input, std::optional<DataType> type_if_new) {
    const auto found = variables_.find(key);
    return found != variables_.end() ? write_existing(*found, input) : write_new(key, input, type_if_new);
}

WriteResult DataManager::write_existing(Node &node, const Input &input) {
    const DataType type = node.second.type;
    if (type != DataType::string) {
        const std::optional<double> number = to_number(node.first, type, input);
        return number ? store_number(node, *number) : WriteResult::refused;
    }
    if (input.kind == Input::Kind::text) return store_text(node, input.text);
    if (input.kind == Input::Kind::number) return store_text(node, to_text(Value(input.number)));
    refuse(node.first, type, input, "");
    return WriteResult::refused;
}

WriteResult DataManager::write_new(std::string_view key, const Input &input, std::optional<DataType> type_if_new) {
    if (!may_create(key)) return WriteResult::refused;
    const std::optional<DataType> type = type_if_new ? type_if_new : type_for(input);
    if (!type) {
        log_.format(KL_LOG_WARNING, "Cannot create %s from %s", key_text(key).c_str(), describe(input).c_str());
        return WriteResult::refused;
    }
    std::optional<Value> value = convert(key, *type, input);
    if (!value) return WriteResult::refused;

    const bool watched = is_watched(key);
    if (watched) make_room_for_change();
    Node *node = insert(key, *type, std::move(*value));
    if (watched) {
        note_change(*node, std::nullopt);
        deliver();
    }
    return WriteResult::changed;
}

WriteResult DataManager::store_number(Node &node, double number) {
    double &stored = std::get<double>(node.second.value);
    if (same_number(stored, number)) return WriteResult::unchanged;
    if (!is_watched(node.first)) {
        stored = number;
        return WriteResult::changed;
    }
    make_room_for_change();
    note_change(node, Value(stored));
    stored = number;
    deliver();
    return WriteResult::changed;
}

WriteResult DataManager::store_text(Node &node, std::string_view text) {
    auto &stored = std::get<std::string>(node.second.value);
    if (stored == text) return WriteResult::unchanged;
    if (!is_watched(node.first)) {
        stored.assign(text);
        return WriteResult::changed;
    }
    std::string fresh(text);
    make_room_for_change();
    stored.swap(fresh);
    note_change(node, Value(std::move(fresh)));
    deliver();
    return WriteResult::changed;
}

// The value for a variable of this type, or nothing after a warning.
std::optional<Value> DataManager::convert(std::string_view key, DataType type, const Input &input) {
    if (type != DataType::string) {
        const std::optional<double> number = to_number(key, type, input);
        return number ? std::optional<Value>(*number) : std::nullopt;
    }
    if (input.kind == Input::Kind::text) return std::string(input.text);
    if (input.kind == Input::Kind::number) return to_text(Value(input.number));
    refuse(key, type, input, "");
    return std::nullopt;
}

// The number for a variable of this number type, or nothing after a warning; with a warning too when it had to be
// clamped.
std::optional<double> DataManager::to_number(std::string_view key, DataType type, const Input &input) {
    std::optional<double> number;
    if (input.kind == Input::Kind::boolean) number = input.boolean ? 1 : 0;
    if (input.kind == Input::Kind::number) number = input.number;
    if (input.kind == Input::Kind::text) number = number_from_text(input.text);
    const std::optional<FittedNumber> fitted = number ? fit_number(*number, type) : std::nullopt;
    if (!fitted) {
        refuse(key, type, input, input.kind == Input::Kind::other ? "" : ": not a number");
        return std::nullopt;
    }
    if (fitted->clamped)
        log_.format(KL_LOG_WARNING, "Value %s for %s (%s) is out of range, %s is written", describe(input).c_str(),
                    key_text(key).c_str(), data_type_name(type), to_text(Value(fitted->number)).c_str());
    return fitted->number;
}

void DataManager::refuse(std::string_view key, DataType type, const Input &input, const char *reason) {
    log_.format(KL_LOG_WARNING, "Cannot write %s to %s (%s)%s", describe(input).c_str(), key_text(key).c_str(),
                data_type_name(type), reason);
}

bool DataManager::may_create(std::string_view key) {
    const std::optional<std::string> reason = policy_ ? policy_(key) : std::nullopt;
    if (reason) log_.format(KL_LOG_WARNING, "Cannot create %s: %s", key_text(key).c_str(), reason->c_str());
    return !reason;
}

// Null when the key is taken.
DataManager::Node *DataManager::insert(std::string_view key, DataType type, Value value) {
    const auto place = variables_.lower_bound(key);
    if (place != variables_.end() && place->first == key) return nullptr;
    return &*variables_.emplace_hint(place, std::string(key),
                                     Entry{
                                         {type, std::move(value)},
                                         0, 0
    });
}

const DataManager::Variable *DataManager::find(std::string_view key) const noexcept {
    const auto found = variables_.find(key);
    return found == variables_.end() ? nullptr : &found->second;
}

const DataManager::Variable *DataManager::read(std::string_view key) {
    const Variable *variable = find(key);
    if (variable != nullptr) return variable;
    tell_misses(key);
    return find(key); // somebody who was told may have made it
}

bool DataManager::erase(std::string_view key) {
    const auto binding = bindings_.find(key);
    if (binding != bindings_.end()) bindings_.erase(binding);
    const auto found = variables_.find(key);
    if (found == variables_.end()) return false;
    erase_node(found);
    return true;
}

void DataManager::erase_prefix(std::string_view prefix) {
    auto binding = bindings_.lower_bound(prefix);
    while (binding != bindings_.end() && binding->first.starts_with(prefix)) binding = bindings_.erase(binding);
    auto variable = variables_.lower_bound(prefix);
    while (variable != variables_.end() && variable->first.starts_with(prefix)) variable = erase_node(variable);
}

DataManager::Index::iterator DataManager::erase_node(Index::iterator node) noexcept {
    forget_changes(*node);
    if (told_node_ != &*node) return variables_.erase(node);
    told_node_ = nullptr;
    const auto next = std::next(node);
    erased_while_told_.insert(variables_.extract(node));
    return next;
}

std::vector<std::string> DataManager::keys(std::string_view prefix) const {
    std::vector<std::string> found;
    for_each_longer(prefix, [&found](const Node &node) { found.push_back(node.first); });
    return found;
}

} // namespace kelhost
