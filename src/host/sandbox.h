// sandbox.h: opens Lua's libraries as far as scripts may reach.
#pragma once

#include <string_view>

#include <lua.hpp>

#include <kelhost/options.h>

namespace kelhost {

// [-0, +0] Opens the libraries with what the sandbox closes taken out. May raise.
// What stays open is harmless: getfenv gives no C function's environment but the globals, and setfenv changes none;
// collectgarbage reaches this state alone.
void open_libraries(lua_State *L, const Sandbox &sandbox);

// [-0, +1] Pushes the debug library's traceback function, whether scripts have that library or not. To be called before
// open_libraries, which takes the library away again. May raise.
void push_traceback_function(lua_State *L);

// Whether a chunk is precompiled. Lua trusts such code: it can do what no library allows.
bool is_bytecode(std::string_view chunk) noexcept;

inline constexpr char bytecode_refused[] = "bytecode is not allowed";

} // namespace kelhost
