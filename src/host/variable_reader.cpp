// variable_reader.cpp: variables are written as a plain value, whose type is taken from it, or with type and value.
#include "variable_reader.h"

#include <optional>
#include <string>

namespace kelhost {

namespace {

// With "type" and "value", which may come in either order.
struct TypedVariable {
    VariableDescription &variable;
    std::optional<DataType> type; // nothing when it cannot be read
};

// The value as JSON has it. Nothing, after a report, when it is none that any variable can hold.
std::optional<Value> plain_value(Reader &reader, const JsonValue &json, const Place &place, std::string_view expected) {
    if (const auto *flag = json.as<bool>()) return *flag ? 1.0 : 0.0;
    if (const auto *number = json.as<double>()) return *number;
    std::string text;
    if (json.as<std::string>() == nullptr)
        reader.report_mismatch(json, place, expected);
    else if (reader.read_text(json, place, text))
        return text;
    return std::nullopt;
}

// A number's value decides, not its spelling: 1.0 is as whole as 1, for tools that write files anew may change the one
// into the other.
DataType plain_type(const JsonValue &json) {
    if (json.as<bool>() != nullptr) return DataType::u8;
    if (json.as<std::string>() != nullptr) return DataType::string;
    const auto *number = json.as<double>();
    return number != nullptr && type_holds(DataType::i32, *number) ? DataType::i32 : DataType::f64;
}

std::optional<DataType> type_of(const JsonValue &json) {
    const auto *name = json.as<std::string>();
    return name != nullptr ? data_type_from_name(*name) : std::nullopt;
}

void read_type(Reader &reader, const JsonValue &json, const Place &place, TypedVariable &) {
    if (type_of(json)) return;
    std::vector<std::string_view> names;
    names.reserve(data_type_count);
    for (int type = 0; type < data_type_count; ++type) names.push_back(data_type_name(static_cast<DataType>(type)));
    reader.report_mismatch(json, place, choice_text(names));
}

// For an integer type a boolean is 0 or 1.
bool fits(const JsonValue &json, DataType type) {
    if (type == DataType::string) return json.as<std::string>() != nullptr;
    const auto *number = json.as<double>();
    return (number != nullptr && type_holds(type, *number)) || (json.as<bool>() != nullptr && type != DataType::f64);
}

void read_value(Reader &reader, const JsonValue &json, const Place &place, TypedVariable &typed) {
    const std::string expected = typed.type ? type_text(*typed.type) : "a boolean, a number or a string";
    const std::optional<Value> value = plain_value(reader, json, place, expected);
    if (!value) return;
    if (typed.type && !fits(json, *typed.type))
        reader.report_mismatch(json, place, expected);
    else
        typed.variable.value = *value;
}

constexpr Member<TypedVariable> typed_members[] = {
    {"type",  required, read_type },
    {"value", required, read_value},
};

void read_typed(Reader &reader, const JsonObject &object, const Place &place, VariableDescription &variable) {
    TypedVariable typed{variable, std::nullopt};
    if (const JsonValue *type = find_member(object, "type")) typed.type = type_of(*type);
    variable.type = typed.type.value_or(DataType::f64);
    if (variable.type == DataType::string) variable.value = std::string();
    read_members<typed_members>(reader, object, place, typed);
    if (!typed.type && std::holds_alternative<std::string>(variable.value)) variable.type = DataType::string;
}

void read_variable(Reader &reader, const JsonValue &json, const Place &place, VariableDescription &variable) {
    if (const auto *object = json.as<JsonObject>()) {
        read_typed(reader, *object, place, variable);
        return;
    }
    const std::string_view expected = "a boolean, a number, a string or an object with \"type\" and \"value\"";
    const std::optional<Value> value = plain_value(reader, json, place, expected);
    if (!value) return;
    variable.type = plain_type(json);
    variable.value = *value;
}

} // namespace

void read_variables(Reader &reader, const JsonValue &json, const Place &place,
                    std::vector<VariableDescription> &variables) {
    const JsonObject *object = reader.read_object(json, place);
    if (object == nullptr) return;
    variables.reserve(object->size());
    for (const JsonMember &member : *object) {
        const Place at = place.member(member.name);
        if (member.repeated) {
            reader.report_repeated(at, member.name);
            continue;
        }
        VariableDescription &variable = variables.emplace_back();
        variable.name = member.name;
        read_variable(reader, member.value, at, variable);
    }
}

} // namespace kelhost
