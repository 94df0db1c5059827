// value_text.cpp: writes values. Nothing here raises: tables are read raw, and the two methods of handles are called
// protected, so objects with destructors may be about. No metamethod of a script's is called.
#include "value_text.h"

#include "../in_quotes.h"
#include "identifier.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include <kel/kel.h>

namespace kelhost {

namespace {

constexpr int deepest = 4;                 // tables in each other
constexpr std::size_t most_entries = 1000; // in all
constexpr std::size_t line_width = 78;     // a table that fits goes on one line
constexpr std::size_t indent_width = 2;

// ---- Handles ----

// A handle has one of these metatables.
constexpr const char *metatable_names[] = {
    "keldom_object",         "control_object", "table_object",  "group_object",
    "layer_instance_object", "layer_object",   "screen_object",
};
constexpr int metatable_count = static_cast<int>(std::size(metatable_names));

// The facts' fields after the metatables.
constexpr int get_name_field = metatable_count + 1;
constexpr int get_type_field = metatable_count + 2;

constexpr const char *kind_names[] = {
    "control", "table", "template", "group", "layer", "layer instance", "screen", "application",
};
static_assert(std::size(kind_names) == KL_OBJECT_TYPE_APP + 1, "one name a type code");

// ---- Keys of tables ----

// Those of a list first, then numbers, strings, booleans, and what has no order but the table's own.
struct Key {
    enum class Rank { list, number, string, boolean, other };
    Rank rank = Rank::other;
    double number = 0; // 0 or 1 of a boolean
    std::string_view text{};
    std::size_t place = 0; // in the table's own order

    bool operator<(const Key &other) const {
        if (rank != other.rank) return rank < other.rank;
        if (rank == Rank::string) return text < other.text;
        return rank == Rank::other ? place < other.place : number < other.number;
    }
};

std::string_view string_at(lua_State *L, int index) {
    std::size_t length = 0;
    const char *const text = lua_tolstring(L, index, &length);
    return {text, length};
}

Key key_at(lua_State *L, int index, std::size_t place) {
    switch (lua_type(L, index)) {
    case LUA_TNUMBER:
        return {.rank = Key::Rank::number, .number = lua_tonumber(L, index), .place = place};
    case LUA_TSTRING:
        return {.rank = Key::Rank::string, .text = string_at(L, index), .place = place};
    case LUA_TBOOLEAN:
        return {.rank = Key::Rank::boolean, .number = lua_toboolean(L, index) != 0 ? 1.0 : 0.0, .place = place};
    default:
        return {.place = place};
    }
}

class Writer {
public:
    Writer(const Application &app, lua_State *L, int facts) : app_(app), L_(L), facts_(facts) {}

    std::string text(int index);
    std::optional<std::string> key_prefix(int index) const;

private:
    struct Handle {
        std::size_t type; // as large as can be when it has none
        std::string name; // "" when it has none
    };
    std::string pointer_text(int index) const;
    bool is_handle(int index) const;
    Handle look_at(int index) const;
    bool is_stale(const Handle &handle) const;
    std::string handle_text(int index) const;
    bool call_method(int field, int index) const;
    std::string table_text(int index);
    std::vector<Key> keys(int index) const;
    std::vector<std::string> entries(int index, const std::vector<Key> &keys);
    std::string key_text(int index);
    std::string lay_out(const std::vector<std::string> &entries) const;

