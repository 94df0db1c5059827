// lua_values.h: data variables to and from the Lua stack.
#pragma once

#include <lua.hpp>

#include "data_manager.h"
#include "log.h"

namespace kelhost {

// [-1, +1] on success, [-1, +0] on failure. Puts the value of the variable in the place of its key; when there is no
// such variable, removes the key and returns false. Numbers become numbers, strings strings. May raise out-of-memory.
bool replace_key_by_value(lua_State *L, DataManager &data, int key_index);

// [-0, +0] Writes the Lua value at value_index into the variable whose key is at key_index; a number there is made a
// string in place. False, which is logged, when it is refused. Raises nothing when the key is a string.
bool write_value(lua_State *L, DataManager &data, Log &log, int key_index, int value_index);

// What stands at a stack index, as the data manager takes it. Its text is Lua's, good while the value stays there.
// Raises nothing.
Input to_input(lua_State *L, int index) noexcept;

// The same place as an index that pushing does not shift.
int absolute_index(lua_State *L, int index) noexcept;

// The value at a stack index when it is a string, as it stands; a null view when it is not. Raises nothing.
std::string_view string_at(lua_State *L, int index) noexcept;

} // namespace kelhost
