// lua_flavor.h: where the Lua that tests run on shows itself. Everything that is not here is the same on Lua 5.1 and
// LuaJIT.
#pragma once

#include <lua.hpp>

namespace lua_flavor {

#if defined(LUAJIT_VERSION)
inline constexpr bool is_luajit = true;
#else
inline constexpr bool is_luajit = false;
#endif

// What the main chunk is told that yields.
inline constexpr const char *yield_outside = is_luajit ? "test:1: attempt to yield across C-call boundary"
                                                       : "attempt to yield across metamethod/C-call boundary";

// LuaJIT makes its stack larger to call a message handler. Where memory is used up to the last byte, that is the error.
inline constexpr bool error_takes_memory = is_luajit;

inline constexpr const char *coroutine_functions =
    is_luajit ? "create isyieldable resume running status wrap yield" : "create resume running status wrap yield";

// To `load`: an empty piece ends the chunk for LuaJIT; Lua 5.1 asks once more when it is the first.
inline constexpr bool empty_first_piece_is_the_end = is_luajit;

// Numbers such as 1LL are values of LuaJIT's foreign function interface.
inline constexpr bool has_wide_integers = is_luajit;

} // namespace lua_flavor
