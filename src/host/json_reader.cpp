// json_reader.cpp: builds the tree from the JSON library's events; only this file knows the library.
// The library's own tree looks members up one by one for each that it adds, which is slow for big objects.
#include "json_reader.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include <nlohmann/json.hpp>

#include "json_fault.h"

namespace kelhost {

namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// Up to so many members are cheaper to compare with each other than to hash.
constexpr std::size_t few_members = 16;

void mark_repeated(JsonObject &members) {
    if (members.size() <= few_members) {
        for (std::size_t later = 1; later < members.size(); ++later)
            for (std::size_t earlier = 0; earlier < later; ++earlier)
                if (members[earlier].name == members[later].name) members[later].repeated = true;
        return;
    }
    std::unordered_set<std::string_view> names;
    names.reserve(members.size());
    for (JsonMember &member : members) member.repeated = !names.insert(member.name).second;
}

// Receives the library's events. Each returns whether to go on.
class TreeBuilder final : public nlohmann::json_sax<nlohmann::ordered_json> {
public:
    explicit TreeBuilder(std::string_view text) : text_(text) {}

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return add(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t &) override { return add(value + 0.0); } // -0 is 0
    bool string(string_t &value) override { return add(std::move(value)); }
    bool binary(binary_t &) override { return false; } // JSON text has none

    bool start_object(std::size_t) override { return open(JsonObject()); }
    bool start_array(std::size_t) override { return open(JsonArray()); }
    bool end_array() override { return close(); }

    bool key(string_t &name) override {
        if (left_out_ == 0) members().push_back({std::move(name), {}});
        return true;
    }

    bool end_object() override {
        if (left_out_ == 0) mark_repeated(members());
        return close();
    }

    bool parse_error(std::size_t position, const std::string &token,
                     const nlohmann::detail::exception &error) override {
        fault_ = describe_json_fault(text_, position, token, error.what());
        return false;
    }

    JsonValue &tree() noexcept { return tree_; }
    const JsonFault &fault() const noexcept { return fault_; }

private:
    JsonObject &members() { return std::get<JsonObject>(open_.back()->content); }

    // Where the next value goes: the top, behind the last item, or into the member whose name came last.
    JsonValue &next_value() {
        if (open_.empty()) return tree_;
        if (auto *items = std::get_if<JsonArray>(&open_.back()->content)) return items->emplace_back();
        return members().back().value;
    }

    template <typename Content> bool add(Content content) {
        if (left_out_ == 0) next_value().content = std::move(content);
        return true;
    }

    template <typename Content> bool open(Content content) {
        if (left_out_ > 0) {
            ++left_out_;
            return true;
        }
        JsonValue &value = next_value();
        value.content = std::move(content);
        open_.push_back(&value); // stays where it is: what holds it does not grow before it is closed
        if (open_.size() > deepest_json) left_out_ = 1;
        return true;
    }

    bool close() {
        if (left_out_ > 0) --left_out_;
        if (left_out_ == 0) open_.pop_back();
        return true;
    }

    std::string_view text_;
    JsonValue tree_;
    JsonFault fault_;
    std::vector<JsonValue *> open_; // outermost first
    std::size_t left_out_ = 0;      // how many open values are not kept, the first of them empty
};

bool is_blank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

} // namespace

std::optional<JsonValue> read_json(std::string_view text, const std::string &file, Diagnostics &faults) {
    if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
    if (is_blank(text)) {
        faults.push_back({file, 0, 0, "", "found an empty file, expected an application in JSON"});
        return std::nullopt;
    }
    const auto refuse = [&](const JsonFault &fault) {
        const TextPosition position = position_of(text, fault.offset);
        faults.push_back({file, position.line, position.column, "", fault.message});
        return std::nullopt;
    };
    // The library would take a NUL for the text's end and not look at what follows.
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos)
        return refuse({nul, "found a NUL byte, expected JSON text in UTF-8"});
    TreeBuilder builder(text);
    // Through events the library reports faults without throwing.
    if (!nlohmann::ordered_json::sax_parse(text.begin(), text.end(), &builder)) return refuse(builder.fault());
    return std::move(builder.tree());
}

} // namespace kelhost
