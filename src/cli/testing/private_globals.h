// private_globals.h: room for tests in the Lua state of an application whose scripts see nothing of it.
#pragma once

#include <lua.hpp>

namespace kelhost {

// [-0, +1] Pushes a new thread with globals of its own: they hold all of Lua's libraries, complete, and copies of kel
// and keldom, and show the application's globals beneath. Code that is loaded in the thread, and threads made in it,
// have them too. The application's own globals and libraries stay as they are. May raise. To be called once in a state.
lua_State *push_thread_with_libraries(lua_State *L);

// [-0, +1] Pushes a new thread that shares the globals of another one. May raise.
lua_State *push_thread_like(lua_State *L, lua_State *other);

} // namespace kelhost
