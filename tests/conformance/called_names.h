// called_names.h: which rows of the registration tables the tests have called.
#pragma once

struct lua_State;

namespace conformance {

// Where the reporter "called_names" is asked for: watches the calls in this state, and in coroutines that it makes,
// from here on. The reporter tells at the program's end which Lua names no test has called: see called_names.cpp.
void watch_called_names(lua_State *L);

} // namespace conformance
