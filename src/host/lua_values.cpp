// lua_values.cpp: data variables to and from the Lua stack.
// Pushing a string can collect garbage, and so run finalizers of scripts that write or remove the very variable that is
// being read: its text is never Lua's to read from the variable directly. No object with a destructor is alive across a
// Lua call that can raise.
#include "lua_values.h"

namespace kelhost {

namespace {

constexpr std::size_t short_text = 256; // bytes that may stand on the C stack

const DataManager::Variable *read(DataManager &data, std::string_view key) noexcept {
    try {
        return data.read(key);
    } catch (...) { // somebody who listens for misses ran out of memory
        return data.find(key);
    }
}

// [-0, +1] Pushes a text that may be long, or returns false without pushing when the variable is no text any more.
bool push_long_text(lua_State *L, DataManager &data, std::string_view key, std::size_t room) {
    for (;;) {
        void *const block = lua_newuserdata(L, room);
        const DataManager::Variable *const variable = data.find(key);
        const auto *const text = variable != nullptr ? std::get_if<std::string>(&variable->value) : nullptr;
        const std::size_t length = text != nullptr ? text->size() : 0;
        if (text != nullptr && length <= room) {
            text->copy(static_cast<char *>(block), length);
            lua_pushlstring(L, static_cast<const char *>(block), length);
            lua_remove(L, -2);
            return true;
        }
        lua_pop(L, 1);
        if (text == nullptr) return false;
        room = length;
    }
}

// [-0, +1] on success, [-0, +0] when there is no such variable.
bool push_value(lua_State *L, DataManager &data, std::string_view key) {
    const DataManager::Variable *variable = read(data, key);
    for (;;) {
        if (variable == nullptr) return false;
        if (const double *const number = std::get_if<double>(&variable->value)) {
            lua_pushnumber(L, *number);
            return true;
        }
        const std::string &text = *std::get_if<std::string>(&variable->value);
        if (text.size() <= short_text) {
            char copy[short_text];
            const std::size_t length = text.copy(copy, sizeof copy);
            lua_pushlstring(L, copy, length);
            return true;
        }
        if (push_long_text(L, data, key, text.size())) return true;
        variable = data.find(key); // a finalizer made it a number, or removed it
    }
}

} // namespace

int absolute_index(lua_State *L, int index) noexcept {
    return index > 0 || index <= LUA_REGISTRYINDEX ? index : lua_gettop(L) + index + 1;
}

bool replace_key_by_value(lua_State *L, DataManager &data, int key_index) {
    const int place = absolute_index(L, key_index);
    std::size_t length = 0;
    const char *const key = lua_tolstring(L, place, &length);
    if (key == nullptr || !push_value(L, data, {key, length})) {
        lua_remove(L, place);
        return false;
    }
    lua_replace(L, place);
    return true;
}

std::string_view string_at(lua_State *L, int index) noexcept {
    if (lua_type(L, index) != LUA_TSTRING) return {};
    std::size_t length = 0;
    const char *const text = lua_tolstring(L, index, &length);
    return {text, length};
}

Input to_input(lua_State *L, int index) noexcept {
    Input input;
    switch (lua_type(L, index)) {
    case LUA_TBOOLEAN:
        input.kind = Input::Kind::boolean;
        input.boolean = lua_toboolean(L, index) != 0;
        break;
    case LUA_TNUMBER:
        input.kind = Input::Kind::number;
        input.number = lua_tonumber(L, index);
        break;
    case LUA_TSTRING:
        input.kind = Input::Kind::text;
        input.text = string_at(L, index);
        break;
    default:
        input.text = luaL_typename(L, index);
    }
    return input;
}

bool write_value(lua_State *L, DataManager &data, Log &log, int key_index, int value_index) {
    std::size_t length = 0;
    const char *const key = lua_tolstring(L, key_index, &length);
    if (key == nullptr) {
        log.format(KL_LOG_WARNING, "Cannot write, key: found %s, expected a string", luaL_typename(L, key_index));
        return false;
    }
    try {
        return data.write({key, length}, to_input(L, value_index)) != WriteResult::refused;
    } catch (...) {
        log.format(KL_LOG_ERROR, "Cannot write \"%s\": not enough memory", key);
        return false;
    }
}

} // namespace kelhost
