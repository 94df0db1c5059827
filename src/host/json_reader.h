// json_reader.h: JSON text as a tree that keeps the file's order, or the one fault at which it stops being JSON.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <kelhost/diagnostic.h>

namespace kelhost {

struct JsonMember;
struct JsonValue;
using JsonArray = std::vector<JsonValue>;
using JsonObject = std::vector<JsonMember>; // in the file's order

struct JsonValue {
    JsonValue() noexcept;
    ~JsonValue();
    JsonValue(JsonValue &&) noexcept;
    JsonValue &operator=(JsonValue &&) noexcept;

    // The content when it is of this type, else null.
    template <typename Content> const Content *as() const noexcept { return std::get_if<Content>(&content); }

    std::variant<std::nullptr_t, bool, double, std::string, JsonArray, JsonObject> content;
};

struct JsonMember {
    std::string name;
    JsonValue value;
    bool repeated = false; // a member of the same name stands before it in this object
};

// Only here are both types complete.
inline JsonValue::JsonValue() noexcept = default;
inline JsonValue::~JsonValue() = default;
inline JsonValue::JsonValue(JsonValue &&) noexcept = default;
inline JsonValue &JsonValue::operator=(JsonValue &&) noexcept = default;

// What lies deeper is left out: its arrays and objects are empty. So whoever walks the tree needs a bounded stack.
inline constexpr std::size_t deepest_json = 200;

// Reads the text, which may begin with a UTF-8 byte order mark. What is not JSON gives nothing and one diagnostic with
// line and column.
std::optional<JsonValue> read_json(std::string_view text, const std::string &file, Diagnostics &faults);

} // namespace kelhost
