// value_text.h: Lua values as a reader wants to see them.
#pragma once

#include <optional>
#include <string>

#include <lua.hpp>

#include <kelhost/application.h>

namespace kelhost {

// Slots of the stack that the functions below may use; whoever calls them sees to it that they are there.
inline constexpr int value_text_slots = 60;

// [-0, +1] Pushes what handles are told by: a table for value_texts(). May raise.
void push_handle_facts(lua_State *L);

// [-0, +0] The text of each of the values at 1 to count, with commas between them: strings in quotes, handles as
// "<control main.ok>" or, when nothing has the name any more, "<stale control main.ok>", tables with their fields in
// order, as deep and as many as a reader can take. facts: where that table is. Raises nothing; may throw bad_alloc.
std::string value_texts(const Application &app, lua_State *L, int count, int facts);

// [-0, +0] What the keys of the variables of the handle's object begin with: its name and a dot, or nothing for the
// application. Null when there is no handle at that absolute index, or its object has gone. May throw bad_alloc.
std::optional<std::string> handle_key_prefix(const Application &app, lua_State *L, int index, int facts);

} // namespace kelhost
