// checks.h: what Lua entries check before they work, and the two channels in which they say no: a warning in the host's
// log, after which the script sees nil, and a Lua error. Which check takes which channel is part of the module's
// behaviour.
#pragma once

#include "handle.h"

// Texts that more than one room uses.
inline namespace luakeldom {
extern const char not_a_handle[];
extern const char no_application_for_call[];
extern const char no_such_object[];
} // namespace luakeldom

// Each gives 0, an entry's count of results, so that an entry can say `return warn(app, text)`.
int warn(kl_application_t *app, const char *text);
int raise_error(lua_State *L, const char *text); // returns where the host's kl_lua_error does

// The application, or null after raising the error that there is none.
kl_application_t *keldom_require_app(lua_State *L);

// The application, or null after raising the error that there is not exactly one argument, or no application.
kl_application_t *lua_one_arg_app(lua_State *L);

// How many arguments a method needs, self included, and whether its usage text calls that a minimum, packed so that it
// travels in one register. Kept: more arguments are always accepted, whatever the text says.
enum minimum_t : int {};
constexpr int says_at_least = 0x100;
constexpr minimum_t exactly(int count) { return minimum_t{count}; }
constexpr minimum_t at_least(int count) { return minimum_t{count | says_at_least}; }
constexpr int count_of(minimum_t minimum) { return minimum & ~says_at_least; }

// Whether there are that many arguments; warns when not: "This function expects at least 2 arguments (self, <others>)".
bool has_arguments(lua_State *L, kl_application_t *app, minimum_t minimum, const char *others);

// The same two channels for the text "Argument <position> must be <expected>".
int warn_argument(kl_application_t *app, int position, const char *expected);
int raise_argument_error(lua_State *L, int position, const char *expected);

// The first step of every method: sets the application and returns the handle at position 1. Null after raising that
// there is no application, or after the warning that argument 1 is no handle.
dom_object_t *get_dom_object(lua_State *L, kl_application_t *&app);