    const Application &app_;
    lua_State *const L_;
    const int facts_;
    std::vector<const void *> around_; // the tables that the one being written stands in
    std::size_t entries_left_ = most_entries;
};

// index: absolute.
std::string Writer::text(int index) {
    switch (lua_type(L_, index)) {
    case LUA_TNIL:
        return "nil";
    case LUA_TBOOLEAN:
        return lua_toboolean(L_, index) != 0 ? "true" : "false";
    case LUA_TNUMBER:
        return to_text(Value(lua_tonumber(L_, index)));
    case LUA_TSTRING:
        return in_quotes(string_at(L_, index));
    case LUA_TTABLE:
        return table_text(index);
    case LUA_TUSERDATA:
        if (is_handle(index)) return handle_text(index);
        break;
    default:
        break;
    }
    return pointer_text(index);
}

// "function: 0x5581c0", as tostring has it.
std::string Writer::pointer_text(int index) const {
    char place[32] = {};
    static_cast<void>(std::snprintf(place, sizeof place, ": %p", lua_topointer(L_, index)));
    return lua_typename(L_, lua_type(L_, index)) + std::string(place);
}

bool Writer::is_handle(int index) const {
    if (lua_getmetatable(L_, index) == 0) return false;
    bool found = false;
    for (int field = 1; field <= metatable_count && !found; ++field) {
        lua_rawgeti(L_, facts_, field);
        found = lua_rawequal(L_, -1, -2) != 0;
        lua_pop(L_, 1);
    }
    lua_pop(L_, 1);
    return found;
}

// [-0, +1] Pushes what the method of the handle gives. False when that is an error.
bool Writer::call_method(int field, int index) const {
    lua_rawgeti(L_, facts_, field);
    lua_pushvalue(L_, index);
    return lua_pcall(L_, 1, 1, 0) == 0;
}

// A handle that was collected by hand has no name.
Writer::Handle Writer::look_at(int index) const {
    const int top = lua_gettop(L_);
    const bool has_type = call_method(get_type_field, index);
    const auto type = static_cast<std::size_t>(has_type ? lua_tointeger(L_, -1) : -1);
    const bool has_name = call_method(get_name_field, index) && lua_type(L_, -1) == LUA_TSTRING;
    std::string name(has_name ? string_at(L_, -1) : std::string_view());
    lua_settop(L_, top);
    return {type, std::move(name)};
}

bool Writer::is_stale(const Handle &handle) const {
    return handle.type != KL_OBJECT_TYPE_APP && app_.find(handle.name) == nullptr;
}

std::string Writer::handle_text(int index) const {
    const Handle handle = look_at(index);
    const std::string kind = handle.type < std::size(kind_names) ? kind_names[handle.type] : "handle";
    return (is_stale(handle) ? "<stale " : "<") + kind + (handle.name.empty() ? "" : " ") + handle.name + ">";
}

std::optional<std::string> Writer::key_prefix(int index) const {
    if (lua_type(L_, index) != LUA_TUSERDATA || !is_handle(index)) return std::nullopt;
    const Handle handle = look_at(index);
    if (is_stale(handle)) return std::nullopt;
    return handle.type == KL_OBJECT_TYPE_APP ? std::string() : handle.name + ".";
}

std::string Writer::table_text(int index) {
    const void *const identity = lua_topointer(L_, index);
    if (std::find(around_.begin(), around_.end(), identity) != around_.end()) return "<cycle>";
    std::vector<Key> found = keys(index);
    if (found.empty()) return "{}";
    if (around_.size() == deepest) return "{...}";
    const std::size_t shown = std::min(found.size(), entries_left_);
    const std::size_t left_out = found.size() - shown;
    entries_left_ -= shown;
    found.resize(shown);
    around_.push_back(identity);
    std::vector<std::string> parts = entries(index, found);
    around_.pop_back();
    if (left_out != 0) parts.push_back("... " + std::to_string(left_out) + " more");
    return lay_out(parts);
}

// Sorted.
std::vector<Key> Writer::keys(int index) const {
    std::vector<Key> found;
    for (lua_pushnil(L_); lua_next(L_, index) != 0; lua_pop(L_, 1))
        found.push_back(key_at(L_, lua_gettop(L_) - 1, found.size()));
    std::sort(found.begin(), found.end());
    double expected = 1;
    for (Key &key : found) {
        if (key.rank != Key::Rank::number || key.number != expected) continue;
        key.rank = Key::Rank::list;
        ++expected;
    }
    std::sort(found.begin(), found.end());
    return found;
}

// In the order of the keys, which are some of the table's. The table's own order is walked once more: pushing a key
// could raise. The members of a list go without their key.
std::vector<std::string> Writer::entries(int index, const std::vector<Key> &keys) {
    std::map<std::size_t, std::size_t> position_of; // by place
    for (std::size_t position = 0; position < keys.size(); ++position) position_of[keys[position].place] = position;
    std::vector<std::string> parts(keys.size());
    std::size_t place = 0;
    for (lua_pushnil(L_); lua_next(L_, index) != 0; lua_pop(L_, 1), ++place) {
        const auto wanted = position_of.find(place);
        if (wanted == position_of.end()) continue;
        const bool in_list = keys[wanted->second].rank == Key::Rank::list;
        const int value = lua_gettop(L_);
        parts[wanted->second] = (in_list ? "" : key_text(value - 1) + " = ") + text(value);
    }
    return parts;
}

std::string Writer::key_text(int index) {
    if (lua_type(L_, index) == LUA_TTABLE) return "[" + pointer_text(index) + "]";
    if (lua_type(L_, index) == LUA_TSTRING && is_identifier(string_at(L_, index)))
        return std::string(string_at(L_, index));
    return "[" + text(index) + "]";
}

// On one line where it fits, else one entry a line.
std::string Writer::lay_out(const std::vector<std::string> &entries) const {
    const std::size_t indent = around_.size() * indent_width;
    std::size_t width = indent + 2;
    bool fits = true;
    for (const std::string &entry : entries) {
        width += entry.size() + 2;
        fits = fits && entry.find('\n') == std::string::npos;
    }
    fits = fits && width <= line_width;
    const std::string between = fits ? " " : "\n" + std::string(indent + indent_width, ' ');
    std::string result = "{";
    for (const std::string &entry : entries) result += between + entry + (&entry == &entries.back() ? "" : ",");
    return result + (fits ? " }" : "\n" + std::string(indent, ' ') + "}");
}

} // namespace

void push_handle_facts(lua_State *L) {
    lua_createtable(L, metatable_count + 2, 0);
    const int facts = lua_gettop(L);
    for (int index = 0; index < metatable_count; ++index) {
        luaL_getmetatable(L, metatable_names[index]);
        lua_rawseti(L, facts, index + 1);
    }
    luaL_getmetatable(L, metatable_names[0]);
    if (lua_istable(L, -1)) {
        lua_getfield(L, -1, "__index");
        lua_getfield(L, -1, "get_name");
        lua_rawseti(L, facts, get_name_field);
        lua_getfield(L, -1, "get_type");
        lua_rawseti(L, facts, get_type_field);
    }
    lua_settop(L, facts);
}

std::string value_texts(const Application &app, lua_State *L, int count, int facts) {
    Writer writer(app, L, facts);
    std::string texts;
    for (int index = 1; index <= count; ++index) texts += (index > 1 ? ", " : "") + writer.text(index);
    return texts;
}

std::optional<std::string> handle_key_prefix(const Application &app, lua_State *L, int index, int facts) {
    return Writer(app, L, facts).key_prefix(index);
}

} // namespace kelhost
