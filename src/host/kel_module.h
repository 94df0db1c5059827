// kel_module.h: what the host gives scripts: the `kel` module and print.
#pragma once

#include <lua.hpp>

namespace kelhost {

// [-0, +0] Registers both in a state that belongs to a runtime, whose libraries are open. May raise.
void open_kel_module(lua_State *L);

} // namespace kelhost
