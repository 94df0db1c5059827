// member_reader.h: reads the members of JSON objects into records by tables, and reports what does not have their
// shape.
//
//     constexpr Member<TemplateDescription> template_members[] = {
//         {"name",  required, text<&TemplateDescription::name> },
//         {"width", optional, size<&TemplateDescription::width>},
//     };
//     read_members<template_members>(reader, object, place, description);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <kelhost/diagnostic.h>

#include "json_reader.h"
#include "place.h"
#include "wording.h"

namespace kelhost {

enum Presence : bool { optional, required };

// Which of several kinds of objects that share one table have a member; bits of the kinds.
using Kinds = std::uint8_t;
inline constexpr Kinds every_kind = 0xFF;

class Reader;

template <typename Record> struct Member {
    std::string_view name;
    Presence presence;
    void (*read)(Reader &reader, const JsonValue &json, const Place &place, Record &record);
    Kinds kinds = every_kind;
};

// Reads single values. Each read_ function reports a value that does not fit, and leaves what it should fill as it was.
class Reader {
public:
    Reader(const std::string &file, Diagnostics &faults) : file_(file), faults_(faults) {}

    void report(const Place &place, std::string message);
    void report_mismatch(const JsonValue &found, const Place &place, std::string_view expected);

    void report_repeated(const Place &place, std::string_view member);

    const JsonObject *read_object(const JsonValue &json, const Place &place);
    const JsonArray *read_array(const JsonValue &json, const Place &place);
    bool read_text(const JsonValue &json, const Place &place, std::string &text);       // whether it fits
    void read_given_text(const JsonValue &json, const Place &place, std::string &text); // not ""
    void read_flag(const JsonValue &json, const Place &place, bool &flag);
    std::optional<std::int32_t> read_whole(const JsonValue &json, const Place &place, Range range);

    int group_depth = 0; // how many groups surround what is read

private:
    const std::string &file_;
    Diagnostics &faults_;
};

// "null", "true", "12", the string in quotes, "an array", "an object".
std::string value_text(const JsonValue &json);

// The member of this name, the first if there are several; null when there is none.
const JsonValue *find_member(const JsonObject &object, std::string_view name) noexcept;

// A member without its type of record: what the checks of an object's members need.
struct MemberRule {
    std::string_view name;
    Presence presence = optional;
    Kinds kinds = every_kind;
};

// Decides for each member of an object, in the file's order, by which rule it is read. Reports members that are unknown
// or repeated, and at the end those that are missing. A member whose name is nearly that of an absent one is reported
// and read as that one, so that the slip brings no further faults.
class MemberMatcher {
public:
    // kinds: what the object is; several bits when that could not be told, then nothing is reported that is right for
    // one.
    MemberMatcher(Reader &reader, const JsonObject &object, const Place &place, std::span<const MemberRule> rules,
                  Kinds kinds);

    // The rule's number, or nothing when the member is not to be read.
    std::optional<std::size_t> match(const JsonMember &member);
    void report_missing();

private:
    std::optional<std::size_t> find(std::string_view name) const noexcept;
    bool is_allowed(std::size_t rule) const noexcept { return (rules_[rule].kinds & kinds_) != 0; }
    bool is_present(std::size_t rule) const noexcept { return (present_ >> rule & 1U) != 0; }
    std::optional<std::size_t> match_unknown(const JsonMember &member);
    std::string allowed_text() const;

    Reader &reader_;
    const Place &place_;
    std::span<const MemberRule> rules_;
    Kinds kinds_;
    std::uint32_t present_ = 0; // a bit a rule
};

template <typename Record, std::size_t count>
constexpr std::array<MemberRule, count> rules_of(const Member<Record> (&members)[count]) {
    static_assert(count <= 32, "one bit a member");
    std::array<MemberRule, count> rules;
    for (std::size_t index = 0; index < count; ++index)
        rules[index] = {members[index].name, members[index].presence, members[index].kinds};
    return rules;
}

template <const auto &members, typename Record>
void read_members(Reader &reader, const JsonObject &object, const Place &place, Record &record,
                  Kinds kinds = every_kind) {
    static constexpr auto rules = rules_of(members);
    MemberMatcher matcher(reader, object, place, rules, kinds);
    for (const JsonMember &member : object)
        if (const auto rule = matcher.match(member))
            members[*rule].read(reader, member.value, place.member(members[*rule].name), record);
    matcher.report_missing();
}

// For values that are objects.
template <const auto &members, typename Record>
void read_record(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    if (const JsonObject *object = reader.read_object(json, place))
        read_members<members>(reader, *object, place, record);
}

// How the usual members are read, for the tables' third column.
template <auto field, typename Record>
void text(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    reader.read_text(json, place, record.*field);
}

// A text whose absence means something, so that it cannot be given empty.
template <auto field, typename Record>
void given_text(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    reader.read_given_text(json, place, record.*field);
}

template <auto field, typename Record>
void flag(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    reader.read_flag(json, place, record.*field);
}

template <Range range, auto field, typename Record>
void whole(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    if (const auto number = reader.read_whole(json, place, range)) record.*field = *number;
}

} // namespace kelhost
