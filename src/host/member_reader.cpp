// member_reader.cpp: the checks of shape: types, ranges, and which members an object has.
#include "member_reader.h"

#include <utility>

#include <kelhost/closest_name.h>

namespace kelhost {

std::string value_text(const JsonValue &json) {
    if (const auto *flag = json.as<bool>()) return *flag ? "true" : "false";
    if (const auto *number = json.as<double>()) return number_text(*number);
    if (const auto *text = json.as<std::string>()) return quoted(*text);
    if (json.as<JsonArray>() != nullptr) return "an array";
    return json.as<JsonObject>() != nullptr ? "an object" : "null";
}

const JsonValue *find_member(const JsonObject &object, std::string_view name) noexcept {
    for (const JsonMember &member : object)
        if (member.name == name) return &member.value;
    return nullptr;
}

void Reader::report(const Place &place, std::string message) {
    faults_.push_back({file_, 0, 0, place.path(), std::move(message)});
}

void Reader::report_mismatch(const JsonValue &found, const Place &place, std::string_view expected) {
    report(place, mismatch(value_text(found), expected));
}

void Reader::report_repeated(const Place &place, std::string_view member) {
    report(place, "found member " + quoted(member) + " again, expected it once in an object");
}

const JsonObject *Reader::read_object(const JsonValue &json, const Place &place) {
    const auto *object = json.as<JsonObject>();
    if (object == nullptr) report_mismatch(json, place, "an object");
    return object;
}

const JsonArray *Reader::read_array(const JsonValue &json, const Place &place) {
    const auto *array = json.as<JsonArray>();
    if (array == nullptr) report_mismatch(json, place, "an array");
    return array;
}

bool Reader::read_text(const JsonValue &json, const Place &place, std::string &text) {
    const auto *found = json.as<std::string>();
    // Scripts and plug-ins get C strings, which would end at such a character.
    const bool is_cut = found != nullptr && found->find('\0') != std::string::npos;
    if (found == nullptr || is_cut)
        report_mismatch(json, place, is_cut ? "a string without the character U+0000" : "a string");
    else
        text = *found;
    return found != nullptr && !is_cut;
}

void Reader::read_given_text(const JsonValue &json, const Place &place, std::string &text) {
    const auto *found = json.as<std::string>();
    if (found != nullptr && found->empty())
        report(place, "found \"\", expected a value; leave the member out for none");
    else
        read_text(json, place, text);
}

void Reader::read_flag(const JsonValue &json, const Place &place, bool &flag) {
    const auto *found = json.as<bool>();
    if (found == nullptr)
        report_mismatch(json, place, "true or false");
    else
        flag = *found;
}

std::optional<std::int32_t> Reader::read_whole(const JsonValue &json, const Place &place, Range range) {
    const auto *found = json.as<double>();
    if (found != nullptr && is_whole(*found) && range.holds(*found)) return static_cast<std::int32_t>(*found);
    report_mismatch(json, place, range_text(range));
    return std::nullopt;
}

MemberMatcher::MemberMatcher(Reader &reader, const JsonObject &object, const Place &place,
                             std::span<const MemberRule> rules, Kinds kinds)
    : reader_(reader), place_(place), rules_(rules), kinds_(kinds) {
    for (const JsonMember &member : object)
        if (const auto rule = find(member.name)) present_ |= 1U << *rule;
}

std::optional<std::size_t> MemberMatcher::match(const JsonMember &member) {
    const auto rule = find(member.name);
    if (!rule) return match_unknown(member);
    if (member.repeated) {
        reader_.report_repeated(place_.member(member.name), member.name);
        return std::nullopt;
    }
    if (is_allowed(*rule)) return rule;
    reader_.report(place_.member(member.name),
                   "unknown member " + quoted(member.name) + " for this \"type\", expected " + allowed_text());
    return std::nullopt;
}

void MemberMatcher::report_missing() {
    for (std::size_t rule = 0; rule < rules_.size(); ++rule) {
        const bool is_required = rules_[rule].presence == required && (rules_[rule].kinds & kinds_) == kinds_;
        if (is_required && !is_present(rule))
            reader_.report(place_.member(rules_[rule].name), "missing member " + quoted(rules_[rule].name));
    }
}

std::optional<std::size_t> MemberMatcher::find(std::string_view name) const noexcept {
    for (std::size_t rule = 0; rule < rules_.size(); ++rule)
        if (rules_[rule].name == name) return rule;
    return std::nullopt;
}

std::optional<std::size_t> MemberMatcher::match_unknown(const JsonMember &member) {
    if (member.repeated) return std::nullopt; // the first was reported
    ClosestName closest(member.name);
    for (std::size_t rule = 0; rule < rules_.size(); ++rule)
        if (is_allowed(rule) && !is_present(rule)) closest.offer(rules_[rule].name);
    reader_.report(place_.member(member.name), "unknown member " + quoted(member.name) + closest.text(allowed_text()));
    const auto meant = find(closest.found());
    if (meant) present_ |= 1U << *meant;
    return meant;
}

std::string MemberMatcher::allowed_text() const {
    std::vector<std::string_view> names;
    for (std::size_t rule = 0; rule < rules_.size(); ++rule)
        if (is_allowed(rule)) names.push_back(rules_[rule].name);
    return choice_text(names);
}

} // namespace kelhost
