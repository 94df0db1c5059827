// plain_data.cpp: conversion, holds and notifications by the shortest means.
#include "plain_data.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace fuzz {

namespace {

using kelhost::DataType;
using kelhost::Value;
using kelhost::WriteResult;

constexpr int most_rounds = 100;

template <typename Integer> std::optional<Value> clamped(double number) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(number)) return std::nullopt;
    if (number <= static_cast<double>(Limits::min())) return static_cast<double>(Limits::min());
    if (number >= static_cast<double>(Limits::max())) return static_cast<double>(Limits::max());
    return static_cast<double>(static_cast<Integer>(number));
}

std::optional<Value> to_number(DataType type, double number) {
    switch (type) {
    case DataType::i8:
        return clamped<std::int8_t>(number);
    case DataType::u8:
        return clamped<std::uint8_t>(number);
    case DataType::i16:
        return clamped<std::int16_t>(number);
    case DataType::u16:
        return clamped<std::uint16_t>(number);
    case DataType::i32:
        return clamped<std::int32_t>(number);
    case DataType::u32:
        return clamped<std::uint32_t>(number);
    default:
        return number;
    }
}

std::string shown(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.14g", number);
    return std::isnan(number) ? "nan" : text;
}

std::optional<Value> converted(DataType type, const KnownValue &value) {
    if (type != DataType::string) return value.is_number ? to_number(type, value.number) : std::nullopt;
    if (value.input.kind == kelhost::Input::Kind::text) return std::string(value.input.text);
    if (value.input.kind == kelhost::Input::Kind::number) return shown(value.input.number);
    return std::nullopt;
}

std::optional<DataType> type_of_new(const KnownValue &value) {
    switch (value.input.kind) {
    case kelhost::Input::Kind::boolean:
        return DataType::u8;
    case kelhost::Input::Kind::text:
        return DataType::string;
    case kelhost::Input::Kind::other:
        return std::nullopt;
    case kelhost::Input::Kind::number:
        break;
    }
    const double number = value.number;
    return number >= -2147483648.0 && number <= 2147483647.0 && number == std::floor(number) ? DataType::i32
                                                                                             : DataType::f64;
}

} // namespace

bool is_same(const Value &left, const Value &right) {
    const auto *one = std::get_if<double>(&left);
    const auto *other = std::get_if<double>(&right);
    if (one == nullptr || other == nullptr) return left == right;
    if (std::isnan(*one) || std::isnan(*other)) return std::isnan(*one) == std::isnan(*other);
    return *one == *other && std::signbit(*one) == std::signbit(*other);
}

const KnownValue &next_value(Reaction &reaction) {
    return known_values()[static_cast<std::size_t>(reaction.times % 7)];
}

bool PlainData::create(const std::string &key, DataType type, const KnownValue &value) {
    const auto made = converted(type, value);
    return made && variables_.emplace(key, Variable{type, *made}).second;
}

WriteResult PlainData::write(const std::string &key, const KnownValue &value, std::optional<DataType> type_if_new) {
    const auto found = variables_.find(key);
    const bool is_new = found == variables_.end();
    const auto type = !is_new ? std::optional(found->second.type) : type_if_new ? type_if_new : type_of_new(value);
    const auto made = type ? converted(*type, value) : std::nullopt;
    if (!made) return WriteResult::refused;
    std::optional<Value> before;
    if (!is_new) before = found->second.value;
    if (before && is_same(*before, *made)) return WriteResult::unchanged;
    variables_[key] = {*type, *made};
    if (is_heard(key)) {
        note(key, before);
        deliver(false);
    }
    return WriteResult::changed;
}

bool PlainData::erase(const std::string &key) {
    if (variables_.erase(key) == 0) return false;
    for (auto *list : {&waiting_, &batch_})
        for (Change &change : *list)
            if (change.key == key) change.gone = true;
    if (told_key_ == key) told_key_.reset();
    return true;
}

void PlainData::erase_prefix(const std::string &prefix) {
    const auto copy = variables_;
    for (const auto &[key, variable] : copy)
        if (key.starts_with(prefix)) erase(key);
}

void PlainData::release() {
    if (holds_ == 0) return;
    --holds_;
    deliver(false);
}

void PlainData::restore_hold_depth(int depth) {
    while (holds_ > 0 && holds_ > depth) release();
}

void PlainData::remove_listener(std::size_t number) {
    if (number < listeners_.size()) listeners_[number].removed = true;
}

std::vector<std::string> PlainData::keys(const std::string &prefix) const {
    std::vector<std::string> found;
    for (const auto &[key, variable] : variables_)
        if (key.size() > prefix.size() && key.starts_with(prefix)) found.push_back(key);
    return found;
}

bool PlainData::is_heard(const std::string &key) const {
    for (const Listener &listener : listeners_)
        if (!listener.removed && (listener.key.empty() || listener.key == key)) return true;
    return false;
}

// A change that is still to be told covers later ones.
void PlainData::note(const std::string &key, std::optional<Value> before) {
    for (const auto *list : {&waiting_, &batch_})
        for (const Change &change : *list)
            if (!change.gone && change.key == key) return;
    waiting_.push_back({key, std::move(before)});
}

void PlainData::deliver(bool forced) {
    if (delivering_) return;
    delivering_ = true;
    for (int round = 0; !waiting_.empty() && (holds_ == 0 || forced); ++round) {
        if (round == most_rounds) {
            waiting_.clear();
            break;
        }
        batch_.swap(waiting_);
        for (Change &change : batch_) {
            if (change.gone) continue;
            change.gone = true;
            if (!change.before || !is_same(*change.before, variables_.at(change.key).value)) tell(change.key);
        }
        batch_.clear();
    }
    delivering_ = false;
}

void PlainData::tell(const std::string &key) {
    told_key_ = key;
    const std::size_t count = listeners_.size();
    for (std::size_t index = 0; index < count && told_key_; ++index) {
        Listener &listener = listeners_[index];
        if (listener.removed || (!listener.key.empty() && listener.key != key)) continue;
        told += std::to_string(index) + ":" + key + " ";
        react(listener.reaction);
    }
    told_key_.reset();
}

void PlainData::react(Reaction &reaction) {
    if (reaction.times == 0) return;
    --reaction.times;
    if (reaction.kind == Reaction::Kind::write) write(reaction.key, next_value(reaction));
    if (reaction.kind == Reaction::Kind::erase) erase(reaction.key);
    if (reaction.kind == Reaction::Kind::remove_listener) remove_listener(static_cast<std::size_t>(reaction.number));
}

} // namespace fuzz
